// SPDX-License-Identifier: Apache-2.0
// "oxaifc list": rows, forms of tables, groups, and what a wrong query gives.

#include <gtest/gtest.h>

#include <utility>

#include "tools/ProgramRun.h"
#include "tools/WrittenFile.h"
#include "tools/verbs/ProjectParts.h"

namespace oxa::test {
namespace {

// Doors and a wall of a storey; the same statements in IFC2X3 and IFC4. Names that a spreadsheet would stumble over.
std::string sDoorFile(std::string_view schema) {
    return sExchangeFile(schema, std::string(g_projectParts) +
                                     "#1=IFCDOOR('28ORztRAzL4xGwAknWjIBd',#90,'=1+1',$,$,$,$,$,2.1,0.9);\n"
                                     "#2=IFCDOOR('3b01k1tpLOY8zJzkIrixtC',#90,'a,\"b\"',$,$,$,$,$,$,-1.5);\n"
                                     "#3=IFCBUILDINGSTOREY('1XxWclp6bOHAdQixVqmAPd',#90,'EG',$,$,$,$,$,.ELEMENT.,0.);\n"
                                     "#4=IFCRELCONTAINEDINSPATIALSTRUCTURE('3Q2KuEDczSmQAFmYKnklVN',#90,$,$,(#1),#3);\n"
                                     "#5=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('T 30'),$);\n"
                                     "#6=IFCPROPERTYSET('0qltlX545U7f6hmhHOJBDu',#90,'Pset_DoorCommon',$,(#5));\n"
                                     "#7=IFCRELDEFINESBYPROPERTIES('00MPTWCfrN7ReR2sdMzhiQ',#90,$,$,(#2),#6);\n");
}

constexpr const char* g_pColumns = "-cid,Name,OverallWidth,Pset_DoorCommon.FireRating";

struct ListFormRow {
    const char* pForm;
    const char* pOut;
};
const ListFormRow g_listForms[] = {
    {"table", "id  Name   OverallWidth  Pset_DoorCommon.FireRating\n"
              " 1  =1+1            0.9\n"
              " 2  a,\"b\"          -1.5  T 30\n"},
    {"csv", "id,Name,OverallWidth,Pset_DoorCommon.FireRating\r\n"
            "1,'=1+1,0.9,\r\n"
            "2,\"a,\"\"b\"\"\",-1.5,T 30\r\n"},
    {"tsv", "id\tName\tOverallWidth\tPset_DoorCommon.FireRating\n"
            "1\t'=1+1\t0.9\t\n"
            "2\t\"a,\"\"b\"\"\"\t-1.5\tT 30\n"},
    {"json", "[\n"
             "{\"id\":1,\"Name\":\"=1+1\",\"OverallWidth\":0.9,\"Pset_DoorCommon.FireRating\":null},\n"
             "{\"id\":2,\"Name\":\"a,\\\"b\\\"\",\"OverallWidth\":-1.5,\"Pset_DoorCommon.FireRating\":\"T 30\"}\n"
             "]\n"},
    {"ndjson", "{\"id\":1,\"Name\":\"=1+1\",\"OverallWidth\":0.9,\"Pset_DoorCommon.FireRating\":null}\n"
               "{\"id\":2,\"Name\":\"a,\\\"b\\\"\",\"OverallWidth\":-1.5,\"Pset_DoorCommon.FireRating\":\"T 30\"}\n"},
};

TEST(ListVerb, FormsOfATable) {
    for (const char* pSchema : {"IFC2X3", "IFC4", "IFC4X3_ADD2"})
        for (const ListFormRow& row : g_listForms) {
            SCOPED_TRACE(std::string(pSchema) + " " + row.pForm);
            const ProgramRun run =
                runProgram({"list", "-", "IfcDoor", g_pColumns, "-f", row.pForm}, sDoorFile(pSchema));
            EXPECT_EQ(run.iCode, 0);
            EXPECT_EQ(run.sOut, row.pOut);
            EXPECT_EQ(run.sError, "");
        }
}

// A spreadsheet takes what begins so for a formula; white space in front of it does not help.
TEST(ListVerb, TextsThatAreNoFormulas) {
    const std::pair<const char*, const char*> rows[] = {
        {"=1", "'=1"},
        {"+1", "'+1"},
        {"-1", "'-1"},
        {"@A1", "'@A1"},
        {"\\X\\09=1", "'\t=1"},
        {"1=1", "1=1"},
        {"a\\X\\0Ab", "\"a\nb\""},
        {"\\X\\0D=1", "\"'\r=1\""},
        {"\\X2\\00E4\\X0\\;", "\u00e4;"},
    };
    for (const auto& [pName, pCell] : rows) {
        const std::string sFile =
            sExchangeFile("IFC4", std::string("#1=IFCWALL('28ORztRAzL4xGwAknWjIBd',$,'") + pName + "',$,$,$,$,$,$);\n");
        EXPECT_EQ(runProgram({"list", "-", "-c", "Name", "-f", "csv"}, sFile).sOut,
                  std::string("Name\r\n") + pCell + "\r\n");
    }
}

TEST(ListVerb, SumsHaveFifteenDigits) {
    std::string sFile;
    for (int i = 1; i <= 3; ++i)
        sFile += "#" + std::to_string(i) + "=IFCDOOR($,$,$,$,$,$,$,$," + (i == 3 ? "1.E-17" : "0.1") + "," +
                 (i == 1   ? "1.E16"
                  : i == 2 ? "1."
                           : "-1.E16") +
                 ",$,$,$);\n";
    const ProgramRun run = runProgram({"list", "-", "IfcDoor", "--sum", "OverallHeight,OverallWidth", "-f", "csv"},
                                      sExchangeFile("IFC4", sFile + "#4=IFCDOOR($,$,$,$,$,$,$,$,0.1,$,$,$,$);\n"));
    EXPECT_EQ(run.sOut, "sum(OverallHeight),sum(OverallWidth)\r\n0.3,1\r\n") << run.sError;
    const ProgramRun value =
        runProgram({"list", "-", "IfcDoor", "-c", "OverallHeight", "-f", "csv"},
                   sExchangeFile("IFC4", "#1=IFCDOOR($,$,$,$,$,$,$,$,0.30000000000000004,$,$,$,$);\n"));
    EXPECT_EQ(value.sOut, "OverallHeight\r\n0.30000000000000004\r\n");
}

TEST(ListVerb, NoRows) {
    const ListFormRow rows[] = {
        {"table", "id\n"}, {"csv", "id\r\n"}, {"tsv", "id\n"}, {"json", "[]\n"}, {"ndjson", ""}};
    for (const ListFormRow& row : rows)
        EXPECT_EQ(runProgram({"list", "-", "IfcSlab", "-cid", "-f", row.pForm}, sDoorFile("IFC4")).sOut, row.pOut);
}

struct AskRow {
    const char* pRule;
    std::vector<std::string> words;   // behind the house
    const char* pOut;
};
const AskRow g_asked[] = {
    {"columns of their own, and what stands in quotes",
     {"IfcProject", "-c", "id,class", "-c", "'Pset_X'.\"a,b\"", "-f", "csv"},
     "id,class,\"'Pset_X'.\"\"a,b\"\"\"\r\n301,IfcProject,\r\n"},
    {"default columns",
     {"IfcDoor"},
     "id   class    GlobalId                Name\n"
     "862  IfcDoor  3b01k1tpLOY8zJzkIrixtC  Haustür\n"
     "884  IfcDoor  28ORztRAzL4xGwAknWjIBd  Küchentür\n"},
    {"wide characters take two columns",
     {"IfcBuildingStorey", "-c", "Name,Elevation"},
     "Name              Elevation\n"
     "Kellergeschoß          -2.6\n"
     "Erdgeschoss 一階          0\n"
     "Dachgeschoss 🏠         2.8\n"},
    {"subtypes", {"IfcSpatialStructureElement", "--count"}, "count\n    7\n"},
    {"no subtypes", {"IfcSpatialStructureElement", "--exact", "--count"}, "count\n    0\n"},
    {"all objects", {"--count", "-f", "json"}, "[\n{\"count\":41}\n]\n"},
    {"groups",
     {"IfcWall", "--group-by", "storey.Elevation", "--count", "-f", "csv"},
     "storey.Elevation,count\r\n-2.6,4\r\n0,5\r\n2.8,2\r\n"},
    {"groups alone are counted", {"IfcDoor", "--group-by", "class", "-f", "tsv"}, "class\tcount\nIfcDoor\t2\n"},
    {"sums, none where nothing has a number",
     {"IfcWall", "--group-by", "type.Name", "--sum", "Qto_WallBaseQuantities.GrossVolume", "-f", "csv"},
     "type.Name,sum(Qto_WallBaseQuantities.GrossVolume)\r\n"
     "\"Außenwand 36,5\",9.49\r\n"
     "\"Innenwand 11,5\",\r\n"
     "Kellerwand 30,\r\n"},
};

TEST(ListVerb, House) {
    for (const AskRow& row : g_asked) {
        SCOPED_TRACE(row.pRule);
        std::vector<std::string> words{"list", sExample("house-ifc4.ifc")};
        words.insert(words.end(), row.words.begin(), row.words.end());
        const ProgramRun run = runProgram(words);
        EXPECT_EQ(run.iCode, 0);
        EXPECT_EQ(run.sOut, row.pOut);
    }
}

struct WrongRow {
    std::vector<std::string> words;   // behind "list"
    const char* pError;
};
const WrongRow g_wrong[] = {
    {{"-", "IfcDoor, ="}, "list: QUERY, column 10: a name is expected"},
    {{"-", "IfcDor"}, "standard input: column 1: IFC4 has no entity type IfcDor; did you mean IfcDoor?"},
    {{"-", "IfcDoor", "-c", "Nam"},
     "standard input: no type of IFC4 has an attribute Nam; did you mean Name, LongName, GivenName, UsageName, "
     "FamilyName?"},
    {{"-", "IfcDoor", "-c", "id", "--count"}, "list: --columns excludes --count"},
    {{"-", "IfcDoor", "--bom"}, "list: --bom goes with csv and tsv alone"},
    {{"-", "-o", "doors.ifc"},
     "list: doors.ifc: its end is none of .csv, .tsv, .json, .ndjson, .xlsx and .txt; -f says the form"},
    {{"-", "IfcDoor", "-f", "xls"}, "list: --format: xls not in {table,csv,tsv,json,ndjson,xlsx}"},
    {{"-", "IfcDoor", "-f", "xlsx"}, "list: a workbook goes to a file: -o OUT.xlsx"},
    {{"/missing.ifc", "IfcDoor"}, "/missing.ifc: there is no such file"},
};

TEST(ListVerb, WrongCallIsOneLineAndTwo) {
    for (const WrongRow& row : g_wrong) {
        SCOPED_TRACE(row.pError);
        std::vector<std::string> words{"list"};
        words.insert(words.end(), row.words.begin(), row.words.end());
        const ProgramRun run = runProgram(words, sDoorFile("IFC4"));
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.sOut, "");
        EXPECT_EQ(run.sError, std::string("oxaifc: ") + row.pError + "\n");
    }
}

TEST(ListVerb, HintsAndErrorsOfTheFileGoToStandardError) {
    const ProgramRun hint = runProgram(
        {"list", "-", "IfcDoor, Pset_DoorCommon.FireRatin=NULL", "-c", "id", "-f", "csv"}, sDoorFile("IFC4"));
    EXPECT_EQ(hint.iCode, 0);
    EXPECT_EQ(hint.sOut, "id\r\n1\r\n2\r\n");
    EXPECT_EQ(hint.sError, "oxaifc: no set Pset_DoorCommon has FireRatin; did you mean FireRating?\n");
    const ProgramRun faults =
        runProgram({"list", "-", "-c", "id", "-f", "csv"},
                   sExchangeFile("IFC4", "#1=IFCTEAPOT();\n#2=IFCWALL('28ORztRAzL4xGwAknWjIBd',$,$,$,$,$,$,$,$);\n"));
    EXPECT_EQ(faults.iCode, 1);
    EXPECT_EQ(faults.sOut, "id\r\n2\r\n");
    EXPECT_EQ(faults.sError, "oxaifc: standard input: 1 error while reading; oxaifc check tells it\n");
}

TEST(ListVerb, OutIsReplacedAsAWholeByItsEnding) {
    const TestFolder folder;
    const std::string sOut = folder.sFile("doors.csv", "old");
    const ProgramRun wrong = runProgram({"list", "-", "IfcDor", "-o", sOut}, sDoorFile("IFC4"));
    EXPECT_EQ(wrong.iCode, 2);
    EXPECT_EQ(sContent(sOut), "old");
    const ProgramRun run = runProgram({"list", "-", "IfcDoor", "-c", "Name", "--bom", "-o", sOut}, sDoorFile("IFC4"));
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.sOut, "");
    EXPECT_EQ(sContent(sOut), "\xef\xbb\xbfName\r\n'=1+1\r\n\"a,\"\"b\"\"\"\r\n");
    EXPECT_EQ(filesIn(folder.path()), std::vector<std::string>{"doors.csv"});
}

