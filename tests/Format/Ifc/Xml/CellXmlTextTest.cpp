// SPDX-License-Identifier: Apache-2.0
// The text of values in ifcXML, into cells and out of them, as one text or as one an item.
#include "Format/Ifc/IfcFileAttribute.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>

#include "Format/Ifc/CellSetter.h"
#include "schema/XmlSchema.h"

namespace oxa::ifc {
namespace {

using def::schema::Attribute;
using def::schema::AttributeName;
using def::schema::ObjectBase;
using Texts = std::vector<std::string>;
using Path = std::vector<const ObjectBase*>;

const char* const g_sListSet = "oxa::ifc::AttributeListValueBase::boValueAsXmlStringSet: Not implemented";
const char* const g_sListsSet = "oxa::ifc::AttributeListValueBase::boValueAsXmlStringsSet: Not implemented";
const char* const g_sListGet = "oxa::ifc::AttributeListValueBase::boValueAsXmlStringGet: Not implemented";
const char* const g_sListsGet = "oxa::ifc::AttributeListValueBase::boValueAsXmlStringsGet: Not implemented";
const char* const g_sTypeCreate = "oxa::ifc::AttributeSelect::vTypeCreate: Not implemented";

Path pathOf(const std::vector<const char*>& names) {
    Path path;
    for (const char* sName : names) {
        path.push_back(sName ? everythingSchema().pObjectFromName(std::string_view(sName)) : nullptr);
        EXPECT_EQ(path.back() == nullptr, sName == nullptr) << sName;
    }
    return path;
}

std::string sJoined(const Texts& texts) {
    std::string sAll;
    for (const std::string& text : texts) sAll += (sAll.empty() ? "[" : "|") + text;
    return (sAll.empty() ? "[" : sAll) + ']';
}

// --- from text ----------------------------------------------------------------------------------------------------

struct SetRow {
    const char* sRule;
    const char* sAttribute;
    const char* former;   // as a STEP file has it
    Texts texts;          // one, where a single text is set
    std::vector<const char*> path;
    bool boSet;
    std::string after;
    Trail asserts = {};
};

// Sets through the cell and through the instance, which are to do the same.
void vExpectSet(const SetRow& row, bool boStrings) {
    SCOPED_TRACE(row.sRule);
    for (const bool boEntity : {false, true}) {
        SCOPED_TRACE(boEntity ? "by name" : "by cell");
        CellSetter setter;
        setter.vReadOne(row.sAttribute, row.former);
        AssertTrail trail;
        auto& cell = setter.cell<AttributeBase>(row.sAttribute);
        const Attribute& attribute = setter.attribute(row.sAttribute);
        const AttributeName name(attribute);
        const ObjectBase& type = *setter.pTypeOf(row.sAttribute);
        const Path path = pathOf(row.path);
        bool boSet = false;
        if (boStrings)
            boSet = boEntity ? setter.entity->boValueAsXmlStringsSet(name, row.texts, setter.data, path)
                             : cell.boValueAsXmlStringsSet(type, row.texts, attribute, setter.data, path);
        else
            boSet = boEntity ? setter.entity->boValueAsXmlStringSet(name, row.texts.at(0), setter.data, path)
                             : cell.boValueAsXmlStringSet(type, row.texts.at(0), attribute, setter.data, path);
        EXPECT_EQ(boSet, row.boSet);
        EXPECT_EQ(setter.sShow(row.sAttribute), row.after);
        EXPECT_EQ(trail.raised(), row.asserts);
    }
}

TEST(XmlTextSet, ScalarsTakeTheirOwnText) {
    // clang-format off
    const SetRow rows[] = {
        {"a real", "Re", "$", {"1.5"}, {}, true, "Real 1.5"},
        {"a derived real becomes a value", "Re", "*", {"1.5"}, {}, true, "Real 1.5"},
        {"a value is replaced", "Re", "7.", {"-2e3"}, {}, true, "Real -2000"},
        {"what follows the number is ignored", "Re", "$", {"12abc"}, {}, true, "Real 12"},
        {"a comma is no decimal point", "Re", "$", {"1,5"}, {}, true, "Real 1"},
        {"white space before it", "Re", "$", {" \t\r\n1.5 "}, {}, true, "Real 1.5"},
        {"a plus sign", "Re", "$", {"+.5"}, {}, true, "Real 0.5"},
        {"hexadecimal digits", "Re", "$", {"0x1.8p1"}, {}, true, "Real 3"},
        {"infinity", "Re", "$", {"-INFinity"}, {}, true, "Real -inf"},
        {"no number", "Re", "$", {"nan"}, {}, true, "Real nan"},
        {"beyond the largest", "Re", "$", {"1e999"}, {}, true, "Real inf"},
        {"below the smallest", "Re", "$", {"1e-999"}, {}, true, "Real 0"},
        {"text in place of a real", "Re", "7.", {"abc"}, {}, false, "Real 7"},
        {"no text in place of a real", "Re", "$", {""}, {}, false, "$ Real 0"},
        {"blanks in place of a real", "Re", "*", {"  "}, {}, false, "* Real 0"},
        {"a sign in place of a real", "Re", "$", {"-"}, {}, false, "$ Real 0"},

        {"a number", "Nu", "$", {"-1.25"}, {}, true, "Number -1.25"},
        {"text in place of a number", "Nu", "7.", {"abc"}, {}, true, "Number 0"},
        {"no text in place of a number", "Nu", "$", {""}, {}, true, "Number 0"},

        {"an integer", "In", "$", {"-42"}, {}, true, "Integer -42"},
        {"beyond 32 bit", "In", "$", {"9999999999"}, {}, true, "Integer 9999999999"},
        {"beyond 64 bit", "In", "$", {"9999999999999999999"}, {}, true, "Integer 9223372036854775807"},
        {"the integer at the start", "In", "$", {" 12.9"}, {}, true, "Integer 12"},
        {"base 10 alone", "In", "$", {"0x10"}, {}, true, "Integer 0"},
        {"a leading zero is no octal", "In", "$", {"010"}, {}, true, "Integer 10"},
        {"text in place of an integer", "In", "7", {"abc"}, {}, true, "Integer 0"},

        {"true", "First", "$", {"true"}, {}, true, "Boolean 1"},
        {"false", "First", ".T.", {"false"}, {}, true, "Boolean 0"},
        {"upper case is not true", "First", ".T.", {"TRUE"}, {}, true, "Boolean 0"},
        {"1 is not true", "First", "$", {"1"}, {}, true, "Boolean 0"},
        {"a blank behind it", "First", "$", {"true "}, {}, true, "Boolean 0"},

        {"logical true", "Lo", "$", {"true"}, {}, true, "Logical true"},
        {"logical false", "Lo", ".T.", {"false"}, {}, true, "Logical false"},
        {"logical unknown", "Lo", "$", {"unknown"}, {}, true, "Logical unknown"},
        {"logical in upper case", "Lo", ".T.", {"TRUE"}, {}, true, "Logical unknown"},
        {"logical without text", "Lo", ".T.", {""}, {}, true, "Logical unknown"},

        {"a string", "St", "$", {" a 'b' \\X\\C4 "}, {}, true, "String ' a 'b' \\X\\C4 '"},
        {"an empty string", "St", "'abc'", {""}, {}, true, "String ''"},
        {"a string of the same length", "St", "'abc'", {"xyz"}, {}, true, "String 'xyz'"},
        {"no UTF-8, and nobody minds", "St", "$", {"a\xFF"}, {}, true, "String 'a\xFF'"},

        {"a GUID", "Gu", "$", {"0$aBcDeFgHiJkLmNoPqRsT"}, {}, true, "Guid 0$aBcDeFgHiJkLmNoPqRsT"},
        {"a GUID between quotes", "Gu", "$", {"'0$aBcDeFgHiJkLmNoPqRsT'"}, {}, false, "$ Guid 0"},
        {"a foreign character in a GUID", "Gu", "'1234567890123456789012'", {"0$aBcDeFgHiJkLmNoPqR-T"}, {}, false,
         "Guid 1234567890123456789012"},
        {"a short GUID is read as zeros at the end of its groups", "Gu", "$", {"1"}, {}, true,
         "Guid 0100000000000000000000"},
        {"of a long GUID the rest", "Gu", "$", {"0$aBcDeFgHiJkLmNoPqRsT-"}, {}, true, "Guid 0$aBcDeFgHiJkLmNoPqRsT"},

        {"a binary", "Bi", "$", {"AP8Q"}, {}, true, "Binary [00 FF 10]"},
        {"a binary over lines", "Bi", "$", {"\n AP8Q\n /w==\n"}, {}, true, "Binary [00 FF 10 FF]"},
        {"a binary of no bytes", "Bi", "\"0A1\"", {""}, {}, false, "Binary [A1]"},
        {"no base64", "Bi", "\"0A1\"", {"A?8Q"}, {}, false, "Binary [A1]"},

        {"an enumerator", "En", "$", {"GREEN"}, {}, true, "Enumeration 'GREEN'"},
        {"in any case", "En", ".RED.", {"gReen"}, {}, true, "Enumeration 'GREEN'"},
        {"one that begins like another", "En", ".RED.", {"gre"}, {}, false, "Enumeration 'RED'"},
        {"no enumerator", "En", "$", {"blue"}, {}, false, "$ Enumeration null"},
        {"dots are no part of it", "En", "$", {".RED."}, {}, false, "$ Enumeration null"},

        {"a reference", "Th", "$", {"i5"}, {}, false, "$ Entity null"},
    };
    // clang-format on
    for (const SetRow& row : rows) vExpectSet(row, false);
}

TEST(XmlTextSet, StringKeepsItsBlockForAShorterText) {
    const struct {
        const char* sRule;
        const char* former;
        const char* text;
        bool boSameBlock;
    } rows[] = {
        {"one shorter", "'abcd'", "xyz", true},
        {"as long", "'abc'", "xyz", false},
        {"longer", "'abc'", "wxyz", false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        CellSetter setter;
        setter.vReadOne("St", row.former);
        auto& cell = setter.cell<AttributeString>("St");
        const char* pFormer = cell.m_value;
        EXPECT_TRUE(cell.boValueAsXmlStringSet(row.text, setter.data.pool()));
        EXPECT_EQ(cell.m_value == pFormer, row.boSameBlock);
        EXPECT_STREQ(cell.m_value, row.text);
    }
}

TEST(XmlTextSet, EnumeratorIsACopyInThePool) {
    CellSetter setter;
    auto& cell = setter.cell<AttributeEnumeration>("En");
    EXPECT_TRUE(cell.boValueAsXmlStringSet("red", setter.attribute("En"), setter.data.pool()));
    const auto* pEnum = AttributeEnumeration::pEnumOf(nullptr, setter.attribute("En"));
    EXPECT_NE(cell.m_value, (*pEnum->items.find("RED"))->c_str());
    EXPECT_FALSE(cell.boValueAsXmlStringSet("red", setter.attribute("Se"), setter.data.pool()))
        << "the attribute has no enumeration";
    EXPECT_STREQ(cell.m_value, "RED");
}

TEST(XmlTextSet, SelectsTakeTheTypeThatThePathSays) {
    // clang-format off
    const SetRow rows[] = {
        {"a label", "Se", "$", {"a b"}, {"IfcLabel"}, true, "Select 5:IFCLABEL(String 'a b')"},
        {"a measure", "Se", "$", {"1.5"}, {"IfcLengthMeasure"}, true, "Select 1:IFCLENGTHMEASURE(Real 1.5)"},
        {"a number", "Se", "$", {"x"}, {"IfcNumeric"}, true, "Select 4:IFCNUMERIC(Number 0)"},
        {"a count", "Se", "$", {"3"}, {"IfcCount"}, true, "Select 3:IFCCOUNT(Integer 3)"},
        {"a flag", "Se", "$", {"true"}, {"IfcFlag"}, true, "Select 2:IFCFLAG(Boolean 1)"},
        {"an answer", "Se", "$", {"?"}, {"IfcAnswer"}, true, "Select 6:IFCANSWER(Logical unknown)"},
        {"a GUID's type makes a string", "Se", "$", {"abc"}, {"IfcGloballyUniqueId"}, true,
         "Select 5:IFCGLOBALLYUNIQUEID(String 'abc')"},
        {"another type than before", "Se", "IFCLABEL('a')", {"2"}, {"IfcLengthMeasure"}, true,
         "Select 1:IFCLENGTHMEASURE(Real 2)"},
        {"a value in place of a reference", "Se", "#5", {"2"}, {"IfcCount"}, true, "Select 3:IFCCOUNT(Integer 2)"},
        {"the nested flags stay", "Se", "IFCCOUNT($)", {"2"}, {"IfcCount"}, true, "Select 3:IFCCOUNT($ Integer 2)"},
        {"a text that the type refuses", "Se", "$", {"abc"}, {"IfcLengthMeasure"}, false,
         "$ Select 1:IFCLENGTHMEASURE(Real 0)"},
        {"no path and no value", "Se", "$", {"1"}, {}, false, "$ Select 0:(null)"},
        {"no path, and the type stays", "Se", "IFCCOUNT(1)", {"2"}, {}, true, "Select 3:IFCCOUNT(Integer 2)"},
        {"a path of two, and the type stays", "Se", "IFCCOUNT(1)", {"2"}, {"IfcLabel", "IfcValue"}, true,
         "Select 3:IFCCOUNT(Integer 2)"},
        {"a path of nothing, and the type stays", "Se", "IFCCOUNT(1)", {"2"}, {nullptr}, true,
         "Select 3:IFCCOUNT(Integer 2)"},
        {"a value in a select in the select", "Se", "IFCINNER(IFCCOUNT(1))", {"2"}, {}, true,
         "Select 9:IFCINNER(Select 3:IFCCOUNT(Integer 2))"},
        {"the path replaces the inner select", "Se", "IFCINNER(IFCCOUNT(1))", {"2"}, {"IfcCount"}, true,
         "Select 3:IFCCOUNT(Integer 2)"},
        {"a path that says a select once more has no end", "Se", "$", {"2"}, {"IfcInner"}, false,
         "$ Select 9:IFCINNER(Select 0:(null))"},
        {"an entity as the path", "Se", "$", {"i5"}, {"IfcThing"}, false, "$ Select 13:(null)"},
        {"a reference is not set from a text", "Se", "#5", {"i6"}, {}, false, "Select 13:(#5)"},
        {"a reference in a select in the select", "Se", "IFCINNER(#5)", {"i6"}, {}, false,
         "Select 9:IFCINNER(Select 13:(#5))"},
        {"a binary can't be made", "Se", "$", {"AP8Q"}, {"IfcBlob"}, false, "$ Select 0:(null)", {g_sTypeCreate}},
        {"a binary that is there", "Se", "IFCBLOB(\"0A1\")", {"AP8Q"}, {}, true, "Select 7:IFCBLOB(Binary [00 FF 10])"},
        {"an enumeration can't be made", "Se", "$", {"red"}, {"IfcColour"}, false, "$ Select 0:(null)",
         {g_sTypeCreate}},
        {"an enumeration that is there is not the attribute's", "Se", "IFCCOLOUR(.RED.)", {"green"}, {}, false,
         "Select 8:IFCCOLOUR(Enumeration 'RED')"},
        {"a list that is there", "Se", "IFCREALS((1.))", {"2 3"}, {}, true, "Select 11:IFCREALS(List 1[2, 3])"},
        {"a list can't be made", "Se", "$", {"2 3"}, {"IfcReals"}, false, "$ Select 0:(null)"},
        {"a list of integers that is there", "Se", "IFCCOUNTS((1))", {"2 3"}, {}, false,
         "Select 11:IFCCOUNTS(List 3[1])"},
    };
    // clang-format on
    for (const SetRow& row : rows) vExpectSet(row, false);
}

TEST(XmlTextSet, ListsAreSplitAtWhiteSpace) {
    // clang-format off
    const SetRow rows[] = {
        {"three reals", "Reals", "$", {"1 2 3"}, {"IfcLengthMeasure"}, true, "List 1[1, 2, 3]"},
        {"any white space, any number of it", "Reals", "$", {" 1\t\n2 \v\f\r 3 "}, {"IfcLengthMeasure"}, true,
         "List 1[1, 2, 3]"},
        {"no text", "Reals", "$", {""}, {"IfcLengthMeasure"}, true, "List 1[]"},
        {"no text over items", "Reals", "(1.,2.)", {""}, {"IfcLengthMeasure"}, true, "List 1[]"},
        {"items that are no numbers", "Reals", "$", {"1 x 3y"}, {"IfcLengthMeasure"}, true, "List 1[1, 0, 3]"},
        {"the last of the path counts", "Reals", "$", {"1.5"}, {"IfcReals", "IfcLengthMeasure"}, true, "List 1[1.5]"},
        {"more items than before", "Reals", "(1.)", {"1 2"}, {}, true, "List 1[1, 2]"},
        {"fewer items than before", "Reals", "(1.,2.,3.)", {"7"}, {}, true, "List 1[7]"},
        {"a named list", "NamedReals", "$", {"1 2"}, {"IfcLengthMeasure"}, true, "List 1[1, 2]"},
        {"a set of numbers that is there", "Numbers", "(1.)", {"2 3"}, {"IfcNumeric"}, true, "List 1[2, 3]"},
        {"a set of numbers can't be made", "Numbers", "$", {"2 3"}, {"IfcNumeric"}, false, "$ List 0 null",
         {g_sListSet}},
        {"without a path no list is made", "Reals", "$", {"1 2"}, {}, false, "$ List 0 null", {g_sListSet}},

        {"integers, of which the places stay", "Integers", "$", {"1 2 3"}, {"IfcCount"}, false, "$ List 3[0, 0, 0]"},
        {"integers that are there", "Integers", "(7)", {"1 2"}, {"IfcCount"}, false, "List 3[7]"},
        {"texts, of which the places stay", "Texts", "$", {"a b"}, {"IfcLabel"}, false, "$ List 5[null, null]"},
        {"binaries", "Blobs", "(\"0A1\")", {"AP8Q"}, {"IfcBlob"}, false, "List 7[Binary [A1]]", {g_sListSet}},
        {"references", "Things", "(#5)", {"i6"}, {"IfcThing"}, false, "List 13[#5]", {g_sListSet}},
        {"rows", "RealRows", "((1.))", {"2"}, {}, false, "List 11[List 1[1]]", {g_sListSet}},

        {"selects, each with its own text", "Selects", "$", {"1 2.5 3"}, {"IfcLengthMeasure", "IfcValue"}, true,
         "List 9[Select 1:IFCLENGTHMEASURE(Real 1), Select 1:IFCLENGTHMEASURE(Real 2.5), "
         "Select 1:IFCLENGTHMEASURE(Real 3)]"},
        {"no selects", "Selects", "$", {" "}, {"IfcLengthMeasure", "IfcValue"}, true, "List 9[]"},
        {"the walk over selects ends at the first refusal", "Selects", "$", {"1 x 3"}, {"IfcLengthMeasure", "IfcValue"},
         false,
         "$ List 9[Select 1:IFCLENGTHMEASURE(Real 1), Select 1:IFCLENGTHMEASURE(Real 0), ~ Select 0:(null)]"},
        {"selects that are there keep their types", "Selects", "(IFCLABEL('a'),IFCCOUNT(1),#5)", {"x 2"}, {}, true,
         "List 9[Select 5:IFCLABEL(String 'x'), Select 3:IFCCOUNT(Integer 2)]"},
        {"more selects than before", "Selects", "(IFCLABEL('a'))", {"x y"}, {"IfcLabel", "IfcValue"}, true,
         "List 9[Select 5:IFCLABEL(String 'x'), Select 5:IFCLABEL(String 'y')]"},
        {"an undefined item gets a value", "Selects", "($)", {"x"}, {"IfcLabel", "IfcValue"}, true,
         "List 9[Select 5:IFCLABEL(String 'x')]"},
        {"selects that no path tells the type of", "Selects", "$", {"1 2"}, {"IfcValue"}, false,
         "$ List 9[Select 0:(null), ~ Select 0:(null)]"},
    };
    // clang-format on
    for (const SetRow& row : rows) vExpectSet(row, false);
}

TEST(XmlTextSet, ListsTakeATextAnItem) {
    // clang-format off
    const SetRow rows[] = {
        {"three reals", "Reals", "$", {"1", "2", "3"}, {"IfcLengthMeasure"}, true, "List 1[1, 2, 3]"},
        {"an empty text, as one that begins with a blank gives", "Reals", "$", {"", "2"}, {"IfcLengthMeasure"}, true,
         "List 1[0, 2]"},
        {"no texts", "Reals", "*", {}, {"IfcLengthMeasure"}, true, "List 1[]"},
        {"texts are not split", "Reals", "$", {"1 2", "3"}, {"IfcLengthMeasure"}, true, "List 1[1, 3]"},
        {"integers", "Integers", "$", {"1", "2"}, {"IfcCount"}, false, "$ List 3[0, 0]"},
        {"texts", "Texts", "$", {"a"}, {"IfcLabel"}, false, "$ List 5[null]"},
        {"binaries", "Blobs", "$", {"AP8Q"}, {"IfcBlob"}, false, "$ List 7[Binary null]", {g_sListsSet}},
        {"no item type", "Flags", "$", {"true"}, {"IfcFlag"}, false, "$ List 0 null", {g_sListsSet}},
        {"selects all get the first text", "Selects", "$", {"1", "2", "3"}, {"IfcCount", "IfcValue"}, true,
         "List 9[Select 3:IFCCOUNT(Integer 1), Select 3:IFCCOUNT(Integer 1), Select 3:IFCCOUNT(Integer 1)]"},
        {"no selects", "Selects", "(IFCCOUNT(1))", {}, {"IfcCount", "IfcValue"}, true, "List 9[]"},

        {"a list in a select", "Se", "IFCREALS((1.))", {"2", "3"}, {}, true, "Select 11:IFCREALS(List 1[2, 3])"},
        {"a list in a select in the select", "Se", "IFCINNER(IFCREALS((1.)))", {"2"}, {}, true,
         "Select 9:IFCINNER(Select 11:IFCREALS(List 1[2]))"},
        {"an empty select", "Se", "$", {"2"}, {}, false, "$ Select 0:(null)"},
        {"a reference in a select", "Se", "#5", {"2"}, {}, false, "Select 13:(#5)"},
        {"a scalar in a select", "Se", "IFCCOUNT(1)", {"2"}, {}, false, "Select 3:IFCCOUNT(Integer 1)"},
        {"a select without an end", "Se", "$", {"2"}, {"IfcInner"}, false, "$ Select 9:IFCINNER(Select 0:(null))"},

        {"a real", "Re", "$", {"1"}, {}, false, "$ Real 0"},
        {"a string", "St", "$", {"1"}, {}, false, "$ String null"},
        {"an enumeration", "En", "$", {"red"}, {}, false, "$ Enumeration null"},
        {"a reference", "Th", "$", {"i5"}, {}, false, "$ Entity null"},
    };
    // clang-format on
    for (const SetRow& row : rows) vExpectSet(row, true);
}

TEST(XmlTextSet, IllegalKindTakesNoText) {
    CellSetter setter;
    const def::schema::DataTypeBase illegal(static_cast<def::schema::DataKind>(12));
    auto& cell = setter.cell<AttributeBase>("Re");
    std::string text = "before";
    Texts texts{"before"};
    EXPECT_FALSE(cell.boValueAsXmlStringSet(illegal, "1", setter.attribute("Re"), setter.data, {}));
    EXPECT_FALSE(cell.boValueAsXmlStringsSet(illegal, {"1"}, setter.attribute("Re"), setter.data, {}));
    EXPECT_EQ(setter.sShow("Re"), "$ Real 0");
    setter.vReadOne("Re", "1.");
    EXPECT_FALSE(
        setter.cell<AttributeBase>("Re").boValueAsXmlStringGet(illegal, text, setter.attribute("Re"), &setter.data));
    EXPECT_FALSE(
        setter.cell<AttributeBase>("Re").boValueAsXmlStringsGet(illegal, texts, setter.attribute("Re"), &setter.data));
    const def::schema::Type unresolved("IfcUnresolved");
    EXPECT_FALSE(
        setter.cell<AttributeBase>("Re").boValueAsXmlStringGet(unresolved, text, setter.attribute("Re"), &setter.data))
        << "nor has a type without a data type";
    EXPECT_EQ(text, "before");
    EXPECT_EQ(texts, Texts{"before"});
}

// --- to text ------------------------------------------------------------------------------------------------------

struct GetRow {
    const char* sRule;
    const char* sAttribute;
    const char* token;
    std::string result;   // of a text "before"; "no" and what it is then, or "yes" and the text
    bool boListAsText = true;
    Trail asserts = {};
};

std::string sGet(const CellSetter& setter, const GetRow& row, const Data* pData) {
    const def::xmlschema::Attribute mapping{1, row.boListAsText, true};
    Attribute mapped = setter.attribute(row.sAttribute);
    mapped.pXml = &mapping;
    std::string text = "before";
    const bool boGot =
        setter.cell<AttributeBase>(row.sAttribute).boValueAsXmlStringGet(*mapped.types.front(), text, mapped, pData);
    return (boGot ? "yes " : "no ") + text;
}

TEST(XmlTextGet, ScalarsHaveOneText) {
    const GetRow rows[] = {
        {"a real has six decimals", "Re", "1.5", "yes 1.500000"},
        {"a small one has none", "Re", "1.E-7", "yes 0.000000"},
        {"the seventh decimal rounds", "Re", "-0.0000015", "yes -0.000002"},
        {"no exponent, however large", "Re", "1.E22", "yes 10000000000000000000000.000000"},
        {"a number", "Nu", "2", "yes 2.000000"},
        {"an integer", "In", "-42", "yes -42"},
        {"a boolean", "First", ".T.", "yes true"},
        {"a boolean that is not", "First", ".F.", "yes false"},
        {"a logical", "Lo", ".T.", "yes true"},
        {"a logical that is not", "Lo", ".F.", "yes false"},
        {"a logical that nobody knows", "Lo", ".U.", "yes unknown"},
        {"a string as it is stored", "St", "'a ''b'' <\\X\\C4>'", "yes a 'b' <\u00C4>"},
        {"an empty string", "St", "''", "yes "},
        {"a GUID between quotes", "Gu", "'0$aBcDeFgHiJkLmNoPqRsT'", "yes '0$aBcDeFgHiJkLmNoPqRsT'"},
        {"a binary", "Bi", "\"000FF10\"", "yes AP8Q"},
        {"a padded binary", "Bi", "\"000FF10FF\"", "yes AP8Q/w=="},
        {"an enumerator in lower case", "En", ".GREEN.", "yes green"},
        {"a reference", "Th", "#5", "yes i1"},
        {"an undefined value", "Re", "$", "no before"},
        {"a derived value", "Re", "*", "no before"},
        {"an undefined reference", "Th", "$", "no before"},
    };
    for (const GetRow& row : rows) {
        SCOPED_TRACE(row.sRule);
        CellSetter setter;
        setter.vReadOne(row.sAttribute, row.token);
        AssertTrail trail;
        EXPECT_EQ(sGet(setter, row, &setter.data), row.result);
        std::string text = "before";
        const bool boGot = setter.entity->boValueAsXmlStringGet(AttributeName(row.sAttribute), text, &setter.data);
        EXPECT_EQ((boGot ? "yes " : "no ") + text, row.result) << "by name";
        EXPECT_EQ(trail.raised(), Trail{});
    }
}

TEST(XmlTextGet, NothingStoredHasNoText) {
    CellSetter setter;
    std::string text = "before";
    EXPECT_FALSE(AttributeString().boValueAsXmlStringGet(text));
    EXPECT_FALSE(AttributeEnumeration().boValueAsXmlStringGet(text));
    EXPECT_FALSE(AttributeBinary().boValueAsXmlStringGet(text));
    EXPECT_FALSE(AttributeEntity().boValueAsXmlStringGet(text, &setter.data));
    EXPECT_FALSE(AttributeSelect().boValueAsXmlStringGet(text, setter.attribute("Se"), &setter.data));
    AttributeLogical logical;
    logical.m_value = static_cast<LogicalValue>(2);
    EXPECT_TRUE(logical.boValueAsXmlStringGet(text));
    EXPECT_EQ(text, "before");
}

// The model deals numbers where no file brought any.
TEST(XmlTextGet, ReferenceIsTheNumberInTheModel) {
    CellSetter setter;
    setter.vReadOne("Th", "#5");
    std::string text = "before";
    const auto& cell = setter.cell<AttributeEntity>("Th");
    EXPECT_FALSE(cell.boValueAsXmlStringGet(text, nullptr));
    EXPECT_EQ(text, "before");
    for (std::size_t i = 1; i < 42; ++i) {
        const Entity* pOther = setter.data.pEntityCreate(def::schema::ObjectName("IFCTHING"));
        EXPECT_EQ(setter.data.iIdFromEntity(*pOther), i);
    }
    EXPECT_TRUE(cell.boValueAsXmlStringGet(text, &setter.data));
    EXPECT_EQ(text, "i42");
}

TEST(XmlTextGet, SelectsGiveTheTextOfWhatTheyHold) {
    const GetRow rows[] = {
        {"a label", "Se", "IFCLABEL('a b')", "yes a b"},
        {"a measure", "Se", "IFCLENGTHMEASURE(1.5)", "yes 1.500000"},
        {"a number", "Se", "IFCNUMERIC(2)", "yes 2.000000"},
        {"a count", "Se", "IFCCOUNT(-3)", "yes -3"},
        {"a flag", "Se", "IFCFLAG(.T.)", "yes true"},
        {"an answer", "Se", "IFCANSWER(.U.)", "yes unknown"},
        {"a GUID's type is a string's", "Se", "IFCGLOBALLYUNIQUEID('abc')", "yes abc"},
        {"a binary", "Se", "IFCBLOB(\"000FF10\")", "yes AP8Q"},
        {"an enumerator", "Se", "IFCCOLOUR(.RED.)", "yes red"},
        {"a reference", "Se", "#5", "yes i1"},
        {"a value in a select in the select", "Se", "IFCINNER(IFCCOUNT(1))", "yes 1"},
        {"a reference in a select in the select", "Se", "IFCINNER(#5)", "yes i1"},
        {"the nested flags don't count", "Se", "IFCCOUNT($)", "yes 0"},
        {"a list", "Se", "IFCREALS((1.,2.))", "yes 1.000000 2.000000"},
        {"a list without a text", "Se", "IFCREALS((1.,2.))", "no ", false},
        {"an empty list", "Se", "IFCREALS(())", "yes "},
        {"no value", "Se", "$", "no before"},
    };
    for (const GetRow& row : rows) {
        SCOPED_TRACE(row.sRule);
        CellSetter setter;
        setter.vReadOne(row.sAttribute, row.token);
        EXPECT_EQ(sGet(setter, row, &setter.data), row.result);
        if (row.result.starts_with("yes i")) {
            EXPECT_EQ(sGet(setter, row, nullptr), "no before") << "without a model";
        }
    }
}

TEST(XmlTextGet, ListsHaveOneTextWhereTheirMappingSaysSo) {
    const GetRow rows[] = {
        {"reals", "Reals", "(1.,2.5,1.E-9)", "yes 1.000000 2.500000 0.000000"},
        {"numbers", "Numbers", "(1)", "yes 1.000000"},
        {"integers", "Integers", "(1,-2)", "yes 1 -2"},
        {"texts", "Texts", "('a','b c')", "yes a b c"},
        {"no blank behind empty texts at the front", "Texts", "('','','a','','b')", "yes a  b"},
        {"no items", "Reals", "()", "yes "},
        {"no texts", "Texts", "()", "yes "},
        {"binaries", "Blobs", "(\"0A1\")", "yes ", true, {g_sListGet}},
        {"selects", "Selects", "(IFCCOUNT(1))", "yes ", true, {g_sListGet}},
        {"rows", "RealRows", "((1.))", "yes ", true, {g_sListGet}},
        {"references", "Things", "(#5)", "yes ", true, {g_sListGet}},
        {"the mapping gives the list no text", "Reals", "(1.)", "no ", false},
        {"that comes before the item type", "Things", "(#5)", "no ", false},
        {"an undefined list", "Reals", "$", "no before"},
    };
    for (const GetRow& row : rows) {
        SCOPED_TRACE(row.sRule);
        CellSetter setter;
        setter.vReadOne(row.sAttribute, row.token);
        AssertTrail trail;
        EXPECT_EQ(sGet(setter, row, &setter.data), row.result);
        EXPECT_EQ(trail.raised(), row.asserts);

        std::string text = "before";
        EXPECT_FALSE(setter.entity->boValueAsXmlStringGet(AttributeName(row.sAttribute), text, &setter.data))
            << "without a mapping";
        EXPECT_EQ(text, setter.cell<AttributeBase>(row.sAttribute).boHasValue() ? "" : "before");
    }
}

TEST(XmlTextGet, ListsGiveATextAnItem) {
    const GetRow rows[] = {
        {"reals", "Reals", "(1.,2.5)", "yes [1.000000|2.500000]"},
        {"integers", "Integers", "(1,-2)", "yes [1|-2]"},
        {"texts", "Texts", "('a','','b c')", "yes [a||b c]"},
        {"no items", "Reals", "()", "yes []"},
        {"selects", "Selects", "(IFCCOUNT(1),#5,IFCLABEL('a'),$,IFCINNER(IFCFLAG(.F.)),IFCREALS((1.)))",
         "yes [1|i1|a||false|]"},
        {"binaries", "Blobs", "(\"0A1\")", "yes []", true, {g_sListsGet}},
        {"rows", "RealRows", "((1.))", "yes []", true, {g_sListsGet}},
        {"references", "Things", "(#5)", "yes []", true, {g_sListsGet}},
        {"an undefined list", "Reals", "$", "no [before]"},
        {"a derived list", "Reals", "*", "no [before]"},

        {"a list in a select", "Se", "IFCREALS((1.,2.))", "yes [1.000000|2.000000]"},
        {"a list in a select in the select", "Se", "IFCINNER(IFCCOUNTS((1)))", "yes [1]"},
        {"a set of references in a select", "Se", "IFCTHINGS((#5))", "yes []", true, {g_sListsGet}},
        {"a scalar in a select", "Se", "IFCCOUNT(1)", "no [before]"},
        {"a scalar in a select in the select", "Se", "IFCINNER(IFCCOUNT(1))", "no [before]"},
        {"a reference in a select", "Se", "#5", "no [before]"},
        {"an empty select", "Se", "$", "no [before]"},

        {"a real", "Re", "1.", "no [before]"},
        {"a string", "St", "'a'", "no [before]"},
        {"a reference", "Th", "#5", "no [before]"},
    };
    for (const GetRow& row : rows) {
        SCOPED_TRACE(row.sRule);
        CellSetter setter;
        setter.vReadOne(row.sAttribute, row.token);
        AssertTrail trail;
        const Attribute& attribute = setter.attribute(row.sAttribute);
        for (const bool boEntity : {false, true}) {
            Texts texts{"before"};
            const bool boGot =
                boEntity ? setter.entity->boValueAsXmlStringsGet(AttributeName(attribute), texts, &setter.data)
                         : setter.cell<AttributeBase>(row.sAttribute)
                               .boValueAsXmlStringsGet(*attribute.types.front(), texts, attribute, &setter.data);
            EXPECT_EQ((boGot ? "yes " : "no ") + sJoined(texts), row.result);
            EXPECT_EQ(trail.raised(), row.asserts);
        }
    }
}

// What no file leaves behind.
TEST(XmlText, SelectsOfNoTypeHaveNone) {
    CellSetter setter;
    const def::schema::Type unresolved("IfcUnresolved");
    AttributeReal value;
    auto& cell = setter.cell<AttributeSelect>("Se");
    const Attribute& attribute = setter.attribute("Se");
    for (const def::schema::Type* pType : {static_cast<const def::schema::Type*>(nullptr), &unresolved}) {
        SCOPED_TRACE(pType ? pType->sName : "none");
        cell.m_eType = AttributeType::Real;
        cell.m_pType = pType;
        cell.m_pValue = static_cast<AttributeBase*>(&value);
        std::string text = "before";
        Texts texts{"before"};
        EXPECT_FALSE(cell.boValueAsXmlStringGet(text, attribute, &setter.data));
        EXPECT_FALSE(cell.boValueAsXmlStringsGet(texts, attribute, &setter.data));
        EXPECT_FALSE(cell.boValueAsXmlStringSet("1", attribute, setter.data, {}));
        EXPECT_FALSE(cell.boValueAsXmlStringSet("1", attribute, setter.data, {&unresolved}));
        EXPECT_EQ(text, "before");
        EXPECT_EQ(texts, Texts{"before"});
        EXPECT_EQ(value.m_value, 0.0);
    }
    cell.m_pValue = static_cast<AttributeBase*>(nullptr);
}

TEST(XmlText, ListsThatWereNeverFilledHaveNoItems) {
    CellSetter setter;
    AssertTrail trail;
    auto& list = setter.cell<AttributeList>("Selects");
    const Attribute& attribute = setter.attribute("Selects");
    for (const AttributeType eType :
         {AttributeType::Real, AttributeType::Integer, AttributeType::String, AttributeType::Select}) {
        SCOPED_TRACE(static_cast<int>(eType));
        list.m_eItemType = eType;
        Texts texts{"before"};
        EXPECT_TRUE(list.boValueAsXmlStringsGet(texts, attribute, &setter.data));
        EXPECT_EQ(texts, Texts{});
    }
    EXPECT_TRUE(list.boValueAsXmlStringsSet(*attribute.types.front(), {"1", "2"}, attribute, setter.data,
                                            pathOf({"IfcCount", "IfcValue"})));
    EXPECT_EQ(setter.sShow("Selects"), "$ List 9[Select 3:IFCCOUNT(Integer 1), Select 3:IFCCOUNT(Integer 1)]");

    auto& texts = setter.cell<AttributeList>("Texts");
    texts.vTypeListCreate(pathOf({"IfcLabel"}), 2, setter.data.pool());
    Texts items{"before"};
    EXPECT_TRUE(texts.boValueAsXmlStringsGet(items, setter.attribute("Texts"), &setter.data));
    EXPECT_EQ(items, (Texts{"", ""})) << "places without a text";
    EXPECT_EQ(trail.raised(), Trail{});
}

TEST(XmlText, AsksWhetherAssertionsAreWanted) {
    CellSetter setter;
    AssertTrail trail;
    setter.vReadOne("Things", "(#5)");
    Assert::setEnabled(false);
    Texts texts{"before"};
    EXPECT_TRUE(
        setter.cell<AttributeList>("Things").boValueAsXmlStringsGet(texts, setter.attribute("Things"), &setter.data));
    EXPECT_EQ(texts, Texts{});
    EXPECT_EQ(trail.raised(), Trail{});
}

// --- both ways ----------------------------------------------------------------------------------------------------

TEST(XmlText, RealsOfAnySizeFit) {
    const double largest = std::numeric_limits<double>::max();
    for (const double value : {largest, -largest, 1e308, -1e308, 5e-324, -0.0, std::nan(""), -HUGE_VAL, 123456.5}) {
        char expected[400];
        std::snprintf(expected, sizeof expected, "%f", value);
        AttributeReal cell;
        cell.m_value = value;
        std::string text;
        EXPECT_TRUE(cell.boValueAsXmlStringGet(text));
        EXPECT_EQ(text, expected);
    }
}

TEST(XmlText, LocaleOfTheProcessDoesNotMatter) {
    const std::string sFormer = std::setlocale(LC_ALL, nullptr);
    const char* sComma = nullptr;
    for (const char* sName : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "de_AT.UTF-8", "de_DE"})
        if (!sComma && std::setlocale(LC_ALL, sName)) sComma = sName;
    if (!sComma) GTEST_SKIP() << "no locale with a decimal comma at hand";
    AttributeReal cell;
    std::string text;
    const bool boSet = cell.boValueAsXmlStringSet("1.5");
    const bool boGot = cell.boValueAsXmlStringGet(text);
    std::setlocale(LC_ALL, sFormer.c_str());
    EXPECT_TRUE(boSet && boGot);
    EXPECT_EQ(cell.m_value, 1.5);
    EXPECT_EQ(text, "1.500000");
}

TEST(XmlText, UnknownNameHasNone) {
    CellSetter setter;
    Entity empty;
    for (Entity* pEntity : {setter.entity, &empty}) {
        const AttributeName name(pEntity == &empty ? "Re" : "NoSuchName");
        std::string text = "before";
        Texts texts{"before"};
        EXPECT_FALSE(pEntity->boValueAsXmlStringSet(name, "1", setter.data, {}));
        EXPECT_FALSE(pEntity->boValueAsXmlStringsSet(name, {"1"}, setter.data, {}));
        EXPECT_FALSE(pEntity->boValueAsXmlStringGet(name, text, &setter.data));
        EXPECT_FALSE(pEntity->boValueAsXmlStringsGet(name, texts, &setter.data));
        EXPECT_EQ(text, "before");
        EXPECT_EQ(texts, Texts{"before"});
    }
}

// As deep as the reader lets selects nest, and without a level of the stack for each.
TEST(XmlText, DeepSelectsAreWalked) {
    CellSetter setter;
    std::string token = "IFCCOUNT(1)";
    for (unsigned i = 0; i + 2 < AttributeSelect::g_iDepthLimit; ++i) token = "IFCINNER(" + token + ')';
    setter.vReadOne("Se", token);
    const AttributeName name("Se");
    std::string text;
    EXPECT_TRUE(setter.entity->boValueAsXmlStringSet(name, "7", setter.data, {}));
    EXPECT_TRUE(setter.entity->boValueAsXmlStringGet(name, text, &setter.data));
    EXPECT_EQ(text, "7");
}

}   // namespace
}   // namespace oxa::ifc
