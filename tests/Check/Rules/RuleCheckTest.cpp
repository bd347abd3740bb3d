// SPDX-License-Identifier: Apache-2.0
// Rules over models: which are evaluated for an instance, what a record says, and that threads change nothing.
#include "Check/Rules/ExpressRun.h"

namespace {

using namespace oxa::check;
using oxa::test::ExpressRun;

const char* const g_sSchema =
    "SCHEMA S; TYPE Size = REAL; WHERE Positive : SELF > 0.; END_TYPE; TYPE Small = Size; WHERE SELF < 10.; END_TYPE; "
    "TYPE Any = SELECT (Small, Size, Thing); END_TYPE; TYPE Pair = LIST [2:2] OF Size; WHERE Rising : SELF[1] < "
    "SELF[2]; END_TYPE; "
    "ENTITY Base; Name : OPTIONAL STRING; UNIQUE U : Name; WHERE Named : Name <> 'bad'; END_ENTITY; "
    "ENTITY Thing SUBTYPE OF (Base); Value : OPTIONAL Small; Choice : OPTIONAL Any; Items : OPTIONAL LIST OF Any; Two "
    ": OPTIONAL Pair; "
    "WHERE Limit : NOT EXISTS(Value) OR (Value < 5.); Fails : NOT EXISTS(Items) OR (SIZEOF(Name) = 0); END_ENTITY; "
    "RULE AtMost FOR (Thing); LOCAL n : INTEGER; END_LOCAL; n := SIZEOF(Thing); WHERE Few : n < 4; END_RULE; "
    "END_SCHEMA;";

struct Row {
    const char* sData;
    std::vector<std::string> expected;
};

// "#12 Rule: reason", with "! " in front of a rule that could not be evaluated.
std::vector<std::string> found(const std::string& sData, unsigned iThreads = 1) {
    std::vector<oxa::ifc::SchemaMessage> messages;
    const auto pSchema = oxa::ifc::SchemaLoader::pSchemaFromExpress(g_sSchema, messages);
    ExpressRun run(*pSchema, g_sSchema, {}, sData);
    rules::RuleOptions options;
    options.iThreads = iThreads;
    std::vector<std::string> result;
    for (const rules::RuleFinding& finding : rules::checkRules(*run.pProgram, run.file.data(), options).findings)
        result.push_back((finding.sort == rules::RuleFinding::Sort::NotEvaluated ? "! " : "") +
                         (finding.pEntity ? '#' + std::to_string(run.file.data().iIdFromEntity(*finding.pEntity)) + ' '
                                          : std::string()) +
                         run.pProgram->rules[finding.iRule].sName + ": " + finding.sReason);
    return result;
}

TEST(RuleCheck, RecordsSayWhichRuleAndWhy) {
    const Row g_rows[] = {
        {"#1=BASE('a');", {}},
        {"#1=BASE($);", {}},
        {"#1=BASE('bad');", {"#1 Base.Named: Name = 'bad'"}},
        {"#1=THING('bad',$,$,$,$);", {"#1 Base.Named: Name = 'bad'"}},
        {"#1=THING($,6.,$,$,$);", {"#1 Thing.Limit: EXISTS(Value) = TRUE; Value = 6."}},
        {"#1=THING($,-1.,$,$,$);", {"#1 Size.Positive: Value = -1."}},
        {"#1=THING($,$,SMALL(11.),$,$);", {"#1 Small.1: Choice = 11."}},
        {"#1=THING($,$,SIZE(11.),$,$);", {}},
        {"#1=THING($,$,#1,$,(2.,1.));", {"#1 Pair.Rising: Two = [2., 1.]; SELF[1] = 2.; SELF[2] = 1."}},
        {"#1=THING($,$,$,$,(-1.,1.));", {"#1 Size.Positive: Two = -1."}},
        {"#1=THING('a',$,$,(SIZE(-2.)),$);",
         {"#1 Size.Positive: Items = -2.", "! #1 Thing.Fails: the argument of SIZEOF is no aggregate"}},
        {"#1=BASE('a');#2=BASE('b');#3=BASE('a');", {"#3 Base.U: Name = 'a', as #1=Base"}},
        {"#1=THING($,$,$,$,$);#2=THING($,$,$,$,$);#3=THING($,$,$,$,$);#4=THING($,$,$,$,$);", {"AtMost.Few: n = 4"}},
    };
    for (const Row& row : g_rows) {
        SCOPED_TRACE(row.sData);
        EXPECT_EQ(found(row.sData), row.expected);
    }
}

TEST(RuleCheck, ThreadsFindTheSameInTheSameOrder) {
    std::string sData;
    for (int i = 1; i <= 20000; ++i)
        sData += '#' + std::to_string(i) + "=THING(" + (i % 3 ? "$" : "'bad'") + ',' + std::to_string(i % 12 - 1) +
                 ".,$,$,$);";
    const std::vector<std::string> one = found(sData, 1);
    EXPECT_GT(one.size(), 10000U);
    for (const unsigned iThreads : {2U, 3U, 8U}) EXPECT_EQ(found(sData, iThreads), one);
}

TEST(RuleCheck, StopsWhereItIsAskedTo) {
    std::vector<oxa::ifc::SchemaMessage> messages;
    const auto pSchema = oxa::ifc::SchemaLoader::pSchemaFromExpress(g_sSchema, messages);
    ExpressRun run(*pSchema, g_sSchema, {}, "#1=BASE('bad');");
    std::stop_source source;
    source.request_stop();
    rules::RuleOptions options;
    options.stop = source.get_token();
    const rules::RuleResult result = rules::checkRules(*run.pProgram, run.file.data(), options);
    EXPECT_TRUE(result.boStopped);
    EXPECT_TRUE(result.findings.empty());
}

}   // namespace