// The cells of the sheet, as the form stores them: a number as such, a text in line.
TEST(ListVerb, AWorkbookHasTypedCells) {
    if (runProgramAt("/usr/bin/env", {"python3", "--version"}).iCode != 0) GTEST_SKIP() << "there is no python3";
    const TestFolder folder;
    const std::string sOut = (folder.path() / "doors.xlsx").string();
    const ProgramRun run = runProgram({"list", "-", "IfcDoor", g_pColumns, "-o", sOut}, sDoorFile("IFC4"));
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.sOut + run.sError, "");
    const char* const pCells = "import re, sys, zipfile\n"
                               "text = zipfile.ZipFile(sys.argv[1]).read('xl/worksheets/sheet1.xml').decode()\n"
                               "for row in re.findall('<row .*?</row>', text):\n"
                               "    print('|'.join(a or b for a, b in re.findall('<v>(.*?)</v>|<t>(.*?)</t>', row)))\n";
    EXPECT_EQ(runProgramAt("/usr/bin/env", {"python3", "-c", pCells, sOut}).sOut,
              "id|Name|OverallWidth|Pset_DoorCommon.FireRating\n"
              "1|=1+1|0.9\n"
              "2|a,\"b\"|-1.5|T 30\n");
    EXPECT_EQ(filesIn(folder.path()), std::vector<std::string>{"doors.xlsx"});
}

