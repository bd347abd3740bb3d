// SPDX-License-Identifier: Apache-2.0
// Operators and built-in functions of EXPRESS (ISO 10303-11, 12 and 15), with "?" in each place.
#include "Check/Rules/ExpressRun.h"

namespace {

using oxa::test::ExpressRun;
using oxa::test::sFunctionsOf;

struct OperatorRow {
    const char* sText;
    const char* sResult;
};

const char* const g_sSchema =
    "SCHEMA S; TYPE Colour = ENUMERATION OF (RED, GREEN, BLUE); END_TYPE; TYPE Size = REAL; END_TYPE; "
    "TYPE Small = Size; END_TYPE; TYPE Any = SELECT (Size, Thing); END_TYPE; "
    "TYPE OperatorRow = LIST [2:5] OF INTEGER; END_TYPE; "
    "ENTITY Base; Name : OPTIONAL STRING; INVERSE Users : SET OF User FOR Uses; END_ENTITY; "
    "ENTITY Thing SUBTYPE OF (Base); Value : OPTIONAL Size; Items : OPTIONAL LIST OF INTEGER; "
    "DERIVE Double : REAL := Value * 2; END_ENTITY; "
    "ENTITY Odd SUBTYPE OF (Thing); DERIVE SELF\\Thing.Value : Size := 7.; END_ENTITY; "
    "ENTITY User; Uses : LIST OF Base; Choice : OPTIONAL Any; Kind : OPTIONAL Colour; Span : OPTIONAL ARRAY [3:4] OF "
    "REAL; "
    "Bounded : OPTIONAL OperatorRow; END_ENTITY; "
    "END_SCHEMA;";
const char* const g_sData = "#1=THING('a',1.5,(1,2,3));#2=THING($,$,$);#3=THING('a',1.5,(1,2,3));#4=ODD('b',*,$);"
                            "#5=USER((#1,#2,#1),SMALL(2.),.GREEN.,(0.5,1.5),(1,2));#6=USER((#3),#4,$,$,$);";

const oxa::ifc::def::SchemaPset& testSchema() {
    static const auto pSchema = [] {
        std::vector<oxa::ifc::SchemaMessage> messages;
        return oxa::ifc::SchemaLoader::pSchemaFromExpress(g_sSchema, messages);
    }();
    return *pSchema;
}

// Each text is a function of the instances #1 to #6.
template <std::size_t iCount>
void vExpect(const OperatorRow (&rows)[iCount]) {
    ExpressRun run(testSchema(), g_sSchema, sFunctionsOf(rows, "(a, b, c, d, u, v : Base)"), g_sData);
    for (std::size_t i = 0; i < iCount; ++i) {
        SCOPED_TRACE(rows[i].sText);
        EXPECT_EQ(run.sCalled("t" + std::to_string(i), {1, 2, 3, 4, 5, 6}), rows[i].sResult);
    }
}

TEST(RuleOperators, Logic) {
    static const char* const g_values[] = {"FALSE", "UNKNOWN", "TRUE", "?"};
    static const char* const g_and[] = {"FALSE",   "FALSE",   "FALSE",   "FALSE",   "FALSE", "UNKNOWN",
                                        "UNKNOWN", "UNKNOWN", "FALSE",   "UNKNOWN", "TRUE",  "UNKNOWN",
                                        "FALSE",   "UNKNOWN", "UNKNOWN", "UNKNOWN"};
    static const char* const g_or[] = {"FALSE", "UNKNOWN", "TRUE", "UNKNOWN", "UNKNOWN", "UNKNOWN", "TRUE", "UNKNOWN",
                                       "TRUE",  "TRUE",    "TRUE", "TRUE",    "UNKNOWN", "UNKNOWN", "TRUE", "UNKNOWN"};
    static const char* const g_xor[] = {"FALSE",   "UNKNOWN", "TRUE",    "UNKNOWN", "UNKNOWN", "UNKNOWN",
                                        "UNKNOWN", "UNKNOWN", "TRUE",    "UNKNOWN", "FALSE",   "UNKNOWN",
                                        "UNKNOWN", "UNKNOWN", "UNKNOWN", "UNKNOWN"};
    std::vector<std::string> texts;
    std::vector<std::pair<std::string, std::string>> expected;
    for (std::size_t i = 0; i < 16; ++i) {
        const std::string sLeft = g_values[i / 4];
        const std::string sRight = g_values[i % 4];
        expected.emplace_back(sLeft + " AND " + sRight, g_and[i]);
        expected.emplace_back(sLeft + " OR " + sRight, g_or[i]);
        expected.emplace_back(sLeft + " XOR " + sRight, g_xor[i]);
    }
    std::vector<OperatorRow> rows;
    for (const auto& [sText, sResult] : expected) rows.push_back({sText.c_str(), sResult.c_str()});
    ExpressRun run(testSchema(), g_sSchema, sFunctionsOf(rows));
    for (std::size_t i = 0; i < rows.size(); ++i)
        EXPECT_EQ(run.sCalled("t" + std::to_string(i)), rows[i].sResult) << rows[i].sText;
    vExpect({{"NOT TRUE", "FALSE"}, {"NOT FALSE", "TRUE"}, {"NOT UNKNOWN", "UNKNOWN"}, {"NOT ?", "UNKNOWN"}});
}

TEST(RuleOperators, Arithmetic) {
    vExpect({{"1 + 2", "3"},
             {"1 + 2.5", "3.5"},
             {"1 - 2", "-1"},
             {"2 * 3", "6"},
             {"2 * 0.5", "1."},
             {"7 / 2", "3.5"},
             {"6 / 2", "3."},
             {"1 / 0", "?"},
             {"7 DIV 2", "3"},
             {"-7 DIV 2", "-3"},
             {"7 DIV -2", "-3"},
             {"7.9 DIV 2", "3"},
             {"1 DIV 0", "?"},
             {"7 MOD 2", "1"},
             {"-7 MOD 2", "-1"},
             {"7 MOD -2", "-1"},
             {"-7 MOD -2", "1"},
             {"1 MOD 0", "?"},
             {"2 ** 10", "1024"},
             {"2 ** -1", "0.5"},
             {"2. ** 0.5", "1.4142135623730951"},
             {"(-1) ** 0.5", "?"},
             {"-3", "-3"},
             {"-(1 + 2)", "-3"},
             {"+3", "3"},
             {"-?", "?"},
             {"? + 1", "?"},
             {"1 + ?", "?"},
             {"? - 1", "?"},
             {"1 - ?", "?"},
             {"? * 1", "?"},
             {"1 * ?", "?"},
             {"? / 1", "?"},
             {"1 / ?", "?"},
             {"? DIV 1", "?"},
             {"1 DIV ?", "?"},
             {"? MOD 1", "?"},
             {"1 MOD ?", "?"},
             {"? ** 1", "?"},
             {"1 ** ?", "?"},
             {"9223372036854775807 + 1", "?"},
             {"9223372036854775807 * 2", "?"},
             {"10 ** 30", "?"},
             {"'ab' + 'c'", "'abc'"},
             {"%101 + %1 = %1011", "TRUE"},
             {"PI > 3.14", "TRUE"},
             {"CONST_E > 2.71", "TRUE"},
             {"'a' - 1", "fault: an operand of arithmetic is no number"},
             {"1 AND TRUE", "fault: an operand of AND, OR, XOR or NOT is no logical"}});
}

TEST(RuleOperators, Comparisons) {
    vExpect({{"1 = 1.0", "TRUE"},
             {"1 <> 1", "FALSE"},
             {"1 < 2", "TRUE"},
             {"2 <= 2", "TRUE"},
             {"1 > 2", "FALSE"},
             {"1 >= 2", "FALSE"},
             {"? = 1", "UNKNOWN"},
             {"1 = ?", "UNKNOWN"},
             {"? <> 1", "UNKNOWN"},
             {"? < 1", "UNKNOWN"},
             {"1 <= ?", "UNKNOWN"},
             {"? > 1", "UNKNOWN"},
             {"1 >= ?", "UNKNOWN"},
             {"? :=: 1", "UNKNOWN"},
             {"1 :<>: ?", "UNKNOWN"},
             {"? = ?", "UNKNOWN"},
             {"'a' < 'b'", "TRUE"},
             {"'a' = 'A'", "FALSE"},
             {"FALSE < UNKNOWN", "TRUE"},
             {"UNKNOWN < TRUE", "TRUE"},
             {"UNKNOWN = TRUE", "FALSE"},
             {"%0 < %1", "TRUE"},
             {"%01 = %010", "FALSE"},
             {"RED < BLUE", "TRUE"},
             {"Colour.GREEN > Colour.RED", "TRUE"},
             {"u\\User.Kind = GREEN", "TRUE"},
             {"u\\User.Kind = Colour.RED", "FALSE"},
             {"1 = 'a'", "UNKNOWN"},
             {"a = c", "TRUE"},
             {"a :=: c", "FALSE"},
             {"a :=: a", "TRUE"},
             {"a = b", "UNKNOWN"},
             {"a = d", "FALSE"},
             {"a :<>: c", "TRUE"},
             {"[1, 2] = [1, 2]", "TRUE"},
             {"[1, 2] = [2, 1]", "FALSE"},
             {"[1, ?] = [1, 2]", "UNKNOWN"},
             {"[1, ?] = [2, 2]", "FALSE"},
             {"[1] = [1, 2]", "FALSE"},
             {"[a] = [c]", "TRUE"},
             {"[a] :=: [c]", "FALSE"},
             {"{1 <= 2 < 3}", "TRUE"},
             {"{1 < 1 < 3}", "FALSE"},
             {"{1 < 3 <= 3}", "TRUE"},
             {"{? < 1 < 2}", "UNKNOWN"},
             {"{0 < ? < 2}", "UNKNOWN"},
             {"{0 < 1 < ?}", "UNKNOWN"},
             {"{5 < 1 < ?}", "FALSE"},
             {"1 IN [1, 2]", "TRUE"},
             {"3 IN [1, 2]", "FALSE"},
             {"? IN [1]", "UNKNOWN"},
             {"1 IN ?", "UNKNOWN"},
             {"1 IN [2, ?]", "UNKNOWN"},
             {"1 IN [1, ?]", "TRUE"},
             {"a IN [c]", "FALSE"},
             {"a IN u\\User.Uses", "TRUE"},
             {"'abc' LIKE 'a?c'", "TRUE"},
             {"'abc' LIKE 'a*'", "TRUE"},
             {"'abc' LIKE '*c'", "TRUE"},
             {"'abc' LIKE 'b*'", "FALSE"},
             {"'a1' LIKE '@#'", "TRUE"},
             {"'aB' LIKE '@^'", "TRUE"},
             {"'ab' LIKE '@^'", "FALSE"},
             {"'ab cd' LIKE '$ $'", "TRUE"},
             {"'abc' LIKE 'a&'", "TRUE"},
             {"'a*' LIKE 'a\\*'", "TRUE"},
             {"'ab' LIKE 'a\\*'", "FALSE"},
             {"'b' LIKE '!a'", "TRUE"},
             {"'a' LIKE '!a'", "FALSE"},
             {"? LIKE 'a'", "UNKNOWN"},
             {"'a' LIKE ?", "UNKNOWN"},
             {"'ab' LIKE 'ab'", "TRUE"},
             {"1 IN 2", "fault: IN what is no aggregate"}});
}

TEST(RuleOperators, Aggregates) {
    vExpect({{"[]", "[]"},
             {"[1 : 3]", "[1, 1, 1]"},
             {"[1, ? : 2]", "[1, ?, ?]"},
             {"[1, 2][2]", "2"},
             {"[1, 2][3]", "?"},
             {"[1][0]", "?"},
             {"?[1]", "?"},
             {"[1][?]", "?"},
             {"'abc'[2]", "'b'"},
             {"'abc'[2 : 3]", "'bc'"},
             {"'abc'[4]", "?"},
             {"'abc'[? : 2]", "?"},
             {"%0110[2 : 3] = %11", "TRUE"},
             {"[1, 2] + [3]", "[1, 2, 3]"},
             {"[1] + 2", "[1, 2]"},
             {"1 + [2]", "[1, 2]"},
             {"[1] + ?", "?"},
             {"? + [1]", "?"},
             {"[1, 2, 3] - [2]", "[1, 3]"},
             {"[1, 2] - 1", "[2]"},
             {"[1] - ?", "?"},
             {"[1, 2, 3] * [3, 2, 9]", "[2, 3]"},
             {"[1] * ?", "?"},
             {"TYPEOF(1) + 'x'", "['INTEGER', 'REAL', 'NUMBER', 'x']"},
             {"TYPEOF(1) + 'REAL'", "['INTEGER', 'REAL', 'NUMBER']"},
             {"TYPEOF(1) - 'REAL'", "['INTEGER', 'NUMBER']"},
             {"[1, 2] <= [3, 2, 1]", "TRUE"},
             {"[1, 4] <= [3, 2, 1]", "FALSE"},
             {"[1, 2, 3] >= [1]", "TRUE"},
             {"? <= [1]", "UNKNOWN"},
             {"[1] >= ?", "UNKNOWN"},
             {"QUERY(x <* [1, 2, 3] | x > 1)", "[2, 3]"},
             {"QUERY(x <* [1, ?] | x > 0)", "[1]"},
             {"QUERY(x <* ? | TRUE)", "?"},
             {"SIZEOF(QUERY(x <* [1, 2] | x > 1))", "1"},
             {"SIZEOF(QUERY(x <* ? | TRUE))", "?"},
             {"QUERY(x <* [1, 2] | SIZEOF(QUERY(x <* [5] | x > 1)) = x)", "[1]"},
             {"QUERY(x <* 1 | TRUE)", "fault: QUERY over what is no aggregate"},
             {"a\\Thing.Items", "[1, 2, 3]"},
             {"a\\Thing.Items[3]", "3"},
             {"u\\User.Span[4]", "1.5"},
             {"u\\User.Span[2]", "?"},
             {"u\\User.Uses[3] :=: a", "TRUE"}});
}

TEST(RuleOperators, Instances) {
    vExpect({{"a.Name", "'a'"},
             {"b.Name", "?"},
             {"?.Name", "?"},
             {"a.Nothing", "?"},
             {"a\\Thing.Value", "1.5"},
             {"u\\Thing.Value", "?"},
             {"a\\Thing.Double", "3."},
             {"b\\Thing.Double", "?"},
             {"d\\Thing.Value", "7."},
             {"d\\Thing.Double", "14."},
             {"a.Users", "[#5=User]"},
             {"d.Users", "[]"},
             {"u\\User.Choice", "2."},
             {"v\\User.Choice", "#4=Odd"},
             {"Base('x') || Thing(1., ?)", "Thing('x', 1., ?)"},
             {"(Base('x') || Thing(1., ?)).Name", "'x'"},
             {"(Base('x') || Thing(2., ?)).Double", "4."},
             {"Base('x') || ?", "?"},
             {"a || b", "Thing('a', 1.5, [1, 2, 3])"},
             {"Base('x') :=: Base('x')", "FALSE"},
             {"Base('x') = Base('x')", "TRUE"}});
}

TEST(RuleFunctions, BuiltIn) {
    vExpect({{"ABS(-1)", "1"},
             {"ABS(-1.5)", "1.5"},
             {"ABS(?)", "?"},
             {"ACOS(1)", "0."},
             {"ASIN(0)", "0."},
             {"ASIN(2)", "?"},
             {"ATAN(0, 1)", "0."},
             {"ATAN(1, 0) * 2 = PI", "TRUE"},
             {"ATAN(?, 1)", "?"},
             {"ATAN(1, ?)", "?"},
             {"BLENGTH(%101)", "3"},
             {"BLENGTH(?)", "?"},
             {"COS(0)", "1."},
             {"SIN(0)", "0."},
             {"TAN(0)", "0."},
             {"SIN(?)", "?"},
             {"EXISTS(1)", "TRUE"},
             {"EXISTS(?)", "FALSE"},
             {"EXISTS(b.Name)", "FALSE"},
             {"EXP(0)", "1."},
             {"LOG(1)", "0."},
             {"LOG(0)", "?"},
             {"LOG2(8)", "3."},
             {"LOG10(1000)", "3."},
             {"SQRT(9)", "3."},
             {"SQRT(-1)", "?"},
             {"HIBOUND([1])", "?"},
             {"HIBOUND(u\\User.Bounded)", "5"},
             {"LOBOUND(u\\User.Bounded)", "2"},
             {"LOBOUND([1])", "0"},
             {"LOBOUND(u\\User.Span)", "3"},
             {"HIBOUND(u\\User.Span)", "4"},
             {"HIINDEX(u\\User.Span)", "4"},
             {"LOINDEX(u\\User.Span)", "3"},
             {"HIINDEX([7, 8])", "2"},
             {"LOINDEX([7])", "1"},
             {"HIINDEX([])", "0"},
             {"HIINDEX(?)", "?"},
             {"LENGTH('abc')", "3"},
             {"LENGTH(\"000000C5\")", "1"},
             {"LENGTH(?)", "?"},
             {"NVL(?, 1)", "1"},
             {"NVL(2, 1)", "2"},
             {"ODD(3)", "TRUE"},
             {"ODD(-3)", "TRUE"},
             {"ODD(2)", "FALSE"},
             {"ODD(?)", "?"},
             {"SIZEOF([1, 2])", "2"},
             {"SIZEOF(?)", "?"},
             {"SIZEOF(u\\User.Uses)", "3"},
             {"VALUE('12')", "12"},
             {"VALUE('+1.5')", "1.5"},
             {"VALUE('x')", "?"},
             {"VALUE(?)", "?"},
             {"VALUE_IN([c], a)", "TRUE"},
             {"VALUE_IN([d], a)", "FALSE"},
             {"VALUE_IN([1, ?], 2)", "UNKNOWN"},
             {"VALUE_IN(?, a)", "UNKNOWN"},
             {"VALUE_IN([a], ?)", "UNKNOWN"},
             {"VALUE_UNIQUE([1, 2])", "TRUE"},
             {"VALUE_UNIQUE([1, 1.0])", "FALSE"},
             {"VALUE_UNIQUE([a, c])", "FALSE"},
             {"VALUE_UNIQUE([1, ?])", "UNKNOWN"},
             {"VALUE_UNIQUE([1, ?, 1])", "FALSE"},
             {"VALUE_UNIQUE(?)", "UNKNOWN"},
             {"FORMAT(123.456, '8.2F')", "'  123.46'"},
             {"FORMAT(123.456, '+8.2F')", "' +123.46'"},
             {"FORMAT(-7, '3I')", "' -7'"},
             {"FORMAT(7, '03I')", "'007'"},
             {"FORMAT(1234., '10.3E')", "' 1.234E+03'"},
             {"FORMAT(123.456, '###.##')", "'123.46'"},
             {"FORMAT(1234567.891, '###,###,###.##')", "'  1,234,567.89'"},
             {"FORMAT(-1, '(##)')", "'( 1)'"},
             {"FORMAT(?, '7I')", "?"},
             {"FORMAT(1, ?)", "?"},
             {"ABS('a')", "fault: the argument of ABS is no number"}});
}

TEST(RuleFunctions, TypesAndRoles) {
    vExpect({{"'S.THING' IN TYPEOF(a)", "TRUE"},
             {"'S.BASE' IN TYPEOF(a)", "TRUE"},
             {"'S.ODD' IN TYPEOF(a)", "FALSE"},
             {"'S.ANY' IN TYPEOF(a)", "TRUE"},
             {"'S.Thing' IN TYPEOF(a)", "TRUE"},
             {"'T.THING' IN TYPEOF(a)", "FALSE"},
             {"'S.THING' IN TYPEOF(?)", "FALSE"},
             {"'S.NONE' IN TYPEOF(a)", "FALSE"},
             {"'S.SMALL' IN TYPEOF(u\\User.Choice)", "TRUE"},
             {"'S.SIZE' IN TYPEOF(u\\User.Choice)", "TRUE"},
             {"'REAL' IN TYPEOF(u\\User.Choice)", "TRUE"},
             {"'LIST' IN TYPEOF(u\\User.Uses)", "TRUE"},
             {"SIZEOF(TYPEOF(a) * ['S.THING', 'S.BASE', 'S.ODD'])", "2"},
             {"SIZEOF(['S.THING', 'S.thing'] * TYPEOF(a))", "1"},
             {"TYPEOF(a) = TYPEOF(b)", "TRUE"},
             {"TYPEOF(a) <> TYPEOF(d)", "TRUE"},
             {"TYPEOF(?) = TYPEOF(?)", "TRUE"},
             {"TYPEOF(1) = TYPEOF(2)", "TRUE"},
             {"TYPEOF(a) = TYPEOF(?)", "FALSE"},
             {"TYPEOF(d)", "['S.ODD', 'S.THING', 'S.BASE', 'S.ANY']"},
             {"TYPEOF(?)", "[]"},
             {"TYPEOF(u\\User.Choice)", "['S.SMALL', 'S.SIZE', 'REAL', 'NUMBER', 'S.ANY']"},
             {"TYPEOF(TRUE)", "['BOOLEAN', 'LOGICAL']"},
             {"USEDIN(a, 'S.USER.USES')", "[#5=User, #5=User]"},
             {"USEDIN(d, 'S.USER.CHOICE')", "[#6=User]"},
             {"USEDIN(b, 'S.USER.CHOICE')", "[]"},
             {"USEDIN(a, '')", "[#5=User, #5=User]"},
             {"USEDIN(?, '')", "?"},
             {"USEDIN(a, ?)", "?"},
             {"ROLESOF(d)", "['S.USER.CHOICE']"},
             {"ROLESOF(?)", "?"},
             {"USEDIN(a, 'S.USER.NONE')", "fault: USEDIN names no attribute: S.USER.NONE"}});
}

// Statements of a function whose result is r.
struct BodyRow {
    const char* sBody;
    const char* sResult;
};
const BodyRow g_bodies[] = {
    {"r := 1; r := r + 1;", "2"},
    {"REPEAT i := 1 TO 4; r := NVL(r, 0) + i; END_REPEAT;", "10"},
    {"REPEAT i := 4 TO 1 BY -1; r := NVL(r, 0) * 10 + i; END_REPEAT;", "4321"},
    {"REPEAT i := 1 TO ?; r := 1; END_REPEAT;", "?"},
    {"r := 0; REPEAT WHILE r < 5; r := r + 1; END_REPEAT;", "5"},
    {"r := 0; REPEAT UNTIL r >= 3; r := r + 1; END_REPEAT;", "3"},
    {"r := 0; REPEAT i := 1 TO 9; IF i > 3 THEN ESCAPE; END_IF; r := i; END_REPEAT;", "3"},
    {"r := 0; REPEAT i := 1 TO 5; IF ODD(i) THEN SKIP; END_IF; r := r + i; END_REPEAT;", "6"},
    {"REPEAT i := 1 TO 5; IF i = 2 THEN RETURN (i); END_IF; END_REPEAT;", "2"},
    {"IF UNKNOWN THEN r := 1; ELSE r := 2; END_IF;", "2"},
    {"IF ? THEN r := 1; ELSE r := 2; END_IF;", "2"},
    {"CASE 2 OF 1 : r := 1; 2, 3 : r := 23; END_CASE;", "23"},
    {"CASE ? OF 1 : r := 1; OTHERWISE : r := 9; END_CASE;", "9"},
    {"CASE 'x' OF 'y' : r := 1; END_CASE;", "?"},
    {"l := [1, 2]; k := l; l[1] := 5; r := k;", "[1, 2]"},
    {"l := [1, 2]; l[3] := 5; r := l;", "[1, 2, 5]"},
    {"l := [1]; l[3] := 5;", "fault: an item is assigned outside of its aggregate"},
    {"l := [3, 3, 1]; s := l; r := s;", "[3, 1]"},
    {"s := []; s := s + 2; s := s + 1; s := s + 2; r := s;", "[2, 1]"},
    {"s := []; REPEAT i := 1 TO 100; s := s + (i MOD 40); END_REPEAT; r := SIZEOF(s);", "40"},
    {"y := [7, 8]; y[0] := 9; r := [LOINDEX(y), HIINDEX(y), y[0], y[1]];", "[0, 1, 9, 8]"},
    {"t := Base('x') || Thing(1., [1]); w := t; t.Value := 2.; t.Items[1] := 3; r := [w.Value, w.Items[1], t.Value, "
     "t.Items[1]];",
     "[1., 1, 2., 3]"},
    {"l := [1, 2, 3]; INSERT(l, 9, 0); REMOVE(l, 3); r := l;", "[9, 1, 3]"},
    {"l := [1]; REMOVE(l, 2);", "fault: REMOVE outside of a list"},
    {"l := [1, 2]; ALIAS x FOR l[2]; x := x + 5; END_ALIAS; r := l;", "[1, 7]"},
    {"r := 1; Twice(r); Twice(r);", "4"},
    {"l := [1, 2]; Twice(l[2]); r := l;", "[1, 4]"},
    {"BEGIN r := Factorial(5); END;", "120"},
    {"r := Outer(3);", "13"},
    {"r := Limit + 1;", "43"},
};

TEST(RuleStatements, Run) {
    std::string sTests =
        "CONSTANT Limit : INTEGER := 42; END_CONSTANT; PROCEDURE Twice(VAR x : INTEGER); x := x * 2; END_PROCEDURE; "
        "FUNCTION Factorial(n : INTEGER) : INTEGER; IF n < 2 THEN RETURN (1); END_IF; RETURN (n * Factorial(n - 1)); "
        "END_FUNCTION; FUNCTION Outer(n : INTEGER) : INTEGER; FUNCTION Inner(m : INTEGER) : INTEGER; RETURN (n + m); "
        "END_FUNCTION; LOCAL k : INTEGER := 10; END_LOCAL; RETURN (Inner(k)); END_FUNCTION; ";
    std::size_t iRow = 0;
    for (const BodyRow& row : g_bodies)
        sTests +=
            "FUNCTION t" + std::to_string(iRow++) +
            " : GENERIC; LOCAL r : GENERIC; l, k : LIST OF INTEGER; s : SET OF INTEGER; y : ARRAY [0:1] OF INTEGER; "
            "t, w : Thing; END_LOCAL; " +
            row.sBody + " RETURN (r); END_FUNCTION; ";
    ExpressRun run(testSchema(), g_sSchema, sTests);
    for (std::size_t i = 0; i < std::size(g_bodies); ++i) {
        SCOPED_TRACE(g_bodies[i].sBody);
        EXPECT_EQ(run.sCalled("t" + std::to_string(i)), g_bodies[i].sResult);
    }
}

TEST(RuleStatements, WhatHasNoEndIsStopped) {
    const OperatorRow g_endless[] = {{"Endless()", "fault: it takes too many steps"},
                                     {"Deep(1)", "fault: functions call each other too deeply"},
                                     {"Large()", "fault: it needs too much memory"}};
    const std::string sTests = "FUNCTION Endless : REAL; REPEAT; END_REPEAT; END_FUNCTION; FUNCTION Deep(n : INTEGER) "
                               ": REAL; RETURN (1 + Deep(n + 1)); "
                               "END_FUNCTION; FUNCTION Large : REAL; LOCAL s : STRING := 'aaaaaaaaaaaaaaaaaaaaaaaa'; "
                               "END_LOCAL; REPEAT; s := s + s; "
                               "END_REPEAT; END_FUNCTION; ";
    oxa::check::rules::Limits limits;
    limits.iSteps = 2'000'000;
    limits.iMemory = 10'000'000;
    ExpressRun run(testSchema(), g_sSchema, sTests + sFunctionsOf(g_endless), {}, limits);
    for (std::size_t i = 0; i < std::size(g_endless); ++i)
        EXPECT_EQ(run.sCalled("t" + std::to_string(i)), g_endless[i].sResult) << g_endless[i].sText;
}

// A text that means nothing to the schema is a fault of what holds it, and of nothing else.
TEST(RuleStatements, FaultyTextsStayAlone) {
    const OperatorRow g_faulty[] = {{"Nothing", "fault: t0: nothing has the name Nothing, line 1"},
                                    {"Nothing(1)", "fault: t1: no function has the name Nothing, line 1"},
                                    {"SIZEOF(1, 2)", "fault: t2: SIZEOF has 2 arguments, line 1"},
                                    {"Colour.PINK", "fault: t3: PINK is no item of Colour, line 1"},
                                    {"?\\Colour", "fault: t4: Colour is no entity, line 1"},
                                    {"Thing(1)", "fault: t5: Thing is made of 1 values, line 1"},
                                    {"1 + 1", "2"}};
    ExpressRun run(testSchema(), g_sSchema, sFunctionsOf(g_faulty));
    for (std::size_t i = 0; i < std::size(g_faulty); ++i)
        EXPECT_EQ(run.sCalled("t" + std::to_string(i)), g_faulty[i].sResult) << g_faulty[i].sText;
}

}   // namespace
