// SPDX-License-Identifier: Apache-2.0
// "oxaifc sql": forms, the questions that "list" answers, the prompt, and what goes wrong.

#include <algorithm>
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
    static const std::string sFile = sExchangeFile("IFC4", "#1=IFCMATERIAL('Oak',$,$);\n#2=IFCMATERIAL('=Elm',$,$);\n");
    return sFile;
}

struct FormRow {
    const char* pForm;
    const char* pOut;
};
const FormRow g_forms[] = {
    {"table", "id  Name  w\n 1  Oak   0.5\n 2  =Elm    1\n"},
    {"csv", "id,Name,w\r\n1,Oak,0.5\r\n2,'=Elm,1\r\n"},
    {"json", "[\n{\"id\":1,\"Name\":\"Oak\",\"w\":0.5},\n{\"id\":2,\"Name\":\"=Elm\",\"w\":1.0}\n]\n"},
};

TEST(SqlVerb, FormsOfAnAnswer) {
    const TestFolder folder;
    for (const FormRow& row : g_forms) {
        SCOPED_TRACE(row.pForm);
        const std::vector<std::string> words{"sql", "-", "SELECT id, Name, id / 2.0 AS w FROM IfcMaterial"};
        std::vector<std::string> toScreen = words;
        toScreen.insert(toScreen.end(), {"-f", row.pForm});
        const ProgramRun run = runProgram(toScreen, sMaterials());
        EXPECT_EQ(run.iCode, 0);
        EXPECT_EQ(run.sError, "");
        EXPECT_EQ(run.sOut, row.pOut);
        const std::string sEnd = row.pForm == std::string("table") ? ".txt" : "." + std::string(row.pForm);
        std::vector<std::string> toFile = words;
        toFile.insert(toFile.end(), {"-o", (folder.path() / ("a" + sEnd)).string()});
        EXPECT_EQ(runProgram(toFile, sMaterials()).sOut, "");
        EXPECT_EQ(sText(folder.path() / ("a" + sEnd)), row.pOut);
    }
}

TEST(SqlVerb, StatementsFromStandardInputAndSeveralFiles) {
    const TestFolder folder;
    const std::string sA = folder.sFile("a.ifc", sMaterials());
    const std::string sB = folder.sFile("b.ifc", sMaterials());
    const ProgramRun run =
        runProgram({"sql", sA, sB, "-f", "csv"}, "SELECT count(*) AS n FROM IfcMaterial;\nSELECT 2;");
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.sOut, "n\r\n4\r\n2\r\n2\r\n");
    EXPECT_EQ(runProgram({"sql", sA, sA, "SELECT 1"}).sError, "oxaifc: sql: a file is named twice\n");
}

struct FailRow {
    const char* pRule;
    std::vector<std::string> behind;
    const char* pError;
};
const FailRow g_wrong[] = {
    {"no table", {"SELECT * FROM elemnt"}, "sql: there is no table elemnt; did you mean element?"},
    {"no column", {"SELECT nam FROM element"}, "sql: there is no column nam; did you mean name?"},
    {"no SQL", {"SELEC 1"}, "sql: near \"SELEC\": syntax error"},
    {"a change", {"DROP TABLE element"}, "sql: only SELECT is allowed"},
    {"endless",
     {"WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c) SELECT count(*) FROM c", "--timeout", "0.1"},
     "sql: takes longer than 100 ms"},
    {"an end that says nothing",
     {"SELECT 1", "-o", "a.b"},
     "sql: a.b: its end is none of .csv, .json and .txt; -f says the form"},
    {"nothing to ask", {}, "sql: STATEMENT is required"},
};

TEST(SqlVerb, WhatIsWrongIsOneLine) {
    for (const FailRow& row : g_wrong) {
        SCOPED_TRACE(row.pRule);
        std::vector<std::string> words{"sql", "-"};
        words.insert(words.end(), row.behind.begin(), row.behind.end());
        const ProgramRun run = runProgram(words, sMaterials());
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.sError, "oxaifc: " + std::string(row.pError) + "\n");
        EXPECT_EQ(run.sOut, "");
    }
}

TEST(SqlVerb, AnOutThatCannotBeWrittenIsLeft) {
    if (!boCanBe(OutputKind::FullDisk)) GTEST_SKIP() << "no device that takes nothing";
    const TestFolder folder;
    const std::string sOut = folder.sFile("old.csv", "old");
    EXPECT_EQ(runProgram({"sql", "-", "SELECT x", "-o", sOut}, sMaterials()).iCode, 2);
    EXPECT_EQ(sText(sOut), "old");
    EXPECT_EQ(runProgram({"sql", "-", "SELECT * FROM IfcMaterial"}, sMaterials(), OutputKind::FullDisk).iCode, 2);
    EXPECT_EQ(runProgram({"sql", "-", "SELECT * FROM IfcMaterial"}, sMaterials(), OutputKind::ClosedPipe).iCode, 0);
}

