// SPDX-License-Identifier: Apache-2.0
// "oxaifc table": forms, files, and what goes wrong.

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <utility>

#include <gtest/gtest.h>

#include "tools/ProgramRun.h"
#include "tools/WrittenFile.h"

namespace oxa::test {
namespace {

namespace fs = std::filesystem;

const std::string& sTableMaterials() {
    static const std::string sFile = sExchangeFile("IFC4", "#1=IFCMATERIAL('Oak',$,$);\n#2=IFCMATERIAL('Elm',$,$);\n");
    return sFile;
}

TEST(TableVerb, OneTableToStandardOutput) {
    const ProgramRun csv = runProgram({"table", "-", "-", "-f", "csv", "--only", "IfcMaterial"}, sTableMaterials());
    EXPECT_EQ(csv.iCode, 0);
    EXPECT_EQ(csv.sError, "");
    EXPECT_EQ(csv.sOut, "file,id,type,Name,Description,Category\r\nstandard input,1,IfcMaterial,Oak,,\r\nstandard "
                        "input,2,IfcMaterial,Elm,,\r\n");
    const ProgramRun json = runProgram({"table", "-", "-", "-f", "ndjson", "-t", "IfcMaterial"}, sTableMaterials());
    EXPECT_EQ(json.sOut,
              "{\"file\":\"standard "
              "input\",\"id\":1,\"type\":\"IfcMaterial\",\"Name\":\"Oak\",\"Description\":null,\"Category\":null}\n"
              "{\"file\":\"standard "
              "input\",\"id\":2,\"type\":\"IfcMaterial\",\"Name\":\"Elm\",\"Description\":null,\"Category\":null}\n");
}

TEST(TableVerb, AFolderOfTables) {
    const TestFolder folder;
    const std::string sA = folder.sFile("a.ifc", sTableMaterials());
    const std::string sB = folder.sFile("b.ifc", sExchangeFile("IFC2X3", "#1=IFCTEAPOT();\n"));
    const std::string sOut = (folder.path() / "out").string();
    const ProgramRun run = runProgram({"table", sA, sB, sOut, "--with", "reference"});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.sError, "oxaifc: " + sB + ": 1 error while reading; oxaifc check tells it\n");
    EXPECT_EQ(sContent(folder.path() / "out" / "error.csv"),
              "file,severity,category,key,line,entity_id,message\r\n" + sB +
                  ",error,value,Error_UnknownEntityType,8,1,The schema has no entity type of this name; the statement "
                  "was skipped.\r\n");
    EXPECT_TRUE(fs::exists(folder.path() / "out" / "reference.csv"));
    std::istringstream files(sContent(folder.path() / "out" / "file.csv"));
    std::string sLine;
    std::getline(files, sLine);
    std::getline(files, sLine);
    const std::string sBegin = sA + "," + sA + ",IFC4,a.ifc," + std::to_string(sTableMaterials().size()) + ",";
    EXPECT_EQ(sLine.substr(0, sBegin.size()), sBegin);
}

// Runs a script beside this file; "" where it found nothing wrong.
std::string sScriptTold(std::vector<std::string> words) {
    words[0] = OXA_SOURCE_DIR "/tests/tools/verbs/" + words[0];
    words.insert(words.begin(), "python3");
    const ProgramRun run = runProgramAt("/usr/bin/env", words);
    if (run.sOut.find("skipped: ") != std::string::npos) std::cout << run.sOut;
    const bool boChecked = run.sOut.find("checked ") != std::string::npos;
    return run.iCode == 0 && boChecked ? "" : run.sOut + run.sError;
}

const char* const g_pClasses = "reference,IfcCartesianPoint,IfcWall,IfcPropertySingleValue,IfcRelAggregates,IfcSIUnit";

// What a script reads in the text of the file, and that all forms have the same rows.
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
        const auto sOut = [&](const char* pName) { return (folder.path() / pName).string(); };
        for (const auto& [pForm, pOut] : {std::pair{"csv", "csv"}, {"ndjson", "json"}, {"sqlite", "model.sqlite"}})
            EXPECT_LT(runProgram({"table", sFile, sOut(pOut), "-f", pForm, "--with", g_pClasses}).iCode, 2);
        const bool boSmall = sFile.find("examples") != std::string::npos;
        if (boSmall) {
            EXPECT_EQ(runProgram({"table", sFile, sOut("model.xlsx"), "--with", g_pClasses}).iCode, 0);
        }
        std::vector<std::string> words{"table_counts.py", sFile, folder.path().string()};
#ifdef OXA_TABLE_STREAM
        if (boSmall) words.emplace_back(OXA_TABLE_STREAM);
#endif
        EXPECT_EQ(sScriptTold(words), "");
    }
}

