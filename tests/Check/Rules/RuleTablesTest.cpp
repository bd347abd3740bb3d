// SPDX-License-Identifier: Apache-2.0
// The rules that are built in: what they are, that all of them can be evaluated, and that they are those of the published
// texts, where these are at hand.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

#include "Check/Express/Difference.h"
#include "Check/Express/Printer.h"
#include "Check/Rules/ExpressRun.h"

namespace {

using namespace oxa::check;
using oxa::ifc::SchemaLoader;

struct RuleTableRow {
    const char* sSchema;
    const char* sText;
    std::size_t iTypes, iEntities, iUniques, iGlobals;
};
void PrintTo(const RuleTableRow& row, std::ostream* pStream) { *pStream << row.sSchema; }

// As text, declarations in the order of their names: what a schema has more than the base of its table stands anywhere.
std::string sSorted(express::SchemaRules rules) {
    const auto before = [](const auto& a, const auto& b) { return a.sName < b.sName; };
    std::sort(rules.types.begin(), rules.types.end(), before);
    std::sort(rules.entities.begin(), rules.entities.end(), before);
    std::stable_sort(rules.outer.blocks.begin(), rules.outer.blocks.end(), before);
    return express::sText(rules);
}

class RuleTablesTest : public testing::TestWithParam<RuleTableRow> {};

TEST_P(RuleTablesTest, AllRulesCanBeEvaluated) {
    const rules::SchemaProgram program = rules::programOf(*SchemaLoader::pBuiltIn(GetParam().sSchema));
    ASSERT_NE(program.pProgram, nullptr);
    EXPECT_EQ(program.pOwned, nullptr);
    RuleTableRow found{GetParam().sSchema, nullptr, 0, 0, 0, 0};
    for (const rules::Rule& rule : program.pProgram->rules) {
        EXPECT_EQ(rule.code.sFault, "") << rule.sName;
        EXPECT_EQ(rule.pOwner == nullptr, rule.sort == rules::Rule::Sort::Global) << rule.sName;
        found.iTypes += rule.sort == rules::Rule::Sort::Type;
        found.iEntities += rule.sort == rules::Rule::Sort::Entity;
        found.iUniques += rule.sort == rules::Rule::Sort::Unique;
        found.iGlobals += rule.sort == rules::Rule::Sort::Global;
    }
    for (const rules::Routine& routine : program.pProgram->routines) EXPECT_EQ(routine.sFault, "") << routine.sName;
    for (const rules::DerivedAttribute& derived : program.pProgram->derived) {
        EXPECT_EQ(derived.code.sFault, "") << derived.code.sName;
        EXPECT_NE(derived.pOwner, nullptr) << derived.code.sName;
    }
    for (const rules::GlobalRule& rule : program.pProgram->globals) EXPECT_EQ(rule.code.sFault, "") << rule.sName;
    EXPECT_EQ(found.iTypes, GetParam().iTypes);
    EXPECT_EQ(found.iEntities, GetParam().iEntities);
    EXPECT_EQ(found.iUniques, GetParam().iUniques);
    EXPECT_EQ(found.iGlobals, GetParam().iGlobals);
}

TEST_P(RuleTablesTest, TableIsThatOfThePublishedText) {
    const char* sFolder = std::getenv("OXAIFC_SCHEMAS");
    const std::filesystem::path folder = sFolder ? sFolder : OXA_SOURCE_DIR "/../shared/schemas";
    std::ifstream stream(folder / GetParam().sText, std::ios::binary);
    if (!stream) GTEST_SKIP() << GetParam().sText << " is not at hand";
    const std::string sText(std::istreambuf_iterator<char>(stream), {});
    std::vector<oxa::ifc::SchemaMessage> messages;
    express::SchemaRules published;
    ASSERT_TRUE(express::Parser(sText, messages).boReadSchema(published));
    // One text has no name for its schema.
    const std::string sNamed = express::sRenamed(sText, published.sName, GetParam().sSchema);
    published = {};
    ASSERT_TRUE(express::Parser(sNamed, messages).boReadSchema(published));
    published.sName = GetParam().sSchema;
    express::SchemaRules table;
    std::string sAgainst;
    ASSERT_TRUE(rules::boReadTable(GetParam().sSchema, table, sAgainst)) << sAgainst;
    EXPECT_TRUE(sSorted(std::move(published)) == sSorted(std::move(table)))
        << "schemas/ is older than the texts; run schemas/compile-tables";
}

INSTANTIATE_TEST_SUITE_P(Schemas, RuleTablesTest,
                         testing::Values(RuleTableRow{"IFC2X3", "IFC2X3_TC1.exp", 24, 339, 17, 2},
                                         RuleTableRow{"IFC4", "IFC4_ADD2_TC1.exp", 25, 652, 4, 2},
                                         RuleTableRow{"IFC4X1", "other/IFC4X1.exp", 25, 658, 4, 2},
                                         RuleTableRow{"IFC4X2", "other/IFC4X2.exp", 25, 672, 4, 2},
                                         RuleTableRow{"IFC4X3_RC1", "other/IFC4X3_RC1.exp", 25, 718, 4, 2},
                                         RuleTableRow{"IFC4X3_RC2", "other/IFC4X3_RC2.exp", 25, 723, 4, 2},
                                         RuleTableRow{"IFC4X3_RC3", "other/IFC4X3_RC3.exp", 25, 741, 4, 2},
                                         RuleTableRow{"IFC4X3_RC4", "other/IFC4X3_RC4.exp", 25, 741, 4, 2},
                                         RuleTableRow{"IFC4X3", "other/IFC4X3.exp", 25, 750, 4, 2},
                                         RuleTableRow{"IFC4X3_TC1", "other/IFC4X3_TC1.exp", 25, 747, 4, 2},
                                         RuleTableRow{"IFC4X3_ADD1", "other/IFC4X3_ADD1.exp", 25, 750, 4, 2},
                                         RuleTableRow{"IFC4X3_ADD2", "IFC4X3_ADD2.exp", 25, 752, 4, 2}));

TEST(RuleTables, SchemasMadeByACallerSayThatTheyHaveNone) {
    const oxa::ifc::def::SchemaPset own("IFC4");
    const rules::SchemaProgram program = rules::programOf(own);
    EXPECT_EQ(program.pProgram, nullptr);
    EXPECT_EQ(program.sAgainst, "the rules of IFC4 are not built in");
}

TEST(RuleTables, TextsBringTheirOwn) {
    std::vector<oxa::ifc::SchemaMessage> messages;
    const auto pSchema = SchemaLoader::pSchemaFromExpress(
        "SCHEMA IFC4; ENTITY A; B : INTEGER; WHERE C : B > 1; END_ENTITY; END_SCHEMA;", messages);
    ASSERT_NE(pSchema, nullptr);
    const rules::SchemaProgram program = rules::programOf(*pSchema);
    ASSERT_NE(program.pProgram, nullptr);
    ASSERT_EQ(program.pProgram->rules.size(), 1U);
    EXPECT_EQ(program.pProgram->rules[0].sName, "A.C");
    EXPECT_EQ(program.pProgram->rules[0].sText, "B > 1");
}

TEST(RuleTables, TextsWithFaultyRulesSayWhere) {
    std::vector<oxa::ifc::SchemaMessage> messages;
    const auto pSchema = SchemaLoader::pSchemaFromExpress(
        "SCHEMA S; ENTITY A; B : INTEGER;\nWHERE C : B >; END_ENTITY; END_SCHEMA;", messages);
    ASSERT_NE(pSchema, nullptr);
    const rules::SchemaProgram program = rules::programOf(*pSchema);
    EXPECT_EQ(program.pProgram, nullptr);
    EXPECT_EQ(program.sAgainst,
              "the rules of S can't be read: line 2, column 14: an expression expected instead of \";\"");
}

}   // namespace
