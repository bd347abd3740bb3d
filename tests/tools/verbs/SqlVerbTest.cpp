// SPDX-License-Identifier: Apache-2.0
// "oxaifc sql": forms, the questions that "list" answers, the prompt, and what goes wrong.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <sstream>
#include <utility>

#include <gtest/gtest.h>

#include "tools/ProgramRun.h"
#include "tools/WrittenFile.h"

namespace oxa::test {
namespace {

namespace fs = std::filesystem;

const std::string& sSqlMaterials() {
    static const std::string sFile = sExchangeFile("IFC4", "#1=IFCMATERIAL('Oak',$,$);\n#2=IFCMATERIAL('=Elm',$,$);\n");
    return sFile;
}

struct SqlFormRow {
    const char* pForm;
    const char* pOut;
};
const SqlFormRow g_sqlForms[] = {
    {"table", "id  Name  w\n 1  Oak   0.5\n 2  =Elm    1\n"},
    {"csv", "id,Name,w\r\n1,Oak,0.5\r\n2,'=Elm,1\r\n"},
    {"json", "[\n{\"id\":1,\"Name\":\"Oak\",\"w\":0.5},\n{\"id\":2,\"Name\":\"=Elm\",\"w\":1.0}\n]\n"},
};

TEST(SqlVerb, FormsOfAnAnswer) {
    const TestFolder folder;
    for (const SqlFormRow& row : g_sqlForms) {
        SCOPED_TRACE(row.pForm);
        const std::vector<std::string> words{"sql", "-", "SELECT id, Name, id / 2.0 AS w FROM IfcMaterial"};
        std::vector<std::string> toScreen = words;
        toScreen.insert(toScreen.end(), {"-f", row.pForm});
        const ProgramRun run = runProgram(toScreen, sSqlMaterials());
        EXPECT_EQ(run.iCode, 0);
        EXPECT_EQ(run.sError, "");
        EXPECT_EQ(run.sOut, row.pOut);
        const std::string sEnd = row.pForm == std::string("table") ? ".txt" : "." + std::string(row.pForm);
        std::vector<std::string> toFile = words;
        toFile.insert(toFile.end(), {"-o", (folder.path() / ("a" + sEnd)).string()});
        EXPECT_EQ(runProgram(toFile, sSqlMaterials()).sOut, "");
        EXPECT_EQ(sContent(folder.path() / ("a" + sEnd)), row.pOut);
    }
}

TEST(SqlVerb, StatementsFromStandardInputAndSeveralFiles) {
    const TestFolder folder;
    const std::string sA = folder.sFile("a.ifc", sSqlMaterials());
    const std::string sB = folder.sFile("b.ifc", sSqlMaterials());
    const ProgramRun run =
        runProgram({"sql", sA, sB, "-f", "csv"}, "SELECT count(*) AS n FROM IfcMaterial;\nSELECT 2;");
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.sOut, "n\r\n4\r\n2\r\n2\r\n");
    EXPECT_EQ(runProgram({"sql", sA, sA, "SELECT 1"}).sError, "oxaifc: sql: a file is named twice\n");
}

struct SqlFailRow {
    const char* pRule;
    std::vector<std::string> behind;
    const char* pError;
};
const SqlFailRow g_sqlWrong[] = {
    {"no table", {"SELECT * FROM elemnt"}, "sql: there is no table elemnt; did you mean element?"},
    {"no column", {"SELECT nam FROM element"}, "sql: there is no column nam; did you mean name?"},
    {"no SQL", {"SELEC 1"}, "sql: near \"SELEC\": syntax error"},
    {"a change", {"DROP TABLE element"}, "sql: only SELECT is allowed"},
    {"endless",
     {"WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c) SELECT count(*) FROM c", "--timeout", "0.1"},
     "sql: takes longer than 100 ms"},
    {"endless in one function",
     {"SELECT instr(printf('%.*c', 4000000, 'a'), printf('%.*c', 2000000, 'a') || 'b')", "--timeout", "0.1"},
     "sql: takes longer than 100 ms"},
    {"an end that says nothing",
     {"SELECT 1", "-o", "a.b"},
     "sql: a.b: its end is none of .csv, .tsv, .json, .ndjson, .xlsx and .txt; -f says the form"},
    {"nothing to ask", {}, "sql: STATEMENT is required"},
};

TEST(SqlVerb, WhatIsWrongIsOneLine) {
    for (const SqlFailRow& row : g_sqlWrong) {
        SCOPED_TRACE(row.pRule);
        std::vector<std::string> words{"sql", "-"};
        words.insert(words.end(), row.behind.begin(), row.behind.end());
        const ProgramRun run = runProgram(words, sSqlMaterials());
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.sError, "oxaifc: " + std::string(row.pError) + "\n");
        EXPECT_EQ(run.sOut, "");
    }
}

