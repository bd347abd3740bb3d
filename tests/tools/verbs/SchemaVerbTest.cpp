// SPDX-License-Identifier: Apache-2.0
// "oxaifc schema": entities and types of built-in schemas and of EXPRESS files.

#include <gtest/gtest.h>

#include "tools/ProgramRun.h"

namespace oxa::test {
namespace {

constexpr const char* g_pSchemaExpress =
    "SCHEMA TEASHOP;\n"
    "TYPE Label = STRING(20); END_TYPE;\n"
    "TYPE ShortLabel = Label; END_TYPE;\n"
    "TYPE Tea = ENUMERATION OF (OOLONG, ASSAM); END_TYPE;\n"
    "TYPE Thing = SELECT (Pot, Label); END_TYPE;\n"
    "ENTITY Root ABSTRACT SUPERTYPE OF (ONEOF (Pot, Shelf)); Name : OPTIONAL Label; END_ENTITY;\n"
    "ENTITY Pot SUBTYPE OF (Root); Volume : REAL; Teas : LIST [1:?] OF UNIQUE Tea;\n"
    "  INVERSE StandsOn : SET [0:1] OF Shelf FOR Pots; END_ENTITY;\n"
    "ENTITY Shelf SUBTYPE OF (Root); Pots : SET [0:?] OF Pot; END_ENTITY;\n"
    "END_SCHEMA;\n";

ProgramRun runTeashop(std::vector<std::string> words) {
    words.insert(words.begin(), {"schema", "--file", "-"});
    return runProgram(words, g_pSchemaExpress);
}

Json attribute(const char* pName, bool boOptional, const char* pType) {
    return {{"name", pName}, {"optional", boOptional}, {"type", pType}};
}

TEST(SchemaVerb, AllEntitiesAsJson) {
    const ProgramRun run = runTeashop({"--all", "--json"});
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.sError, "");
    const Json name = attribute("Name", true, "Label");
    const Json none = Json::array();
    const Json expected = Json::array({
        {{"name", "Pot"},
         {"supertype", "Root"},
         {"abstract", false},
         {"attributes", Json::array({name, attribute("Volume", false, "REAL"),
                                     attribute("Teas", false, "LIST [1:?] OF UNIQUE Tea")})},
         {"inverses", Json::array({{{"name", "StandsOn"}, {"entity", "Shelf"}, {"attribute", "Pots"}}})}},
        {{"name", "Root"},
         {"supertype", nullptr},
         {"abstract", true},
         {"attributes", Json::array({name})},
         {"inverses", none}},
        {{"name", "Shelf"},
         {"supertype", "Root"},
         {"abstract", false},
         {"attributes", Json::array({name, attribute("Pots", false, "SET [0:?] OF Pot")})},
         {"inverses", none}},
    });
    EXPECT_EQ(run.json(), expected);
    EXPECT_EQ(runTeashop({"pot", "--json"}).json(), expected[0]);
}

struct TextRow {
    const char* pRule;
    std::vector<std::string> words;
    const char* pOut;
};
const TextRow g_textRows[] = {
    {"a summary",
     {},
     "schema        TEASHOP\nentities      3, abstract 1\ntypes         2\nenumerations  1\nselects       "
     "1\n"},
    {"an abstract entity",
     {"ROOT"},
     "Root: abstract entity\n  subtypes: Pot Shelf\n  attributes:\n"
     "     1 Name : OPTIONAL Label\n"},
    {"what is inherited",
     {"Pot"},
     "Pot: entity\n  supertypes: Root\n  attributes:\n     1 Name : OPTIONAL Label   (Root)\n"
     "     2 Volume : REAL\n     3 Teas : LIST [1:?] OF UNIQUE Tea\n  inverses:\n"
     "       StandsOn : Shelf FOR Pots\n"},
    {"a base type", {"Label"}, "Label: type\n  declared as: STRING(20)\n"},
    {"a type of a type", {"shortlabel"}, "ShortLabel: type\n  declared as: Label\n"},
    {"an enumeration, as declared", {"Tea"}, "Tea: enumeration\n  enumerators:\n    OOLONG\n    ASSAM\n"},
    {"a select", {"Thing"}, "Thing: select\n  members:\n    Pot\n    Label\n"},
};

TEST(SchemaVerb, TextOfEachKind) {
    for (const TextRow& row : g_textRows) {
        SCOPED_TRACE(row.pRule);
        const ProgramRun run = runTeashop(row.words);
        EXPECT_EQ(run.iCode, 0);
        EXPECT_EQ(run.sOut, row.pOut);
        EXPECT_EQ(run.sError, "");
    }
}

TEST(SchemaVerb, JsonOfEachKindOfType) {
    EXPECT_EQ(runTeashop({"Label", "--json"}).json(),
              (Json{{"name", "Label"}, {"kind", "type"}, {"type", "STRING(20)"}}));
    EXPECT_EQ(runTeashop({"Tea", "--json"}).json(),
              (Json{{"name", "Tea"}, {"kind", "enumeration"}, {"enumerators", {"OOLONG", "ASSAM"}}}));
    EXPECT_EQ(runTeashop({"Thing", "--json"}).json(),
              (Json{{"name", "Thing"}, {"kind", "select"}, {"members", {"Pot", "Label"}}}));
    EXPECT_EQ(
        runTeashop({"--json"}).json(),
        (Json{
            {"name", "TEASHOP"}, {"entities", 3}, {"abstract", 1}, {"types", 2}, {"enumerations", 1}, {"selects", 1}}));
}

struct BuiltInRow {
    const char* pName;
    const char* pOwnName;
    std::size_t iEntities;
};
const BuiltInRow g_builtIn[] = {
    {"IFC2X3", "IFC2X3", 653},
    {"IFC2X3_TC1", "IFC2X3", 653},
    {"ifc4", "IFC4", 776},
    {"IFC4X3_ADD2", "IFC4X3_ADD2", 876},
};

TEST(SchemaVerb, BuiltInSchemasByAnyOfTheirNames) {
    for (const BuiltInRow& row : g_builtIn) {
        SCOPED_TRACE(row.pName);
        const Json summary = runProgram({"schema", row.pName, "--json"}).json();
        EXPECT_EQ(summary["name"], row.pOwnName);
        EXPECT_EQ(summary["entities"], row.iEntities);
        EXPECT_EQ(runProgram({"schema", row.pName, "--all", "--json"}).json().size(), row.iEntities);
    }
}

TEST(SchemaVerb, WallHasItsNineAttributes) {
    const Json wall = runProgram({"schema", "IFC4", "ifcwall", "--json"}).json();
    EXPECT_EQ(wall["name"], "IfcWall");
    EXPECT_EQ(wall["supertype"], "IfcBuildingElement");
    EXPECT_EQ(wall["abstract"], false);
    ASSERT_EQ(wall["attributes"].size(), 9U);
    EXPECT_EQ(wall["attributes"][0], attribute("GlobalId", false, "IfcGloballyUniqueId"));
    EXPECT_EQ(wall["attributes"][8], attribute("PredefinedType", true, "IfcWallTypeEnum"));
    EXPECT_EQ(wall["inverses"].size(), 24U);
}

TEST(SchemaVerb, FaultyExpressIsToldWithItsPlace) {
    const TestFolder folder;
    const std::string sPath = folder.sFile("bad.exp", "SCHEMA A;\n\nENTITY B; C : ; END_ENTITY;\nEND_SCHEMA;\n");
    const ProgramRun run = runProgram({"schema", "--file", sPath});
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.sOut, "");
    EXPECT_TRUE(run.sError.starts_with("oxaifc: " + sPath + ":3:15: ")) << run.sError;
    EXPECT_EQ(run.sError.find('\n'), run.sError.size() - 1);
}

}   // namespace
}   // namespace oxa::test