// Names and texts that one form or another takes for something else.
std::string sHostileFile() {
    const std::vector<std::string> texts{"say ''\"''\"''",
                                         "a,b;c\td",
                                         "\\X\\0D\\X\\0A",
                                         "one\\X\\0Atwo",
                                         "a\\X\\00b",
                                         "\\X\\01\\X\\1F_x0041_",
                                         "=1+1",
                                         "+SUM(A1)",
                                         "-2+3",
                                         "@x",
                                         "\\X\\09tab",
                                         "-12.5",
                                         "\\X2\\6F225B57\\X0\\",
                                         "\\X4\\0001F600\\X0\\",
                                         "\\X2\\0418\\X0\\",
                                         "\\X2\\05D00600\\X0\\",
                                         "\\X2\\FFFE\\X0\\",
                                         " leading and trailing ",
                                         "NULL",
                                         "null",
                                         "",
                                         "<b>&amp;</b>",
                                         "\\\\n",
                                         "'';DROP TABLE element;--",
                                         std::string(32767, 'x')};
    std::string sData;
    for (std::size_t i = 0; i < texts.size(); ++i)
        sData += "#" + std::to_string(i + 1) + "=IFCMATERIAL('" + texts[i] + "','" + texts[i] + "',$);\n";
    for (const char* pReal : {"1.", "0.1", "-0.", "1.E300", "4.9E-324", "123456789.12345678", "0.30000000000000004",
                              "9007199254740993.", "1.7976931348623157E308"})
        sData += "#" + std::to_string(100 + sData.size()) + "=IFCCARTESIANPOINT((" + pReal + "));\n";
    return sExchangeFile("IFC4", sData);
}

TEST(TableVerb, HostileTextsSurviveInAllForms) {
    if (std::system("python3 -c 'import sqlite3' > /dev/null 2>&1") != 0) GTEST_SKIP() << "there is no python3";
    const TestFolder folder;
    const std::string sIn = folder.sFile("=a'b;\xD0\xAF.ifc", sHostileFile());
    for (const auto& [pForm, pOut] :
         {std::pair{"csv", "csv"}, {"ndjson", "json"}, {"sqlite", "model.sqlite"}, {"xlsx", "model.xlsx"}}) {
        SCOPED_TRACE(pForm);
        const ProgramRun run = runProgram(
            {"table", sIn, (folder.path() / pOut).string(), "-f", pForm, "--with", "IfcMaterial,IfcCartesianPoint"});
        EXPECT_EQ(run.iCode, 0);
        EXPECT_EQ(run.sError, "");
    }
    std::vector<std::string> words{"table_forms.py", folder.path().string()};
#ifdef OXA_TABLE_STREAM
    words.insert(words.end(), {sIn, OXA_TABLE_STREAM});
#endif
    EXPECT_EQ(sScriptTold(words), "");
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
    EXPECT_EQ(sContent(sOut).substr(0, 4), "PK\x03\x04");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()), 1);
}

struct TableFailRow {
    const char* pRule;
    std::vector<std::string> words;   // A: a file; DIR/: a folder that is there
    std::string sError;
};

TEST(TableVerb, WrongCallsAreTold) {
    const TestFolder folder;
    const std::string sA = folder.sFile("a.ifc", sTableMaterials());
    const std::string sDir = folder.path().string() + "/";
    const TableFailRow rows[] = {
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
    for (const TableFailRow& row : rows) {
        SCOPED_TRACE(row.pRule);
        std::vector<std::string> words{"table"};
        words.insert(words.end(), row.words.begin(), row.words.end());
        const ProgramRun run = runProgram(words);
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.sError, "oxaifc: " + row.sError + "\n");
        EXPECT_EQ(run.sOut, "");
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()), 1);
    EXPECT_EQ(sContent(sA), sTableMaterials());
}

TEST(TableVerb, TheEndOfANameMayHaveAnyCase) {
    const TestFolder folder;
    const std::string sA = folder.sFile("a.ifc", sTableMaterials());
    for (const auto& [pOut, sBegin] :
         {std::pair{"a.CSV", "file,id,"}, {"a.NdJson", "{\"file\":"}, {"a.SQLITE", "SQLite"}, {"a.Xlsx", "PK"}}) {
        SCOPED_TRACE(pOut);
        const std::string sOut = (folder.path() / pOut).string();
        EXPECT_EQ(runProgram({"table", sA, sOut, "--only", "IfcMaterial"}).iCode, 0);
        EXPECT_TRUE(sContent(sOut).starts_with(sBegin));
    }
}

TEST(TableVerb, AFullDiskIsTold) {
    if (!boCanBe(OutputKind::FullDisk)) GTEST_SKIP() << "no device that takes nothing";
    const ProgramRun run =
        runProgram({"table", "-", "-", "-f", "csv", "-t", "IfcMaterial"}, sTableMaterials(), OutputKind::FullDisk);
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.sError, "oxaifc: can't write standard output: No space left on device\n");
}

}   // namespace
}   // namespace oxa::test
