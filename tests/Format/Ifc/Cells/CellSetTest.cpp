// SPDX-License-Identifier: Apache-2.0
// Setting the cells of one value: what is stored, where it lies, and what is refused. Selects take and give the
// caller's value, and are prepared for an import.
#include "Format/Ifc/IfcFileAttribute.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "Format/Ifc/CellSetter.h"
#include "Format/Ifc/IfcTypeSelectBase.h"
#include "platform/Utilities.h"

namespace oxa::ifc {
namespace {

using def::schema::AttributeName;
using def::schema::ObjectName;
using types::IfcSelectBase;

const Trail g_nothing;

struct TextRow {
    const char* sName;
    const char* sFormer;   // null: none yet
    std::string text;
    bool boSameBlock;
    bool boValid = true;
};

TEST(AttributeString, SetKeepsTheBlockForAShorterText) {
    const TextRow rows[] = {
        {"the first text", nullptr, "abc", false},
        {"strictly shorter", "abcd", "abc", true},
        {"much shorter", "abcd", "", true},
        {"of the same length", "abc", "xyz", false},
        {"longer", "abc", "abcd", false},
        {"empty over empty", "", "", false},
        {"two bytes, one character", "abc", "\xC3\xA9", true},
        {"no UTF-8, and stored all the same", "abc", "a\xFF", true, false},
        {"cut within a character", nullptr, "\xC3", false, false},
    };
    for (const TextRow& row : rows) {
        SCOPED_TRACE(row.sName);
        CellSetter setter;
        AssertTrail trail;
        auto& cell = setter.cell<AttributeString>("St");
        if (row.sFormer) {
            EXPECT_TRUE(cell.boValueSet(row.sFormer, std::strlen(row.sFormer) + 1, setter.data.pool()));
        }
        const char* pFormer = cell.m_value;
        EXPECT_TRUE(cell.boValueSet(row.text.c_str(), row.text.size() + 1, setter.data.pool()));
        EXPECT_EQ(cell.m_value == pFormer, row.boSameBlock);
        EXPECT_STREQ(cell.m_value, row.text.c_str());
        EXPECT_NE(cell.m_value, row.text.c_str()) << "a copy";
        EXPECT_TRUE(cell.m_boUndefined) << "the flags are the caller's";
        EXPECT_EQ(trail.raised(),
                  row.boValid ? g_nothing : Trail{"oxa::ifc::AttributeString::boValueSet: Not a valid string"});
    }
}

TEST(AttributeString, SetWithoutAByteLeavesTheTextThatIsThere) {
    CellSetter setter;
    AssertTrail trail;
    setter.vReadOne("St", "'abc'");
    auto& cell = setter.cell<AttributeString>("St");
    EXPECT_TRUE(cell.boValueSet("xyz", 0, setter.data.pool()));
    EXPECT_EQ(setter.sShow("St"), "String 'abc'");
    EXPECT_EQ(trail.raised(), g_nothing);
}

TEST(AttributeString, SetTakesAPartOfItsOwnText) {
    CellSetter setter;
    setter.vReadOne("St", "'abcdef'");
    auto& cell = setter.cell<AttributeString>("St");
    EXPECT_TRUE(cell.boValueSet(cell.m_value + 2, 5, setter.data.pool()));
    EXPECT_EQ(setter.sShow("St"), "String 'cdef'");
}

struct BytesRow {
    const char* sName;
    const char* sFormer;   // token; null: undefined
    std::vector<unsigned char> bytes;
    bool boSameBlock;
    const char* sShown;
};

TEST(AttributeBinary, SetKeepsTheBlockForNoMoreBytes) {
    const BytesRow rows[] = {
        {"the first bytes", nullptr, {1, 2}, false, "$ Binary [01 02]"},
        {"as many", "\"0AABB\"", {1, 2}, true, "Binary [01 02]"},
        {"fewer", "\"0AABB\"", {0xFF}, true, "Binary [FF]"},
        {"none", "\"0AABB\"", {}, true, "Binary []"},
        {"more", "\"0AABB\"", {1, 2, 3}, false, "Binary [01 02 03]"},
    };
    for (const BytesRow& row : rows) {
        SCOPED_TRACE(row.sName);
        CellSetter setter;
        if (row.sFormer) setter.vReadOne("Bi", row.sFormer);
        auto& cell = setter.cell<AttributeBinary>("Bi");
        const unsigned char* pFormer = cell.m_value;
        EXPECT_TRUE(cell.boValueSet(row.bytes.data(), row.bytes.size(), setter.data.pool()));
        EXPECT_EQ(cell.m_value == pFormer, row.boSameBlock);
        EXPECT_EQ(setter.sShow("Bi"), row.sShown);
    }
    CellSetter setter;
    setter.vReadOne("Bi", "\"0AABB\"");
    auto& cell = setter.cell<AttributeBinary>("Bi");
    cell.m_iCount = 1;
    const unsigned char* pFormer = cell.m_value;
    EXPECT_TRUE(cell.boValueSet(pFormer, 2, setter.data.pool()));
    EXPECT_NE(cell.m_value, pFormer) << "no capacity is kept, only the count";
}

struct EnumerationRow {
    const char* sName;
    const char* text;
    bool boResult;
    const char* sShown;
};

TEST(AttributeEnumeration, SetTakesExactlyAnEnumerator) {
    const EnumerationRow rows[] = {
        {"an enumerator", "GREEN", true, "Enumeration 'GREEN'"},
        {"of one letter", "A", true, "Enumeration 'A'"},
        {"none of them", "BLUE", false, "Enumeration null"},
        {"lower case", "green", false, "Enumeration null"},
        {"with dots", ".GREEN.", false, "Enumeration null"},
        {"a part", "GREE", false, "Enumeration null"},
        {"empty", "", false, "Enumeration null"},
        {"null", nullptr, false, "Enumeration null"},
    };
    const auto& type = static_cast<const def::schema::DataTypeEnum&>(*CellSetter::pType("IFCCOLOUR")->pDataType);
    for (const EnumerationRow& row : rows)
        for (const bool boFromAttribute : {true, false}) {
            SCOPED_TRACE(std::string(row.sName) + (boFromAttribute ? ", attribute" : ", type"));
            CellSetter setter;
            AssertTrail trail;
            setter.vReadOne("En", ".RED.");
            auto& cell = setter.cell<AttributeEnumeration>("En");
            EXPECT_EQ(boFromAttribute ? cell.boValueSet(row.text, setter.attribute("En"), setter.data)
                                      : cell.boValueSet(row.text, type, setter.data.pool()),
                      row.boResult);
            EXPECT_EQ(setter.sShow("En"), row.sShown);
            EXPECT_EQ(trail.raised(), g_nothing);
            if (row.boResult) {
                EXPECT_NE(cell.m_value, row.text) << "a copy";
                EXPECT_FALSE(type.items.contains(std::string_view(cell.m_value)) &&
                             (*type.items.find(std::string_view(cell.m_value)))->c_str() == cell.m_value)
                    << "not the schema's own";
            }
        }
}

TEST(AttributeEnumeration, SetNeedsAnEnumerationBehindTheAttribute) {
    CellSetter setter;
    setter.vReadOne("En", ".RED.");
    auto& cell = setter.cell<AttributeEnumeration>("En");
    def::schema::Attribute attribute;
    EXPECT_FALSE(cell.boValueSet("GREEN", attribute, setter.data)) << "an empty chain";
    attribute.types = {nullptr};
    EXPECT_FALSE(cell.boValueSet("GREEN", attribute, setter.data)) << "a null type";
    EXPECT_FALSE(cell.boValueSet("GREEN", setter.attribute("St"), setter.data)) << "another kind";
    EXPECT_EQ(setter.sShow("En"), "Enumeration 'RED'");
    attribute.types = {CellSetter::pType("IFCCOLOUR")->pDataType};
    EXPECT_TRUE(cell.boValueSet("GREEN", attribute, setter.data)) << "a bare data type";
    EXPECT_EQ(setter.sShow("En"), "Enumeration 'GREEN'");
}

// --- selects ---------------------------------------------------------------------------------------------------

enum class Object { Select, None };

struct SelectRow {
    const char* sName;
    const char* sFormer;   // token of the select before; null: undefined
    IfcSelectBase value;
    bool boResult;
    const char* sShown;
    Trail raised = {};
    Object eObject = Object::Select;
};

template <class T>
IfcSelectBase typedValue(const char* sType, T value) {
    return IfcSelectBase(CellSetter::pType(sType), std::move(value));
}

constexpr char g_sNotImplemented[] = "oxa::ifc::AttributeSelect::boValueSet: Not implemented";

void vExpectStores(const std::vector<SelectRow>& rows, CellSetter& setter) {
    for (const SelectRow& row : rows) {
        SCOPED_TRACE(row.sName);
        setter.vReadOne("Se", row.sFormer ? row.sFormer : "$");
        auto& cell = setter.cell<AttributeSelect>("Se");
        AssertTrail trail;
        const def::schema::ObjectBase* pObject = row.eObject == Object::Select ? setter.pTypeOf("Se") : nullptr;
        EXPECT_EQ(cell.boValueSet(row.value, pObject, setter.data.pool()), row.boResult);
        EXPECT_EQ(setter.sShow("Se"), row.sShown);
        EXPECT_EQ(trail.raised(), row.raised);
    }
}

TEST(AttributeSelect, StoresEachKind) {
    CellSetter setter;
    Entity* p5 = setter.pEntity(5);
    Entity* p6 = setter.pEntity(6);
    const std::set<Entity*> both = {p5, p6};
    const std::string sBoth = p5 < p6 ? "[#5, #6]" : "[#6, #5]";
    const std::string sSet = "$ Select 12:IFCTHINGS(List 13" + sBoth + ")";
    vExpectStores(
        {
            {"a reference", nullptr, IfcSelectBase(p5), true, "$ Select 13:(#5)"},
            {"real", nullptr, typedValue("IFCLENGTHMEASURE", 1.5), true, "$ Select 1:IFCLENGTHMEASURE(Real 1.5)"},
            {"boolean", nullptr, typedValue("IFCFLAG", true), true, "$ Select 2:IFCFLAG(Boolean 1)"},
            {"integer", nullptr, typedValue("IFCCOUNT", 1LL << 40), true, "$ Select 3:IFCCOUNT(Integer 1099511627776)"},
            {"number", nullptr, typedValue("IFCNUMERIC", -2.0), true, "$ Select 4:IFCNUMERIC(Number -2)"},
            {"string", nullptr, typedValue("IFCLABEL", std::string("a")), true, "$ Select 5:IFCLABEL(String 'a')"},
            {"string from a text", nullptr, typedValue<const char*>("IFCLABEL", "b"), true,
             "$ Select 5:IFCLABEL(String 'b')"},
            {"a longer string", nullptr, typedValue("IFCLABEL", std::string("a longer text")), true,
             "$ Select 5:IFCLABEL(String 'a longer text')"},
            {"string from a longer text", nullptr, typedValue<const char*>("IFCLABEL", "another longer text"), true,
             "$ Select 5:IFCLABEL(String 'another longer text')"},
            {"an empty string", nullptr, typedValue("IFCLABEL", std::string()), true, "$ Select 5:IFCLABEL(String '')"},
            {"string from an empty text", "IFCLABEL('x')", typedValue<const char*>("IFCLABEL", ""), true,
             "Select 5:IFCLABEL(String '')"},
            {"logical", nullptr, typedValue("IFCANSWER", LogicalValue::Unknown), true,
             "$ Select 6:IFCANSWER(Logical unknown)"},
            {"enumeration", nullptr, typedValue<const char*>("IFCCOLOUR", "GREEN"), true,
             "$ Select 8:IFCCOLOUR(Enumeration 'GREEN')"},
            {"array of reals", nullptr, typedValue("IFCREALARRAY", std::vector{1.0, 2.0}), true,
             "$ Select 10:IFCREALARRAY(List 1[1, 2])"},
            {"list of integers", nullptr, typedValue("IFCCOUNTS", std::vector{1LL, 2LL}), true,
             "$ Select 11:IFCCOUNTS(List 3[1, 2])"},
            {"list of reals", nullptr, typedValue("IFCREALS", std::vector{1.5}), true,
             "$ Select 11:IFCREALS(List 1[1.5])"},
            {"set of references", nullptr, typedValue("IFCTHINGS", both), true, sSet.c_str()},
            {"an empty set", nullptr, typedValue("IFCTHINGS", std::set<Entity*>()), true,
             "$ Select 12:IFCTHINGS(List 13 null)"},
        },
        setter);
}

TEST(AttributeSelect, RefusesOtherTypes) {
    CellSetter setter;
    constexpr char g_sBefore[] = "IFCLABEL('x')";
    constexpr char g_sAfter[] = "Select 5:IFCLABEL(String 'x')";
    const def::schema::Type unresolved("IfcUnresolved");
    vExpectStores(
        {
            {"nothing", g_sBefore, IfcSelectBase(), false, g_sAfter},
            {"a null reference", g_sBefore, IfcSelectBase(static_cast<Entity*>(nullptr)), false, g_sAfter},
            {"a text without a type", g_sBefore, IfcSelectBase(std::string("a")), false, g_sAfter},
            {"a value without a type", g_sBefore, IfcSelectBase(nullptr, 1.5), false, g_sAfter},
            {"a value of a type without a data type", g_sBefore, IfcSelectBase(&unresolved, 1.5), false, g_sAfter},
            {"double for integer", g_sBefore, typedValue("IFCCOUNT", 1.5), false, g_sAfter},
            {"integer for real", g_sBefore, typedValue("IFCLENGTHMEASURE", 1LL), false, g_sAfter},
            {"integer for number", g_sBefore, typedValue("IFCNUMERIC", 1LL), false, g_sAfter},
            {"integer for boolean", g_sBefore, typedValue("IFCFLAG", 1LL), false, g_sAfter},
            {"bool for logical", g_sBefore, typedValue("IFCANSWER", true), false, g_sAfter},
            {"double for string", g_sBefore, typedValue("IFCLABEL", 1.5), false, g_sAfter},
            {"a null text", g_sBefore, typedValue<const char*>("IFCLABEL", nullptr), false, g_sAfter},
            {"string for enumeration", g_sBefore, typedValue("IFCCOLOUR", std::string("RED")), false, g_sAfter},
            {"binary", g_sBefore, typedValue<unsigned char*>("IFCBLOB", nullptr), false, g_sAfter, {g_sNotImplemented}},
            {"a nested select", g_sBefore, typedValue("IFCINNER", 1LL), false, g_sAfter},
            {"integers for an array", g_sBefore, typedValue("IFCREALARRAY", std::vector{1LL}), false, g_sAfter},
            {"double for a list", g_sBefore, typedValue("IFCREALS", 1.5), false, g_sAfter},
            {"reals for a set", g_sBefore, typedValue("IFCTHINGS", std::vector{1.5}), false, g_sAfter},
            {"an array without an object",
             g_sBefore,
             typedValue("IFCREALARRAY", std::vector{1.0}),
             false,
             g_sAfter,
             {},
             Object::None},
            {"a list without an object",
             g_sBefore,
             typedValue("IFCREALS", std::vector{1.0}),
             false,
             g_sAfter,
             {g_sNotImplemented},
             Object::None},
        },
        setter);
}

// The type is set by what stores, and by nothing else.
TEST(AttributeSelect, KeepsItsTypeBehindARefusal) {
    CellSetter setter;
    vExpectStores(
        {
            {"no enumerator, over nothing", nullptr, typedValue<const char*>("IFCCOLOUR", "BLUE"), false,
             "$ Select 0:(null)"},
            {"no enumerator, over a binary", "IFCBLOB(\"0AB\")", typedValue<const char*>("IFCCOLOUR", "BLUE"), false,
             "Select 7:IFCBLOB(Binary [AB])"},
            {"no enumerator, over a string", "IFCLABEL('x')", typedValue<const char*>("IFCCOLOUR", "BLUE"), false,
             "Select 5:IFCLABEL(String 'x')"},
            {"no enumerator, over another", "IFCCOLOUR(.RED.)", typedValue<const char*>("IFCCOLOUR", "BLUE"), false,
             "Select 8:IFCCOLOUR(Enumeration null)"},
            {"a null enumerator", "IFCCOLOUR(.RED.)", typedValue<const char*>("IFCCOLOUR", nullptr), false,
             "Select 8:IFCCOLOUR(Enumeration null)"},
            {"reals in a list of integers, over nothing", nullptr, typedValue("IFCCOUNTS", std::vector{1.5}), false,
             "$ Select 0:(null)"},
            {"reals in a list of integers", "IFCINNER(IFCCOUNT(1))", typedValue("IFCCOUNTS", std::vector{1.5}), false,
             "Select 9:IFCINNER(Select 3:IFCCOUNT(Integer 1))"},
            {"reals in an array of integers", "#5", typedValue("IFCINTEGERARRAY", std::vector{1.5}), false,
             "Select 13:(#5)"},
            {"the same in one that is there", "IFCCOUNTS((1,2))", typedValue("IFCCOUNTS", std::vector{1.5}), false,
             "Select 11:IFCCOUNTS(List 3[1, 2])"},
        },
        setter);
}

TEST(AttributeSelect, ReusesTheCellOfTheSameTag) {
    CellSetter setter;
    setter.vReadOne("Se", "IFCLABEL($)");
    auto& cell = setter.cell<AttributeSelect>("Se");
    const AttributeBase* pFormer = cell.m_pValue;
    EXPECT_EQ(setter.sShow("Se"), "Select 5:IFCLABEL($ String null)");
    const auto boStore = [&](const IfcSelectBase& value) {
        return cell.boValueSet(value, setter.pTypeOf("Se"), setter.data.pool());
    };
    EXPECT_TRUE(boStore(typedValue("IFCLABEL", std::string("abc"))));
    EXPECT_EQ(cell.m_pValue, pFormer);
    EXPECT_EQ(setter.sShow("Se"), "Select 5:IFCLABEL(String 'abc')") << "the nested flags are cleared";

    cell.m_pValue.load()->m_boDerived = true;
    EXPECT_TRUE(boStore(typedValue("IFCLABEL", std::string("d"))));
    EXPECT_EQ(setter.sShow("Se"), "Select 5:IFCLABEL(String 'd')");

    EXPECT_TRUE(boStore(typedValue("IFCLENGTHMEASURE", 1.0)));
    EXPECT_NE(cell.m_pValue, pFormer) << "another tag";
    pFormer = cell.m_pValue;
    EXPECT_TRUE(boStore(typedValue("IFCNUMERIC", 1.0)));
    EXPECT_NE(cell.m_pValue, pFormer) << "a number is no real";
    pFormer = cell.m_pValue;
    EXPECT_TRUE(boStore(IfcSelectBase(setter.pEntity(5))));
    EXPECT_NE(cell.m_pValue, pFormer);
    EXPECT_EQ(cell.m_pType.load(), nullptr) << "a reference has no type";
    pFormer = cell.m_pValue;
    EXPECT_TRUE(boStore(IfcSelectBase(setter.pEntity(6))));
    EXPECT_EQ(cell.m_pValue, pFormer);
    EXPECT_EQ(setter.sShow("Se"), "Select 13:(#6)");
}

TEST(AttributeSelect, MakesACellWhereOnlyTheTagIsThere) {
    CellSetter setter;
    auto& cell = setter.cell<AttributeSelect>("Se");
    cell.m_eType = AttributeType::Real;
    EXPECT_TRUE(cell.boValueSet(typedValue("IFCLENGTHMEASURE", 1.5), setter.pTypeOf("Se"), setter.data.pool()));
    EXPECT_EQ(setter.sShow("Se"), "$ Select 1:IFCLENGTHMEASURE(Real 1.5)");
}

TEST(AttributeSelect, RefusesTextWhereItIsMarkedAsGuid) {
    CellSetter setter;
    setter.vReadOne("Se", "IFCLABEL('x')");
    auto& cell = setter.cell<AttributeSelect>("Se");
    cell.m_boGuid = true;
    AssertTrail trail;
    EXPECT_FALSE(cell.boValueSet(typedValue("IFCLABEL", std::string("a")), setter.pTypeOf("Se"), setter.data.pool()));
    EXPECT_EQ(trail.raised(), Trail{g_sNotImplemented});
    cell.vTypeCreate({CellSetter::pType("IFCLABEL")}, setter.data.pool());
    EXPECT_EQ(trail.raised(), Trail{"oxa::ifc::AttributeSelect::vTypeCreate: Not implemented"});
    EXPECT_EQ(setter.sShow("Se"), "? Select 5:IFCLABEL(String 'x')");
    Assert::setEnabled(false);
    EXPECT_FALSE(cell.boValueSet(typedValue("IFCLABEL", std::string("a")), setter.pTypeOf("Se"), setter.data.pool()));
    EXPECT_EQ(trail.raised(), g_nothing) << "assertions are off";
    EXPECT_EQ(setter.sShow("Se"), "? Select 5:IFCLABEL(String 'x')");
}

// What a caller's value holds, as text.
std::string sHeld(const IfcSelectBase& value, StatementReader& reader) {
    if (value.boEmpty()) return "empty";
    if (*value.pTypeInfo() == typeid(Entity)) return reader.sEntity(value.pEntityGet());
    if (const std::string* psText = value.pStringGet()) return "text " + *psText;
    std::string sText = value.pTypeDataGet()->pTypeNameGet();
    if (const auto* p = value.pValueGet<double>()) return sText + " double " + std::to_string(*p);
    if (const auto* p = value.pValueGet<bool>()) return sText + (*p ? " true" : " false");
    if (const auto* p = value.pValueGet<long long>()) return sText + " long long " + std::to_string(*p);
    if (const auto* p = value.pValueGet<std::string>()) return sText + " string " + *p;
    if (const auto* p = value.pValueGet<Guid>()) return sText + " Guid " + p->toString();
    if (const auto* p = value.pValueGet<LogicalValue>())
        return sText + " logical " + std::to_string(static_cast<int>(*p));
    if (const auto* p = value.pValueGet<unsigned char*>())
        return sText + " bytes " + (*p ? std::to_string((*p)[0]) : "null");
    if (const auto* p = value.pValueGet<const char*>()) return sText + " text " + (*p ? *p : "null");
    if (const auto* p = value.pValueGet<std::vector<double>>()) {
        for (const double item : *p) sText += ' ' + std::to_string(item);
        return sText;
    }
    if (const auto* p = value.pValueGet<std::vector<long long>>()) {
        for (const long long item : *p) sText += ' ' + std::to_string(item);
        return sText;
    }
    if (const auto* p = value.pValueGet<std::set<Entity*>>()) return sText + " set of " + std::to_string(p->size());
    return sText + " unknown";
}

struct GetRow {
    const char* token;
    bool boResult;
    const char* sHeldAfter;   // of a value that held a text before
};

TEST(AttributeSelect, GivesEachKind) {
    constexpr char g_sFormer[] = "text former";
    const GetRow rows[] = {
        {"#5", true, "#5"},
        {"IFCLENGTHMEASURE(1.5)", true, "IfcLengthMeasure double 1.500000"},
        {"IFCNUMERIC(2)", true, "IfcNumeric double 2.000000"},
        {"IFCFLAG(.T.)", true, "IfcFlag true"},
        {"IFCCOUNT(-7)", true, "IfcCount long long -7"},
        {"IFCLABEL('a')", true, "IfcLabel string a"},
        {"IFCANSWER(.U.)", true, "IfcAnswer logical -1"},
        {"IFCBLOB(\"00A\")", true, "IfcBlob bytes 10"},
        {"IFCCOLOUR(.RED.)", true, "IfcColour text RED"},
        {"IFCREALARRAY((1.,2.5))", true, "IfcRealArray 1.000000 2.500000"},
        {"IFCCOUNTS((1,-2))", true, "IfcCounts 1 -2"},
        {"IFCCOUNTS(())", true, "IfcCounts"},
        {"IFCREALARRAY(())", true, "IfcRealArray"},
        {"IFCINTEGERARRAY((1,2))", false, g_sFormer},   // an array of integers has no holder
        {"IFCREALSET((1.,2.))", false, g_sFormer},      // nor has a set of anything but references
        {"IFCTHINGS((#5,#6,#5))", true, "IfcThings set of 2"},
        {"IFCTHINGS(())", true, "IfcThings set of 0"},
        {"IFCREALS((1.,2.))", false, g_sFormer},   // a list of reals has no holder
        {"IFCINNER(IFCCOUNT(1))", false, g_sFormer},
        {"IFCLABEL($)", false, g_sFormer},
        {"IFCLABEL(*)", true, "IfcLabel string "},   // derived is no obstacle
        {"$", false, g_sFormer},
    };
    for (const GetRow& row : rows) {
        SCOPED_TRACE(row.token);
        CellSetter setter;
        AssertTrail trail;
        setter.vReadOne("Se", row.token);
        IfcSelectBase value(std::string("former"));
        EXPECT_EQ(setter.cell<AttributeSelect>("Se").boValueGet(value), row.boResult);
        EXPECT_EQ(sHeld(value, setter), row.sHeldAfter);
        EXPECT_EQ(trail.raised(), g_nothing);
    }
}

TEST(AttributeSelect, GivesWhatNoFileHolds) {
    CellSetter setter;
    auto& cell = setter.cell<AttributeSelect>("Se");
    Pool& pool = setter.data.pool();
    IfcSelectBase value(std::string("former"));

    cell.vTypeCreate({everythingSchema().pEntityFromName(ObjectName("IFCTHING"))}, pool);
    EXPECT_TRUE(cell.boValueGet(value));
    EXPECT_EQ(sHeld(value, setter), "null") << "a null reference is one";

    cell.vTypeCreate({CellSetter::pType("IFCLABEL")}, pool);
    EXPECT_TRUE(cell.boValueGet(value));
    EXPECT_EQ(sHeld(value, setter), "IfcLabel string ") << "a null text is empty";

    AttributeGuid guid;
    guid.m_value = Guid{1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
    cell.m_pValue = &guid;
    EXPECT_TRUE(cell.boValueGet(value));
    EXPECT_EQ(sHeld(value, setter), "IfcLabel Guid 00000001-0002-0003-0405-060708090A0B");

    const def::schema::Type unresolved("IfcUnresolved");
    cell.m_pType = &unresolved;
    EXPECT_FALSE(cell.boValueGet(value)) << "a value of a type without a data type";
    cell.m_pType = nullptr;
    EXPECT_FALSE(cell.boValueGet(value)) << "a value of no type";
    cell.m_pValue = nullptr;
    cell.m_pType = CellSetter::pType("IFCLABEL");
    EXPECT_FALSE(cell.boValueGet(value)) << "a type without a value";
    EXPECT_EQ(sHeld(value, setter), "IfcLabel Guid 00000001-0002-0003-0405-060708090A0B");

    AttributeList list;
    list.m_eItemType = AttributeType::Integer;
    cell.m_pValue = &list;
    cell.m_eType = AttributeType::List;
    cell.m_pType = CellSetter::pType("IFCCOUNTS");
    EXPECT_TRUE(cell.boValueGet(value)) << "a list without a block";
    EXPECT_EQ(sHeld(value, setter), "IfcCounts");
}

struct CompanionRow {
    const char* sAttribute;
    const char* token;
    bool boResult;
    const char* sHeldAfter;
};

TEST(AttributeSelect, ReadsOtherCellsToo) {
    constexpr char g_sFormer[] = "text former";
    const CompanionRow rows[] = {
        {"Th", "#5", true, "#5"},
        {"Re", "1.5", true, " double 1.500000"},
        {"Nu", "2", true, " double 2.000000"},
        {"In", "3", true, " long long 3"},
        {"St", "'a'", true, "IfcLabel string a"},
        {"Se", "IFCCOUNT(1)", true, "IfcCount long long 1"},
        {"Se", "#5", true, "#5"},
        {"Se", "IFCREALS((1.))", false, g_sFormer},
        {"St", "$", false, g_sFormer},
        {"Th", "*", false, g_sFormer},
        {"First", ".T.", false, g_sFormer},
        {"Lo", ".T.", false, g_sFormer},
        {"Gu", "'0$aBcDeFgHiJkLmNoPqRsT'", false, g_sFormer},
        {"Bi", "\"0AB\"", false, g_sFormer},
        {"En", ".RED.", false, g_sFormer},
        {"Reals", "(1.)", false, g_sFormer},
        {"Things", "(#5)", false, g_sFormer},
    };
    for (const CompanionRow& row : rows) {
        SCOPED_TRACE(std::string(row.sAttribute) + ' ' + row.token);
        CellSetter setter;
        setter.vReadOne(row.sAttribute, row.token);
        IfcSelectBase value(std::string("former"));
        EXPECT_EQ(AttributeSelect::boValueGetFromCell(setter.cell<AttributeBase>(row.sAttribute),
                                                      setter.attribute(row.sAttribute), value),
                  row.boResult);
        EXPECT_EQ(sHeld(value, setter), row.sHeldAfter);
        value = IfcSelectBase(std::string("former"));
        EXPECT_EQ(setter.entity->boValueGet(AttributeName(row.sAttribute), value), row.boResult);
        EXPECT_EQ(sHeld(value, setter), row.sHeldAfter);
    }
}

TEST(AttributeSelect, ReadsCellsOfNoTypeAndNoText) {
    CellSetter setter;
    IfcSelectBase value(std::string("former"));
    setter.vReadOne("In", "3");
    EXPECT_THROW(AttributeSelect::boValueGetFromCell(setter.cell<AttributeBase>("In"), def::schema::Attribute(), value),
                 oxa::exception)
        << "an attribute without a type";
    setter.vReadOne("In", "$");
    EXPECT_FALSE(AttributeSelect::boValueGetFromCell(setter.cell<AttributeBase>("In"), def::schema::Attribute(), value))
        << "whose cell has no value";
    EXPECT_EQ(sHeld(value, setter), "text former");
    EXPECT_TRUE(AttributeSelect::boValueGetFromCell(AttributeString(), setter.attribute("St"), value));
    EXPECT_EQ(sHeld(value, setter), "IfcLabel string ") << "a null text is empty";
}

struct TypeRow {
    const char* sName;
    std::vector<const char*> path;   // schema names; null: a null object
    const char* sFromUndefined;
    const char* sFromLabel;
    Trail raised = {};
};

TEST(AttributeSelect, TypeCreatePreparesTheCell) {
    constexpr char g_sNone[] = "$ Select 0:(null)";
    constexpr char g_sLabel[] = "Select 5:IFCLABEL(String 'x')";
    const Trail refused = {"oxa::ifc::AttributeSelect::vTypeCreate: Not implemented"};
    const TypeRow rows[] = {
        {"an empty path", {}, g_sNone, g_sLabel},
        {"a null object", {nullptr}, g_sNone, g_sLabel},
        {"two objects", {"IFCLABEL", "IFCLABEL"}, g_sNone, g_sLabel},
        {"an entity", {"IFCTHING"}, "$ Select 13:(null)", "Select 13:(null)"},
        {"real", {"IFCLENGTHMEASURE"}, "$ Select 1:IFCLENGTHMEASURE(Real 0)", "Select 1:IFCLENGTHMEASURE(Real 0)"},
        {"boolean", {"IFCFLAG"}, "$ Select 2:IFCFLAG(Boolean 0)", "Select 2:IFCFLAG(Boolean 0)"},
        {"integer", {"IFCCOUNT"}, "$ Select 3:IFCCOUNT(Integer 0)", "Select 3:IFCCOUNT(Integer 0)"},
        {"number", {"IFCNUMERIC"}, "$ Select 4:IFCNUMERIC(Number 0)", "Select 4:IFCNUMERIC(Number 0)"},
        {"string", {"IFCLABEL"}, "$ Select 5:IFCLABEL(String null)", g_sLabel},
        {"another type of string",
         {"IFCGLOBALLYUNIQUEID"},
         "$ Select 5:IFCGLOBALLYUNIQUEID(String null)",
         "Select 5:IFCGLOBALLYUNIQUEID(String 'x')"},
        {"logical", {"IFCANSWER"}, "$ Select 6:IFCANSWER(Logical false)", "Select 6:IFCANSWER(Logical false)"},
        {"binary", {"IFCBLOB"}, g_sNone, g_sLabel, refused},
        {"enumeration", {"IFCCOLOUR"}, g_sNone, g_sLabel, refused},
        {"a nested select", {"IFCINNER"}, "$ Select 9:IFCINNER(Select 0:(null))", "Select 9:IFCINNER(Select 0:(null))"},
        {"array", {"IFCREALARRAY"}, g_sNone, g_sLabel},
        {"list", {"IFCREALS"}, g_sNone, g_sLabel},
        {"set", {"IFCTHINGS"}, g_sNone, g_sLabel},
    };
    for (const TypeRow& row : rows)
        for (const bool boLabel : {false, true}) {
            SCOPED_TRACE(std::string(row.sName) + (boLabel ? ", over a label" : ""));
            CellSetter setter;
            setter.vReadOne("Se", boLabel ? "IFCLABEL('x')" : "$");
            std::vector<const def::schema::ObjectBase*> path;
            for (const char* sObject : row.path)
                path.push_back(sObject ? everythingSchema().pObjectFromName(ObjectName(sObject)) : nullptr);
            AssertTrail trail;
            setter.cell<AttributeSelect>("Se").vTypeCreate(path, setter.data.pool());
            EXPECT_EQ(setter.sShow("Se"), boLabel ? row.sFromLabel : row.sFromUndefined);
            EXPECT_EQ(trail.raised(), row.raised);
        }
}

TEST(AttributeSelect, TypeCreateNeedsADataType) {
    CellSetter setter;
    setter.vReadOne("Se", "IFCLABEL('x')");
    const def::schema::Type unresolved("IfcUnresolved");
    setter.cell<AttributeSelect>("Se").vTypeCreate({&unresolved}, setter.data.pool());
    EXPECT_EQ(setter.sShow("Se"), "Select 5:IFCLABEL(String 'x')");
}

// The leak check of a sanitizer tells what is not freed, the heap itself what is freed and should not be.
TEST(AttributeSelect, FreesWhatDoesNotLieInThePool) {
    const auto pHeap = []<class Cell>(std::type_identity<Cell>) { return ::new (std::malloc(sizeof(Cell))) Cell; };
    const auto vEnd = [](AttributeType eType, const char* sType, AttributeBase* pValue, bool boPooled) {
        AttributeSelect select;
        select.m_eType = eType;
        select.m_pType = sType ? CellSetter::pType(sType) : nullptr;
        select.m_pValue = pValue;
        select.m_boPooled = boPooled;
    };
    const auto pText = [&](bool boPooled) {
        auto* pCell = pHeap(std::type_identity<AttributeString>());
        pCell->m_boPooled = boPooled;
        pCell->m_value = boPooled ? nullptr : static_cast<char*>(std::calloc(4, 1));
        return pCell;
    };
    vEnd(AttributeType::String, "IFCLABEL", pText(false), false);
    vEnd(AttributeType::String, "IFCLABEL", pText(true), false);
    vEnd(AttributeType::Entity, nullptr, pHeap(std::type_identity<AttributeEntity>()), false);
    vEnd(AttributeType::Real, "IFCLENGTHMEASURE", pHeap(std::type_identity<AttributeReal>()), false);

    auto* pBinary = pHeap(std::type_identity<AttributeBinary>());
    pBinary->m_boPooled = false;
    pBinary->m_value = static_cast<unsigned char*>(std::calloc(4, 1));
    vEnd(AttributeType::Binary, "IFCBLOB", pBinary, false);

    auto* pInner = pHeap(std::type_identity<AttributeSelect>());
    pInner->m_boPooled = false;
    pInner->m_eType = AttributeType::String;
    pInner->m_pType = CellSetter::pType("IFCLABEL");
    pInner->m_pValue = pText(false);
    vEnd(AttributeType::Select, "IFCINNER", pInner, false);

    char text[] = "x";
    AttributeString pooled;
    pooled.m_value = text;
    vEnd(AttributeType::String, "IFCLABEL", &pooled, true);
    EXPECT_STREQ(pooled.m_value, "x") << "what lies in a pool stays";

    AttributeGuid guid;
    guid.m_boPooled = false;
    vEnd(AttributeType::String, "IFCLABEL", &guid, true);

    unsigned char bytes[] = {7};
    AttributeBinary pooledBinary;
    pooledBinary.m_value = bytes;
    vEnd(AttributeType::Binary, "IFCBLOB", &pooledBinary, true);
    EXPECT_EQ(bytes[0], 7);

    Pool pool;
    for (const char* sType : {"IFCREALARRAY", "IFCREALS", "IFCTHINGS"}) {
        auto* pList = pHeap(std::type_identity<AttributeList>());
        pList->m_eItemType = AttributeType::Binary;
        auto* pArray = Array<AttributeBinary>::pFromBytes(pool.pAllocate(Array<AttributeBinary>::iBlockSize(1)), 1);
        pList->m_pItems = pArray;
        (*pArray)[0].m_boPooled = false;
        (*pArray)[0].m_value = static_cast<unsigned char*>(std::calloc(4, 1));
        vEnd(AttributeType::List, sType, pList, false);
    }
    vEnd(AttributeType::Unknown, nullptr, pHeap(std::type_identity<AttributeReal>()), false);
}

}   // namespace
}   // namespace oxa::ifc
