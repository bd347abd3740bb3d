// SPDX-License-Identifier: Apache-2.0
// What no graph holds: remarks, functions, procedures, rules, constants, WHERE and UNIQUE clauses.
#include "ExpressTestSupport.h"

namespace {

using namespace oxa::test;

TEST(ExpressSkipped, DeclarationsAroundItStay) {
    struct Row {
        const char* name;
        const char* sText;
    };
    const Row rows[] = {
        {"nothing", ""},
        {"remark", "(* ENTITY X; *)"},
        {"remark in a remark", "(* a (* END_SCHEMA; *) ( * ) ** b *)"},
        {"a remark that begins with a parenthesis", "(*) ENTITY X; *)"},
        {"tail remark", "-- ENTITY X; (* ' \"\n"},
        {"remark with any bytes", "(* \xC3\xA4\x01' *)"},
        {"function", "FUNCTION F (A : LIST OF GENERIC) : REAL; RETURN (1.5E-3); END_FUNCTION;"},
        {"function in a function",
         "FUNCTION F : REAL; FUNCTION G : REAL; END_FUNCTION; PROCEDURE P; END_PROCEDURE; END_FUNCTION;"},
        {"strings in a function", "FUNCTION F : REAL; X := 'END_FUNCTION;' + 'it''s' + \"0000\"; END_FUNCTION;"},
        {"entity parameter in a function", "FUNCTION F (A : AGGREGATE OF E) : ENTITY; TYPE END_FUNCTION;"},
        {"procedure", "PROCEDURE P; END_PROCEDURE;"},
        {"rule", "RULE R FOR (E); LOCAL X : REAL := 1; END_LOCAL; WHERE W : TRUE; END_RULE;"},
        {"constant", "CONSTANT C : REAL := 1.0; D : STRING := 'END_CONSTANT'; END_CONSTANT;"},
        {"subtype constraint", "SUBTYPE_CONSTRAINT S FOR E; ABSTRACT SUPERTYPE; END_SUBTYPE_CONSTRAINT;"},
        {"where clause of a type",
         "TYPE T = REAL; WHERE W1 : {0 <= SELF <= 1}; SELF IN [1, 2]; W2 : 'a;' <> %01; END_TYPE;"},
        {"where clause of an entity",
         "ENTITY X; WHERE W : SIZEOF(QUERY(t <* SELF\\Y.Z | 'T.E' IN TYPEOF(t))) :=: 0; END_ENTITY;"},
        {"all operators", "FUNCTION F : REAL; a := b**c||d <= e >= f <> g :<>: h :=: i; END_FUNCTION;"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Loaded loaded("ENTITY E; END_ENTITY; " + std::string(row.sText) + " ENTITY After; A : E; END_ENTITY;");
        EXPECT_EQ(loaded.attribute("After", "A").types.at(0), &loaded.entity("E"));
    }
}

TEST(ExpressSkipped, TheFrameOfATextMayVary) {
    struct Row {
        const char* name;
        std::string sText;
    };
    const Row rows[] = {
        {"plain", "SCHEMA Test; ENTITY E; END_ENTITY; END_SCHEMA;"},
        {"byte order mark", "\xEF\xBB\xBFSCHEMA TEST; ENTITY E; END_ENTITY; END_SCHEMA;"},
        {"version", "SCHEMA TEST '{ iso standard }'; ENTITY E; END_ENTITY; END_SCHEMA;"},
        {"version with a quote in it", "SCHEMA TEST 'it''s'; ENTITY E; END_ENTITY; END_SCHEMA;"},
        {"remarks around", "(* a *) -- b\nSCHEMA test; ENTITY E; END_ENTITY; END_SCHEMA; (* c *) -- no line end"},
        {"CR LF", "SCHEMA TEST;\r\nENTITY E;\r\nEND_ENTITY;\r\nEND_SCHEMA;\r\n"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<oxa::ifc::SchemaMessage> messages;
        const auto pSchema = oxa::ifc::SchemaLoader::pSchemaFromExpress(row.sText, messages);
        ASSERT_NE(pSchema, nullptr) << sMessages(messages);
        EXPECT_EQ(pSchema->sName, "TEST") << "as STEP files name it";
        EXPECT_NE(pSchema->pEntityFromName(ObjectName("E")), nullptr);
    }
}

}   // namespace