TEST(SqlVerb, AnOutThatCannotBeWrittenIsLeft) {
    if (!boCanBe(OutputKind::FullDisk)) GTEST_SKIP() << "no device that takes nothing";
    const TestFolder folder;
    const std::string sOut = folder.sFile("old.csv", "old");
    EXPECT_EQ(runProgram({"sql", "-", "SELECT x", "-o", sOut}, sSqlMaterials()).iCode, 2);
    EXPECT_EQ(sContent(sOut), "old");
    EXPECT_EQ(runProgram({"sql", "-", "SELECT * FROM IfcMaterial"}, sSqlMaterials(), OutputKind::FullDisk).iCode, 2);
    EXPECT_EQ(runProgram({"sql", "-", "SELECT * FROM IfcMaterial"}, sSqlMaterials(), OutputKind::ClosedPipe).iCode, 0);
}

struct QuestionRow {
    const char* pRule;
    std::vector<std::string> list;   // behind "list FILES"
    const char* pSelect;
};
// What people ask, by "list" and by SQL.
const QuestionRow g_questions[] = {
    {"doors with width and fire rating",
     {"IfcDoor", "-c", "Name,OverallWidth,Pset_DoorCommon.FireRating"},
     R"(SELECT d.Name, d.OverallWidth, p.value_text AS "Pset_DoorCommon.FireRating" FROM IfcDoor d
        LEFT JOIN property p ON p.element_id = d.id AND p.set_name = 'Pset_DoorCommon' AND p.name = 'FireRating'
        ORDER BY d.id)"},
    {"everything about one element",
     {"IfcDoor", "-c",
      "id,class,GlobalId,Name,Description,ObjectType,Tag,type.Name,container.Name,storey.Name,"
      "building.Name"},
     R"(SELECT e.id, e.type AS class, e.guid AS GlobalId, e.name AS Name, e.description AS Description,
               e.object_type AS ObjectType, e.tag AS Tag, t.name AS "type.Name", c.name AS "container.Name",
               s.name AS "storey.Name", b.name AS "building.Name"
        FROM IfcDoor d JOIN element e USING (id) LEFT JOIN element t ON t.id = e.type_id
        LEFT JOIN element c ON c.id = e.container_id LEFT JOIN storey s ON s.id = e.storey_id
        LEFT JOIN element b ON b.id = s.building_id ORDER BY e.id)"},
    {"elements per storey",
     {"IfcElement", "--group-by", "storey.Name", "--count"},
     R"(SELECT s.name AS "storey.Name", count(*) AS count FROM IfcElement i JOIN element e USING (id)
        LEFT JOIN storey s ON s.id = e.storey_id GROUP BY s.name ORDER BY s.name IS NULL, s.name)"},
    {"which elements lack a property",
     {"IfcWall, Pset_WallCommon.FireRating=NULL", "-c", "id,Name"},
     R"(SELECT w.id, w.Name FROM IfcWall w LEFT JOIN property p ON p.element_id = w.id
        AND p.set_name = 'Pset_WallCommon' AND p.name = 'FireRating' WHERE p.value_text IS NULL ORDER BY w.id)"},
    {"quantities by material",
     {"IfcWall", "--group-by", "material.Name", "--count", "--sum", "Qto_WallBaseQuantities.GrossVolume"},
     R"sql(WITH named AS (SELECT w.id, (SELECT group_concat(name, ', ') FROM
                         (SELECT DISTINCT name FROM material m WHERE m.element_id = w.id AND name IS NOT NULL)) AS name
                       FROM IfcWall w)
        SELECT n.name AS "material.Name", count(*) AS count,
               CASE WHEN count(q.value) THEN CAST(printf('%.15g', sum(q.value)) AS REAL) END AS "sum(Qto_WallBaseQuantities.GrossVolume)"
        FROM named n LEFT JOIN quantity q ON q.element_id = n.id AND q.set_name = 'Qto_WallBaseQuantities'
             AND q.name = 'GrossVolume'
        GROUP BY n.name ORDER BY n.name IS NULL, n.name)sql"},
    {"elements by material",
     {"IfcWall, material!=NULL", "-c", "id,Name"},
     "SELECT DISTINCT w.id, w.Name FROM IfcWall w JOIN material m ON m.element_id = w.id ORDER BY w.id"},
    {"one storey out with all that stands in or below it",
     {"IfcElement, location=/.*[eo].*/", "-c", "id,class"},
     R"(WITH RECURSIVE up(id, above) AS (SELECT id, parent_id FROM element
            UNION SELECT u.id, e.parent_id FROM up u JOIN element e ON e.id = u.above)
        SELECT DISTINCT i.id, i.type AS class FROM IfcElement i JOIN up u ON u.id = i.id
        JOIN element s ON s.id = u.above
        WHERE (instr(s.name, 'e') OR instr(s.name, 'o')) AND s.id IN (SELECT container_id FROM element) ORDER BY i.id)"},
    {"a table for a spreadsheet",
     {"IfcWindow", "-c", "id,class,GlobalId,Name"},
     "SELECT id, type AS class, guid AS GlobalId, name AS Name FROM element WHERE type = 'IfcWindow' ORDER BY id"},
    {"what stands in which storey",
     {"IfcDoor", "-c", "id,storey,container,type"},
     R"(SELECT e.id, s.name AS storey, c.name AS container, t.name AS type FROM IfcDoor d JOIN element e USING (id)
        LEFT JOIN element s ON s.id = e.storey_id LEFT JOIN element c ON c.id = e.container_id
        LEFT JOIN element t ON t.id = e.type_id ORDER BY e.id)"},
    {"any question: by size",
     {"IfcDoor, OverallWidth>=0.9", "-c", "id,OverallWidth"},
     "SELECT id, OverallWidth FROM IfcDoor WHERE OverallWidth >= 0.9 ORDER BY id"},
    {"one element by its number", {"id=1", "-c", "id,class"}, "SELECT id, type AS class FROM element WHERE id = 1"},
    {"what is in it",
     {"IfcElement", "--group-by", "class", "--count"},
     "SELECT type AS class, count(*) AS count FROM IfcElement GROUP BY type ORDER BY type"},
};

