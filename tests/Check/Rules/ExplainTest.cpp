// SPDX-License-Identifier: Apache-2.0
// Why a rule does not hold: the values of those parts of its condition that made it so.
#include "Check/Rules/ExpressRun.h"

namespace {

using oxa::test::ExpressRun;

const char* const g_sBegin =
    "SCHEMA S; TYPE Size = REAL; END_TYPE; TYPE Colour = ENUMERATION OF (RED, GREEN); END_TYPE; "
    "ENTITY Thing; Name : OPTIONAL STRING; Value : OPTIONAL Size; Items : LIST OF INTEGER; Other : OPTIONAL Thing; "
    "Kind : OPTIONAL Colour; DERIVE Double : REAL := Value * 2; INVERSE Users : SET OF Thing FOR Other; WHERE W : ";
const char* const g_sEnd = "; END_ENTITY; ENTITY Odd SUBTYPE OF (Thing); END_ENTITY; FUNCTION Fine(t : GENERIC) : "
                           "LOGICAL; RETURN (FALSE); END_FUNCTION; END_SCHEMA;";
const char* const g_sExplained = "#1=THING('b',0.5,(),#2,.RED.);";

struct ExplainRow {
    const char* sCondition;
    const char* sReason;
};
const ExplainRow g_explainRows[] = {
    {"SIZEOF(Items) > 0", "SIZEOF(Items) = 0"},
    {"SIZEOF(QUERY(i <* [1, 2, 3] | i > 1)) = 1", "SIZEOF(QUERY(i <* [1, 2, 3] | i > 1)) = 2"},
    {"Value > 1.", "Value = 0.5"},
    {"Value > Double", "Value = 0.5; Double = 1."},
    {"(Value + 1.) = 2.", "Value + 1. = 1.5"},
    {"SELF.Value = 2.", "SELF.Value = 0.5"},
    {"SELF\\Thing.Name = 'a'", "SELF\\Thing.Name = 'b'"},
    {"Kind = Colour.GREEN", "Kind = RED"},
    {"(Value < 1.) AND (Name = 'a')", "Name = 'b'"},
    {"(Value > 1.) OR (Name = 'a')", "Value = 0.5; Name = 'b'"},
    {"NOT (EXISTS(Value) AND (Value < 1.))", "EXISTS(Value) = TRUE; Value = 0.5"},
    {"NOT EXISTS(Value)", "EXISTS(Value) = TRUE"},
    {"EXISTS(Value) XOR EXISTS(Name)", "EXISTS(Value) = TRUE; EXISTS(Name) = TRUE"},
    {"Value IN [1., 2.]", "Value = 0.5"},
    {"Name LIKE 'a*'", "Name = 'b'"},
    {"{1. < Value <= 2.}", "Value = 0.5"},
    {"Other :=: SELF", "Other = #2=Odd"},
    {"'S.ODD' IN TYPEOF(SELF)", "'S.ODD' IN TYPEOF(SELF) = FALSE"},
    {"NOT ('S.ODD' IN TYPEOF(Other))", "Other = #2=Odd"},
    {"SIZEOF(TYPEOF(Other) * ['S.ODD']) = 0", "Other = #2=Odd"},
    {"SIZEOF(Users) = 1", "SIZEOF(Users) = 0"},
    {"Fine(Value)", "Value = 0.5"},
    {"Fine(SELF)", "Fine(SELF) = FALSE"},
    {"Fine(SELF) OR Fine(Name)", "Fine(SELF) = FALSE; Name = 'b'"},
    {"VALUE_UNIQUE([1, 1])", "VALUE_UNIQUE([1, 1]) = FALSE"},
    {"FALSE", ""},
};

TEST(RuleReason, NamesThePartsThatFailed) {
    for (const ExplainRow& row : g_explainRows) {
        SCOPED_TRACE(row.sCondition);
        const std::string sSchema = std::string(g_sBegin) + row.sCondition + g_sEnd;
        std::vector<oxa::ifc::SchemaMessage> messages;
        const auto pSchema = oxa::ifc::SchemaLoader::pSchemaFromExpress(sSchema, messages);
        ASSERT_NE(pSchema, nullptr) << messages[0].sText;
        ExpressRun run(*pSchema, sSchema, {}, g_sExplained + std::string("#2=ODD('a',1.5,(1),$,.GREEN.);"));
        std::string sReason = "none";
        for (const auto& finding : oxa::check::rules::checkRules(*run.pProgram, run.file.data()).findings)
            if (finding.pEntity && run.file.data().iIdFromEntity(*finding.pEntity) == 1) sReason = finding.sReason;
        EXPECT_EQ(sReason, row.sReason);
    }
}

}   // namespace
