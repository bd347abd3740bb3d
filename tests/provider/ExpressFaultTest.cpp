// SPDX-License-Identifier: Apache-2.0
// Faults: no schema, and a message with the line and column where the fault stands.
#include "ExpressTestSupport.h"

namespace {

using namespace oxa::test;

struct ExpressFaultRow {
    const char* sText;
    const char* sFaults;   // "line:column text", one a line
};

void vExpectFaults(const ExpressFaultRow& row) {
    SCOPED_TRACE(row.sText);
    EXPECT_EQ(sFaults(row.sText), row.sFaults);
}

TEST(ExpressFault, OfTheTextStopsTheReading) {
    const ExpressFaultRow rows[] = {
        {"", "1:1 SCHEMA expected, the end of the text found"},
        {"\xEF\xBB\xBFx", "1:1 SCHEMA expected, \"x\" found"},
        {"SCHEMA ;", "1:8 the schema's name expected, \";\" found"},
        {"SCHEMA S", "1:9 \";\" expected, the end of the text found"},
        {"SCHEMA S;", "1:10 a declaration or END_SCHEMA expected, the end of the text found"},
        {"SCHEMA S;\nEND_SCHEMA", "2:11 \";\" expected, the end of the text found"},
        {"SCHEMA S; END_SCHEMA; SCHEMA T;", "1:23 the end of the text expected, \"SCHEMA\" found"},
        {"SCHEMA S; END_TYPE;", "1:11 a declaration or END_SCHEMA expected, \"END_TYPE\" found"},
        {"SCHEMA S; USE FROM T; END_SCHEMA;", "1:11 refers to another schema; only the long form is read"},
        {"SCHEMA S; REFERENCE FROM T;", "1:11 refers to another schema; only the long form is read"},
        {"SCHEMA S;\n  (* x\n (* *)", "2:3 comment not closed"},
        {"SCHEMA S; CONSTANT 'a\n'", "1:20 string not closed on its line"},
        {"SCHEMA S;\n\t\x80", "2:2 not a character of EXPRESS"},
        {"SCHEMA S; RULE R; END_FUNCTION;", "1:11 RULE not closed"},
        {"SCHEMA S; FUNCTION F; FUNCTION G; END_FUNCTION;", "1:11 FUNCTION not closed"},
        {"SCHEMA S; PROCEDURE P; END_PROCEDURE END_SCHEMA;", "1:38 \";\" expected, \"END_SCHEMA\" found"},
        {"SCHEMA S; ENTITY aVeryLongNameThatIsCutInTheMessageBecauseItIsTooLong "
         "aVeryLongNameThatIsCutInTheMessage123456;",
         "1:71 \";\" expected, \"aVeryLongNameThatIsCutInTheMessage123456\" found"},
        {"SCHEMA S; ENTITY E aVeryLongNameThatIsCutInTheMessage1234567;",
         "1:20 \";\" expected, \"aVeryLongNameThatIsCutInTheMessage123456\" found"},
        {"SCHEMA S; ENTITY E aVeryLongNameThatIsCutInTheMessage12345;",
         "1:20 \";\" expected, \"aVeryLongNameThatIsCutInTheMessage12345\" found"},
    };
    for (const ExpressFaultRow& row : rows) vExpectFaults(row);
}

TEST(ExpressFault, OfATypeDeclaration) {
    const ExpressFaultRow rows[] = {
        {"SCHEMA S; TYPE = REAL;", "1:16 the type's name expected, \"=\" found"},
        {"SCHEMA S; TYPE T REAL;", "1:18 \"=\" expected, \"REAL\" found"},
        {"SCHEMA S; TYPE T = ;", "1:20 a type expected, \";\" found"},
        {"SCHEMA S; TYPE T = REAL", "1:24 \";\" expected, the end of the text found"},
        {"SCHEMA S; TYPE T = REAL; END_ENTITY;", "1:26 END_TYPE expected, \"END_ENTITY\" found"},
        {"SCHEMA S; TYPE T = REAL; WHERE W : TRUE END_TYPE;", "1:41 \";\" expected, \"END_TYPE\" found"},
        {"SCHEMA S; TYPE T = REAL; WHERE W : TRUE RULE R;", "1:41 \";\" expected, \"RULE\" found"},
        {"SCHEMA S; TYPE T = REAL; WHERE W : TRUE FUNCTION F;", "1:41 \";\" expected, \"FUNCTION\" found"},
        {"SCHEMA S; TYPE T = REAL; WHERE W : TRUE PROCEDURE P;", "1:41 \";\" expected, \"PROCEDURE\" found"},
        {"SCHEMA S; TYPE T = REAL; WHERE W : TRUE ENTITY E;", "1:41 \";\" expected, \"ENTITY\" found"},
        {"SCHEMA S; TYPE T = REAL; WHERE W : TRUE TYPE U;", "1:41 \";\" expected, \"TYPE\" found"},
        {"SCHEMA S; TYPE T = REAL; WHERE W : TRUE END_SCHEMA;", "1:41 \";\" expected, \"END_SCHEMA\" found"},
        {"SCHEMA S; TYPE T = STRING(x);", "1:27 a width expected, \"x\" found"},
        {"SCHEMA S; TYPE T = STRING(2.5);", "1:27 a width expected, \"2.5\" found"},
        {"SCHEMA S; TYPE T = STRING(0);", "1:27 a width expected, \"0\" found"},
        {"SCHEMA S; TYPE T = STRING(99999999999);", "1:27 a width expected, \"99999999999\" found"},
        {"SCHEMA S; TYPE T = STRING(2;", "1:28 \")\" expected, \";\" found"},
        {"SCHEMA S; TYPE T = ARRAY OF REAL;", "1:26 \"[\" expected, \"OF\" found"},
        {"SCHEMA S; TYPE T = LIST [1] OF REAL;", "1:27 \":\" of the bounds expected, \"]\" found"},
        {"SCHEMA S; TYPE T = LIST [1:2 OF REAL;", "1:37 \"]\" expected, \";\" found"},
        {"SCHEMA S; TYPE T = LIST [1:2] REAL;", "1:31 OF expected, \"REAL\" found"},
        {"SCHEMA S; TYPE T = ENUMERATION (A);", "1:32 OF expected, \"(\" found"},
        {"SCHEMA S; TYPE T = ENUMERATION OF ();", "1:36 an enumerator expected, \")\" found"},
        {"SCHEMA S; TYPE T = ENUMERATION OF (A B);", "1:38 \")\" expected, \"B\" found"},
        {"SCHEMA S; TYPE T = ENUMERATION;", "1:31 OF expected, \";\" found"},
        {"SCHEMA S; TYPE T = SELECT;", "1:26 \"(\" expected, \";\" found"},
        {"SCHEMA S; TYPE T = SELECT (A,);", "1:30 the name of a type or entity expected, \")\" found"},
        {"SCHEMA S; TYPE T = EXTENSIBLE REAL;", "1:31 ENUMERATION or SELECT expected, \"REAL\" found"},
        {"SCHEMA S; TYPE T = EXTENSIBLE GENERIC_ENTITY ENUMERATION;", "1:46 SELECT expected, \"ENUMERATION\" found"},
        {"SCHEMA S; TYPE T = ENUMERATION BASED_ON;", "1:40 the name of a type expected, \";\" found"},
    };
    for (const ExpressFaultRow& row : rows) vExpectFaults(row);
}

TEST(ExpressFault, OfAnEntityDeclaration) {
    const ExpressFaultRow rows[] = {
        {"SCHEMA S; ENTITY ;", "1:18 the entity's name expected, \";\" found"},
        {"SCHEMA S; ENTITY E SUPERTYPE;", "1:29 OF expected, \";\" found"},
        {"SCHEMA S; ENTITY E SUPERTYPE OF (A;", "1:33 \"(\" not closed"},
        {"SCHEMA S; ENTITY E SUBTYPE OF A;", "1:31 \"(\" expected, \"A\" found"},
        {"SCHEMA S; ENTITY E SUBTYPE OF (A, B);", "1:33 E has more than one supertype, which is not supported"},
        {"SCHEMA S; ENTITY E; A REAL;", "1:23 \":\" expected, \"REAL\" found"},
        {"SCHEMA S; ENTITY E; A := REAL;", "1:23 \":\" expected, \":=\" found"},
        {"SCHEMA S; ENTITY E SUPERTYPE OF (A; B); END_ENTITY; END_SCHEMA;", "1:33 \"(\" not closed"},
        {"SCHEMA S; ENTITY E; DERIVE D : REAL := 1; WHERE W : TRUE; UNIQUE U : D; END_ENTITY; END_SCHEMA;",
         "1:59 END_ENTITY expected, \"UNIQUE\" found"},
        {"SCHEMA S; ENTITY E; A, : REAL;", "1:24 an attribute's name expected, \":\" found"},
        {"SCHEMA S; ENTITY E; A : OPTIONAL;", "1:33 a type expected, \";\" found"},
        {"SCHEMA S; ENTITY E; A : REAL\nEND_ENTITY;", "2:1 \";\" expected, \"END_ENTITY\" found"},
        {"SCHEMA S; ENTITY E; SELF.A : REAL;", "1:25 \"\\\" expected, \".\" found"},
        {"SCHEMA S; ENTITY E; ENTITY F;", "1:21 END_ENTITY expected, \"ENTITY\" found"},
        {"SCHEMA S; ENTITY E; DERIVE D : REAL := 1 END_ENTITY;", "1:42 \";\" expected, \"END_ENTITY\" found"},
        {"SCHEMA S; ENTITY E; INVERSE I : LIST OF F FOR A;",
         "1:33 the referring entity's name expected, \"LIST\" found"},
        {"SCHEMA S; ENTITY E; INVERSE I : SET F FOR A;", "1:37 OF expected, \"F\" found"},
        {"SCHEMA S; ENTITY E; INVERSE I : F A;", "1:35 FOR expected, \"A\" found"},
        {"SCHEMA S; ENTITY E; WHERE W : TRUE; INVERSE I : F FOR A; END_ENTITY;",
         "1:37 END_ENTITY expected, \"INVERSE\" found"},
        {"SCHEMA S; ENTITY E; A : REAL;", "1:30 END_ENTITY expected, the end of the text found"},
    };
    for (const ExpressFaultRow& row : rows) vExpectFaults(row);
}

// "declarations" as a whole text that begins in line 2.
std::string sText(const char* sDeclarations) { return std::string("SCHEMA S;\n") + sDeclarations + "\nEND_SCHEMA;"; }

TEST(ExpressFault, OfNamesHasAMessageEach) {
    const ExpressFaultRow rows[] = {
        {"TYPE T = X; END_TYPE; TYPE U = LIST OF Y; END_TYPE;", "2:40 \"Y\" is not declared"},
        {"TYPE T = X; END_TYPE;\nTYPE U = Y; END_TYPE;", "2:10 \"X\" is not declared\n3:10 \"Y\" is not declared"},
        {"TYPE T = REAL; END_TYPE;\nENTITY t; END_ENTITY;", "3:8 \"t\" is declared twice"},
        {"ENTITY E; END_ENTITY; TYPE T = E; END_TYPE;", "2:32 \"E\" is an entity; a type cannot be defined by it"},
        {"TYPE T = SELECT (X); END_TYPE;", "2:18 \"X\" is not declared"},
        {"TYPE T = ENUMERATION OF (A, B, a); END_TYPE;", "2:32 \"a\" is enumerated twice"},
        {"TYPE T = ENUMERATION BASED_ON X; END_TYPE;", "2:31 \"X\" is not declared"},
        {"TYPE X = REAL; END_TYPE; TYPE T = SELECT BASED_ON X; END_TYPE;",
         "2:51 \"X\" cannot be extended by a type of another form"},
        {"ENTITY E; END_ENTITY; TYPE T = SELECT BASED_ON E; END_TYPE;", "2:48 \"E\" is not a type"},
        {"ENTITY E SUBTYPE OF (X); END_ENTITY;", "2:22 \"X\" is not declared"},
        {"TYPE T = REAL; END_TYPE; ENTITY E SUBTYPE OF (T); END_ENTITY;", "2:47 \"T\" is not an entity"},
        {"ENTITY E; A : X; END_ENTITY;", "2:15 \"X\" is not declared"},
        {"ENTITY E; A : LIST OF X; END_ENTITY;", "2:23 \"X\" is not declared"},
        {"ENTITY E; A : REAL; a : REAL; END_ENTITY;", "2:21 \"a\" is declared twice in \"E\""},
        {"ENTITY E; A : E; INVERSE A : E FOR A; END_ENTITY;", "2:26 \"A\" is declared twice in \"E\""},
        {"ENTITY E; INVERSE I : X FOR A; END_ENTITY;", "2:23 \"X\" is not declared"},
        {"ENTITY E; INVERSE I : E FOR A; END_ENTITY;", "2:29 \"A\" is not an attribute of \"E\""},
        {"TYPE T = REAL; END_TYPE; ENTITY E; INVERSE I : T FOR A; END_ENTITY;", "2:48 \"T\" is not an entity"},
        {"ENTITY E; INVERSE I : F FOR J; END_ENTITY; ENTITY F; A : E; INVERSE J : E FOR A; END_ENTITY;",
         "2:29 \"J\" is not an attribute of \"F\"\n2:79 \"A\" is not an attribute of \"E\""},
    };
    for (const ExpressFaultRow& row : rows) {
        SCOPED_TRACE(row.sText);
        EXPECT_EQ(sFaults(sText(row.sText)), row.sFaults);
    }
}

TEST(ExpressFault, OfCyclesHasAMessageEach) {
    const ExpressFaultRow rows[] = {
        {"TYPE T = T; END_TYPE;", "2:6 \"T\" is defined by itself"},
        {"TYPE T = U; END_TYPE; TYPE U = T; END_TYPE; TYPE V = U; END_TYPE;", "2:6 \"T\" is defined by itself"},
        {"TYPE T = LIST OF T; END_TYPE;", "2:6 \"T\" is an aggregate of itself"},
        {"TYPE T = LIST OF U; END_TYPE; TYPE U = T; END_TYPE;", "2:6 \"T\" is an aggregate of itself"},
        {"TYPE T = SELECT (T); END_TYPE;", "2:6 \"T\" is a select that contains itself"},
        {"TYPE T = SELECT (U); END_TYPE; TYPE U = V; END_TYPE; TYPE V = SELECT (T); END_TYPE;",
         "2:6 \"T\" is a select that contains itself"},
        {"TYPE T = SELECT BASED_ON T; END_TYPE;", "2:6 \"T\" is based on itself"},
        {"ENTITY E SUBTYPE OF (E); END_ENTITY;", "2:8 \"E\" is its own supertype"},
        {"ENTITY E SUBTYPE OF (F); END_ENTITY; ENTITY F SUBTYPE OF (E); END_ENTITY;"
         "ENTITY G SUBTYPE OF (F); END_ENTITY; ENTITY H SUBTYPE OF (H); END_ENTITY;",
         "2:8 \"E\" is its own supertype\n2:118 \"H\" is its own supertype"},
    };
    for (const ExpressFaultRow& row : rows) {
        SCOPED_TRACE(row.sText);
        EXPECT_EQ(sFaults(sText(row.sText)), row.sFaults);
    }
}

TEST(ExpressFault, ASelectMayContainAnAggregateOfItself) {
    EXPECT_EQ(sFaults(sText("TYPE T = SELECT (L); END_TYPE; TYPE L = LIST OF T; END_TYPE;")), "no fault");
}

TEST(ExpressFault, MessagesAreAddedToThoseThere) {
    std::vector<oxa::ifc::SchemaMessage> messages = {{7, 8, "earlier"}};
    EXPECT_EQ(oxa::ifc::SchemaLoader::pSchemaFromExpress("x", messages), nullptr);
    EXPECT_EQ(sMessages(messages), "7:8 earlier\n1:1 SCHEMA expected, \"x\" found");
}

}   // namespace