TEST(ListVerb, SeveralFilesHaveAColumn) {
    const TestFolder folder;
    const std::string sA = folder.sFile("a.ifc", sDoorFile("IFC4"));
    const std::string sB = folder.sFile("b.ifc", sDoorFile("IFC2X3"));
    const std::string sMissing = (folder.path() / "missing.ifc").string();
    const std::vector<std::string> words{"-c", "id", "-f", "csv"};
    const auto list = [&words](std::vector<std::string> files) {
        files.insert(files.begin(), "list");
        files.insert(files.end(), words.begin(), words.end());
        return runProgram(files);
    };
    const ProgramRun run = list({sA, sB, "#1"});
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.sOut, "file,id\r\n" + sA + ",1\r\n" + sB + ",1\r\n");
    const ProgramRun some = list({sA, sMissing});
    EXPECT_EQ(some.iCode, 2);
    EXPECT_EQ(some.sOut, "file,id\r\n" + sA + ",1\r\n" + sA + ",2\r\n" + sA + ",3\r\n");
    EXPECT_EQ(some.sError, "oxaifc: " + sMissing + ": there is no such file\n");
}

TEST(ListVerb, TerminalCutsTheTable) {
    if (!boCanBe(OutputKind::Terminal)) GTEST_SKIP() << "no terminal for a test here";
    const std::string sName(90, 'n');
    const std::string sFile =
        sExchangeFile("IFC4", "#1=IFCWALL('28ORztRAzL4xGwAknWjIBd',$,'" + sName + "',$,$,$,$,$,$);\n");
    EXPECT_EQ(runProgram({"list", "-", "-c", "id,Name"}, sFile).sOut, "id  Name\n 1  " + sName + "\n");
    EXPECT_EQ(runProgram({"list", "-", "-c", "id,Name"}, sFile, OutputKind::Terminal).sOut,
              "id  Name\r\n 1  " + sName.substr(0, 75) + "\u2026\r\n");   // 80 where a terminal says no width
}

}   // namespace
}   // namespace oxa::test
