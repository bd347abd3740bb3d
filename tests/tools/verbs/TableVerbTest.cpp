// SPDX-License-Identifier: Apache-2.0
// "oxaifc table": forms, files, and what goes wrong.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "tools/ProgramRun.h"

namespace oxa::test {
namespace {

namespace fs = std::filesystem;

std::string sText(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

const std::string& sMaterials() {
    static const std::string sFile = sExchangeFile("IFC4", "#1=IFCMATERIAL('Oak',$,$);\n#2=IFCMATERIAL('Elm',$,$);\n");
    return sFile;
}

TEST(TableVerb, OneTableToStandardOutput) {
    const ProgramRun csv = runProgram({"table", "-", "-", "-f", "csv", "--only", "IfcMaterial"}, sMaterials());
    EXPECT_EQ(csv.iCode, 0);
    EXPECT_EQ(csv.sError, "");
    EXPECT_EQ(csv.sOut, "file,id,type,Name,Description,Category\r\nstandard input,1,IfcMaterial,Oak,,\r\nstandard "
                        "input,2,IfcMaterial,Elm,,\r\n");
    const ProgramRun json = runProgram({"table", "-", "-", "-f", "ndjson", "-t", "IfcMaterial"}, sMaterials());
    EXPECT_EQ(json.sOut,
              "{\"file\":\"standard "
              "input\",\"id\":1,\"type\":\"IfcMaterial\",\"Name\":\"Oak\",\"Description\":null,\"Category\":null}\n"
              "{\"file\":\"standard "
              "input\",\"id\":2,\"type\":\"IfcMaterial\",\"Name\":\"Elm\",\"Description\":null,\"Category\":null}\n");
}

TEST(TableVerb, AFolderOfTables) {
    const TestFolder folder;
    const std::string sA = folder.sFile("a.ifc", sMaterials());
    const std::string sB = folder.sFile("b.ifc", sExchangeFile("IFC2X3", "#1=IFCTEAPOT();\n"));
    const std::string sOut = (folder.path() / "out").string();
    const ProgramRun run = runProgram({"table", sA, sB, sOut, "--with", "reference"});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.sError, "oxaifc: " + sB + ": 1 error while reading; oxaifc check tells it\n");
    EXPECT_EQ(sText(folder.path() / "out" / "error.csv"),
              "file,severity,category,key,line,entity_id,message\r\n" + sB +
                  ",error,value,Error_UnknownEntityType,8,1,The schema has no entity type of this name; the statement "
                  "was skipped.\r\n");
    EXPECT_TRUE(fs::exists(folder.path() / "out" / "reference.csv"));
    std::istringstream files(sText(folder.path() / "out" / "file.csv"));
    std::string sLine;
    std::getline(files, sLine);
    std::getline(files, sLine);
    const std::string sBegin = sA + "," + sA + ",IFC4,a.ifc," + std::to_string(sMaterials().size()) + ",";
    EXPECT_EQ(sLine.substr(0, sBegin.size()), sBegin);
}

// What a script counts in the text of the file, and that all forms have the same rows.
TEST(TableVerb, RowsAreThoseOfTheText) {
    if (std::system("python3 -c 'import sqlite3' > /dev/null 2>&1") != 0) GTEST_SKIP() << "there is no python3";
    std::vector<std::string> files{sExample("house-ifc4.ifc"), sExample("house-ifc2x3.ifc")};
    for (const char* pModel :
         {"revit2011-duplex-architecture.ifc", "archicad20-fzk-haus-ifc4.ifc", "carf-hvac-heating-ifc4.ifc",
          "bonsai-example-hom-ifc4.ifc", "civil3d-alx4-ifc4x3.ifc", "railcomplete-al01-ifc4x3.ifc"})
        if (const fs::path path = fs::path(OXA_SOURCE_DIR "/../shared/models") / pModel; fs::exists(path))
            files.push_back(path.string());
    for (const std::string& sFile : files) {
        SCOPED_TRACE(sFile);
        const TestFolder folder;
        for (const auto& [pForm, pOut] : {std::pair{"csv", "csv"}, {"ndjson", "json"}, {"sqlite", "model.sqlite"}})
            EXPECT_LT(runProgram({"table", sFile, (folder.path() / pOut).string(), "-f", pForm, "--with",
                                  "reference,IfcCartesianPoint"})
                          .iCode,
                      2);
        if (sFile.find("examples") != std::string::npos) {
            const std::string sBook = (folder.path() / "model.xlsx").string();
            EXPECT_EQ(runProgram({"table", sFile, sBook, "--with", "reference,IfcCartesianPoint"}).iCode, 0);
        }
        const ProgramRun run =
            runProgramAt("/usr/bin/env", {"python3", OXA_SOURCE_DIR "/tests/tools/verbs/table_counts.py", sFile,
                                          folder.path().string()});
        EXPECT_EQ(run.iCode, 0) << run.sOut << run.sError;
        EXPECT_EQ(run.sOut.substr(0, 8), "checked ") << run.sOut;
    }
}

TEST(TableVerb, AWorkbookTellsWhatItCuts) {
    const TestFolder folder;
    const std::string sOut = (folder.path() / "a.xlsx").string();
    const std::string sLong(40000, 'x');
    const ProgramRun run = runProgram({"table", "-", sOut, "--only", "IfcMaterial"},
                                      sExchangeFile("IFC4", "#1=IFCMATERIAL('" + sLong +
                                                                "',$,$);\n"
                                                                "#2=IFCMATERIAL('=1+1',$,$);\n"));
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.sError, "oxaifc: IfcMaterial.Name: 1 text is cut to 32,767 characters\n");
    EXPECT_EQ(sText(sOut).substr(0, 4), "PK\x03\x04");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()), 1);
}

