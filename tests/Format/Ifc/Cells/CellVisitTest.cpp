// SPDX-License-Identifier: Apache-2.0
// Visits: each class of cell and each sort of items reaches its own overload, and that once.
#include "Format/Ifc/IfcCellVisit.h"

#include <gtest/gtest.h>

#include "Format/Ifc/CellSetter.h"

namespace oxa::ifc {
namespace {

// Notes which overload was called, and whether with a const argument.
struct Reached {
    std::string sCalls;

    template <class T>
    std::size_t note(const char* sName) {
        sCalls += (std::is_const_v<T> ? "const " : "") + std::string(sName) + ' ';
        return sizeof(T);
    }
    template <class Cell>
    std::size_t operator()(Cell& cell) {
        static_assert(std::is_base_of_v<AttributeBase, Cell>);
        return note<Cell>(sNameOf(cell));
    }
    static const char* sNameOf(const AttributeReal&) { return "Real"; }
    static const char* sNameOf(const AttributeNumber&) { return "Number"; }
    static const char* sNameOf(const AttributeBoolean&) { return "Boolean"; }
    static const char* sNameOf(const AttributeInteger&) { return "Integer"; }
    static const char* sNameOf(const AttributeString&) { return "String"; }
    static const char* sNameOf(const AttributeGuid&) { return "Guid"; }
    static const char* sNameOf(const AttributeLogical&) { return "Logical"; }
    static const char* sNameOf(const AttributeBinary&) { return "Binary"; }
    static const char* sNameOf(const AttributeEnumeration&) { return "Enumeration"; }
    static const char* sNameOf(const AttributeSelect&) { return "Select"; }
    static const char* sNameOf(const AttributeList&) { return "List"; }
    static const char* sNameOf(const AttributeEntity&) { return "Entity"; }
};

struct CellRow {
    const char* sAttribute;   // of IfcEverything
    CellClass eClass;
    const char* sToken;
    const char* sReached;
    std::size_t iSize;
};
const CellRow g_cellRows[] = {
    {"First", CellClass::Boolean, ".T.", "Boolean", 5},
    {"Re", CellClass::Real, "1.5", "Real", 16},
    {"Nu", CellClass::Number, "2.5", "Number", 16},
    {"In", CellClass::Integer, "7", "Integer", 16},
    {"Lo", CellClass::Logical, ".U.", "Logical", 8},
    {"St", CellClass::String, "'text'", "String", 16},
    {"Gu", CellClass::Guid, "'0$aBcDeFgHiJkLmNoPqRsT'", "Guid", 20},
    {"Bi", CellClass::Binary, "\"0FF\"", "Binary", 24},
    {"En", CellClass::Enumeration, ".RED.", "Enumeration", 16},
    {"Se", CellClass::Select, "IFCCOUNT(3)", "Select", 32},
    {"Th", CellClass::Entity, "#1", "Entity", 16},
    {"Reals", CellClass::List, "(1.,2.)", "List", 16},
    {"Numbers", CellClass::List, "(1.,2.)", "List", 16},
    {"Integers", CellClass::List, "(1,2)", "List", 16},
};

TEST(CellVisit, EachClassReachesItsOverloadOnce) {
    CellSetter setter;
    for (const CellRow& row : g_cellRows)
        for (const char* sToken : {row.sToken, "$", "*"}) {   // the flags are not looked at
            SCOPED_TRACE(row.sAttribute + std::string(" = ") + sToken);
            setter.vReadOne(row.sAttribute, sToken);
            auto& cell = setter.cell<AttributeBase>(row.sAttribute);
            EXPECT_EQ(cell.boHasValue(), sToken == row.sToken);
            Reached reached;
            EXPECT_EQ(visitCell(cell, row.eClass, reached), row.iSize);
            EXPECT_EQ(visitCell(std::as_const(cell), row.eClass, reached), row.iSize);
            EXPECT_EQ(reached.sCalls, row.sReached + std::string(" const ") + row.sReached + ' ');
        }
}

TEST(CellVisit, TheFlagOfACellTellsAGuidFromAText) {
    const AttributeString text;
    const AttributeGuid guid;
    for (const CellClass eClass : {CellClass::String, CellClass::Guid}) {
        Reached reached;
        visitCell(static_cast<const AttributeBase&>(text), eClass, reached);
        visitCell(static_cast<const AttributeBase&>(guid), eClass, reached);
        EXPECT_EQ(reached.sCalls, "const String const Guid ");
    }
}

TEST(CellVisit, WhatHasNoCellIsNotVisited) {
    AttributeBase cell;
    for (const CellClass eClass : {CellClass::Unresolved, CellClass::Illegal, static_cast<CellClass>(200)}) {
        Reached reached;
        EXPECT_EQ(visitCell(cell, eClass, reached), 0U);
        EXPECT_EQ(reached.sCalls, "");
    }
}

TEST(CellVisit, TheValueOfASelectIsVisitedAsItsTypeSays) {
    struct Row {
        const char* sToken;
        const char* sReached;
    };
    const Row rows[] = {
        {"$", ""},
        {"IFCLABEL('a')", "Select String "},
        {"IFCLENGTHMEASURE(1.)", "Select Real "},
        {"IFCNUMERIC(1.)", "Select Number "},
        {"IFCCOUNT(1)", "Select Integer "},
        {"IFCFLAG(.T.)", "Select Boolean "},
        {"IFCANSWER(.U.)", "Select Logical "},
        {"IFCBLOB(\"0\")", "Select Binary "},
        {"IFCCOLOUR(.RED.)", "Select Enumeration "},
        {"IFCREALS((1.))", "Select List "},
        {"IFCREALARRAY((1.))", "Select List "},
        {"IFCTHINGS((#1))", "Select List "},
        {"IFCINNER(IFCCOUNT(1))", "Select Select "},
        {"#1", "Select Entity "},
    };
    CellSetter setter;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sToken);
        setter.vReadOne("Se", row.sToken);
        Reached reached;
        reached.sCalls = *row.sReached ? "Select " : "";
        EXPECT_EQ(visitSelected(setter.cell<AttributeSelect>("Se"), reached) != 0, *row.sReached != 0);
        EXPECT_EQ(reached.sCalls, row.sReached);
    }
}