struct QuestionRow {
    const char* pRule;
    std::vector<std::string> list;   // behind "list FILE"
    const char* pSelect;
};
const QuestionRow g_questions[] = {
    {"doors with width and fire rating",
     {"IfcDoor", "-c", "Name,OverallWidth,Pset_DoorCommon.FireRating"},
     "SELECT d.Name, d.OverallWidth, p.value_text AS \"Pset_DoorCommon.FireRating\" FROM IfcDoor d LEFT JOIN property "
     "p "
     "ON p.element_id = d.id AND p.set_name = 'Pset_DoorCommon' AND p.name = 'FireRating' ORDER BY d.id"},
    {"elements per storey",
     {"IfcElement", "--group-by", "storey.Name", "--count"},
     "SELECT s.name AS \"storey.Name\", count(*) AS count FROM IfcElement i JOIN element e USING (id) LEFT JOIN storey "
     "s "
     "ON s.id = e.storey_id GROUP BY s.name ORDER BY s.name IS NULL, s.name"},
    {"walls without a property",
     {"IfcWall, Pset_WallCommon.FireRating=NULL", "-c", "id,Name"},
     "SELECT w.id, w.Name FROM IfcWall w LEFT JOIN property p ON p.element_id = w.id AND p.set_name = "
     "'Pset_WallCommon' "
     "AND p.name = 'FireRating' WHERE p.value_text IS NULL ORDER BY w.id"},
    {"elements by material",
     {"IfcWall, material!=NULL", "-c", "id,Name"},
     "SELECT DISTINCT w.id, w.Name FROM IfcWall w JOIN material m ON m.element_id = w.id ORDER BY w.id"},
    {"all of one class",
     {"IfcWindow", "-c", "id,class,GlobalId,Name"},
     "SELECT id, type AS class, guid AS GlobalId, name AS Name FROM element WHERE type = 'IfcWindow' ORDER BY id"},
    {"what stands in which storey",
     {"IfcDoor", "-c", "id,storey,container,type"},
     "SELECT e.id, s.name AS storey, c.name AS container, t.name AS type FROM IfcDoor d JOIN element e USING (id) LEFT "
     "JOIN element s ON s.id = e.storey_id LEFT JOIN element c ON c.id = e.container_id LEFT JOIN element t ON t.id = "
     "e.type_id ORDER BY e.id"},
    {"one element by its GlobalId", {"id=1", "-c", "id,class"}, "SELECT id, type AS class FROM element WHERE id = 1"},
    {"how many of a class",
     {"IfcElement", "--group-by", "class", "--count"},
     "SELECT type AS class, count(*) AS count FROM IfcElement GROUP BY type ORDER BY type"},
};

// The same answers as those of a query.
TEST(SqlVerb, AnswersWhatListAnswers) {
    std::vector<std::string> files{sExample("house-ifc4.ifc"), sExample("house-ifc2x3.ifc")};
    for (const char* pModel : {"revit2011-duplex-architecture.ifc", "archicad20-fzk-haus-ifc4.ifc"})
        if (const fs::path path = fs::path(OXA_SOURCE_DIR "/../shared/models") / pModel; fs::exists(path))
            files.push_back(path.string());
    for (const std::string& sFile : files)
        for (const QuestionRow& row : g_questions) {
            SCOPED_TRACE(sFile + ": " + row.pRule);
            std::vector<std::string> words{"list", sFile};
            words.insert(words.end(), row.list.begin(), row.list.end());
            words.insert(words.end(), {"-f", "csv"});
            const ProgramRun sql = runProgram({"sql", sFile, row.pSelect, "-f", "csv"});
            const ProgramRun list = runProgram(words);
            EXPECT_TRUE(list.sError.starts_with(sql.sError)) << sql.sError;   // it has hints behind that
            EXPECT_EQ(sql.sOut, list.sOut);
        }
}

// At a terminal, which "script" gives.
TEST(SqlVerb, APromptTakesStatementsAndCommands) {
    if (std::system("script --version > /dev/null 2>&1") != 0) GTEST_SKIP() << "there is no program \"script\"";
    const TestFolder folder;
    const std::string sFile = folder.sFile("a.ifc", sMaterials());
    const std::string sInput = folder.sFile("input", ".schema IfcMaterial\n.tabels\nSELECT Name\nFROM IfcMaterial;\n"
                                                     "SELECT x;\nSELECT 1 AS one;\n.quit\n");
    const std::string sOut = (folder.path() / "out").string();
    const std::string sCommand =
        "script -qec '" OXAIFC_PROGRAM " sql " + sFile + "' /dev/null < " + sInput + " > " + sOut;
    EXPECT_EQ(std::system(sCommand.c_str()), 0);
    const std::string sShown = sText(sOut);
    for (const char* pText : {"SELECT over ", "CREATE TABLE \"IfcMaterial\" (", "    \"Name\" TEXT,",
                              "oxaifc: there is no .tabels; there are: .tables, .schema, .help, .quit", "...> ",
                              "Name\r\nOak\r\n=Elm\r\n", "oxaifc: there is no column x", "one\r\n  1\r\n"})
        EXPECT_NE(sShown.find(pText), std::string::npos) << pText << "\n" << sShown;
}

}   // namespace
}   // namespace oxa::test
