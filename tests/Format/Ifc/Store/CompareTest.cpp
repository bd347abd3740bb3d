// SPDX-License-Identifier: Apache-2.0
// Comparison of cells: what makes two values of one attribute equal, place by place.
#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <new>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "Format/Ifc/AssertLog.h"
#include "Format/Ifc/CellSetter.h"
#include "Format/Ifc/IfcFileAttribute.h"
#include "Format/Ifc/StatementReader.h"

namespace oxa::ifc {
namespace {

using def::schema::Attribute;
using def::schema::AttributeName;
using def::schema::ObjectName;

// The values of the entity's one attribute, which is called Value.
struct Value {
    const Attribute* pAttribute;
    AttributeBase* pCell;

    explicit Value(const Entity& entity) { std::tie(pAttribute, pCell) = entity.pAttributeFromIndex(0); }
    [[nodiscard]] bool boEqual(const Value& other, bool boSameEntity) const {
        return pCell->boIsEqual(*pAttribute->types.front(), *other.pCell, *other.pAttribute->types.front(),
                                boSameEntity);
    }
};

// #5 and #6 have the same content, #7 has another; nobody defines #98 and #99.
class CompareReader : public StatementReader {
public:
    CompareReader() {
        for (const char* sThing : {"#5=IFCTHING('a');", "#6=IFCTHING('a');", "#7=IFCTHING('b');"}) pRead(sThing);
    }
    [[nodiscard]] Value value(std::string_view keyword, std::string_view token) {
        return Value(
            *pRead('#' + std::to_string(m_iNext++) + '=' + std::string(keyword) + '(' + std::string(token) + ");"));
    }

private:
    unsigned m_iNext = 100;
};

struct EqualRow {
    const char* sKeyword;
    const char* sLeft;
    const char* sRight;
    bool boEqual;
    const char* sRule = "";
};

void vExpectRow(const EqualRow& row, bool boSameEntity) {
    SCOPED_TRACE(std::string(row.sKeyword) + ": " + row.sLeft + " and " + row.sRight + "  " + row.sRule +
                 (boSameEntity ? ", same entity" : ""));
    CompareReader reader;
    const AssertLog log;
    const Value left = reader.value(row.sKeyword, row.sLeft);
    const Value right = reader.value(row.sKeyword, row.sRight);
    EXPECT_EQ(left.boEqual(right, boSameEntity), row.boEqual);
    EXPECT_EQ(right.boEqual(left, boSameEntity), row.boEqual) << "the other way round";
    EXPECT_EQ(log.texts(), std::vector<std::string>{});
}

template <std::size_t N>
void vExpectRows(const EqualRow (&rows)[N]) {
    for (const EqualRow& row : rows)
        for (const bool boSameEntity : {false, true}) vExpectRow(row, boSameEntity);
}

TEST(CompareCell, SingleValuesByValue) {
    vExpectRows({
        {"IFCREAL", "1.5", "1.5", true},
        {"IFCREAL", "1.5", "1.5000000000000002", false, "no tolerance"},
        {"IFCREAL", "0.", "-0.", true},
        {"IFCNUMBER", "2.", "2.", true},
        {"IFCNUMBER", "2.", "3.", false},
        {"IFCINTEGER", "7", "7", true},
        {"IFCINTEGER", "7", "-7", false},
        {"IFCBOOLEAN", ".T.", ".T.", true},
        {"IFCBOOLEAN", ".T.", ".F.", false},
        {"IFCLOGICAL", ".U.", ".U.", true},
        {"IFCLOGICAL", ".U.", ".F.", false},
        {"IFCSTRING", "'abc'", "'abc'", true},
        {"IFCSTRING", "'abc'", "'abC'", false, "case matters"},
        {"IFCSTRING", "'abc'", "'ab'", false},
        {"IFCSTRING", "''", "''", true},
        {"IFCGUID", "'0TdSR4dSbLuwdbL5HLUvM0'", "'0TdSR4dSbLuwdbL5HLUvM0'", true},
        {"IFCGUID", "'0TdSR4dSbLuwdbL5HLUvM0'", "'0TdSR4dSbLuwdbL5HLUvM1'", false},
        {"IFCBINARY", "\"0AB01\"", "\"0AB01\"", true},
        {"IFCBINARY", "\"0AB01\"", "\"0AB02\"", false},
        {"IFCBINARY", "\"0AB01\"", "\"0AB\"", false},
        {"IFCBINARY", "\"0\"", "\"0\"", true, "no bytes"},
        {"IFCENUMERATION", ".RED.", ".RED.", true},
        {"IFCENUMERATION", ".RED.", ".GREEN.", false},
        {"IFCENUMERATION", ".PINK.", ".VIOLET.", true, "both null: the schema has neither"},
        {"IFCENUMERATION", ".RED.", ".PINK.", false, "one null"},
    });
}

TEST(CompareCell, FlagsDecideWhereThereIsNoValue) {
    for (const char* sKeyword :
         {"IFCREAL", "IFCNUMBER", "IFCINTEGER", "IFCBOOLEAN", "IFCLOGICAL", "IFCSTRING", "IFCGUID", "IFCBINARY",
          "IFCENUMERATION", "IFCSELECT", "IFCREALLIST", "IFCTABLE", "IFCREFERENCE", "IFCREFERENCESET"}) {
        vExpectRows({
            {sKeyword, "$", "$", true},
            {sKeyword, "*", "*", true},
            {sKeyword, "$", "*", false},
        });
    }
    vExpectRows({
        {"IFCREAL", "$", "0.", false},
        {"IFCSTRING", "*", "''", false},
        {"IFCREFERENCE", "$", "#5", false},
        {"IFCSELECT", "$", "IFCLABEL('a')", false},
        {"IFCREALLIST", "$", "()", false},
    });
}

TEST(CompareCell, ReferencesByPointerOrByContent) {
    const struct {
        EqualRow row;
        bool boEqualSame;   // with boSameEntity
    } rows[] = {
        {{"IFCREFERENCE", "#5", "#5", true}, true},
        {{"IFCREFERENCE", "#5", "#6", true, "two instances of equal content"}, false},
        {{"IFCREFERENCE", "#5", "#7", false}, false},
        {{"IFCREFERENCE", "#5", "#99", false, "never defined"}, false},
        {{"IFCREFERENCE", "#98", "#99", false, "neither is defined"}, false},
        {{"IFCREFERENCE", "#99", "#99", true, "the same place"}, true},
        {{"IFCREFERENCE", "5", "6", true, "both null"}, true},
        {{"IFCREFERENCE", "5", "#5", false, "one null"}, false},
        {{"IFCREFERENCESET", "(#5)", "(#6)", true, "a list looks at content in any case"}, true},
    };
    for (const auto& [row, boEqualSame] : rows) {
        vExpectRow(row, false);
        EqualRow same = row;
        same.boEqual = boEqualSame;
        vExpectRow(same, true);
    }
}

TEST(CompareCell, SelectsByTagAndValue) {
    vExpectRows({
        {"IFCSELECT", "IFCLABEL('a')", "IFCLABEL('a')", true},
        {"IFCSELECT", "IFCLABEL('a')", "IFCLABEL('b')", false},
        {"IFCSELECT", "IFCLABEL('a')", "IFCGLOBALLYUNIQUEID('a')", true, "the tag counts, not the type"},
        {"IFCSELECT", "IFCLENGTHMEASURE(1.5)", "IFCLENGTHMEASURE(1.5)", true},
        {"IFCSELECT", "IFCLENGTHMEASURE(1.5)", "IFCLENGTHMEASURE(2.5)", false},
        {"IFCSELECT", "IFCLENGTHMEASURE(1.5)", "IFCNUMERIC(1.5)", false, "two tags"},
        {"IFCSELECT", "IFCNUMERIC(1.5)", "IFCNUMERIC(1.5)", true},
        {"IFCSELECT", "IFCNUMERIC(1.5)", "IFCNUMERIC(2.5)", false},
        {"IFCSELECT", "IFCCOUNT(3)", "IFCCOUNT(3)", true},
        {"IFCSELECT", "IFCCOUNT(3)", "IFCCOUNT(4)", false},
        {"IFCSELECT", "IFCFLAG(.T.)", "IFCFLAG(.T.)", true},
        {"IFCSELECT", "IFCFLAG(.T.)", "IFCFLAG(.F.)", false},
        {"IFCSELECT", "IFCANSWER(.U.)", "IFCANSWER(.U.)", true},
        {"IFCSELECT", "IFCANSWER(.U.)", "IFCANSWER(.T.)", false},
        {"IFCSELECT", "IFCBLOB(\"0AB\")", "IFCBLOB(\"0AB\")", true},
        {"IFCSELECT", "IFCBLOB(\"0AB\")", "IFCBLOB(\"0AC\")", false},
        {"IFCSELECT", "IFCBLOB(\"0\")", "IFCBLOB(\"0\")", true, "no bytes"},
        {"IFCSELECT", "IFCCOLOUR(.RED.)", "IFCCOLOUR(.RED.)", true},
        {"IFCSELECT", "IFCCOLOUR(.RED.)", "IFCCOLOUR(.GREEN.)", false},
        {"IFCSELECT", "IFCCOLOUR(.PINK.)", "IFCCOLOUR(.VIOLET.)", true, "both null"},
        {"IFCSELECT", "IFCCOLOUR(.PINK.)", "IFCCOLOUR(.RED.)", false, "one null"},
    });
}

TEST(CompareCell, FlagsInsideOfASelectMustAgree) {
    vExpectRows({
        {"IFCSELECT", "IFCLABEL($)", "IFCLABEL($)", true},
        {"IFCSELECT", "IFCLABEL($)", "IFCLABEL(*)", false},
        {"IFCSELECT", "IFCLABEL($)", "IFCLABEL('')", false},
        {"IFCSELECT", "IFCLENGTHMEASURE($)", "IFCLENGTHMEASURE($)", true},
        {"IFCSELECT", "IFCLENGTHMEASURE($)", "IFCLENGTHMEASURE(0.)", false},
        {"IFCSELECT", "IFCBLOB($)", "IFCBLOB($)", true},
    });
}

TEST(CompareCell, SelectsOfReferencesAreUnequal) {
    vExpectRows({
        {"IFCSELECT", "#5", "#5", false, "the very same reference"},
        {"IFCSELECT", "#5", "#6", false},
        {"IFCSELECT", "IFCVALUE(#5)", "IFCVALUE(#5)", false},
        {"IFCSELECT", "#5", "IFCLABEL('a')", false},
    });
}

// Only flags that differ let the comparison of two references in selects go on.
TEST(CompareCell, SelectsOfReferencesWithOtherFlagsCompare) {
    const struct {
        const char* sLeft;
        const char* sRight;
        bool boEqual;
        bool boEqualSame;
    } rows[] = {
        {"#5", "#5", true, true}, {"#5", "#6", true, false}, {"#5", "#7", false, false},
        {"#", "#", true, true},   {"#", "#5", false, false}, {"#5", "#", false, false},
    };
    for (const auto& row : rows)
        for (const bool boDerived : {false, true}) {
            SCOPED_TRACE(std::string(row.sLeft) + " and " + row.sRight);
            CompareReader reader;
            const Value left = reader.value("IFCSELECT", row.sLeft);
            const Value right = reader.value("IFCSELECT", row.sRight);
            AttributeBase* pReference = static_cast<AttributeSelect*>(right.pCell)->m_pValue;
            ASSERT_NE(pReference, nullptr);
            (boDerived ? pReference->m_boDerived : pReference->m_boUndefined) = true;
            EXPECT_EQ(left.boEqual(right, false), row.boEqual);
            EXPECT_EQ(left.boEqual(right, true), row.boEqualSame);
            const auto& select = *static_cast<AttributeSelect*>(left.pCell);
            const auto& other = *static_cast<AttributeSelect*>(right.pCell);
            EXPECT_EQ(select.boIsEqual(other, false, false), row.boEqual) << "asked of the selects themselves";
            EXPECT_EQ(select.boIsEqual(other, true, false), row.boEqualSame);
        }
}

TEST(CompareCell, SelectsInSelectsAreSteppedThrough) {
    vExpectRows({
        {"IFCSELECT", "IFCVALUE(IFCLABEL('a'))", "IFCVALUE(IFCLABEL('a'))", true},
        {"IFCSELECT", "IFCVALUE(IFCLABEL('a'))", "IFCVALUE(IFCLABEL('b'))", false},
        {"IFCSELECT", "IFCVALUE(IFCLABEL('a'))", "IFCLABEL('a')", false, "tag 9 and tag 5"},
        {"IFCSELECT", "IFCVALUE(IFCVALUE(IFCCOUNT(1)))", "IFCVALUE(IFCVALUE(IFCCOUNT(1)))", true},
        {"IFCSELECT", "IFCVALUE(IFCVALUE(IFCCOUNT(1)))", "IFCVALUE(IFCVALUE(IFCCOUNT(2)))", false},
        {"IFCSELECT", "IFCVALUE($)", "IFCVALUE(*)", false, "flags of the nested select"},
        {"IFCSELECT", "IFCVALUE($)", "IFCVALUE(IFCLABEL('a'))", false},
        {"IFCSELECT", "IFCVALUE($)", "IFCVALUE($)", false, "no value and no type"},
    });
    // As deep as a file can nest.
    std::string sDeep = "IFCLABEL('a')";
    for (int i = 0; i < 990; ++i) sDeep = "IFCVALUE(" + sDeep + ')';
    CompareReader reader;
    EXPECT_TRUE(reader.value("IFCSELECT", sDeep).boEqual(reader.value("IFCSELECT", sDeep), false));
}

TEST(CompareCell, SelectsWithoutATypeAreUnequal) {
    vExpectRows({{"IFCSELECT", "FOO(1)", "FOO(1)", false}});
    // What no file leaves behind: the tag of a value without the value, and a value without a type.
    AttributeReal value;
    AttributeSelect without;
    without.m_eType = AttributeType::Real;
    AttributeSelect with;
    with.m_eType = AttributeType::Real;
    with.m_pValue = static_cast<AttributeBase*>(&value);
    EXPECT_FALSE(with.boIsEqual(without, false, false));
    EXPECT_FALSE(without.boIsEqual(with, false, false));
    EXPECT_FALSE(with.boIsEqual(with, false, false));
    with.m_pType = CellSetter::pType("IFCLENGTHMEASURE");
    EXPECT_FALSE(with.boIsEqual(without, false, false));
    EXPECT_TRUE(with.boIsEqual(with, false, false));
}

TEST(CompareCell, ListsOfReferencesMayHoldNulls) {
    CompareReader reader;
    Entity* p5 = reader.pEntity(5);
    Entity* p6 = reader.pEntity(6);
    Entity* p7 = reader.pEntity(7);
    const auto vFill = [&](AttributeList& list, const std::vector<Entity*>& items) {
        EntityList* pHead = nullptr;
        for (Entity* pEntity : items)
            vListAppend(pHead, pEntity, [&](std::size_t iBytes) { return reader.data.pool().pAllocate(iBytes); });
        list.m_eItemType = AttributeType::Entity;
        list.m_pItems = pHead;
    };
    const struct {
        const char* sRule;
        std::vector<Entity*> left;
        std::vector<Entity*> right;
        bool boEqual;
    } rows[] = {
        {"null and null", {nullptr}, {nullptr}, true},
        {"null and a reference", {nullptr}, {p5}, false},
        {"null where the other has one", {p5, nullptr}, {p6, p7}, false},
        {"null in the same place", {nullptr, p5}, {nullptr, p6}, true},
        {"other content behind a null", {nullptr, p5}, {nullptr, p7}, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        AttributeList left;
        AttributeList right;
        vFill(left, row.left);
        vFill(right, row.right);
        EXPECT_EQ(left.AttributeListValueBase::boIsEqual(right, false, false), row.boEqual);
        EXPECT_EQ(right.AttributeListValueBase::boIsEqual(left, false, false), row.boEqual);
    }
}

// The same bytes as items of another type are another list.
TEST(CompareCell, ListsOfOtherItemTypesAreUnequal) {
    CompareReader reader;
    const Value left = reader.value("IFCREALLIST", "(1.,2.)");
    const Value right = reader.value("IFCREALLIST", "(1.,2.)");
    EXPECT_TRUE(left.boEqual(right, false));
    static_cast<AttributeList*>(right.pCell)->m_eItemType = AttributeType::Integer;
    EXPECT_FALSE(left.boEqual(right, false));
    EXPECT_FALSE(right.boEqual(left, false));
}

// Only the references of the cells in hand are compared by identity; those of the instances behind them by content.
TEST(CompareCell, SameEntityIsAskedOfTheFirstReferencesAlone) {
    const auto pSchema = pSchemaOf(R"(
        ENTITY IfcThing; Name : OPTIONAL STRING; END_ENTITY;
        ENTITY IfcHolder; Thing : IfcThing; END_ENTITY;
        ENTITY IfcTop; Holders : LIST OF IfcHolder; END_ENTITY;)");
    StatementReader reader(*pSchema);
    for (const char* sStatement : {"#1=IFCTHING('a');", "#2=IFCTHING('a');", "#3=IFCTHING('b');", "#4=IFCHOLDER(#1);",
                                   "#5=IFCHOLDER(#2);", "#6=IFCHOLDER(#3);"})
        ASSERT_NE(reader.pRead(sStatement), nullptr);
    const Value first(*reader.pRead("#7=IFCTOP((#4));"));
    const Value equal(*reader.pRead("#8=IFCTOP((#5));"));
    const Value other(*reader.pRead("#9=IFCTOP((#6));"));
    for (const bool boSameEntity : {false, true}) {
        SCOPED_TRACE(boSameEntity);
        EXPECT_TRUE(first.boEqual(equal, boSameEntity));
        EXPECT_FALSE(first.boEqual(other, boSameEntity));
    }
    const Value holder(*reader.pEntity(4));
    const Value sameContent(*reader.pEntity(5));
    EXPECT_TRUE(holder.boEqual(sameContent, false));
    EXPECT_FALSE(holder.boEqual(sameContent, true));
}

TEST(CompareCell, ListsInSelectsNeedOtherFlags) {
    vExpectRows({
        {"IFCSELECT", "IFCREALS((1.))", "IFCREALS((1.))", false},
        {"IFCSELECT", "IFCREALS(())", "IFCREALS(())", false},
        {"IFCSELECT", "IFCCOUNTS((1))", "IFCCOUNTS((1))", false},
        {"IFCSELECT", "IFCTHINGS((#5))", "IFCTHINGS((#5))", false},
        {"IFCSELECT", "IFCREALS($)", "IFCREALS($)", false},
        {"IFCSELECT", "IFCREALS($)", "IFCREALS(*)", true, "both null"},
        {"IFCSELECT", "IFCREALS($)", "IFCREALS((1.))", false, "one null"},
    });
    CompareReader reader;
    const Value left = reader.value("IFCSELECT", "IFCREALS((1.,2.))");
    const Value right = reader.value("IFCSELECT", "IFCREALS((1.,2.))");
    const Value other = reader.value("IFCSELECT", "IFCREALS((1.,3.))");
    for (const Value* pValue : {&right, &other})
        static_cast<AttributeSelect*>(pValue->pCell)->m_pValue.load()->m_boDerived = true;
    EXPECT_TRUE(left.boEqual(right, false)) << "flags that differ, and the same content";
    EXPECT_FALSE(left.boEqual(other, false));
}

TEST(CompareCell, ListsByItems) {
    vExpectRows({
        {"IFCREALLIST", "(1.,2.)", "(1.,2.)", true},
        {"IFCREALLIST", "(1.,2.)", "(2.,1.)", false, "order"},
        {"IFCREALLIST", "(1.,2.)", "(1.)", false},
        {"IFCREALLIST", "()", "()", true},
        {"IFCNUMBERSET", "(1.,2.)", "(2.,1.)", false, "a set too"},
        {"IFCINTEGERARRAY", "(1,2)", "(1,2)", true},
        {"IFCINTEGERARRAY", "(1,2)", "(1,3)", false},
        {"IFCINTEGERARRAY", "(1,2)", "(1,2,3)", false},
        {"IFCLABELLIST", "('a','b')", "('a','b')", true},
        {"IFCLABELLIST", "('a','b')", "('a','B')", false},
        {"IFCLABELLIST", "('a')", "('a','')", false},
        {"IFCBINARYLIST", "(\"0AB\",\"0\",$)", "(\"0AB\",\"0\",$)", true},
        {"IFCBINARYLIST", "(\"0AB\")", "(\"0AC\")", false},
        {"IFCBINARYLIST", "(\"0AB\")", "(\"0AB01\")", false},
        {"IFCBINARYLIST", "($)", "(*)", false},
        {"IFCBINARYLIST", "($)", "(\"0\")", false},
        {"IFCSELECTLIST", "(IFCLABEL('a'),IFCCOUNT(3))", "(IFCLABEL('a'),IFCCOUNT(3))", true},
        {"IFCSELECTLIST", "(IFCLABEL('a'))", "(IFCLABEL('b'))", false},
        {"IFCSELECTLIST", "(IFCLABEL('a'))", "(IFCLABEL('a'),IFCLABEL('a'))", false},
        {"IFCSELECTLIST", "(IFCLABEL('a'))", "($)", false, "flags of the items"},
        {"IFCSELECTLIST", "($)", "($)", false, "neither value nor type"},
        {"IFCSELECTLIST", "(#5)", "(#5)", false, "references in selects"},
        {"IFCSELECTLIST", "(IFCREALS((1.)))", "(IFCREALS((1.)))", false, "lists in selects"},
        {"IFCREFERENCESET", "(#5,#7)", "(#6,#7)", true, "content"},
        {"IFCREFERENCESET", "(#5,#7)", "(#7,#5)", false},
        {"IFCREFERENCESET", "(#5)", "(#5,#6)", false},
        {"IFCREFERENCESET", "()", "()", true},
        {"IFCREFERENCESET", "()", "(#5)", false},
        {"IFCREFERENCESET", "(#99)", "(#99)", false, "content, and there is none"},
        {"IFCTHINGSELECTLIST", "(#5)", "(#6)", true, "a select of entities alone holds plain references"},
        {"IFCBOOLEANLIST", "(.T.)", "(.F.)", true, "not read: both null"},
        {"IFCSETLIST", "((#5))", "((#7))", true, "not read: both null"},
    });
}

TEST(CompareCell, RowsNeedOtherFlags) {
    vExpectRows({
        {"IFCTABLE", "()", "()", true},
        {"IFCTABLE", "((1.))", "((1.))", false},
        {"IFCTABLE", "(())", "(())", false},
        {"IFCTABLE", "((1.))", "()", false},
        {"IFCTABLE", "($)", "($)", false, "the same flags"},
        {"IFCTABLE", "($)", "(*)", true, "both null"},
        {"IFCTABLE", "($,$)", "(*,$)", false, "one row with the same flags"},
        {"IFCTABLE", "($)", "((1.))", false},
        {"IFCCUBE", "(((1)))", "(((1)))", false},
        {"IFCCUBE", "()", "()", true},
    });
}

// The row of the table that the words of a file don't reach.
TEST(CompareCell, NaNIsUnequalToItself) {
    const double g_nan = std::numeric_limits<double>::quiet_NaN();
    CompareReader reader;
    const Value real = reader.value("IFCREAL", "1.");
    static_cast<AttributeReal*>(real.pCell)->m_value = g_nan;
    EXPECT_FALSE(real.boEqual(real, false));
    const Value list = reader.value("IFCREALLIST", "(1.,2.)");
    EXPECT_TRUE(list.boEqual(list, false));
    (*static_cast<AttributeList*>(list.pCell)->pArray<double>())[1] = g_nan;
    EXPECT_FALSE(list.boEqual(list, false));
    const Value select = reader.value("IFCSELECT", "IFCLENGTHMEASURE(1.)");
    EXPECT_TRUE(select.boEqual(select, false));
    static_cast<AttributeReal*>(static_cast<AttributeSelect*>(select.pCell)->m_pValue.load())->m_value = g_nan;
    EXPECT_FALSE(select.boEqual(select, false));
}

TEST(CompareCell, TextBesideGuidIsEqualAtTheTopAndUnequalInASelect) {
    CompareReader reader;
    const Value text = reader.value("IFCSTRING", "'a'");
    AttributeGuid guid;
    guid.m_value = Guid{1, 2, 3, {}};
    const def::schema::ObjectBase& type = *text.pAttribute->types.front();
    EXPECT_TRUE(text.pCell->boIsEqual(type, guid, type, false));
    EXPECT_TRUE(guid.boIsEqual(type, *text.pCell, type, false));

    const Value select = reader.value("IFCSELECT", "IFCLABEL('a')");
    AttributeSelect other;
    other.m_eType = AttributeType::String;
    other.m_pType = static_cast<AttributeSelect*>(select.pCell)->m_pType.load();
    other.m_pValue = &guid;
    EXPECT_FALSE(static_cast<AttributeSelect*>(select.pCell)->boIsEqual(other, false, false));
    EXPECT_TRUE(other.boIsEqual(other, false, false)) << "two GUIDs in selects";
    other.m_pValue = static_cast<AttributeBase*>(nullptr);   // the guid dies here, not there
}

TEST(CompareCell, NullTextsAreEqualToEachOtherAlone) {
    CompareReader reader;
    const Value text = reader.value("IFCSTRING", "''");
    const def::schema::ObjectBase& type = *text.pAttribute->types.front();
    const AttributeString null;
    EXPECT_TRUE(null.boIsEqual(type, null, type, false));
    EXPECT_FALSE(null.boIsEqual(type, *text.pCell, type, false));
    EXPECT_FALSE(text.pCell->boIsEqual(type, null, type, false));
}

TEST(CompareCell, TwoSchemaObjectsMakeUnequal) {
    CompareReader reader;
    const Value real = reader.value("IFCREAL", "1.");
    const Value number = reader.value("IFCNUMBER", "1.");
    EXPECT_FALSE(real.boEqual(number, false));
    const Value undefined = reader.value("IFCREAL", "$");
    const Value undefinedNumber = reader.value("IFCNUMBER", "$");
    EXPECT_FALSE(undefined.boEqual(undefinedNumber, false)) << "before the flags";
}

TEST(CompareCell, KindOutsideTheTwelve) {
    const def::schema::DataTypeBase strange(static_cast<def::schema::DataKind>(12));
    const AttributeReal one;
    AttributeReal two;
    two.m_value = 2.0;
    EXPECT_TRUE(one.boIsEqual(strange, two, strange, false)) << "at the top";
    two.m_boUndefined = true;
    EXPECT_FALSE(one.boIsEqual(strange, two, strange, false)) << "flags come first";

    def::schema::Type type("IfcStrange");
    type.pDataType = &strange;
    AttributeReal value;
    AttributeSelect select;
    select.m_eType = AttributeType::Real;
    select.m_pType = static_cast<const def::schema::Type*>(&type);
    select.m_pValue = static_cast<AttributeBase*>(&value);
    EXPECT_FALSE(select.boIsEqual(select, false, false)) << "in a select";
    const def::schema::Type nothing("IfcNothing");
    EXPECT_FALSE(one.boIsEqual(nothing, one, nothing, false)) << "a type without a data type";
}

TEST(CompareCell, SelectFlagsCountWhenAskedFor) {
    CompareReader reader;
    const Value left = reader.value("IFCSELECT", "IFCLABEL('a')");
    const Value right = reader.value("IFCSELECT", "IFCLABEL('a')");
    const auto& a = *static_cast<AttributeSelect*>(left.pCell);
    auto& b = *static_cast<AttributeSelect*>(right.pCell);
    EXPECT_TRUE(a.boIsEqual(b, false, true));
    b.m_boDerived = true;
    EXPECT_FALSE(a.boIsEqual(b, false, true));
    EXPECT_TRUE(a.boIsEqual(b, false, false));
    b.m_boDerived = false;
    b.m_boUndefined = true;
    EXPECT_FALSE(a.boIsEqual(b, false, true));
    EXPECT_TRUE(a.boIsEqual(b, false, false));
}

TEST(CompareCell, ListFlagsCountWhenAskedFor) {
    CompareReader reader;
    const Value left = reader.value("IFCREALLIST", "(1.)");
    const Value right = reader.value("IFCREALLIST", "(1.)");
    const auto& a = *static_cast<AttributeList*>(left.pCell);
    auto& b = *static_cast<AttributeList*>(right.pCell);
    const auto vExpect = [&](bool boWith, bool boWithout) {
        EXPECT_EQ(a.AttributeListValueBase::boIsEqual(b, false, true), boWith);
        EXPECT_EQ(a.AttributeListValueBase::boIsEqual(b, false, false), boWithout);
    };
    vExpect(false, true);
    b.m_boDerived = true;
    vExpect(true, true);
    b.m_boDerived = false;
    b.m_boUndefined = true;
    vExpect(true, true);
    (*b.pArray<double>())[0] = 2.0;
    vExpect(false, false);
}

TEST(CompareCell, ItemTypesWithoutAComparison) {
    std::array<std::byte, 64> items{};
    for (int i = -2; i <= 16; ++i) {
        const bool boRow = i % 2 != 0;   // rows of the table, with no items here, and what is outside
        SCOPED_TRACE(i);
        AttributeList list;
        list.m_eItemType = static_cast<AttributeType>(i);
        list.m_pItems = static_cast<void*>(items.data());
        const AssertLog log;
        AssertTrail trail;
        const bool boEqual = list.AttributeListValueBase::boIsEqual(list, false, false);
        if (i < 0 || i > 13) {
            EXPECT_FALSE(boEqual);
            EXPECT_EQ(trail.raised(), Trail{});
        } else if (!boRow) {
            EXPECT_FALSE(boEqual);
            EXPECT_EQ(trail.raised(), Trail{"oxa::ifc::AttributeListValueBase::boIsEqual: Not implemented"});
        } else {
            EXPECT_TRUE(boEqual);
            EXPECT_EQ(trail.raised(), Trail{});
        }
        list.m_eItemType = AttributeType::Unknown;   // nothing here is for its destructor
        list.m_pItems = static_cast<void*>(nullptr);
    }
    const AssertLog disabled(false);
    AttributeList list;
    list.m_eItemType = AttributeType::Boolean;
    list.m_pItems = static_cast<void*>(items.data());
    EXPECT_FALSE(list.AttributeListValueBase::boIsEqual(list, false, false));
    EXPECT_EQ(disabled.texts(), std::vector<std::string>{});
}

TEST(CompareCell, ListsWithNullOnOneSideAreUnequal) {
    CompareReader reader;
    const struct {
        const char* sKeyword;
        const char* sToken;
    } rows[] = {{"IFCREALLIST", "(1.)"},      {"IFCINTEGERARRAY", "()"},           {"IFCLABELLIST", "('a')"},
                {"IFCBINARYLIST", "(\"0\")"}, {"IFCSELECTLIST", "(IFCFLAG(.T.))"}, {"IFCTABLE", "((1.))"},
                {"IFCREFERENCESET", "(#5)"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sKeyword);
        const Value value = reader.value(row.sKeyword, row.sToken);
        const auto& list = *static_cast<AttributeList*>(value.pCell);
        AttributeList null;
        null.m_eItemType = list.m_eItemType.load();
        EXPECT_FALSE(list.AttributeListValueBase::boIsEqual(null, false, false));
        EXPECT_FALSE(null.AttributeListValueBase::boIsEqual(list, false, false));
        EXPECT_TRUE(null.AttributeListValueBase::boIsEqual(null, false, false));
    }
}

}   // namespace
}   // namespace oxa::ifc