// "list" and "sql" over these files; the rows as CSV.
void vSameAnswer(const std::vector<std::string>& files, const std::vector<std::string>& list,
                 const std::string& sSelect) {
    std::vector<std::string> asked{"list"};
    asked.insert(asked.end(), files.begin(), files.end());
    asked.insert(asked.end(), list.begin(), list.end());
    asked.insert(asked.end(), {"-f", "csv"});
    std::vector<std::string> selected{"sql"};
    selected.insert(selected.end(), files.begin(), files.end());
    selected.insert(selected.end(), {sSelect, "-f", "csv"});
    const ProgramRun told = runProgram(asked);
    const ProgramRun run = runProgram(selected);
    EXPECT_LT(told.iCode, 2) << told.sError;
    EXPECT_TRUE(told.sError.starts_with(run.sError)) << run.sError;   // it has hints behind that
    EXPECT_EQ(run.sOut, told.sOut);
}

TEST(SqlVerb, AnswersWhatListAnswers) {
    std::vector<std::string> files{sExample("house-ifc4.ifc"), sExample("house-ifc2x3.ifc")};
    for (const char* pModel : {"revit2011-duplex-architecture.ifc", "archicad20-fzk-haus-ifc4.ifc"})
        if (const fs::path path = fs::path(OXA_SOURCE_DIR "/../shared/models") / pModel; fs::exists(path))
            files.push_back(path.string());
    for (const std::string& sFile : files) {
        SCOPED_TRACE(sFile);
        std::string sStatements, sExpected;
        for (const QuestionRow& row : g_questions) {
            std::vector<std::string> words{"list", sFile, "-f", "csv"};
            words.insert(words.begin() + 2, row.list.begin(), row.list.end());
            sExpected.append(row.pRule).append("\r\n").append(runProgram(words).sOut);
            sStatements.append("SELECT 1 AS \"")
                .append(row.pRule)
                .append("\" WHERE 0;\n")
                .append(row.pSelect)
                .append(";\n");
        }
        EXPECT_EQ(runProgram({"sql", sFile, "-f", "csv"}, sStatements).sOut, sExpected);
    }
}

