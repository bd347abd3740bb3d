// SPDX-License-Identifier: Apache-2.0
// The cell of an aggregate: how its text becomes items, and what is wrong with items.
#include "Format/Ifc/IfcFileAttribute.h"

#include <gtest/gtest.h>

#include "Format/Ifc/AssertLog.h"
#include "Format/Ifc/StatementReader.h"

namespace oxa::ifc {
namespace {

constexpr char g_sReals[] = "Error_ExpectedValidRealInListFor";
constexpr char g_sIntegers[] = "Error_ExpectedValidIntegersInListFor";
constexpr char g_sReference[] = "Error_ExpectedValidEntityValueFor";
const Report g_null = {"Error_InvalidNullAttribute", "Value", Errors::Error, Errors::Null};
const Report g_notImplemented = {"Error_ListTypeNotImplemented", "Value", Errors::Error, Errors::Schema};

const ReadRow g_numberRows[] = {
    {"reals", "#1=IFCREALLIST((1.,2.5,-3E2));", "List 1[1, 2.5, -300]"},
    {"one", "#1=IFCREALLIST((1.));", "List 1[1]"},
    {"none", "#1=IFCREALLIST(());", "List 1[]"},
    {"a comma at the end adds none", "#1=IFCREALLIST((1,2,));", "List 1[1, 2]"},
    {"an empty item in the middle", "#1=IFCREALLIST((1,,2));", "List 1[1, 0, 2]", {{g_sReals}}},
    {"a comma alone is one empty item", "#1=IFCREALLIST((,));", "List 1[0]", {{g_sReals}}},
    {"null as an item", "#1=IFCREALLIST((1,$,2));", "List 1[1, 0, 2]", {{g_sReals}}},
    {"derived as an item", "#1=IFCREALLIST((*));", "List 1[0]", {{g_sReals}}},
    {"one report, however many are bad", "#1=IFCREALLIST((a,2,c,'d'));", "List 1[0, 2, 0, 0]", {{g_sReals}}},
    {"a list in the place of an item", "#1=IFCREALLIST((1,(2,3)));", "List 1[1, 0]", {{g_sReals}}},
    {"numbers are reals", "#1=IFCNUMBERSET((1,2.5));", "List 1[1, 2.5]"},
    {"integers", "#1=IFCINTEGERARRAY((1,-2,2147483647));", "List 3[1, -2, 2147483647]"},
    {"an integer of more than 32 bits", "#1=IFCINTEGERARRAY((1,2147483648));", "List 3[1, 0]", {{g_sIntegers}}},
    {"an integer with a point", "#1=IFCINTEGERARRAY((1.,x));", "List 3[0, 0]", {{g_sIntegers}}},
    {"no integers", "#1=IFCINTEGERARRAY(());", "List 3[]"},
    {"through a defined type", "#1=IFCNAMEDLIST((1,2));", "List 1[1, 2]"},
    {"the outer parentheses are not looked at", "#1=IFCREALLIST([1]);", "List 1[1]"},
    {"one character", "#1=IFCREALLIST(1);", "List 1[]"},
    {"an empty token", "#1=IFCREALLIST(,);", "List 1[]"},
    {"null", "#1=IFCREALLIST($);", "$ List 0 null", {g_null}},
    {"derived", "#1=IFCREALLIST(*);", "* List 0 null"},
    {"more than sixteen bytes at once", "#1=IFCREALLIST((1234567890.5,1234567890.5,1,2,3,4,5,6,7,8,9));",
     "List 1[1234567890.5, 1234567890.5, 1, 2, 3, 4, 5, 6, 7, 8, 9]"},
};
TEST(AttributeList, NumbersLieInARow) { vExpectReads(g_numberRows); }

const ReadRow g_stringRows[] = {
    {"texts", "#1=IFCLABELLIST(('a','bc'));", "List 5['a', 'bc']"},
    {"a comma in a text", "#1=IFCLABELLIST(('a,b'));", "List 5['a,b']"},
    {"a doubled quote", "#1=IFCLABELLIST(('a''b','c'));", "List 5['a'b', 'c']"},
    {"parentheses in a text", "#1=IFCLABELLIST(('a)','(b'));", "List 5['a)', '(b']"},
    {"directives are decoded", "#1=IFCLABELLIST(('\\X\\E9'));", "List 5['\u00e9']"},
    {"the quotes are not looked at", "#1=IFCLABELLIST((abc,'d'));", "List 5['b', 'd']"},
    {"null is a text too short", "#1=IFCLABELLIST(($,*));", "List 5['', '']"},
    {"an empty item", "#1=IFCLABELLIST(('a',,'b'));", "List 5['a', '', 'b']"},
    {"one quote", "#1=IFCLABELLIST(('));", "List 5['']"},
    {"an empty text", "#1=IFCLABELLIST((''));", "List 5['']"},
    {"none", "#1=IFCLABELLIST(());", "List 5[]"},
    {"GUIDs are texts", "#1=IFCGUIDLIST(('2O2Fr$t4X7Zf8NOew3FLOH'));", "List 5['2O2Fr$t4X7Zf8NOew3FLOH']"},
    {"double quotes mean nothing to the splitter", "#1=IFCLABELLIST((\"a,b\"));", "List 5['', '']"},
};
TEST(AttributeList, TextsAreNotChecked) { vExpectReads(g_stringRows); }

const ReadRow g_cellRows[] = {
    {"binaries", "#1=IFCBINARYLIST((\"0AB\",\"0\",\"1FF00\"));", "List 7[Binary [AB], Binary [], Binary [FF 00]]"},
    {"a bad binary has its own report",
     "#1=IFCBINARYLIST((\"0AB\",\"AB\"));",
     "List 7[Binary [AB], Binary null]",
     {{"Error_ExpectedValidBinaryValueFor"}}},
    {"null and derived", "#1=IFCBINARYLIST(($,*));", "List 7[$ Binary null, * Binary null]", {g_null}},
    {"no binaries", "#1=IFCBINARYLIST(());", "List 7[]"},
    {"selects", "#1=IFCSELECTLIST((IFCLABEL('a'),#3));", "List 9[Select 5:IFCLABEL(String 'a'), Select 13:(#3)]"},
    {"null in a mandatory attribute is told for each",
     "#1=IFCSELECTLIST(($,*,$));",
     "List 9[$ Select 0:(null), * Select 0:(null), $ Select 0:(null)]",
     {g_null, g_null}},
    {"a bare value in front of a typed one",
     "#1=IFCSELECTLIST((1,IFCLABEL('a'),2));",
     "List 9[Select 0:(null), Select 5:IFCLABEL(String 'a'), $ Select 0:(null)]",
     {{"Error_ExpectedValidSelectValueFor"}, {"Error_ExpectedValidSelectValueFor"}}},
    {"an empty item in front of a typed one",
     "#1=IFCSELECTLIST((,IFCLABEL('a')));",
     "List 9[Select 0:(null), Select 5:IFCLABEL(String 'a')]",
     {{"Error_ExpectedValidSelectValueFor"}}},
    {"rows", "#1=IFCTABLE(((1.,2.),(),(3.)));", "List 11[List 1[1, 2], List 1[], List 1[3]]"},
    {"a bad row has its own report",
     "#1=IFCTABLE(((1.,x),(y)));",
     "List 11[List 1[1, 0], List 1[0]]",
     {{g_sReals}, {g_sReals}}},
    {"null and derived rows", "#1=IFCTABLE(((1.),$,*));", "List 11[List 1[1], $ List 0 null, * List 0 null]", {g_null}},
    {"an empty row", "#1=IFCTABLE(((1.),,(2.)));", "List 11[List 1[1], List 1[], List 1[2]]"},
    {"no rows", "#1=IFCTABLE(());", "List 11[]"},
    {"rows of a defined type", "#1=IFCNAMEDTABLE(((1.),(2.)));", "List 11[List 1[1], List 1[2]]"},
    {"three levels", "#1=IFCCUBE((((1,2),(3)),((4))));",
     "List 11[List 11[List 3[1, 2], List 3[3]], List 11[List 3[4]]]"},
    {"a list of sets stays empty", "#1=IFCSETLIST(((#1),(#2)));", "List 12 null"},
};
TEST(AttributeList, ItemsThatAreCellsParseThemselves) { vExpectReads(g_cellRows); }

const ReadRow g_entityRows[] = {
    {"references", "#1=IFCREFERENCESET((#3,#2,#3));", "List 13[#3, #2, #3]"},
    {"none", "#1=IFCREFERENCESET(());", "List 13 null"},
    {"a bad one is left out", "#1=IFCREFERENCESET((#2,$,#3));", "List 13[#2, #3]", {{g_sReference}}},
    {"each with a report",
     "#1=IFCREFERENCESET((,*,3,'#4',#));",
     "List 13 null",
     {{g_sReference}, {g_sReference}, {g_sReference}, {g_sReference}, {g_sReference}}},
    {"a select of entities only", "#1=IFCTHINGSELECTLIST((#1,#2));", "List 13[#1, #2]"},
    {"takes no typed value", "#1=IFCTHINGSELECTLIST((IFCLABEL('a'),#2));", "List 13[#2]", {{g_sReference}}},
};
TEST(AttributeList, ReferencesAreLinked) { vExpectReads(g_entityRows); }

// Lists are cut apart once up to a private number of items, twice beyond: one item more must not be another list.
TEST(AttributeList, EveryLengthIsRead) {
    const struct {
        const char* sKeyword;
        const char* sItem;   // % becomes a number of two digits
        const char* sOpen;
        const char* sShown;
    } rows[] = {
        {"IFCREALLIST", "%", "List 1[", "%"},
        {"IFCINTEGERARRAY", "%", "List 3[", "%"},
        {"IFCLABELLIST", "'t%'", "List 5[", "'t%'"},
        {"IFCBINARYLIST", "\"0%\"", "List 7[", "Binary [%]"},
        {"IFCSELECTLIST", "IFCCOUNT(%)", "List 9[", "Select 3:IFCCOUNT(Integer %)"},
        {"IFCTABLE", "(%.)", "List 11[", "List 1[%]"},
        {"IFCREFERENCESET", "#%", "List 13[", "#%"},
    };
    const auto joined = [](std::string_view item, std::string_view separator, int iCount) {
        std::string sText;
        for (int i = 0; i < iCount; ++i) {
            std::string sEach(item);
            sEach.replace(sEach.find('%'), 1, std::to_string(10 + i));
            sText.append(i ? separator : "").append(sEach);
        }
        return sText;
    };
    for (const auto& row : rows)
        for (const int iCount : {1, 15, 16, 17, 18, 33}) {
            SCOPED_TRACE(std::string(row.sKeyword) + ' ' + std::to_string(iCount));
            StatementReader reader;
            const Entity* pEntity =
                reader.pRead("#1=" + std::string(row.sKeyword) + "((" + joined(row.sItem, ",", iCount) + "));");
            ASSERT_NE(pEntity, nullptr);
            EXPECT_EQ(reader.sCells(*pEntity), row.sOpen + joined(row.sShown, ", ", iCount) + ']');
            EXPECT_TRUE(reader.errors.records().empty());
        }
}

const ReadRow g_refusedRows[] = {
    {"boolean", "#1=IFCBOOLEANLIST((.T.,x));", "List 0 null", {g_notImplemented}},
    {"logical", "#1=IFCLOGICALLIST((.T.,x));", "List 0 null", {g_notImplemented}},
    {"enumeration", "#1=IFCENUMERATIONLIST((.RED.,.x.));", "List 0 null", {g_notImplemented}},
    {"array", "#1=IFCARRAYLIST(((1.)));", "List 0 null", {g_notImplemented}},
    {"null comes first", "#1=IFCBOOLEANLIST(*);", "* List 0 null"},
};
TEST(AttributeList, SomeElementsAreRefused) { vExpectReads(g_refusedRows); }

// A faulty schema: a defined type that stands for nothing.
TEST(AttributeList, AnElementWithoutADataTypeIsAsserted) {
    def::SchemaPset schema("FAULTY");
    auto* pElement = schema.pAdopt(std::make_unique<def::schema::Type>("IfcUnresolved"));
    auto* pList = schema.pAdopt(std::make_unique<def::schema::DataTypeAggregate>(def::schema::DataKind::List));
    pList->pElement = pElement;
    auto* pEntityType = schema.pAdopt(std::make_unique<def::schema::Entity>("IfcHolder"));
    def::schema::Attribute& attribute = pEntityType->ownAttributes.emplace_back();
    attribute.pOwner = pEntityType;
    attribute.sName = "Value";
    attribute.types = {pList, pElement};
    schema.vFinish();

    for (const bool boEnabled : {true, false}) {
        const AssertLog log(boEnabled);
        StatementReader reader(schema);
        const std::string_view statement = "#1=IFCHOLDER((1,2));";
        const Entity* pEntity = reader.pRead(statement);
        ASSERT_NE(pEntity, nullptr);
        EXPECT_EQ(reader.sCells(*pEntity), "List 0 null");
        reader.vExpectReports(pEntity, statement, {g_notImplemented});
        EXPECT_EQ(log.texts(),
                  boEnabled ? std::vector<std::string>{"pDataTypeBase != nullptr"} : std::vector<std::string>{});
    }
}

TEST(AttributeList, KnowsTheTailFromTheSecondReferenceOn) {
    struct Row {
        std::string_view statement;
        int iTail;   // the node that the tail points to; -1: none
    };
    const Row rows[] = {
        {"#1=IFCREFERENCESET((#2));", -1},
        {"#1=IFCREFERENCESET((#2,#3));", 1},
        {"#1=IFCREFERENCESET(($,#2,#3,$,#4));", 2},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.statement);
        StatementReader reader;
        const Entity* pEntity = reader.pRead(row.statement);
        ASSERT_NE(pEntity, nullptr);
        const auto& cell = static_cast<const AttributeList&>(*pEntity->pAttributeFromIndex(0).second);
        const EntityList* pHead = cell.pEntities();
        ASSERT_NE(pHead, nullptr);
        const EntityList::Node* pNode = row.iTail < 0 ? nullptr : pHead;
        for (int i = 0; i < row.iTail; ++i) pNode = pNode->next;
        EXPECT_EQ(pHead->tail.load(), pNode);
        EXPECT_TRUE(!pNode || !pNode->next.load());
    }
}

TEST(AttributeList, ReferencesMarkTheirTargets) {
    StatementReader reader;
    ASSERT_NE(reader.pRead("#1=IFCREFERENCESET((#2,#40000));"), nullptr);
    EXPECT_TRUE(reader.boReferenced(2));
    EXPECT_TRUE(reader.boReferenced(40000));
    EXPECT_FALSE(reader.boReferenced(3));
}

}   // namespace
}   // namespace oxa::ifc
