// SPDX-License-Identifier: Apache-2.0
// The cell of a select: a reference, or a value behind the name of its type.
#include "Format/Ifc/IfcFileAttribute.h"

#include <gtest/gtest.h>

#include "Format/Ifc/StatementReader.h"

namespace oxa::ifc {
namespace {

constexpr char g_sSelect[] = "Error_ExpectedValidSelectValueFor";
const Report g_nullSelect = {"Error_InvalidNullAttribute", "Value", Errors::Error, Errors::Null};

const ReadRow g_valueRows[] = {
    {"a reference has no type", "#1=IFCSELECT(#5);", "Select 13:(#5)"},
    {"a bad reference has no entity", "#1=IFCSELECT(#);", "Select 13:(null)", {{"Error_ExpectedValidEntityValueFor"}}},
    {"a real", "#1=IFCSELECT(IFCLENGTHMEASURE(1.5));", "Select 1:IFCLENGTHMEASURE(Real 1.5)"},
    {"a boolean", "#1=IFCSELECT(IFCFLAG(.T.));", "Select 2:IFCFLAG(Boolean 1)"},
    {"an integer", "#1=IFCSELECT(IFCCOUNT(3));", "Select 3:IFCCOUNT(Integer 3)"},
    {"a number", "#1=IFCSELECT(IFCNUMERIC(3));", "Select 4:IFCNUMERIC(Number 3)"},
    {"a text", "#1=IFCSELECT(IFCLABEL('x'));", "Select 5:IFCLABEL(String 'x')"},
    {"a GUID is a text here", "#1=IFCSELECT(IFCGLOBALLYUNIQUEID('2O2Fr$t4X7Zf8NOew3FLOH'));",
     "Select 5:IFCGLOBALLYUNIQUEID(String '2O2Fr$t4X7Zf8NOew3FLOH')"},
    {"a logical", "#1=IFCSELECT(IFCANSWER(.U.));", "Select 6:IFCANSWER(Logical unknown)"},
    {"bytes", "#1=IFCSELECT(IFCBLOB(\"0AB\"));", "Select 7:IFCBLOB(Binary [AB])"},
    {"an enumerator of the named type", "#1=IFCSELECT(IFCCOLOUR(.RED.));", "Select 8:IFCCOLOUR(Enumeration 'RED')"},
    {"of a type outside the select, too", "#1=IFCSELECT(IFCSHAPE(.ROUND.));", "Select 8:IFCSHAPE(Enumeration 'ROUND')"},
    {"a select in a select", "#1=IFCSELECT(IFCVALUE(IFCLABEL('x')));",
     "Select 9:IFCVALUE(Select 5:IFCLABEL(String 'x'))"},
    {"an array", "#1=IFCSELECT(IFCCOUNTS((1,2,3)));", "Select 10:IFCCOUNTS(List 3[1, 2, 3])"},
    {"a list of the named type", "#1=IFCSELECT(IFCREALS((1.,2.5)));", "Select 11:IFCREALS(List 1[1, 2.5])"},
    {"a set of references", "#1=IFCSELECT(IFCTHINGS((#2,#3)));", "Select 12:IFCTHINGS(List 13[#2, #3])"},
    {"a list of selects", "#1=IFCSELECT(IFCVALUES((IFCLABEL('a'),#3)));",
     "Select 11:IFCVALUES(List 9[Select 5:IFCLABEL(String 'a'), Select 13:(#3)])"},
    {"null", "#1=IFCSELECT($);", "$ Select 0:(null)", {g_nullSelect}},
    {"derived", "#1=IFCSELECT(*);", "* Select 0:(null)"},
    {"null inside", "#1=IFCSELECT(IFCLABEL($));", "Select 5:IFCLABEL($ String null)", {g_nullSelect}},
    {"derived inside", "#1=IFCSELECT(IFCLABEL(*));", "Select 5:IFCLABEL(* String null)"},
};
TEST(AttributeSelect, HoldsACellOfTheNamedType) { vExpectReads(g_valueRows); }

const ReadRow g_faultRows[] = {
    {"the value is the nested cell's matter",
     "#1=IFCSELECT(IFCLENGTHMEASURE('x'));",
     "Select 1:IFCLENGTHMEASURE(Real 0)",
     {{"Error_ExpectedValidRealValueFor"}}},
    {"nothing between the parentheses",
     "#1=IFCSELECT(IFCLABEL());",
     "Select 5:IFCLABEL(String '')",
     {{"Error_ExpectedValidStringValueFor"}}},
    {"what stands at the place of the closing one is dropped", "#1=IFCSELECT(IFCLENGTHMEASURE(1.57);",
     "Select 1:IFCLENGTHMEASURE(Real 1.5)"},
    {"a list of what a list can't hold",
     "#1=IFCSELECT(IFCFLAGS((.T.)));",
     "Select 11:IFCFLAGS(List 0 null)",
     {{"Error_ListTypeNotImplemented", "Value", Errors::Error, Errors::Schema}}},
    {"rows of a list of lists have no type here",
     "#1=IFCSELECT(IFCGRID(((1.),(2.))));",
     "Select 11:IFCGRID(List 11[List 0 null, List 0 null])",
     {{"Error_ListTypeNotImplemented", "Value", Errors::Error, Errors::Schema},
      {"Error_ListTypeNotImplemented", "Value", Errors::Error, Errors::Schema}}},
    {"not in the schema", "#1=IFCSELECT(FOO(1));", "Select 0:(null)", {{g_sSelect}}},
    {"no type", "#1=IFCSELECT(IFCTHING('x'));", "Select 0:(null)", {{g_sSelect}}},
    {"case counts", "#1=IFCSELECT(IfcLabel('x'));", "Select 0:(null)", {{g_sSelect}}},
    {"no name", "#1=IFCSELECT(('x'));", "Select 0:(null)", {{g_sSelect}}},
    {"a bare value takes all up to the next parenthesis for a name",
     "#1=IFCSELECTPAIR(1.5,IFCLABEL('x'));",
     "Select 0:(null) | Select 5:IFCLABEL(String 'x')",
     {{g_sSelect}}},
    {"without one it is undefined", "#1=IFCSELECT(1.5);", "$ Select 0:(null)", {{g_sSelect}}},
    {"an empty token",
     "#1=IFCSELECTPAIR(,IFCLABEL('x'));",
     "Select 0:(null) | Select 5:IFCLABEL(String 'x')",
     {{g_sSelect}}},
    {"a name whose parenthesis stands behind the token",
     "#1=IFCSELECT(IFCVALUE(IFCLABEL();",
     "Select 9:IFCVALUE(Select 5:IFCLABEL(String ''))",
     {{"Error_ExpectedValidStringValueFor"}}},
    {"and which is then an empty one", "#1=IFCSELECT(IFCVALUE(IFCREALS();",
     "Select 9:IFCVALUE(Select 11:IFCREALS(List 1[]))"},
};
TEST(AttributeSelect, ReportsWhatItCanNotTake) { vExpectReads(g_faultRows); }

TEST(AttributeSelect, AReferenceMarksItsTarget) {
    StatementReader reader;
    ASSERT_NE(reader.pRead("#1=IFCSELECT(#5);"), nullptr);
    EXPECT_TRUE(reader.boReferenced(5));
}

// As deep as a file is long: the depth is limited, and the cell at the limit is empty.
TEST(AttributeSelect, NestsToALimitedDepth) {
    const auto sNested = [](std::size_t iLevels) {
        std::string sText;
        for (std::size_t i = 0; i < iLevels; ++i) sText += "IFCVALUE(";
        sText += "IFCLABEL('x')" + std::string(iLevels, ')');
        return "#1=IFCSELECT(" + sText + ");";
    };
    const auto innermost = [](const Entity& entity) {
        const auto* pCell = static_cast<const AttributeSelect*>(entity.pAttributeFromIndex(0).second);
        while (pCell->m_eType == AttributeType::Select)
            pCell = static_cast<const AttributeSelect*>(pCell->m_pValue.load());
        return pCell->m_eType.load();
    };
    {
        StatementReader reader;
        const std::string statement = sNested(AttributeSelect::g_iDepthLimit - 1);
        const Entity* pEntity = reader.pRead(statement);
        ASSERT_NE(pEntity, nullptr);
        EXPECT_EQ(innermost(*pEntity), AttributeType::String);
        reader.vExpectReports(pEntity, statement, {});
    }
    for (const std::size_t iLevels : {std::size_t{AttributeSelect::g_iDepthLimit}, std::size_t{100'000}}) {
        StatementReader reader;
        const std::string statement = sNested(iLevels);
        const Entity* pEntity = reader.pRead(statement);
        ASSERT_NE(pEntity, nullptr);
        EXPECT_EQ(innermost(*pEntity), AttributeType::Unknown);
        reader.vExpectReports(pEntity, statement, {{g_sSelect}});
    }
}

// Each level leaves its last character out, so that without closing parentheses nothing is left of the innermost token.
TEST(AttributeSelect, AnEatenUpTokenIsAnEmptyOne) {
    constexpr std::size_t g_iLevels = std::string_view("IFCLABEL('x')").size();
    std::string statement = "#1=IFCSELECT(";
    std::string cells;
    for (std::size_t i = 0; i < g_iLevels; ++i) {
        statement += "IFCVALUE(";
        cells += "Select 9:IFCVALUE(";
    }
    statement += "IFCLABEL('x'));";
    cells += "Select 5:IFCLABEL(String '')" + std::string(g_iLevels, ')');
    vExpectRead(
        {"as many levels as the token has characters", statement, cells, {{"Error_ExpectedValidStringValueFor"}}});
}

// Without a schema no type has a name.
TEST(AttributeSelect, WithoutASchemaAValueIsEmpty) {
    StatementReader reader;
    reader.data.vSchemaSet(nullptr);
    const def::schema::Attribute& attribute =
        *cellSchema().pEntityFromName(def::schema::ObjectName("IFCSELECT"))->allAttributes().front();
    const std::string_view text = "IFCLABEL('x')";
    StepReadInfoData info(text, StatementReader::g_iLine, reader.common);
    AttributeBase::StepReadInfoAttribute token{&info, &reader.data, nullptr, &attribute, nullptr, 0, text.size(), 0};
    const AttributeSelect cell(token);
    EXPECT_EQ(reader.sCell(cell, attribute.types.front(), attribute), "Select 0:(null)");
    reader.vExpectReports(nullptr, text, {});
}

// A type whose data type is missing can't have a cell; that of a kind outside the twelve is an inside fault.
TEST(AttributeSelect, ATypeWithoutADataTypeIsFatal) {
    def::SchemaPset schema("FAULTY");
    auto* pUnresolved = schema.pAdopt(std::make_unique<def::schema::Type>("IfcUnresolved"));
    auto* pIllegal = schema.pAdopt(std::make_unique<def::schema::Type>("IfcIllegal"));
    pIllegal->pDataType =
        schema.pAdopt(std::make_unique<def::schema::DataTypeBase>(static_cast<def::schema::DataKind>(12)));
    auto* pSelect = schema.pAdopt(std::make_unique<def::schema::DataTypeSelect>());
    pSelect->members = {pUnresolved, pIllegal};
    auto* pEntityType = schema.pAdopt(std::make_unique<def::schema::Entity>("IfcHolder"));
    def::schema::Attribute& attribute = pEntityType->ownAttributes.emplace_back();
    attribute.pOwner = pEntityType;
    attribute.sName = "Value";
    attribute.types = {pSelect};
    schema.vFinish();

    StatementReader reader(schema);
    const std::string_view statement = "#1=IFCHOLDER(IFCUNRESOLVED(1));";
    const Entity* pEntity = reader.pRead(statement);
    ASSERT_NE(pEntity, nullptr);
    EXPECT_EQ(reader.sCells(*pEntity), "Select 0:IFCUNRESOLVED(null)");
    reader.vExpectReports(pEntity, statement, {{"Error_UnknownAttributeType", "Value", Errors::Fatal, Errors::Value}});

    try {
        reader.pRead("#2=IFCHOLDER(IFCILLEGAL(1));");
        ADD_FAILURE() << "nothing thrown";
    } catch (const char* text) {
        EXPECT_STREQ(text, "Illegal value");
    }
}

// The types that a thread keeps, and what is none.
TEST(AttributeSelect, TypesAreFoundAgain) {
    StatementReader reader(cellSchema(), true);
    struct Row {
        const char* sValue;
        const char* sCell;
    };
    const Row rows[] = {
        {"IFCLABEL('a')", "Select 5:IFCLABEL(String 'a')"},
        {"IFCLABEL($)", "Select 5:IFCLABEL($ String null)"},
        {"IFCLABEL(*)", "Select 5:IFCLABEL(* String null)"},
        {"IFCLABEL(x)", "Select 5:IFCLABEL(String '')"},
        {"IFCLENGTHMEASURE(1.5)", "Select 1:IFCLENGTHMEASURE(Real 1.5)"},
        {"IFCLENGTHMEASURE(x)", "Select 1:IFCLENGTHMEASURE(Real 0)"},
        {"IFCLABEX('a')", "Select 0:(null)"},
        {"IFCTHING('a')", "Select 0:(null)"},
        {"('a')", "Select 0:(null)"},
        {"IFCCOLOUR(.RED.)", "Select 8:IFCCOLOUR(Enumeration 'RED')"},
        {"IFCREALS((1.,2.))", "Select 11:IFCREALS(List 1[1, 2])"},
        {"IFCREALS(())", "Select 11:IFCREALS(List 1[])"},
        {"#3", "Select 13:(#3)"},
    };
    unsigned uNumber = 100;
    for (int i = 0; i < 3; ++i)
        for (const Row& row : rows) {
            const std::string statement = '#' + std::to_string(++uNumber) + "=IFCSELECT(" + row.sValue + ");";
            EXPECT_EQ(reader.sCells(*reader.pRead(statement)), row.sCell) << statement;
        }
    EXPECT_EQ(reader.errors.records().size(), 18U) << "six of each round";
}

}   // namespace
}   // namespace oxa::ifc
