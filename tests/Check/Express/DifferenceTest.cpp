// SPDX-License-Identifier: Apache-2.0
// The rules of a schema by what differs from another one's, and back.
#include <gtest/gtest.h>

#include "Check/Express/Difference.h"
#include "Check/Express/Parser.h"
#include "Check/Express/Printer.h"

namespace {

using namespace oxa::check::express;

SchemaRules read(std::string_view text) {
    SchemaRules rules;
    std::vector<oxa::ifc::SchemaMessage> messages;
    EXPECT_TRUE(Parser(text, messages).boReadSchema(rules)) << text;
    return rules;
}

const char* const g_sBase =
    "SCHEMA S;\nTYPE A;\nWHERE\nW : SELF > 0;\nEND_TYPE;\nENTITY B;\nWHERE\nW : C > 0;\nEND_ENTITY;\nENTITY "
    "D;\nWHERE\nW : E > "
    "0;\nEND_ENTITY;\nFUNCTION F : REAL;\nRETURN (1);\nEND_FUNCTION;\nRULE G FOR (B);\nWHERE\nW : TRUE;\nEND_RULE;\n"
    "END_SCHEMA;\n";
const char* const g_sOwn =
    "SCHEMA S;\nTYPE A;\nWHERE\nW : SELF > 0;\nEND_TYPE;\nENTITY B;\nWHERE\nW : C > 1;\nEND_ENTITY;\nENTITY "
    "C;\nWHERE\nW : E > "
    "0;\nEND_ENTITY;\nFUNCTION F : REAL;\nRETURN (1);\nEND_FUNCTION;\nFUNCTION H : REAL;\nRETURN (2);\nEND_FUNCTION;\n"
    "RULE G FOR (B);\nWHERE\nW : TRUE;\nEND_RULE;\nEND_SCHEMA;\n";
const char* const g_sDifference = "BASE Z;\nDROP D;\nSCHEMA S;\nENTITY B;\nWHERE\nW : C > 1;\nEND_ENTITY;\nENTITY "
                                  "C;\nWHERE\nW : E > 0;\nEND_ENTITY;\n"
                                  "FUNCTION H : REAL;\nRETURN (2);\nEND_FUNCTION;\nEND_SCHEMA;\n";

TEST(RuleDifference, HoldsWhatIsOtherThanInTheBase) {
    EXPECT_EQ(sText(difference(read(g_sOwn), read(g_sBase), "Z")), g_sDifference);
}

TEST(RuleDifference, MakesTheSchemaOfItsBase) {
    std::string_view text = g_sDifference;
    RuleDifference difference = differenceHead(text);
    EXPECT_EQ(difference.sBase, "Z");
    EXPECT_EQ(difference.dropped, std::vector<std::string>{"D"});
    difference.rules = read(text);
    SchemaRules rules = read(g_sBase);
    vApply(rules, std::move(difference));
    EXPECT_EQ(sText(rules), g_sOwn);
}

TEST(RuleDifference, HasNoBaseWithoutOne) {
    std::string_view text = g_sBase;
    EXPECT_EQ(differenceHead(text).sBase, "");
    EXPECT_EQ(text, g_sBase);
}

TEST(RuleDifference, NamesOfOneSchemaBecomeThoseOfAnother) {
    EXPECT_EQ(sRenamed("'S.A' IN ['S.B', 'SS.C', 'T.S.D', S.E]", "S", "IFC9"),
              "'IFC9.A' IN ['IFC9.B', 'SS.C', 'T.S.D', S.E]");
}

}   // namespace
