// SPDX-License-Identifier: Apache-2.0
// A value that a model can't hold leaves the rules open where they look at it, and nowhere else; it makes no rule fail.
#include <gtest/gtest.h>

#include <memory>

#include "Check/CheckText.h"
#include "provider/SchemaLoader.h"

namespace oxa {
namespace {

const char* const g_pSchema =
    "SCHEMA TEST; TYPE Plain = INTEGER; END_TYPE; TYPE Positive = INTEGER; WHERE Above : SELF > 0; END_TYPE; "
    "TYPE Any = SELECT (Plain, Positive); END_TYPE; "
    "ENTITY Thing; Unseen : OPTIONAL Plain; Seen : OPTIONAL Plain; Called : OPTIONAL Plain; Ruled : OPTIONAL Positive; "
    "Choice : OPTIONAL Any; Many : OPTIONAL LIST OF Positive; Once : OPTIONAL Plain; "
    "UNIQUE U : Once; WHERE Small : NOT EXISTS(Seen) OR (Seen < 9); Good : Fine(SELF); END_ENTITY; "
    "FUNCTION Fine(t : Thing) : LOGICAL; IF EXISTS(t.Called) THEN RETURN (t.Called <> 7); END_IF; RETURN (TRUE); "
    "END_FUNCTION; END_SCHEMA;";

ifc::def::SchemaPset* pSchema() {
    static const std::unique_ptr<ifc::def::SchemaPset> pLoaded = [] {
        std::vector<ifc::SchemaMessage> messages;
        return ifc::SchemaLoader::pSchemaFromExpress(g_pSchema, messages);
    }();
    return pLoaded.get();
}

struct ReadLossesRow {
    const char* sRule;
    const char* sStatements;
    CheckVerdict verdict;
    const char* sFailures;
};
constexpr CheckVerdict g_valid = CheckVerdict::Valid;
constexpr CheckVerdict g_open = CheckVerdict::Undecided;
// 5000000000 is an INTEGER for EXPRESS, and too large for the model.
const ReadLossesRow g_rows[] = {
    {"what the model holds is looked at", "#1=THING(5,5,5,5,PLAIN(5),(5),5);", g_valid, ""},
    {"what no rule names", "#1=THING(5000000000,$,$,$,$,$,$);", g_valid, ""},
    {"what a condition names", "#1=THING($,5000000000,$,$,$,$,$);", g_open, ""},
    {"what a function names", "#1=THING($,$,5000000000,$,$,$,$);", g_open, ""},
    {"a value of a type with rules", "#1=THING($,$,$,5000000000,$,$,$);", g_open, ""},
    {"in a SELECT it is the value's own type", "#1=THING($,$,$,$,PLAIN(5000000000),$,$);", g_valid, ""},
    {"which may have rules", "#1=THING($,$,$,$,POSITIVE(5000000000),$,$);", g_open, ""},
    {"an item of an aggregate", "#1=THING($,$,$,$,$,(5000000000),$);", g_open, ""},
    {"a UNIQUE clause needs no model", "#1=THING($,$,$,$,$,$,5000000000);", g_valid, ""},
    {"another instance fails none the less", "#1=THING($,$,$,5000000000,$,$,$);#2=THING($,9,$,$,$,$,$);",
     CheckVerdict::NotValid, "6:0 Rules_Violated 'EXISTS(Seen) = TRUE; Seen = 9'; NOT EXISTS(Seen) OR (Seen < 9)"},
};

TEST(ReadLosses, LeaveThoseRulesOpenThatLookAtThem) {
    for (const ReadLossesRow& row : g_rows) {
        SCOPED_TRACE(row.sRule);
        CheckOptions options;
        options.schema = [](const std::string&) { return pSchema(); };
        FileText file;
        file.sSchema = "('TEST')";
        std::istringstream stream(file.text(row.sStatements));
        const CheckResult result = checkStream(stream, options);
        EXPECT_EQ(result.verdict(), row.verdict);
        EXPECT_EQ(sFailures(result), row.sFailures);
        const bool boOpen = result.level(CheckLevel::Rules).state == CheckLevelSummary::State::NotPossible;
        EXPECT_EQ(boOpen, row.verdict != g_valid);
        if (boOpen) {
            EXPECT_EQ(result.level(CheckLevel::Rules).reason,
                      "1 fault of the file left the model without what the rules look at");
        }
    }
}

// Identifiers that are none of 128 bits are texts of 22 characters for the schema; of those that are there twice the rules
// see both.
TEST(ReadLosses, IdentifiersAreTheSchemaLevels) {
    const std::string sActors = "#1=IFCPERSON('a',$,$,$,$,$,$,$);\n#2=IFCACTOR('0A_yMRoU+BdB-FGHn1GH7s',$,$,$,$,#1);\n";
    const std::initializer_list<CheckLevel> all{CheckLevel::Syntax, CheckLevel::Header, CheckLevel::Schema,
                                                CheckLevel::Rules};
    const CheckResult odd = checked(FileText().text(sActors), all);
    EXPECT_EQ(sFailures(odd), "");
    EXPECT_EQ(odd.verdict(), CheckVerdict::Valid);
    const std::string sThird = "#3=IFCACTOR('2CbOYFeCHBku9$oytmyQ2e',$,$,$,$,#1);\n";
    const CheckResult twice = checked(FileText().text(sActors + sThird + "#4" + sThird.substr(2)), all);
    EXPECT_EQ(sFailures(twice), "9:1 Schema_Unique GlobalId 'as #3'; values of its own");
    EXPECT_EQ(twice.level(CheckLevel::Rules).state, CheckLevelSummary::State::Done);
}

}   // namespace
}   // namespace oxa