// Of two states of a model: what differs, which change touched which walls; and both as one.
TEST(SqlVerb, AnswersOverTwoFiles) {
    const TestFolder folder;
    const std::string sA = sExample("house-ifc4.ifc");
    const std::string sB = (folder.path() / "b.ifc").string();
    ASSERT_EQ(runProgram({"set", sA, "IfcWall", "Pset_WallCommon.FireRating=F 30", sB}).iCode, 0);
    vSameAnswer({sA, sB}, {"IfcWall", "-c", "id,Name"}, "SELECT file, id, Name FROM IfcWall");
    vSameAnswer({sA, sB}, {"IfcElement", "--group-by", "class", "--count"},
                "SELECT file, type AS class, count(*) AS count FROM IfcElement GROUP BY file, type ORDER BY file = '" +
                    sB + "', type");
    const std::string sChanged =
        "SELECT a.guid AS GlobalId FROM element a JOIN element b ON b.guid = a.guid AND b.file = '" + sB +
        "' LEFT JOIN property p ON p.file = a.file AND p.element_id = a.id AND p.name = 'FireRating' LEFT JOIN "
        "property q ON "
        "q.file = b.file AND q.element_id = b.id AND q.name = 'FireRating' WHERE a.file = '" +
        sA +
        "' AND p.value_text IS NOT q.value_text AND b.type LIKE 'IfcWall%' AND b.type NOT LIKE '%Type' ORDER BY b.id";
    const ProgramRun changed = runProgram({"sql", sA, sB, sChanged, "-f", "csv"});
    const ProgramRun expected =
        runProgram({"list", sB, "IfcWall, Pset_WallCommon.FireRating='F 30'", "-c", "GlobalId", "-f", "csv"});
    EXPECT_EQ(changed.sOut, expected.sOut);
    EXPECT_GT(std::ranges::count(changed.sOut, '\n'), 1);
    const std::string sDiff = runProgram({"diff", sA, sB, "--only", "IfcWall", "--json"}).sOut;
    std::istringstream guids(changed.sOut);
    std::string sGuid;
    for (std::getline(guids, sGuid); std::getline(guids, sGuid);)
        EXPECT_NE(sDiff.find(sGuid.substr(0, 22)), std::string::npos) << sGuid;
}

// What is wrong with a file, and who wrote it.
TEST(SqlVerb, AnswersWhatCheckAndInfoAnswer) {
    const std::string sBroken = sExchangeFile("IFC4", "#1=IFCTEAPOT();\n#2=IFCMATERIAL(5,$,$);\n#3=IFCWALL(#9);\n");
    const Json check = runProgram({"check", "-", "--json"}, sBroken).json();
    const ProgramRun run = runProgram({"sql", "-", "SELECT key, line FROM error", "-f", "json"}, sBroken);
    EXPECT_EQ(run.iCode, 1);
    std::multiset<std::pair<std::string, std::int64_t>> told, expected;
    for (const Json& row : run.json()) told.emplace(row["key"], row["line"]);
    for (const Json& row : check["records"]) expected.emplace(row["key"], row["line"]);
    EXPECT_EQ(told, expected);
    EXPECT_GE(told.size(), 3U);
    EXPECT_EQ(runProgram({"sql", "-", "SELECT schema, originating_system, organization FROM file", "-f", "csv"},
                         sSqlMaterials())
                  .sOut,
              "schema,originating_system,organization\r\nIFC4,s,o\r\n");
}

// At a terminal, which "script" gives.
TEST(SqlVerb, APromptTakesStatementsAndCommands) {
    if (std::system("script --version > /dev/null 2>&1") != 0) GTEST_SKIP() << "there is no program \"script\"";
    const TestFolder folder;
    const std::string sFile = folder.sFile("a.ifc", sSqlMaterials());
    const std::string sInput = folder.sFile(
        "input",
        ".schema IfcMaterial\n.tables\n.tabels\n.schema\n.schema IfcMateria\n.help\nSELECT Name\nFROM IfcMaterial;\n"
        "SELECT x;\nSELECT 1 AS one;\n.quit\n");
    const std::string sOut = (folder.path() / "out").string();
    const std::string sCommand =
        "script -qec '" OXAIFC_PROGRAM " sql " + sFile + "' /dev/null < " + sInput + " > " + sOut;
    EXPECT_EQ(std::system(sCommand.c_str()), 0);
    const std::string sShown = sContent(sOut);
    for (const char* pText :
         {"SELECT over ", "CREATE TABLE \"IfcMaterial\" (", "    \"Name\" TEXT,",
          "element          An object, a type object or a context, as the project is one\r\n",
          "and each class of the schema, as IfcWall\r\n", "CREATE TABLE \"error\" (",
          "oxaifc: there is no table IfcMateria; did you mean IfcMaterial", "...> ", ".quit             ends\r\n",
          "oxaifc: there is no .tabels; there are: .tables, .schema, .help, .quit", "...> ", "Name\r\nOak\r\n=Elm\r\n",
          "oxaifc: there is no column x", "one\r\n  1\r\n"})
        EXPECT_NE(sShown.find(pText), std::string::npos) << pText << "\n" << sShown;
}

}   // namespace
}   // namespace oxa::test