// The sort of items and their count; "null" where the list was never filled.
template <class Items>
std::string sCounted(const char* sName, const Items* pItems) {
    return sName + (pItems ? ' ' + std::to_string(pItems->size()) : std::string(" null"));
}
const Overloads g_items{
    [](const Array<double>* pItems) { return sCounted("Real", pItems); },
    [](const Array<long long>* pItems) { return sCounted("Integer", pItems); },
    [](const Array<char*>* pItems) { return sCounted("String", pItems); },
    [](const Array<AttributeBinary>* pItems) { return sCounted("Binary", pItems); },
    [](const Array<AttributeSelect>* pItems) { return sCounted("Select", pItems); },
    [](const Array<AttributeList>* pItems) { return sCounted("List", pItems); },
    [](const EntityList* pItems) { return std::string(pItems ? "Entity" : "Entity null"); },
    [](NoItems none) { return "none of " + std::to_string(static_cast<int>(none.eType)); },
};

TEST(CellVisit, EachSortOfItemsReachesItsOverload) {
    struct Row {
        const char* sAttribute;
        const char* sToken;
        const char* sReached;
    };
    const Row rows[] = {
        {"Reals", "(1.,2.)", "Real 2"},       {"Numbers", "(1.)", "Real 1"},
        {"Integers", "(1,2,3)", "Integer 3"}, {"Texts", "()", "String 0"},
        {"Blobs", "(\"0\")", "Binary 1"},     {"Selects", "(#1,IFCCOUNT(1))", "Select 2"},
        {"Things", "(#1,#2)", "Entity"},      {"Things", "()", "Entity null"},
        {"ThingSelects", "(#1)", "Entity"},   {"RealRows", "((1.),(2.))", "List 2"},
        {"SetRows", "((#1))", "none of 12"},  {"Reals", "$", "none of 0"},   // a list that no value was given yet
    };
    CellSetter setter;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sAttribute + std::string(" = ") + row.sToken);
        setter.vReadOne(row.sAttribute, row.sToken);
        auto& list = setter.cell<AttributeList>(row.sAttribute);
        EXPECT_EQ(visitItems(list, g_items), row.sReached);
        EXPECT_EQ(visitItems(std::as_const(list), g_items), row.sReached);
    }
}

TEST(CellVisit, AListOfAnyOtherItemTypeHasNoItems) {
    AttributeList list;
    for (const AttributeType eType :
         {AttributeType::Boolean, AttributeType::Number, AttributeType::Logical, AttributeType::Enumeration,
          AttributeType::Array, AttributeType::Set, static_cast<AttributeType>(14), static_cast<AttributeType>(-1)}) {
        list.m_eItemType = eType;
        EXPECT_EQ(visitItems(list, g_items), "none of " + std::to_string(static_cast<int>(eType)));
    }
}

// The overloads that take what is left over come last, whatever else would fit.
TEST(CellVisit, WhatIsLeftOverIsTakenByTheGeneralOverload) {
    const Overloads cells{
        [](const AttributeReal&) { return 1; },
        [](const AttributeBase&) { return 2; },
    };
    const AttributeNumber number;
    EXPECT_EQ(visitCell(number, CellClass::Real, cells), 1);
    EXPECT_EQ(visitCell(number, CellClass::Number, cells), 1) << "a number is a real";
    EXPECT_EQ(visitCell(number, CellClass::Integer, cells), 2);

    const Overloads items{
        [](const Array<double>*) { return 1; },
        [](AnyItems) { return 2; },
    };
    AttributeList list;
    EXPECT_EQ(visitItems(list, items), 2);
    list.m_eItemType = AttributeType::Real;
    EXPECT_EQ(visitItems(list, items), 1);
    list.m_eItemType = AttributeType::Entity;
    EXPECT_EQ(visitItems(list, items), 2);
}

}   // namespace
}   // namespace oxa::ifc
