// SPDX-License-Identifier: Apache-2.0
// The cells of one plain value: what each accepts of a token, and what it holds after one that it does not accept.
#include "Format/Ifc/IfcFileAttribute.h"

#include <gtest/gtest.h>

#include "Format/Ifc/AssertLog.h"
#include "Format/Ifc/StatementReader.h"

namespace oxa::ifc {
namespace {

constexpr char g_sReal[] = "Error_ExpectedValidRealValueFor";
constexpr char g_sInteger[] = "Error_ExpectedValidIntegerValueFor";
constexpr char g_sBoolean[] = "Error_ExpectedValidBooleanValueFor";
constexpr char g_sLogical[] = "Error_ExpectedValidLogicValueFor";
constexpr char g_sString[] = "Error_ExpectedValidStringValueFor";
constexpr char g_sGuid[] = "Error_ExpectedValidGuidValueFor";
constexpr char g_sBinary[] = "Error_ExpectedValidBinaryValueFor";
constexpr char g_sEnumeration[] = "Error_ExpectedValidEnumerationValueFor";
constexpr char g_sEntity[] = "Error_ExpectedValidEntityValueFor";

const ReadRow g_realRows[] = {
    {"digits around the point", "#1=IFCREAL(1.5);", "Real 1.5"},
    {"none needed behind it", "#1=IFCREAL(1.);", "Real 1"},
    {"an exponent", "#1=IFCREAL(1.5E3);", "Real 1500"},
    {"a sign", "#1=IFCREAL(-2);", "Real -2"},
    {"an integer", "#1=IFCREAL(1);", "Real 1"},
    {"a unit behind it", "#1=IFCREAL(1.5mm);", "Real 0", {{g_sReal}}},
    {"beyond the range", "#1=IFCREAL(1E999);", "Real 0", {{g_sReal}}},
    {"one blank-like byte", "#1=IFCREAL(x);", "Real 0", {{g_sReal}}},
    {"two dollar signs are no null", "#1=IFCREAL($$);", "Real 0", {{g_sReal}}},
    {"a number has the same grammar", "#1=IFCNUMBER(1.5E3);", "Number 1500"},
    {"and the same report", "#1=IFCNUMBER('1');", "Number 0", {{g_sReal}}},
};
TEST(AttributeReal, TakesTheWholeTokenOrZero) { vExpectReads(g_realRows); }

const ReadRow g_integerRows[] = {
    {"the largest", "#1=IFCINTEGER(2147483647);", "Integer 2147483647"},
    {"the smallest", "#1=IFCINTEGER(-2147483648);", "Integer -2147483648"},
    {"one too large", "#1=IFCINTEGER(2147483648);", "Integer 0", {{g_sInteger}}},
    {"one too small", "#1=IFCINTEGER(-2147483649);", "Integer 0", {{g_sInteger}}},
    {"no plus sign", "#1=IFCINTEGER(+1);", "Integer 0", {{g_sInteger}}},
    {"no point", "#1=IFCINTEGER(1.);", "Integer 0", {{g_sInteger}}},
};
TEST(AttributeInteger, HoldsThirtyTwoBits) { vExpectReads(g_integerRows); }

const ReadRow g_booleanRows[] = {
    {"true", "#1=IFCBOOLEAN(.T.);", "Boolean 1"},
    {"false", "#1=IFCBOOLEAN(.F.);", "Boolean 0"},
    {"no letter of it", "#1=IFCBOOLEAN(.X.);", "Boolean 0", {{g_sBoolean}}},
    {"unknown is no boolean", "#1=IFCBOOLEAN(.U.);", "Boolean 0", {{g_sBoolean}}},
    {"lower case", "#1=IFCBOOLEAN(.t.);", "Boolean 0", {{g_sBoolean}}},
    {"the third character is not the dot", "#1=IFCBOOLEAN(.TRUE.);", "Boolean 1", {{g_sBoolean}}},
    {"nothing behind the dot is looked at", "#1=IFCBOOLEAN(.T.RUE);", "Boolean 1"},
    {"no dot in front", "#1=IFCBOOLEAN(xT.);", "Boolean 1", {{g_sBoolean}}},
    {"nothing right gives three reports",
     "#1=IFCBOOLEAN(xyz);",
     "Boolean 0",
     {{g_sBoolean}, {g_sBoolean}, {g_sBoolean}}},
    {"the comma behind a short token", "#1=IFCFLAGPAIR(.T,$);", "Boolean 1 | $ Real 0", {{g_sBoolean}}},
    {"the parenthesis behind it", "#1=IFCBOOLEAN(.T);", "Boolean 1", {{g_sBoolean}}},
    {"one character reads into the text behind",
     "#1=IFCBOOLEAN(1);",
     "Boolean 0",
     {{g_sBoolean}, {g_sBoolean}, {g_sBoolean}}},
    {"an empty token, too", "#1=IFCFLAGPAIR(,1.);", "Boolean 0 | Real 1", {{g_sBoolean}, {g_sBoolean}}},
};
TEST(AttributeBoolean, LooksAtThreeCharacters) { vExpectReads(g_booleanRows); }

// The token begins at 14. Its length less that, as an unsigned number, has to be 3 at least.
const ReadRow g_guardRows[] = {
    {"13 characters: below zero, and so very long", "#1=IFCBOOLEAN(.T.4567890123);", "Boolean 1"},
    {"14: no difference", "#1=IFCBOOLEAN(.T.45678901234);", "Boolean 0", {{g_sBoolean}}},
    {"16: two", "#1=IFCBOOLEAN(.T.4567890123456);", "Boolean 0", {{g_sBoolean}}},
    {"17: three", "#1=IFCBOOLEAN(.T.45678901234567);", "Boolean 1"},
    {"a logical keeps its unknown", "#1=IFCLOGICAL(.T.45678901234);", "Logical unknown", {{g_sLogical}}},
};
TEST(AttributeBoolean, ComparesLengthAndOffset) { vExpectReads(g_guardRows); }

const ReadRow g_logicalRows[] = {
    {"true", "#1=IFCLOGICAL(.T.);", "Logical true"},
    {"false", "#1=IFCLOGICAL(.F.);", "Logical false"},
    {"unknown", "#1=IFCLOGICAL(.U.);", "Logical unknown"},
    {"no letter of it", "#1=IFCLOGICAL(.X.);", "Logical unknown", {{g_sLogical}}},
    {"no dot in front", "#1=IFCLOGICAL(xF.);", "Logical false", {{g_sLogical}}},
    {"no dot behind is a fault of syntax",
     "#1=IFCLOGICAL(.TRUE.);",
     "Logical true",
     {{g_sLogical, "Value", Errors::Error, Errors::Syntax}}},
    {"nothing right gives three reports",
     "#1=IFCLOGICAL(xyz);",
     "Logical unknown",
     {{g_sLogical}, {g_sLogical}, {g_sLogical, "Value", Errors::Error, Errors::Syntax}}},
    {"null is unknown",
     "#1=IFCLOGICAL($);",
     "$ Logical unknown",
     {{"Error_InvalidNullAttribute", "Value", Errors::Error, Errors::Null}}},
};
TEST(AttributeLogical, LooksAtThreeCharacters) { vExpectReads(g_logicalRows); }

const ReadRow g_textRows[] = {
    {"plain", "#1=IFCSTRING('abc');", "String 'abc'"},
    {"empty", "#1=IFCSTRING('');", "String ''"},
    {"a doubled quote is one", "#1=IFCSTRING('it''s');", "String 'it's'"},
    {"directives are decoded", "#1=IFCSTRING('\\X2\\00E9\\X0\\t\\X\\E9');", "String '\u00e9t\u00e9'"},
    {"longer than a word of the search", "#1=IFCSTRING('0123456789abcdef0123456789\\\\');",
     "String '0123456789abcdef0123456789\\'"},
    {"one quote alone", "#1=IFCSTRING(');", "String ''", {{g_sString}}},
    {"no closing quote", "#1=IFCSTRING('abc);", "String ''", {{g_sString}}},
    {"no opening quote", "#1=IFCSTRING(abc');", "String ''", {{g_sString}}},
    {"no quotes", "#1=IFCSTRING(abc);", "String ''", {{g_sString}}},
    {"two strings are taken for one", "#1=IFCSTRING('a'b'c');", "String 'a'''"},
};
TEST(AttributeString, IsWhatStandsBetweenTheQuotes) {
    const AssertLog log;
    vExpectReads(g_textRows);
    EXPECT_EQ(log.texts(), std::vector<std::string>{});
}

const ReadRow g_guidRows[] = {
    {"22 characters", "#1=IFCGUID('2O2Fr$t4X7Zf8NOew3FLOH');", "Guid 2O2Fr$t4X7Zf8NOew3FLOH"},
    {"the quotes are not looked at", "#1=IFCGUID(x2O2Fr$t4X7Zf8NOew3FLOHy);", "Guid 2O2Fr$t4X7Zf8NOew3FLOH"},
    {"all zero", "#1=IFCGUID('0000000000000000000000');", "Guid 0"},
    {"null", "#1=IFCGUID($);", "$ Guid 0", {{"Error_InvalidNullAttribute", "Value", Errors::Error, Errors::Null}}},
    {"derived", "#1=IFCGUID(*);", "* Guid 0"},
};
TEST(AttributeGuid, IsTwentyTwoCharacters) { vExpectReads(g_guidRows); }

TEST(AttributeGuid, ABadOneIsReplacedByANewOne) {
    const std::string_view rows[] = {
        "#1=IFCGUID('2O2Fr$t4X7Zf8NOew3FLO');",     // 21 between the quotes
        "#1=IFCGUID('2O2Fr$t4X7Zf8NOew3FLOHH');",   // 23
        "#1=IFCGUID('2O2Fr$t4X7Zf8NOew3FLO-');",    // a foreign character
        "#1=IFCGUID('');",
        "#1=IFCGUID(x);",
    };
    for (const std::string_view statement : rows) {
        SCOPED_TRACE(statement);
        Guid guids[2];
        for (Guid& guid : guids) {
            StatementReader reader;
            const Entity* pEntity = reader.pRead(statement);
            ASSERT_NE(pEntity, nullptr);
            const auto& cell = static_cast<const AttributeGuid&>(*pEntity->pAttributeFromIndex(0).second);
            guid = cell.m_value;
            EXPECT_TRUE(cell.boHasValue());
            EXPECT_TRUE(cell.m_boGuid);
            EXPECT_FALSE(guid.boIsNull());
            reader.vExpectReports(pEntity, statement, {{g_sGuid}});
        }
        EXPECT_NE(guids[0], guids[1]);
    }
}

const ReadRow g_binaryRows[] = {
    {"one byte", "#1=IFCBINARY(\"0AB\");", "Binary [AB]"},
    {"the count of unused bits is lost", "#1=IFCBINARY(\"1AB\");", "Binary [AB]"},
    {"bytes in order", "#1=IFCBINARY(\"000FF10\");", "Binary [00 FF 10]"},
    {"lower case digits", "#1=IFCBINARY(\"0abcf\");", "Binary [AB CF]"},
    {"each lower case digit, low", "#1=IFCBINARY(\"01a1b1c1d1e1f\");", "Binary [1A 1B 1C 1D 1E 1F]"},
    {"each lower case digit, high", "#1=IFCBINARY(\"0a1b1c1d1e1f1\");", "Binary [A1 B1 C1 D1 E1 F1]"},
    {"each upper case digit", "#1=IFCBINARY(\"0ABCDEF1A1F\");", "Binary [AB CD EF 1A 1F]"},
    {"each decimal digit", "#1=IFCBINARY(\"00123456789\");", "Binary [01 23 45 67 89]"},
    {"':' is 3: from there on codes count as those of letters do", "#1=IFCBINARY(\"00:\");", "Binary [03]"},
    {"'?' is 8", "#1=IFCBINARY(\"00?0:\");", "Binary [08 03]"},
    {"'@' is 9", "#1=IFCBINARY(\"0@@\");", "Binary [99]"},
    {"'`' is 41, and spills", "#1=IFCBINARY(\"00`\");", "Binary [29]"},
    {"no bytes", "#1=IFCBINARY(\"0\");", "Binary []"},
    {"even length", "#1=IFCBINARY(\"AB\");", "Binary null", {{g_sBinary}}},
    {"too short", "#1=IFCBINARY(\"\");", "Binary null", {{g_sBinary}}},
    {"one character", "#1=IFCBINARY(\");", "Binary null", {{g_sBinary}}},
    {"no hexadecimal digit: 'G' is 16", "#1=IFCBINARY(\"0G0\");", "Binary [00]"},
    {"the low half spills into the high one", "#1=IFCBINARY(\"00G\");", "Binary [10]"},
    {"below '0' is negative", "#1=IFCBINARY(\"00/\");", "Binary [FF]"},
    {"a byte above 0x7F counts as negative", "#1=IFCBINARY(\"00\xFF\");", "Binary [CF]"},
    {"the quotes are not looked at", "#1=IFCBINARY(x0ABy);", "Binary [AB]"},
};
TEST(AttributeBinary, TakesDigitsByTheirCode) { vExpectReads(g_binaryRows); }

const ReadRow g_enumerationRows[] = {
    {"an enumerator", "#1=IFCENUMERATION(.GREEN.);", "Enumeration 'GREEN'"},
    {"the dots are not looked at", "#1=IFCENUMERATION(XAX);", "Enumeration 'A'"},
    {"case counts", "#1=IFCENUMERATION(.green.);", "Enumeration null", {{"Error_NotValidEnumerationValue", "green"}}},
    {"not of the type",
     "#1=IFCENUMERATION(.ROUND.);",
     "Enumeration null",
     {{"Error_NotValidEnumerationValue", "ROUND"}}},
    {"a part of one", "#1=IFCENUMERATION(.GREE.);", "Enumeration null", {{"Error_NotValidEnumerationValue", "GREE"}}},
    {"too short", "#1=IFCENUMERATION(..);", "Enumeration null", {{g_sEnumeration}}},
    {"one character", "#1=IFCENUMERATION(A);", "Enumeration null", {{g_sEnumeration}}},
};
TEST(AttributeEnumeration, IsAnEnumeratorOfTheType) { vExpectReads(g_enumerationRows); }

TEST(AttributeEnumeration, PointsToTheTextOfTheSchema) {
    StatementReader reader;
    const Entity* pEntity = reader.pRead("#1=IFCENUMERATION(.GREEN.);");
    ASSERT_NE(pEntity, nullptr);
    const auto [pAttribute, pCell] = pEntity->pAttributeFromIndex(0);
    const auto* pEnum = AttributeEnumeration::pEnumOf(nullptr, *pAttribute);
    ASSERT_NE(pEnum, nullptr);
    EXPECT_EQ(static_cast<const AttributeEnumeration*>(pCell)->m_value.load(), pEnum->declared[1].c_str());
}

TEST(AttributeEnumeration, NeedsAnEnumerationBehindTheTypeOrTheAttribute) {
    const auto typeOf = [](const char* sName) { return cellSchema().pTypeFromName(def::schema::ObjectName(sName)); };
    const auto* pColour = static_cast<const def::schema::DataTypeEnum*>(typeOf("IFCCOLOUR")->pDataType);
    const auto* pShape = static_cast<const def::schema::DataTypeEnum*>(typeOf("IFCSHAPE")->pDataType);
    const def::schema::Type unresolved("IfcUnresolved");
    const struct {
        const char* sRule;
        const def::schema::ObjectBase* pType;
        std::vector<const def::schema::ObjectBase*> types;   // the attribute's
        const def::schema::DataTypeEnum* pEnum;
    } rows[] = {
        {"the type goes before the attribute", typeOf("IFCSHAPE"), {typeOf("IFCCOLOUR")}, pShape},
        {"without a type the attribute's", nullptr, {typeOf("IFCCOLOUR")}, pColour},
        {"neither", nullptr, {}, nullptr},
        {"an attribute with a null type", nullptr, {nullptr}, nullptr},
        {"a type without a data type", &unresolved, {typeOf("IFCCOLOUR")}, nullptr},
        {"a type of another kind", typeOf("IFCLABEL"), {typeOf("IFCCOLOUR")}, nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        def::schema::Attribute attribute;
        attribute.sName = "Value";
        attribute.types = row.types;
        EXPECT_EQ(AttributeEnumeration::pEnumOf(row.pType, attribute), row.pEnum);

        StatementReader reader;
        StepReadInfoData info(".ROUND.", StatementReader::g_iLine, reader.common);
        AttributeBase::StepReadInfoAttribute token{&info, &reader.data, nullptr, &attribute, row.pType, 0, 7, 0};
        const AttributeEnumeration cell(token);
        const char* pText = cell.m_value;
        EXPECT_EQ(pText ? std::string_view(pText) : "null", row.pEnum == pShape ? "ROUND" : "null");
        reader.vExpectReports(nullptr, ".ROUND.",
                              row.pEnum == pShape ? std::vector<Report>{}
                                                  : std::vector<Report>{{"Error_NotValidEnumerationValue", "ROUND"}});
    }
}

// clang-format off
const ReadRow g_referenceRows[] = {
    {"a number", "#1=IFCREFERENCE(#12);", "Entity #12"},
    {"what follows the digits is ignored", "#1=IFCREFERENCE(#12x);", "Entity #12"},
    {"no digits are 0", "#1=IFCREFERENCE(#x);", "Entity #0"},
    {"0 is a number like others", "#1=IFCREFERENCE(#0);", "Entity #0"},
    {"a sign", "#1=IFCREFERENCE(#+3);", "Entity #3"},
    {"blanks in front", "#1=IFCREFERENCE(# 3);", "Entity #3"},
    {"all of them, and a sign", "#1=IFCREFERENCE(# \t\n\v\f\r+3);", "Entity #3"},
    {"the byte below a tab is none", "#1=IFCREFERENCE(#\b3);", "Entity #0"},
    {"nor is the one above a carriage return", "#1=IFCREFERENCE(#\x0E" "3);", "Entity #0"},
    {"blanks alone are 0", "#1=IFCREFERENCE(#  );", "Entity #0"},
    {"negative numbers stand at the end", "#1=IFCREFERENCE(#-1);", "Entity #4294967295"},
    {"the last of a chunk", "#1=IFCREFERENCE(#32767);", "Entity #32767"},
    {"the first of the next", "#1=IFCREFERENCE(#32768);", "Entity #32768"},
    {"behind the first thousand chunks", "#1=IFCREFERENCE(#32768000);", "Entity #32768000"},
    {"a number too large is no other one", "#1=IFCREFERENCE(#4294967301);", "Entity #2147483647"},
    {"itself", "#1=IFCREFERENCE(#1);", "Entity #1"},
    {"the sign alone", "#1=IFCREFERENCE(#);", "Entity null", {{g_sEntity}}},
    {"no sign", "#1=IFCREFERENCE(12);", "Entity null", {{g_sEntity}}},
    {"a string", "#1=IFCREFERENCE('#1');", "Entity null", {{g_sEntity}}},
    {"of another type is not compared", "#1=IFCREFERENCE(#1);", "Entity #1"},
};
// clang-format on
TEST(AttributeEntity, IsThePlaceOfItsNumber) { vExpectReads(g_referenceRows); }

TEST(AttributeEntity, MarksItsTargetAsReferenced) {
    StatementReader reader;
    ASSERT_NE(reader.pRead("#1=IFCREFERENCE(#12);"), nullptr);
    EXPECT_TRUE(reader.boReferenced(12));
    EXPECT_FALSE(reader.boReferenced(13));
    EXPECT_EQ(reader.pEntity(12)->pSchemaEntity(), nullptr) << "its statement has not come yet";
}

// Texts of each length, which are copied in pieces, with and without something to decode at each place.
TEST(AttributeString, HasAnyLength) {
    for (const bool boArena : {false, true})
        for (std::size_t iLength = 0; iLength < 150; ++iLength) {
            StatementReader reader(cellSchema(), boArena);
            std::string text(iLength, ' ');
            for (std::size_t i = 0; i < iLength; ++i) text[i] = static_cast<char>('a' + i % 26);
            const auto vExpectText = [&](unsigned uNumber, const std::string& sStep, const std::string& sText) {
                const std::string statement = '#' + std::to_string(uNumber) + "=IFCSTRING('" + sStep + "');";
                ASSERT_EQ(reader.sCells(*reader.pRead(statement)), "String '" + sText + "'") << statement;
            };
            vExpectText(1, text, text);
            for (std::size_t i = 0; i < iLength; i += 7) {
                const std::string sFront = text.substr(0, i);
                const std::string sBehind = text.substr(i);
                vExpectText(3 * static_cast<unsigned>(i) + 2, sFront + "''" + sBehind, sFront + '\'' + sBehind);
                vExpectText(3 * static_cast<unsigned>(i) + 3, sFront + "\\X2\\00E4\\X0\\" + sBehind,
                            sFront + "\u00E4" + sBehind);
                vExpectText(3 * static_cast<unsigned>(i) + 4, sFront + "\xC3\xA4" + sBehind,
                            sFront + "\u00E4" + sBehind);
            }
            EXPECT_TRUE(reader.errors.records().empty());
        }
}

// Enumerators are found again, and told apart where they share a place with another one.
TEST(AttributeEnumeration, IsFoundAgain) {
    StatementReader reader(cellSchema(), true);
    unsigned uNumber = 0;
    for (int i = 0; i < 3; ++i)
        for (const char* const sText : {"RED", "GREEN", "A", "BLUE", "RED", "ROUND"}) {
            const std::string statement = '#' + std::to_string(++uNumber) + "=IFCENUMERATION(." + sText + ".);";
            const bool boKnown = std::string_view("RED GREEN A").find(sText) != std::string_view::npos;
            EXPECT_EQ(reader.sCells(*reader.pRead(statement)),
                      boKnown ? "Enumeration '" + std::string(sText) + "'" : "Enumeration null");
        }
    EXPECT_EQ(reader.errors.records().size(), 6U) << "one for each that is none";
}

}   // namespace
}   // namespace oxa::ifc