struct FailRow {
    const char* pRule;
    std::vector<std::string> words;   // A: a file; DIR/: a folder that is there
    std::string sError;
};

TEST(TableVerb, WrongCallsAreTold) {
    const TestFolder folder;
    const std::string sA = folder.sFile("a.ifc", sMaterials());
    const std::string sDir = folder.path().string() + "/";
    const FailRow rows[] = {
        {"no OUT", {sA}, "table: OUT is required"},
        {"an end that says nothing",
         {sA, sDir + "a.txt"},
         "table: " + sDir +
             "a.txt: its end is none of .csv, .ndjson, .jsonl, .sqlite, .sqlite3, .db, .xlsx; -f says the form"},
        {"several tables in one text",
         {sA, sDir + "a.csv"},
         "table: " + sDir + "a.csv holds one table; --only names it"},
        {"no such table",
         {sA, sDir + "out", "--only", "elements"},
         sA + ": there is no table elements; did you mean element?"},
        {"the file that is read", {sA, sA, "-fcsv", "-tfile"}, sA + ": is the file that is read"},
        {"twice", {sA, sA, sDir + "out"}, "table: a file is named twice"},
        {"no such folder", {sA, sDir + "x/y"}, sDir + "x/y: can't be made: No such file or directory"},
    };
    for (const FailRow& row : rows) {
        SCOPED_TRACE(row.pRule);
        std::vector<std::string> words{"table"};
        words.insert(words.end(), row.words.begin(), row.words.end());
        const ProgramRun run = runProgram(words);
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.sError, "oxaifc: " + row.sError + "\n");
        EXPECT_EQ(run.sOut, "");
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()), 1);
    EXPECT_EQ(sText(sA), sMaterials());
}

TEST(TableVerb, AFullDiskIsTold) {
    if (!boCanBe(OutputKind::FullDisk)) GTEST_SKIP() << "no device that takes nothing";
    const ProgramRun run =
        runProgram({"table", "-", "-", "-f", "csv", "-t", "IfcMaterial"}, sMaterials(), OutputKind::FullDisk);
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.sError, "oxaifc: can't write standard output: No space left on device\n");
}

}   // namespace
}   // namespace oxa::test
