// SPDX-License-Identifier: Apache-2.0
// Rules over models: which are evaluated for an instance, what a record says, and that threads change nothing.
#include "Check/Rules/ExpressRun.h"

namespace {

using namespace oxa::check;
using oxa::test::ExpressRun;

const char* const g_sRuleSchema =
    "SCHEMA S; TYPE Size = REAL; WHERE Positive : SELF > 0.; END_TYPE; TYPE Small = Size; WHERE SELF < 10.; END_TYPE; "
    "TYPE Any = SELECT (Small, Size, Thing); END_TYPE; TYPE Pair = LIST [2:2] OF Size; WHERE Rising : SELF[1] < "
    "SELF[2]; END_TYPE; "
    "ENTITY Base; Name : OPTIONAL STRING; UNIQUE U : Name; WHERE Named : Name <> 'bad'; END_ENTITY; "
    "ENTITY Thing SUBTYPE OF (Base); Value : OPTIONAL Small; Choice : OPTIONAL Any; Items : OPTIONAL LIST OF Any; Two "
    ": OPTIONAL Pair; "
    "WHERE Limit : NOT EXISTS(Value) OR (Value < 5.); Fails : NOT EXISTS(Items) OR (SIZEOF(Name) = 0); END_ENTITY; "
    "RULE AtMost FOR (Thing); LOCAL n : INTEGER; END_LOCAL; n := SIZEOF(Thing); WHERE Few : n < 4; END_RULE; "
    "END_SCHEMA;";

struct RuleRow {
    const char* sData;
    std::vector<std::string> expected;
};

// "#12 Rule: reason", with "! " in front of a rule that could not be evaluated.
std::vector<std::string> found(const std::string& sData, unsigned iThreads = 1, const char* sSchema = g_sRuleSchema) {
    std::vector<oxa::ifc::SchemaMessage> messages;
    const auto pSchema = oxa::ifc::SchemaLoader::pSchemaFromExpress(sSchema, messages);
    ExpressRun run(*pSchema, sSchema, {}, sData);
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
    const RuleRow g_rows[] = {
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
    for (const RuleRow& row : g_rows) {
        SCOPED_TRACE(row.sData);
        EXPECT_EQ(found(row.sData), row.expected);
    }
}

TEST(RuleCheck, BoundsMayBeExpressions) {
    const std::string sSchema =
        "SCHEMA S; CONSTANT Most : INTEGER := 2; END_CONSTANT; TYPE Few = LIST [0:Most] OF INTEGER; END_TYPE; "
        "ENTITY A; Count : INTEGER; Items : LIST [1:Count] OF INTEGER; Fields : OPTIONAL ARRAY [0:Count - 1] OF "
        "INTEGER; Some : OPTIONAL SET [Half(Count):?] OF INTEGER; Own : OPTIONAL Few; Plain : OPTIONAL LIST [-1:?] OF "
        "INTEGER; END_ENTITY; FUNCTION Half(n : INTEGER) : INTEGER; RETURN (n DIV 2); END_FUNCTION; END_SCHEMA;";
    std::vector<oxa::ifc::SchemaMessage> messages;
    const auto pSchema = oxa::ifc::SchemaLoader::pSchemaFromExpress(sSchema, messages);
    ASSERT_NE(pSchema, nullptr) << messages.front().sText;
    const RuleRow g_rows[] = {
        {"#1=A(2,(1,2),(1,2),(1),(1,2),());", {}},
        {"#1=A(2,(1,2,3),$,$,$,$);", {"#1 A.Items: EXISTS(Items) = TRUE; SIZEOF(Items) = 3; Count = 2"}},
        {"#1=A(3,(1),(1,2),$,$,$);",
         {"#1 A.Fields: EXISTS(Fields) = TRUE; SIZEOF(Fields) = 2; (Count - 1) - (0) + 1 = 3"}},
        {"#1=A(4,(1),$,(1),$,$);", {"#1 A.Some: EXISTS(Some) = TRUE; SIZEOF(Some) = 1; Half(Count) = 2"}},
        {"#1=A(1,(1),$,$,(1,2,3),$);", {"#1 Few.bounds: Own = [1, 2, 3]; SIZEOF(SELF) = 3; Most = 2"}},
    };
    for (const RuleRow& row : g_rows) {
        SCOPED_TRACE(row.sData);
        ExpressRun run(*pSchema, sSchema, {}, row.sData);
        std::vector<std::string> result;
        for (const rules::RuleFinding& finding : rules::checkRules(*run.pProgram, run.file.data()).findings)
            result.push_back("#1 " + run.pProgram->rules[finding.iRule].sName + ": " + finding.sReason);
        EXPECT_EQ(result, row.expected);
    }
}

// Instances are equal where their values are, and those of the instances that these refer to, 200 deep.
TEST(RuleCheck, InstancesAreComparedSoDeep) {
    const char* const sChain = "SCHEMA S; ENTITY A; Next : OPTIONAL A; Other : OPTIONAL A; WHERE Same : NOT "
                               "EXISTS(Other) OR (Next = Other); END_ENTITY; END_SCHEMA;";
    for (const int iLength : {1, 199, 200, 201, 5000}) {
        SCOPED_TRACE(iLength);
        std::string sData = "#1=A(#2,#" + std::to_string(iLength + 2) + ");";
        for (int i = 2; i < 2 * iLength + 2; ++i)
            sData += '#' + std::to_string(i) + "=A(" +
                     (i == iLength + 1 || i == 2 * iLength + 1 ? "$" : '#' + std::to_string(i + 1)) + ",$);";
        EXPECT_EQ(found(sData, 1, sChain),
                  iLength <= 200
                      ? std::vector<std::string>{}
                      : std::vector<std::string>{"! #1 A.Same: instances that are compared are nested too deeply"});
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

// Who uses an instance is found out by the first thread that asks.
TEST(RuleCheck, ThreadsShareWhatTheyKnowOfUses) {
    const char* const sSchema =
        "SCHEMA S; ENTITY A; WHERE X : SIZEOF(USEDIN(SELF, 'S.B.X')) < 2; Y : SIZEOF(USEDIN(SELF, 'S.B.Y')) = 0; "
        "All : SIZEOF(USEDIN(SELF, '')) < 3; END_ENTITY; ENTITY B; X : A; Y : OPTIONAL A; END_ENTITY; END_SCHEMA;";
    constexpr int iCount = 6000;
    std::string sData;
    for (int i = 1; i <= iCount; ++i) sData += '#' + std::to_string(i) + "=A();";
    for (int i = 1; i <= iCount; ++i)
        sData += '#' + std::to_string(iCount + i) + "=B(#" + std::to_string(i % 1000 ? i : 1) + ',' +
                 (i % 1500 ? "$" : "#2") + ");";
    const std::vector<std::string> expected = {
        "#1 A.X: SIZEOF(USEDIN(SELF, 'S.B.X')) = 7", "#1 A.All: SIZEOF(USEDIN(SELF, '')) = 7",
        "#2 A.Y: SIZEOF(USEDIN(SELF, 'S.B.Y')) = 4", "#2 A.All: SIZEOF(USEDIN(SELF, '')) = 5"};
    for (const unsigned iThreads : {1U, 2U, 8U}) EXPECT_EQ(found(sData, iThreads, sSchema), expected);
}

TEST(RuleCheck, MakesTheReasonsOfWhatIsTold) {
    std::vector<oxa::ifc::SchemaMessage> messages;
    const auto pSchema = oxa::ifc::SchemaLoader::pSchemaFromExpress(g_sRuleSchema, messages);
    ExpressRun run(*pSchema, g_sRuleSchema, {}, "#1=THING('bad',6.,$,(SIZE(-1.),SIZE(-2.)),$);#2=THING($,7.,$,$,$);");
    rules::RuleRun rules(*run.pProgram, run.file.data(), {});
    rules::RuleResult result = rules.check();
    std::vector<std::string> reasons;
    for (rules::RuleFinding& finding : result.findings) {
        EXPECT_EQ(finding.sReason, "");
        finding.boTold = &finding != &result.findings[1] && &finding != &result.findings[2];
    }
    rules.vReasons(result.findings);
    for (const rules::RuleFinding& finding : result.findings) reasons.push_back(finding.sReason);
    const std::vector<std::string> expected = {"Items = -1.",
                                               "",
                                               "",
                                               "EXISTS(Value) = TRUE; Value = 6.",
                                               "the argument of SIZEOF is no aggregate",
                                               "EXISTS(Value) = TRUE; Value = 7."};
    EXPECT_EQ(reasons, expected);
}

// An evaluation costs a hundred steps, half of which an instance has: the first shares of the model are looked at.
TEST(RuleCheck, LeavesOutWhatWouldTakeTooManySteps) {
    const std::string sSchema =
        "SCHEMA S; FUNCTION Slow : LOGICAL; REPEAT i := 1 TO 100; ; END_REPEAT; RETURN (UNKNOWN); END_FUNCTION; "
        "ENTITY A; WHERE W : Slow; END_ENTITY; ENTITY B; WHERE X : TRUE; END_ENTITY; "
        "RULE All FOR (A); WHERE Y : TRUE; END_RULE; END_SCHEMA;";
    std::string sData;
    for (int i = 1; i <= 8000; ++i) sData += '#' + std::to_string(i) + "=A();";
    std::vector<oxa::ifc::SchemaMessage> messages;
    const auto pSchema = oxa::ifc::SchemaLoader::pSchemaFromExpress(sSchema, messages);
    ExpressRun run(*pSchema, sSchema, {}, sData);
    for (const unsigned iThreads : {1U, 2U, 7U}) {
        rules::RuleOptions options;
        options.iThreads = iThreads;
        options.iStepsOfModel = 100'000;
        options.iStepsOfInstance = 50;
        const rules::RuleResult result = rules::checkRules(*run.pProgram, run.file.data(), options);
        EXPECT_EQ(result.iLeftOut, 8000U - 4U * 1024U);
        EXPECT_TRUE(result.boWholeLeftOut);
        std::string sCounts;
        for (std::size_t i = 0; i < result.counts.size(); ++i)
            sCounts += run.pProgram->rules[i].sName + (result.counts[i].iUnknown ? " unknown" : "") +
                       (result.counts[i].iFailed ? " left out; " : "; ");
        EXPECT_EQ(sCounts, "A.W unknown left out; B.X; All.Y left out; ");
    }
}

// Steps, counts and names of instances are those of one thread, what is remembered of a derived value or not.
TEST(RuleCheck, CostsTheSameOnAnyNumberOfThreads) {
    const std::string sSchema =
        "SCHEMA S; FUNCTION Slow : INTEGER; LOCAL n : INTEGER := 0; END_LOCAL; REPEAT i := 1 TO 100; n := n + i; "
        "END_REPEAT; RETURN (n); END_FUNCTION; ENTITY D; DERIVE Sum : INTEGER := Slow; END_ENTITY; "
        "ENTITY A; Ref : D; Bad : OPTIONAL A; WHERE W : Ref.Sum = 5050; X : NOT (Bad :=: Bad); END_ENTITY; END_SCHEMA;";
    std::string sData = "#1=D();";
    for (int i = 2; i <= 5000; ++i)
        sData += '#' + std::to_string(i) + "=A(#1," + (i % 2 || i == 2 ? "$" : '#' + std::to_string(i - 1)) + ");";
    std::vector<oxa::ifc::SchemaMessage> messages;
    const auto pSchema = oxa::ifc::SchemaLoader::pSchemaFromExpress(sSchema, messages);
    ASSERT_NE(pSchema, nullptr) << messages.front().sText;
    ExpressRun run(*pSchema, sSchema, {}, sData);
    std::string sExpected;
    std::uint64_t iSteps = 0;
    for (const bool boNumbered : {true, false})
        for (const unsigned iThreads : {1U, 2U, 7U}) {
            SCOPED_TRACE(std::to_string(iThreads) + (boNumbered ? " threads" : " threads, numbers dealt anew"));
            if (!boNumbered) static_cast<void>(run.file.data().entityIdMap(true));
            rules::RuleOptions options;
            options.iThreads = iThreads;
            const rules::RuleResult result = rules::checkRules(*run.pProgram, run.file.data(), options);
            std::string sAll = std::to_string(result.iSteps);
            for (const rules::RuleCount& count : result.counts)
                sAll += ' ' + std::to_string(count.iEvaluated) + ' ' + std::to_string(count.iFailed);
            for (const rules::RuleFinding& finding : result.findings) sAll += '\n' + finding.sReason;
            if (iThreads == 1) sExpected = sAll;
            EXPECT_EQ(sAll, sExpected);
            ASSERT_EQ(result.findings.size(), 2499U);
            if (boNumbered) {
                EXPECT_EQ(result.findings.front().sReason, "Bad = #3=A");
            }
            iSteps = result.iSteps;
        }
    // As many as it takes are enough; one less leaves the last share out.
    for (const unsigned iThreads : {1U, 7U})
        for (const std::uint64_t iLess : {0U, 1U}) {
            rules::RuleOptions options;
            options.iThreads = iThreads;
            options.iStepsOfModel = iSteps - iLess;
            options.iStepsOfInstance = 0;
            EXPECT_EQ(rules::checkRules(*run.pProgram, run.file.data(), options).iLeftOut, iLess ? 5000U % 1024U : 0U);
        }
}

TEST(RuleCheck, StopsWhereItIsAskedTo) {
    std::vector<oxa::ifc::SchemaMessage> messages;
    const auto pSchema = oxa::ifc::SchemaLoader::pSchemaFromExpress(g_sRuleSchema, messages);
    ExpressRun run(*pSchema, g_sRuleSchema, {}, "#1=BASE('bad');");
    std::stop_source source;
    source.request_stop();
    rules::RuleOptions options;
    options.stop = source.get_token();
    const rules::RuleResult result = rules::checkRules(*run.pProgram, run.file.data(), options);
    EXPECT_TRUE(result.boStopped);
    EXPECT_TRUE(result.findings.empty());
}

}   // namespace
