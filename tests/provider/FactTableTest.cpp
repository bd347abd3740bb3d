// SPDX-License-Identifier: Apache-2.0
// Fact tables: what is written reads back as the same schema; faults have their place.
#include "provider/FactTable.h"

#include "ExpressTestSupport.h"
#include "provider/GraphBuilder.h"

namespace {

using namespace oxa::test;
using namespace oxa::ifc::def::express;

const char* const g_sExpress =
    "TYPE IfcLabel = STRING(255); END_TYPE; TYPE IfcName = IfcLabel; END_TYPE;\n"
    "TYPE IfcEnum = ENUMERATION OF (B, A); END_TYPE; TYPE IfcSelect = SELECT (IfcName, IfcActor); END_TYPE;\n"
    "ENTITY IfcRoot ABSTRACT SUPERTYPE; Name : OPTIONAL IfcName; END_ENTITY;\n"
    "ENTITY IfcActor SUBTYPE OF (IfcRoot); Lists : LIST [1:?] OF UNIQUE SET OF IfcLabel;\n"
    " INVERSE Acts : SET [0:?] OF IfcRel FOR Related; First : IfcRel FOR Related; Free : BAG OF IfcRel FOR "
    "Related;\n"
    "END_ENTITY;\n"
    "ENTITY IfcRel; Related : IfcActor; END_ENTITY;\n"
    "ENTITY IfcSub SUBTYPE OF (IfcActor); SELF\\IfcRoot.Name : IfcName; SELF\\IfcActor.Lists : OPTIONAL LIST OF "
    "IfcName;\n UNIQUE UR1 : Name, SELF\\IfcActor.Lists; Name; END_ENTITY;\n"
    "ENTITY IfcDerived SUBTYPE OF (IfcSub); DERIVE SELF\\IfcActor.Lists : IfcLabel := 'a;'; Own : IfcLabel := '';\n"
    " UNIQUE UR2 : Own; END_ENTITY;\n";

const char* const g_sTable = "schema TEST\n"
                             "enum IfcEnum B A\n"
                             "type IfcLabel STRING(255)\n"
                             "type IfcName IfcLabel\n"
                             "select IfcSelect IfcName IfcActor\n"
                             "entity IfcActor IfcRoot\n"
                             ".Lists LIST [1:?] OF UNIQUE SET OF IfcLabel\n"
                             "<Acts IfcRel Related SET [0:?]\n"
                             "<First IfcRel Related\n"
                             "<Free IfcRel Related SET\n"
                             "entity IfcDerived IfcSub\n"
                             "*Lists\n"
                             "!UR2 Own\n"
                             "entity IfcRel\n"
                             ".Related IfcActor\n"
                             "abstract IfcRoot\n"
                             "?Name IfcName\n"
                             "entity IfcSub IfcActor\n"
                             "=Name IfcName\n"
                             "~Lists LIST OF IfcName\n"
                             "!UR1 Name Lists\n"
                             "!- Name\n";

// The graph of tables, the base first; the test fails when there is none.
std::unique_ptr<oxa::ifc::def::SchemaPset> pGraph(const std::vector<const char*>& tables) {
    SchemaDeclaration declaration;
    std::vector<oxa::ifc::SchemaMessage> messages;
    for (const char* sTable : tables) EXPECT_TRUE(boReadFactTable(sTable, declaration, messages));
    auto pSchema = GraphBuilder(declaration, messages).pBuild();
    EXPECT_EQ(sMessages(messages), "");
    return pSchema;
}

TEST(FactTable, HoldsTheFactsInTheOrderOfNames) {
    EXPECT_EQ(sFactTable(Loaded(g_sExpress).schema(), "TEST"), g_sTable);
}

TEST(FactTable, ReadsBackAsTheSameSchema) {
    const auto pSchema = pGraph({g_sTable});
    ASSERT_NE(pSchema, nullptr);
    EXPECT_EQ(sFactTable(*pSchema, "TEST"), g_sTable);
    EXPECT_EQ(pSchema->sName, "TEST");
    EXPECT_EQ(sFactTableBase(g_sTable), "");
}

TEST(FactTable, WithABaseHoldsTheDifferences) {
    const char* sNew =
        "TYPE IfcLabel = STRING; END_TYPE; TYPE IfcName = IfcLabel; END_TYPE; TYPE IfcAdded = REAL; "
        "END_TYPE;\n"
        "TYPE IfcSelect = SELECT (IfcName, IfcActor); END_TYPE;\n"
        "ENTITY IfcRoot; Name : OPTIONAL IfcName; END_ENTITY;\n"
        "ENTITY IfcActor SUBTYPE OF (IfcRoot); Lists : LIST [1:?] OF UNIQUE SET OF IfcLabel; END_ENTITY;\n";
    const char* sDifferences = "schema NEW\n"
                               "base TEST\n"
                               "drop IfcEnum IfcDerived IfcRel IfcSub\n"
                               "type IfcAdded REAL\n"
                               "type IfcLabel STRING\n"
                               "entity IfcActor IfcRoot\n"
                               ".Lists LIST [1:?] OF UNIQUE SET OF IfcLabel\n"
                               "entity IfcRoot\n"
                               "?Name IfcName\n";
    const Loaded base(g_sExpress);
    const Loaded other(sNew);
    EXPECT_EQ(sFactTable(other.schema(), "NEW", &base.schema()), sDifferences);
    EXPECT_EQ(sFactTableBase(sDifferences), "TEST");
    EXPECT_EQ(sFactTableBase("schema S\nentity E\nbase T\n"), "") << "it stands behind the name or nowhere";
    const auto pSchema = pGraph({g_sTable, sDifferences});
    ASSERT_NE(pSchema, nullptr);
    EXPECT_EQ(pSchema->sName, "NEW");
    EXPECT_EQ(sFactTable(*pSchema, "NEW"), sFactTable(other.schema(), "NEW"));
}

// The ordinals of types, and with them the order of the entities of a model, go by the names, whichever table has them.
TEST(FactTable, WithABaseNumbersTheTypesByName) {
    const auto pSchema = pGraph(
        {"schema A\nentity B\nentity F\nentity D B\n", "schema C\nbase A\nentity A\nentity C B\nentity E\nentity G\n"});
    ASSERT_NE(pSchema, nullptr);
    std::vector<std::string> byOrdinal(7);
    for (const Schema::Record& record : pSchema->objects)
        byOrdinal.at(pAsEntity(record.pObject)->iTypeOrdinal -
                     pSchema->pEntityFromName(ObjectName("A"))->iTypeOrdinal) = record.pObject->sName;
    EXPECT_EQ(byOrdinal, (std::vector<std::string>{"A", "B", "C", "D", "E", "F", "G"}));
}

// Whatever the order of its lines, a table declares the same.
TEST(FactTable, DeclaresByName) {
    const char* const g_tables[] = {"schema S\ntype A REAL\nenum B X\ntype C A\nentity D\nentity E\nentity F D\n",
                                    "schema S\nentity F D\ntype C A\nentity D\nenum B X\nentity E\ntype A REAL\n"};
    for (const char* sTable : g_tables) {
        SCOPED_TRACE(sTable);
        SchemaDeclaration declaration;
        std::vector<oxa::ifc::SchemaMessage> messages;
        EXPECT_TRUE(boReadFactTable(sTable, declaration, messages));
        std::string sNames;
        for (const TypeDeclaration& type : declaration.types) sNames.append(type.name.text) += ' ';
        for (const EntityDeclaration& entity : declaration.entities) sNames.append(entity.name.text) += ' ';
        EXPECT_EQ(sNames, "A B C D E F ");
    }
}

TEST(FactTable, PassesOverRemarksAndEmptyLines) {
    const auto pSchema = pGraph({"# remark\n\nschema S\n\n# entity X\nentity E"});
    ASSERT_NE(pSchema, nullptr);
    EXPECT_EQ(pSchema->objects.size(), 1U);
}

TEST(FactTable, FaultsHaveTheirPlace) {
    struct Row {
        const char* sTable;
        const char* sMessages;
    };
    const Row rows[] = {
        {"", "1:1 a table begins with its schema's name"},
        {"schema", "1:7 a name expected, the end of the line found"},
        {"schema S\nfoo X", "2:1 \"foo\" begins no line of a fact table"},
        {"schema S\n.A REAL", "2:1 an attribute stands below its entity"},
        {"schema S\n<A E B", "2:1 an attribute stands below its entity"},
        {"schema S\nentity E\n.A LIST REAL", "3:9 OF expected, \"REAL\" found"},
        {"schema S\nentity E\n?A", "3:3 a type expected, the end of the text found"},
        {"schema S\nentity E\n<A E", "3:5 a name expected, the end of the line found"},
        {"schema S\ntype T REAL REAL", "2:13 the end of the type expected, \"REAL\" found"},
        {"schema S\nentity", "2:7 a name expected, the end of the line found"},
        {"schema S\nentity E\n.A Unknown\n?B unknown",
         "3:4 \"Unknown\" is not declared\n4:4 \"unknown\" is not declared"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sTable);
        SchemaDeclaration declaration;
        std::vector<oxa::ifc::SchemaMessage> messages;
        EXPECT_FALSE(boReadFactTable(row.sTable, declaration, messages) &&
                     GraphBuilder(declaration, messages).pBuild());
        EXPECT_EQ(sMessages(messages), row.sMessages);
    }
}

// In pieces of whole lines a table reads as in one, the places of faults with it.
TEST(FactTable, MayComeInPieces) {
    const std::string_view text = g_sTable;
    std::vector<std::string_view> pieces;
    for (std::size_t iAt = 0; iAt < text.size();) {
        const std::size_t iEnd = text.find('\n', std::min(iAt + 50, text.size() - 1)) + 1;
        pieces.push_back(text.substr(iAt, iEnd - iAt));
        iAt = iEnd;
    }
    ASSERT_GT(pieces.size(), 5U);
    SchemaDeclaration declaration;
    std::vector<oxa::ifc::SchemaMessage> messages;
    ASSERT_TRUE(boReadFactTable(pieces, declaration, messages));
    const auto pSchema = GraphBuilder(declaration, messages).pBuild();
    ASSERT_NE(pSchema, nullptr);
    EXPECT_EQ(sFactTable(*pSchema, "TEST"), g_sTable);

    const std::string_view faulty[] = {"schema S\n", "", "entity E\n.A REAL\n", ".B Unknown\n"};
    SchemaDeclaration second;
    ASSERT_TRUE(boReadFactTable(faulty, second, messages));
    EXPECT_EQ(GraphBuilder(second, messages).pBuild(), nullptr);
    EXPECT_EQ(sMessages(messages), "4:4 \"Unknown\" is not declared");
}

}   // namespace
