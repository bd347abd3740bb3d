// SPDX-License-Identifier: Apache-2.0
// Each operator and each built-in function of EXPRESS (ISO 10303-11, 12 and 15) with no value in each of its places, and in
// all of them: as "?", and as an attribute that is unset.
#include "Check/Rules/ExpressRun.h"

namespace {

using oxa::test::ExpressRun;

const char* const g_sUnknownSchema =
    "SCHEMA S; TYPE Colour = ENUMERATION OF (RED, GREEN); END_TYPE; ENTITY Base; Name : OPTIONAL STRING; END_ENTITY; "
    "ENTITY Thing SUBTYPE OF (Base); Amount : OPTIONAL REAL; Flag : OPTIONAL LOGICAL; Bits : OPTIONAL BINARY; Kind : "
    "OPTIONAL Colour; Items : OPTIONAL LIST OF INTEGER; Other : OPTIONAL Base; END_ENTITY; END_SCHEMA;";
const char* const g_sUnknownData = "#1=THING($,$,$,$,$,$,$);";

// An operator between operands of these values. Where one is missing, so is the result, which is UNKNOWN for a comparison.
struct IndeterminateRow {
    std::vector<const char*> operators;
    const char* sLeft;
    const char* sRight;
    const char* sUnset;   // an attribute of the type of both, or of the left one
    const char* sResult;
};
const std::vector<const char*> g_equals = {"=", "<>", ":=:", ":<>:"};
const std::vector<const char*> g_ordered = {"=", "<>", "<", ">", "<=", ">=", ":=:", ":<>:"};
const IndeterminateRow g_operators[] = {
    {{"+", "-", "*", "/", "**", "DIV", "MOD"}, "7", "2", "t\\Thing.Amount", "?"},
    {{"+", "-", "*", "/", "**", "DIV", "MOD"}, "7.5", "2.5", "t\\Thing.Amount", "?"},
    {{"+"}, "'a'", "'b'", "t.Name", "?"},
    {{"+"}, "%01", "%1", "t\\Thing.Bits", "?"},
    {{"+", "-", "*"}, "[1, 2]", "[2]", "t\\Thing.Items", "?"},
    {{"||"}, "Base('x')", "Thing(?, ?, ?, ?, ?, ?)", "t\\Thing.Other", "?"},
    {g_ordered, "1", "2", "t\\Thing.Amount", "UNKNOWN"},
    {g_ordered, "1.5", "2.5", "t\\Thing.Amount", "UNKNOWN"},
    {g_ordered, "'a'", "'b'", "t.Name", "UNKNOWN"},
    {g_ordered, "%01", "%1", "t\\Thing.Bits", "UNKNOWN"},
    {g_ordered, "TRUE", "FALSE", "t\\Thing.Flag", "UNKNOWN"},
    {g_ordered, "RED", "GREEN", "t\\Thing.Kind", "UNKNOWN"},
    {g_equals, "[1, 2]", "[2]", "t\\Thing.Items", "UNKNOWN"},
    {{"<=", ">="}, "[1, 2]", "[2]", "t\\Thing.Items", "UNKNOWN"},
    {g_equals, "t", "Base('x')", "t\\Thing.Other", "UNKNOWN"},
    {{"IN"}, "1", "[1, 2]", "t\\Thing.Amount", "UNKNOWN"},
    {{"LIKE"}, "'a'", "'@'", "t.Name", "UNKNOWN"},
};

// Texts with values in braces, which may be missing: one after the other, some, all.
struct TextRow {
    const char* sText;
    const char* sWhole;    // with the values
    const char* sResult;   // without one of them
};
const TextRow g_texts[] = {
    {"+{3}", "3", "?"},
    {"-{3}", "-3", "?"},
    {"NOT {TRUE}", "FALSE", "UNKNOWN"},
    {"{{1} < {2} < {3}}", "TRUE", "UNKNOWN"},
    {"{{1} <= {1} <= {1}}", "TRUE", "UNKNOWN"},
    {"{[7, 8]}[{2}]", "8", "?"},
    {"{'abc'}[{2}]", "'b'", "?"},
    {"{'abc'}[{2} : {3}]", "'bc'", "?"},
    {"{%0110}[{2} : {3}] = %11", "TRUE", "UNKNOWN"},
    {"{Base('x')}.Name", "'x'", "?"},
    {"{Base('x')}\\Base.Name", "'x'", "?"},
    {"SIZEOF(QUERY(i <* {[1, 2]} | i > 1))", "1", "?"},
    {"SIZEOF(QUERY(i <* [1, 2] | i > {1}))", "1", "0"},
    {"ABS({-3})", "3", "?"},
    {"ACOS({1.})", "0.", "?"},
    {"ASIN({0.})", "0.", "?"},
    {"ATAN({0.}, {1.})", "0.", "?"},
    {"BLENGTH({%101})", "3", "?"},
    {"COS({0.})", "1.", "?"},
    {"EXISTS({1})", "TRUE", "FALSE"},
    {"EXP({0.})", "1.", "?"},
    {"FORMAT({7}, {'3I'})", "'  7'", "?"},
    {"HIBOUND({[1]})", "?", "?"},
    {"HIINDEX({[1, 2]})", "2", "?"},
    {"LENGTH({'abc'})", "3", "?"},
    {"LOBOUND({[1]})", "0", "?"},
    {"LOG({1.})", "0.", "?"},
    {"LOG2({8.})", "3.", "?"},
    {"LOG10({1000.})", "3.", "?"},
    {"LOINDEX({[1, 2]})", "1", "?"},
    {"NVL({1}, 2)", "1", "2"},
    {"NVL(1, {2})", "1", "1"},
    {"ODD({3})", "TRUE", "?"},
    {"ROLESOF({t})", "[]", "?"},
    {"SIN({0.})", "0.", "?"},
    {"SIZEOF({[1, 2]})", "2", "?"},
    {"SQRT({9.})", "3.", "?"},
    {"TAN({0.})", "0.", "?"},
    {"TYPEOF({'a'})", "['STRING']", "[]"},
    {"USEDIN({t}, {''})", "[]", "?"},
    {"VALUE({'12'})", "12", "?"},
    {"VALUE_IN({[1, 2]}, {1})", "TRUE", "UNKNOWN"},
    {"VALUE_UNIQUE({[1, 2]})", "TRUE", "UNKNOWN"},
};

struct Call {
    std::string sText;
    std::string sResult;
};

void vExpect(const std::vector<Call>& calls) {
    std::vector<oxa::ifc::SchemaMessage> messages;
    const auto pSchema = oxa::ifc::SchemaLoader::pSchemaFromExpress(g_sUnknownSchema, messages);
    ASSERT_NE(pSchema, nullptr) << messages[0].sText;
    std::string sTests;
    for (std::size_t i = 0; i < calls.size(); ++i)
        sTests +=
            "FUNCTION t" + std::to_string(i) + "(t : Thing) : GENERIC; RETURN (" + calls[i].sText + "); END_FUNCTION; ";
    ExpressRun run(*pSchema, g_sUnknownSchema, sTests, g_sUnknownData);
    for (std::size_t i = 0; i < calls.size(); ++i)
        EXPECT_EQ(run.sCalled("t" + std::to_string(i), {1}), calls[i].sResult) << calls[i].sText;
}

TEST(RuleIndeterminate, InEachPlaceOfOperators) {
    std::vector<Call> calls;
    for (const IndeterminateRow& row : g_operators)
        for (const std::string sOperator : row.operators) {
            const std::string sBetween = ' ' + sOperator + ' ';
            const std::string sUnset = row.sUnset;
            calls.push_back({"EXISTS(" + (row.sLeft + sBetween + row.sRight) + ')', "TRUE"});
            calls.push_back({'?' + sBetween + row.sRight, row.sResult});
            calls.push_back({row.sLeft + sBetween + '?', row.sResult});
            calls.push_back({'?' + sBetween + '?', row.sResult});
            calls.push_back({sUnset + sBetween + row.sRight, row.sResult});
            if (sOperator == "IN") continue;
            calls.push_back({row.sLeft + sBetween + sUnset, row.sResult});
            calls.push_back({sUnset + sBetween + sUnset, row.sResult});
        }
    vExpect(calls);
}

// The text with its values, but for those places that the mask names.
std::string sWithout(std::string_view text, unsigned uMask, unsigned& uPlaces) {
    std::string sResult;
    unsigned uPlace = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        // "{" stands in front of a value; the braces of an interval have no value right behind them that ends with "}".
        const std::size_t iEnd = text[i] == '{' ? text.find_first_of("{}", i + 1) : std::string_view::npos;
        if (iEnd == std::string_view::npos || text[iEnd] != '}') {
            sResult += text[i];
            continue;
        }
        sResult += (uMask >> uPlace++) & 1U ? "?" : "(" + std::string(text.substr(i + 1, iEnd - i - 1)) + ")";
        i = iEnd;
    }
    uPlaces = uPlace;
    return sResult;
}

TEST(RuleIndeterminate, InEachPlaceOfOthersAndOfFunctions) {
    std::vector<Call> calls;
    for (const TextRow& row : g_texts) {
        unsigned uPlaces = 0;
        calls.push_back({sWithout(row.sText, 0, uPlaces), row.sWhole});
        ASSERT_GT(uPlaces, 0U);
        for (unsigned uMask = 1; uMask < 1U << uPlaces; ++uMask)
            calls.push_back({sWithout(row.sText, uMask, uPlaces), row.sResult});
    }
    vExpect(calls);
}

}   // namespace
