// SPDX-License-Identifier: Apache-2.0
// Statements and declarations of EXPRESS (ISO 10303-11, 9 and 13): printed as read, and what is a fault.
#include <gtest/gtest.h>

#include "Check/Express/Parser.h"
#include "Check/Express/Printed.h"
#include "Check/Express/Printer.h"

namespace {

using namespace oxa::check::express;
using oxa::test::sTokens;

std::string sSchema(const std::string& sDeclarations) { return "SCHEMA s; " + sDeclarations + " END_SCHEMA;"; }

// Statements in a procedure, whole declarations without.
const char* const g_statements[] = {
    ";",
    "a := b + 1;",
    "a.b[1].c := ?;",
    "p;",
    "p(a, 1);",
    "INSERT(l, a, 0);",
    "ALIAS x FOR a.b[1]; x := 1; END_ALIAS;",
    "BEGIN a := 1; b := 2; END;",
    "CASE a OF 1 : b := 1; 2, x.y : BEGIN SKIP; END; END_CASE;",
    "CASE a OF 'x' : RETURN; OTHERWISE : ; END_CASE;",
    "IF a THEN END_IF;",
    "IF a > 1 THEN b := 1; ELSE IF c THEN b := 2; END_IF; END_IF;",
    "IF a THEN ELSE END_IF;",
    "REPEAT; ESCAPE; END_REPEAT;",
    "REPEAT i := 1 TO 10; SKIP; END_REPEAT;",
    "REPEAT i := 10 TO 1 BY -1 WHILE a UNTIL b; c := i; END_REPEAT;",
    "REPEAT UNTIL a = 3; a := a + 1; END_REPEAT;",
    "RETURN;",
    "RETURN (a AND b);",
};
const char* const g_declarations[] = {
    "CONSTANT a : REAL := 1.0; b : LIST OF INTEGER := [1, 2]; END_CONSTANT;",
    "TYPE t; WHERE w : SELF > 0; SELF < 10; END_TYPE;",
    "ENTITY e; DERIVE d : INTEGER := 3; SELF\\b.c RENAMED x : LIST [1 : n + 1] OF UNIQUE r := f(SELF); "
    "UNIQUE u : d, SELF\\b.c; d; WHERE w : d > 1; END_ENTITY;",
    "FUNCTION f : LOGICAL; RETURN (TRUE); END_FUNCTION;",
    "FUNCTION f(a, b : REAL; VAR c : SET [0 : ?] OF e) : ARRAY [l : u] OF OPTIONAL UNIQUE GENERIC : T; "
    "CONSTANT k : INTEGER := 1; END_CONSTANT; FUNCTION g(x : AGGREGATE : a OF BAG OF STRING(3) FIXED) : BINARY(8); "
    "RETURN (x); END_FUNCTION; LOCAL m, n : INTEGER := 1; o : GENERIC_ENTITY; END_LOCAL; RETURN (?); END_FUNCTION;",
    "PROCEDURE p; LOCAL END_LOCAL; END_PROCEDURE;",
    "RULE r FOR (a, b); LOCAL n : NUMBER; END_LOCAL; n := 1; WHERE w1 : n = 1; n > 0; END_RULE;",
};

// What is printed of the text has its tokens, and gives itself when it is read again.
void vExpectSame(const std::string& sText) {
    SCOPED_TRACE(sText);
    std::vector<oxa::ifc::SchemaMessage> messages;
    SchemaRules rules;
    ASSERT_TRUE(Parser(sText, messages).boReadSchema(rules)) << messages.front().sText;
    const std::string sPrinted = oxa::check::express::sText(rules);
    EXPECT_EQ(sTokens(sPrinted), sTokens(sText));
    SchemaRules again;
    ASSERT_TRUE(Parser(sPrinted, messages).boReadSchema(again));
    EXPECT_EQ(oxa::check::express::sText(again), sPrinted);
}

TEST(ExpressStatement, IsPrintedAsRead) {
    for (const char* sStatement : g_statements)
        vExpectSame(sSchema(std::string("PROCEDURE q; ") + sStatement + " END_PROCEDURE;"));
}

TEST(ExpressDeclaration, IsPrintedAsRead) {
    for (const char* sDeclaration : g_declarations) vExpectSame(sSchema(sDeclaration));
}

TEST(ExpressDeclaration, WhatTheSchemaGraphHoldsIsPassedOver) {
    const std::string sText =
        sSchema("USE FROM other (a); TYPE k = ENUMERATION OF (UNIQUE_, b); END_TYPE; "
                "ENTITY e ABSTRACT SUPERTYPE OF (ONEOF(a, b)) SUBTYPE OF (c); a : OPTIONAL LIST [1:?] OF UNIQUE k; "
                "INVERSE i : SET OF c FOR d; WHERE w : a > 1; END_ENTITY; ENTITY none; INVERSE END_ENTITY; "
                "SUBTYPE_CONSTRAINT s FOR e; TOTAL_OVER (a); END_SUBTYPE_CONSTRAINT;");
    std::vector<oxa::ifc::SchemaMessage> messages;
    SchemaRules rules;
    ASSERT_TRUE(Parser(sText, messages).boReadSchema(rules)) << messages.front().sText;
    EXPECT_EQ(oxa::check::express::sText(rules), "SCHEMA s;\nENTITY e;\nWHERE\nw : a > 1;\nEND_ENTITY;\nEND_SCHEMA;\n");
}

struct StatementFaultRow {
    const char* sText;
    unsigned iColumn;
    const char* sMessage;
};
const StatementFaultRow g_statementFaults[] = {
    {"TYPE", 1, "SCHEMA expected instead of \"TYPE\""},
    {"SCHEMA s; x", 11, "a declaration expected instead of \"x\""},
    {"SCHEMA s; END_SCHEMA; x", 23, "the end expected instead of \"x\""},
    {"SCHEMA s; RULE r FOR (a); WHERE w : a", 38, "\";\" expected instead of the end"},
    {"SCHEMA s; ENTITY e; WHERE w : 1 +; END_ENTITY;", 34, "an expression expected instead of \";\""},
    {"SCHEMA s; ENTITY e; DERIVE d : INTEGER; END_ENTITY;", 39, "\":=\" expected instead of \";\""},
    {"SCHEMA s; TYPE t; WHERE w : 1; END_ENTITY;", 32, "END_TYPE expected instead of \"END_ENTITY\""},
    {"SCHEMA s; FUNCTION f : REAL; a := ; END_FUNCTION;", 35, "an expression expected instead of \";\""},
    {"SCHEMA s; FUNCTION f : REAL; IF a b := 1; END_IF;", 35, "THEN expected instead of \"b\""},
    {"SCHEMA s; FUNCTION f : REAL; IF a THEN END_CASE;", 40, "END_IF expected instead of \"END_CASE\""},
    {"SCHEMA s; FUNCTION f : REAL; a + b; END_FUNCTION;", 32, "\";\" expected instead of \"+\""},
    {"SCHEMA s; FUNCTION f : REAL; a.b; END_FUNCTION;", 33, "\":=\" expected instead of \";\""},
    {"SCHEMA s; FUNCTION f : REAL; RETURN (1) END_FUNCTION;", 41, "\";\" expected instead of \"END_FUNCTION\""},
    {"SCHEMA s; FUNCTION f(a : LIST OF); END_FUNCTION;", 33, "a type expected instead of \")\""},
    {"SCHEMA s; PROCEDURE p; ENTITY e; END_ENTITY; END_PROCEDURE;", 24,
     "an entity or a type inside a function is not supported"},
};

TEST(ExpressDeclaration, FaultsAreToldWithLineAndColumn) {
    for (const StatementFaultRow& row : g_statementFaults) {
        SCOPED_TRACE(row.sText);
        std::vector<oxa::ifc::SchemaMessage> messages;
        SchemaRules rules;
        EXPECT_FALSE(Parser(row.sText, messages).boReadSchema(rules));
        ASSERT_EQ(messages.size(), 1U);
        EXPECT_EQ(messages[0].iLine, 1U);
        EXPECT_EQ(messages[0].iColumn, row.iColumn);
        EXPECT_EQ(messages[0].sText, row.sMessage);
    }
}

TEST(ExpressDeclaration, DepthIsBounded) {
    struct DepthRow {
        const char* sRule;
        const char* sFront;
        const char* sBegin;
        const char* sInside;
        const char* sEnd;
        const char* sBehind;
        std::size_t iMost;
    };
    const DepthRow rows[] = {
        {"statements, in a procedure, with an expression inside", "SCHEMA s; PROCEDURE p;", " BEGIN", " a := 1;",
         " END;", " END_PROCEDURE; END_SCHEMA;", 253},
        {"procedures", "SCHEMA s;", " PROCEDURE p;", "", " END_PROCEDURE;", " END_SCHEMA;", 256},
        {"types, in a function", "SCHEMA s; FUNCTION f : ", "LIST OF ", "REAL; RETURN (1); END_FUNCTION;", "",
         " END_SCHEMA;", 255},
    };
    for (const DepthRow& row : rows)
        for (const std::size_t iCount : {row.iMost, row.iMost + 1, std::size_t{100'000}}) {
            SCOPED_TRACE(std::string(row.sRule) + ", " + std::to_string(iCount));
            std::string sText = row.sFront;
            for (std::size_t i = 0; i < iCount; ++i) sText += row.sBegin;
            sText += row.sInside;
            for (std::size_t i = 0; i < iCount; ++i) sText += row.sEnd;
            std::vector<oxa::ifc::SchemaMessage> messages;
            SchemaRules rules;
            EXPECT_EQ(Parser(sText + row.sBehind, messages).boReadSchema(rules), iCount == row.iMost);
            EXPECT_EQ(messages.empty() ? "" : messages.front().sText, iCount == row.iMost ? "" : "nested too deeply");
        }
}

}   // namespace
