// SPDX-License-Identifier: Apache-2.0
// Any bytes give a schema or messages, in bounded time and stack: never a crash, never a hang.
#include <algorithm>
#include <memory>
#include <string>

#include "ExpressTestSupport.h"

namespace {

using namespace oxa::test;

const char* const g_sText =
    "SCHEMA S '1';\n"
    "(* remark (* nested *) *) -- tail\n"
    "CONSTANT C : STRING := 'it''s'; END_CONSTANT;\n"
    "TYPE T = STRING(22) FIXED; WHERE W : SELF <> ''; END_TYPE;\n"
    "TYPE N = ENUMERATION OF (A, B); END_TYPE;\n"
    "TYPE X = SELECT (T, E); END_TYPE;\n"
    "ENTITY E ABSTRACT SUPERTYPE OF (ONEOF (F)); A, B : OPTIONAL LIST [1:?] OF UNIQUE T;\n"
    " INVERSE I : SET [0:?] OF F FOR R; END_ENTITY;\n"
    "ENTITY F SUBTYPE OF (E); SELF\\E.A : LIST OF T; R : E; DERIVE D : REAL := 1.0; UNIQUE U : R; "
    "END_ENTITY;\n"
    "FUNCTION G : REAL; RETURN (\"00\"); END_FUNCTION;\n"
    "END_SCHEMA;";

// A copy of just that size, so that a sanitizer sees each byte read too far.
void vRead(std::string_view text) {
    const auto copy = std::make_unique<char[]>(text.size());
    text.copy(copy.get(), text.size());
    std::vector<oxa::ifc::SchemaMessage> messages;
    const auto pSchema =
        oxa::ifc::SchemaLoader::pSchemaFromExpress(std::string_view(copy.get(), text.size()), messages);
    ASSERT_EQ(pSchema == nullptr, !messages.empty());
    for (const oxa::ifc::SchemaMessage& message : messages) {
        ASSERT_GE(message.iLine, 1U);
        ASSERT_GE(message.iColumn, 1U);
        ASSERT_FALSE(message.sText.empty());
    }
}

TEST(ExpressRobustness, TheTextItselfIsGood) { EXPECT_EQ(sFaults(g_sText), "no fault"); }

TEST(ExpressRobustness, EveryPrefixIsAtFault) {
    const std::string_view text = g_sText;
    for (std::size_t iLength = 0; iLength < text.size(); ++iLength) {
        SCOPED_TRACE(iLength);
        EXPECT_NE(sFaults(text.substr(0, iLength)), "no fault");
        vRead(text.substr(0, iLength));
    }
}

TEST(ExpressRobustness, EveryByteMayBeReplacedOrDoubled) {
    const std::string_view nasty("\0\n'\"(*);:\\,-[]E_9 \x7F\x80\xFF", 22);
    const std::string text = g_sText;
    for (std::size_t i = 0; i < text.size(); ++i) {
        for (const char c : nasty) {
            std::string sChanged = text;
            sChanged[i] = c;
            vRead(sChanged);
            sChanged.insert(i, 1, text[i]);
            vRead(sChanged);
        }
        vRead(std::string(text).erase(i, 1));
    }
}

TEST(ExpressRobustness, EveryWordMayBeMissingOrDoubled) {
    const std::string text = g_sText;
    for (std::size_t iStart = 0; iStart < text.size();) {
        const std::size_t iEnd = std::min(text.find(' ', iStart), text.size() - 1) + 1;
        vRead(std::string(text).erase(iStart, iEnd - iStart));
        vRead(std::string(text).insert(iStart, text.substr(iStart, iEnd - iStart)));
        iStart = iEnd;
    }
}

std::string sRepeated(const char* sPiece, std::size_t iCount) {
    std::string sText;
    while (iCount--) sText += sPiece;
    return sText;
}

// A chain of "count" declarations in which each one names the one before; "%" stands for its number and
// "#" for the number before.
std::string sChained(const char* sFirst, const char* sNext, std::size_t iCount) {
    std::string sText = std::string("SCHEMA S;\n") + sFirst;
    for (std::size_t i = 1; i < iCount; ++i) {
        for (const char* p = sNext; *p; ++p) {
            if (*p == '%')
                sText += std::to_string(i);
            else if (*p == '#')
                sText += std::to_string(i - 1);
            else
                sText += *p;
        }
        sText += '\n';
    }
    return sText + "END_SCHEMA;";
}

TEST(ExpressRobustness, NestingIsBounded) {
    struct Row {
        const char* name;
        std::string sText;
        const char* sFirstFault;   // its text; empty for none
    };
    const Row rows[] = {
        {"remarks", "SCHEMA S; " + sRepeated("(*", 100000) + sRepeated("*)", 100000) + " END_SCHEMA;", ""},
        {"remarks not closed", "SCHEMA S; " + sRepeated("(*", 100000), "comment not closed"},
        {"functions", "SCHEMA S; " + sRepeated("FUNCTION F; ", 100000), "FUNCTION not closed"},
        {"parentheses", "SCHEMA S; ENTITY E SUPERTYPE OF " + sRepeated("(", 100000), "\"(\" not closed"},
        {"bounds", "SCHEMA S; TYPE T = LIST " + sRepeated("[", 100000), "\"]\" expected, the end of the text found"},
        {"aggregates", "SCHEMA S; TYPE T = " + sRepeated("LIST OF ", 100000), "aggregates nest deeper than 16 levels"},
        {"one aggregate too many", "SCHEMA S; TYPE T = " + sRepeated("LIST OF ", 17) + "REAL; END_TYPE; END_SCHEMA;",
         "aggregates nest deeper than 16 levels"},
        {"as many aggregates as allowed",
         "SCHEMA S; TYPE T = " + sRepeated("LIST OF ", 16) + "REAL; END_TYPE; END_SCHEMA;", ""},
        {"defined types", sChained("TYPE T0 = REAL; END_TYPE;\n", "TYPE T% = T#; END_TYPE;", 20000), ""},
        {"defined aggregates", sChained("TYPE T0 = REAL; END_TYPE;\n", "TYPE T% = LIST OF T#; END_TYPE;", 20000),
         "\"T33\" nests aggregates too deep"},
        {"as many defined aggregates as allowed",
         sChained("TYPE T0 = REAL; END_TYPE;\n", "TYPE T% = LIST OF T#; END_TYPE;", 33), ""},
        {"selects", sChained("TYPE T0 = REAL; END_TYPE;\n", "TYPE T% = SELECT (T#); END_TYPE;", 20000),
         "\"T65\" is a select that nests too deep"},
        {"selects of selects", sChained("TYPE T0 = REAL; END_TYPE;\n", "TYPE T% = SELECT (T#, T#); END_TYPE;", 60), ""},
        {"extensions",
         sChained("TYPE T0 = EXTENSIBLE SELECT; END_TYPE;\n", "TYPE T% = SELECT BASED_ON T#; END_TYPE;", 20000),
         "\"T33\" is extended too often"},
        {"as many extensions as allowed",
         sChained("TYPE T0 = EXTENSIBLE SELECT; END_TYPE;\n", "TYPE T% = SELECT BASED_ON T#; END_TYPE;", 33), ""},
        {"supertypes", sChained("ENTITY E0; END_ENTITY;\n", "ENTITY E% SUBTYPE OF (E#); END_ENTITY;", 20000),
         "\"E256\" has too many supertypes"},
        {"as many supertypes as allowed",
         sChained("ENTITY E0; END_ENTITY;\n", "ENTITY E% SUBTYPE OF (E#); END_ENTITY;", 256), ""},
        {"entities", sChained("ENTITY E0; END_ENTITY;\n", "ENTITY E%; END_ENTITY;", 65536),
         "the schema has more than 65535 entities"},
        {"as many entities as allowed", sChained("ENTITY E0; END_ENTITY;\n", "ENTITY E%; END_ENTITY;", 65535), ""},
        {"string", "SCHEMA S; CONSTANT " + sRepeated("''", 100000), "CONSTANT not closed"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<oxa::ifc::SchemaMessage> messages;
        const auto pSchema = oxa::ifc::SchemaLoader::pSchemaFromExpress(row.sText, messages);
        EXPECT_EQ(messages.empty() ? "" : messages[0].sText, row.sFirstFault);
        EXPECT_LE(messages.size(), 100U);
        EXPECT_EQ(pSchema == nullptr, !messages.empty());
    }
}

TEST(ExpressRobustness, ASelectAsDeepAsAllowedAnswersAtOnce) {
    const std::string sText = sChained("ENTITY T0; END_ENTITY;\n", "TYPE T% = SELECT (T#, T#); END_TYPE;", 65);
    std::vector<oxa::ifc::SchemaMessage> messages;
    const auto pSchema = oxa::ifc::SchemaLoader::pSchemaFromExpress(sText, messages);
    ASSERT_NE(pSchema, nullptr) << sMessages(messages);
    const Type* pDeepest = pSchema->pTypeFromName(ObjectName("T64"));
    const auto& select = dynamic_cast<const DataTypeSelect&>(*pDeepest->pDataType);
    EXPECT_TRUE(select.boAllEntities);
    EXPECT_TRUE(select.isCompatible(*pSchema->pEntityFromName(ObjectName("T0"))));
}

}   // namespace
