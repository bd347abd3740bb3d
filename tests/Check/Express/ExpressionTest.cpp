// SPDX-License-Identifier: Apache-2.0
// Expressions of EXPRESS (ISO 10303-11, 12): how they are read, told by what is printed of them, and what is a fault.
#include <gtest/gtest.h>

#include "Check/Express/Parser.h"
#include "Check/Express/Printer.h"

namespace {

using namespace oxa::check::express;

// The operators of a tree as a word before the parentheses of their operands.
std::string sShape(const Expression& expression) {
    static const char* const g_names[] = {"int",       "real", "string", "encoded", "binary", "true", "false",
                                          "unknown",   "?",    "self",   "pi",      "e",      "name", ".",
                                          "\\",        "[]",   "call",   "neg",     "plus",   "not",  "**",
                                          "*",         "/",    "div",    "mod",     "and",    "||",   "+",
                                          "-",         "or",   "xor",    "=",       "<>",     "<",    ">",
                                          "<=",        ">=",   ":=:",    ":<>:",    "in",     "like", "interval",
                                          "aggregate", ":",    "query"};
    std::string sResult = g_names[static_cast<std::size_t>(expression.op)];
    if (expression.op <= Op::Encoded || expression.op == Op::Name) return expression.sText;
    if (expression.op == Op::Attribute || expression.op == Op::Group) sResult += expression.sText;
    if (expression.operands.empty()) return sResult;
    sResult += '(';
    for (const ExpressionPtr& pOperand : expression.operands)
        sResult += (sResult.back() == '(' ? "" : " ") + sShape(*pOperand);
    return sResult + ')';
}

struct ExpressionRow {
    const char* sText;
    const char* sShape;
    const char* sPrinted = nullptr;   // null: as the text
};
const ExpressionRow g_rows[] = {
    {"1", "1"},
    {"1.5E-3", "1.5E-3"},
    {"1.", "1."},
    {"'it''s'", "'it''s'"},
    {"\"000000C5\"", "\"000000C5\""},
    {"%0110", "binary"},
    {"?", "?"},
    {"true", "true", "TRUE"},
    {"Self", "self", "SELF"},
    {"pi * const_e", "*(pi e)", "PI * CONST_E"},
    {"a + b * c", "+(a *(b c))"},
    {"a * b + c", "+(*(a b) c)"},
    {"a - b - c", "-(-(a b) c)"},
    {"a ** b * c", "*(**(a b) c)"},
    {"-a ** b", "**(neg(a) b)"},
    {"NOT a AND b", "and(not(a) b)"},
    {"NOT NOT a", "not(not(a))"},
    {"a AND b OR c", "or(and(a b) c)"},
    {"a OR b AND c XOR d", "xor(or(a and(b c)) d)"},
    {"a DIV b MOD c", "mod(div(a b) c)"},
    {"a || b || c", "||(||(a b) c)"},
    {"a + b = c OR d", "=(+(a b) or(c d))"},
    {"a :=: b", ":=:(a b)"},
    {"a :<>: b", ":<>:(a b)"},
    {"a<b", "<(a b)", "a < b"},
    {"a<=b", "<=(a b)", "a <= b"},
    {"a<>b", "<>(a b)", "a <> b"},
    {"a in [b,c]", "in(a aggregate(b c))", "a IN [b, c]"},
    {"a like 'x?'", "like(a 'x?')", "a LIKE 'x?'"},
    {"(a OR b) AND ((c))", "and(or(a b) c)"},
    {"{1 <= a < 3}", "interval(1 a 3)"},
    {"{a+1<b<=c}", "interval(+(a 1) b c)", "{a + 1 < b <= c}"},
    {"[]", "aggregate"},
    {"[a : 3, b]", "aggregate(:(a 3) b)"},
    {"QUERY(t <* a.b | t > 0)", "query(.b(a) >(t 0))"},
    {"SELF\\IfcRoot.Name", ".Name(\\IfcRoot(self))"},
    {"a.b[1].c[2:3]", "[](.c([](.b(a) 1)) 2 3)", "a.b[1].c[2 : 3]"},
    {"f()", "call"},
    {"f(a, g(b)).c[1]", "[](.c(call(a call(b))) 1)"},
    {"(f(a).b) = 0.0", "=(.b(call(a)) 0.0)"},
    {"a -- remark\n + (* b *) c", "+(a c)", "a + c"},
};

TEST(ExpressExpression, IsReadByRankAndPrintedAsWritten) {
    for (const ExpressionRow& row : g_rows) {
        SCOPED_TRACE(row.sText);
        std::vector<oxa::ifc::SchemaMessage> messages;
        const ExpressionPtr pTree = Parser(row.sText, messages).pReadExpression();
        ASSERT_TRUE(pTree) << messages.front().sText;
        EXPECT_EQ(sShape(*pTree), row.sShape);
        const std::string sPrinted = sText(*pTree);
        EXPECT_EQ(sPrinted, row.sPrinted ? row.sPrinted : row.sText);
        const ExpressionPtr pAgain = Parser(sPrinted, messages).pReadExpression();
        ASSERT_TRUE(pAgain);
        EXPECT_EQ(sShape(*pAgain), row.sShape);
        EXPECT_EQ(sText(*pAgain), sPrinted);
    }
}

struct FaultRow {
    const char* sText;
    unsigned iLine, iColumn;
    const char* sMessage;
};
const FaultRow g_faults[] = {
    {"", 1, 1, "an expression expected instead of the end"},
    {"a +", 1, 4, "an expression expected instead of the end"},
    {"a\n  + )", 2, 5, "an expression expected instead of \")\""},
    {"(a", 1, 3, "\")\" expected instead of the end"},
    {"[a, ", 1, 5, "an expression expected instead of the end"},
    {"a b", 1, 3, "the end expected instead of \"b\""},
    {"a = b = c", 1, 7, "the end expected instead of \"=\""},
    {"{a < b}", 1, 7, "\"<\" or \"<=\" expected instead of \"}\""},
    {"{a > b > c}", 1, 4, "\"<\" or \"<=\" expected instead of \">\""},
    {"QUERY(a | b)", 1, 9, "\"<*\" expected instead of \"|\""},
    {"QUERY(1 <* b | c)", 1, 7, "a variable expected instead of \"1\""},
    {"a.1", 1, 3, "an attribute expected instead of \"1\""},
    {"a\\SELF", 1, 3, "an entity expected instead of \"SELF\""},
    {"12a", 1, 1, "a number expected instead of \"12a\""},
    {"1E5", 1, 1, "a number expected instead of \"1E5\""},
    {"%012", 1, 2, "a binary literal expected instead of \"012\""},
    {"'a", 1, 1, "string not closed on its line"},
    {"a ; b", 1, 3, "the end expected instead of \";\""},
};

TEST(ExpressExpression, FaultsAreToldWithLineAndColumn) {
    for (const FaultRow& row : g_faults) {
        SCOPED_TRACE(row.sText);
        std::vector<oxa::ifc::SchemaMessage> messages;
        EXPECT_FALSE(Parser(row.sText, messages).pReadExpression());
        ASSERT_EQ(messages.size(), 1U);
        EXPECT_EQ(messages[0].iLine, row.iLine);
        EXPECT_EQ(messages[0].iColumn, row.iColumn);
        EXPECT_EQ(messages[0].sText, row.sMessage);
    }
}

std::string sRepeated(const char* sBegin, std::size_t iCount, const char* sEnd) {
    std::string sResult;
    for (std::size_t i = 0; i < iCount; ++i) sResult += sBegin;
    sResult += 'a';
    for (std::size_t i = 0; i < iCount; ++i) sResult += sEnd;
    return sResult;
}

TEST(ExpressExpression, DepthIsBounded) {
    struct DepthRow {
        const char* sBegin;
        const char* sEnd;
    };
    for (const DepthRow& row : {DepthRow{"(", ")"},
                                {"NOT ", ""},
                                {"- ", ""},
                                {"[", "]"},
                                {"f(", ")"},
                                {"", "+a"},
                                {"", ".b"},
                                {"", "[1]"},
                                {"{1 < ", " < 2}"}}) {
        SCOPED_TRACE(std::string(row.sBegin) + row.sEnd);
        for (const std::size_t iCount : {255U, 256U, 100'000U}) {   // around the name inside
            std::vector<oxa::ifc::SchemaMessage> messages;
            const std::string sText = sRepeated(row.sBegin, iCount, row.sEnd);
            EXPECT_EQ(Parser(sText, messages).pReadExpression() != nullptr, iCount == 255);
            EXPECT_EQ(messages.empty() ? "" : messages.front().sText, iCount == 255 ? "" : "nested too deeply");
        }
    }
}

}   // namespace
