// SPDX-License-Identifier: Apache-2.0
// From "Pset_X.Name=VALUE" to values of elements.

#include "Convert/Assignment.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Model/HouseText.h"
#include "Model/Relations.h"

namespace oxa::convert {
namespace {

struct TextRow {
    const char* pText;
    const char* pSet;
    const char* pName;
    const char* pValue;
};

TEST(Assignment, IsTakenApart) {
    const TextRow rows[] = {
        {"Name=South", "", "Name", "South"},
        {"Name=", "", "Name", ""},
        {"Name= a = b ", "", "Name", " a = b "},
        {"Pset_WallCommon.FireRating=F 90", "Pset_WallCommon", "FireRating", "F 90"},
        {" My set . My name = 1", "My set", "My name", " 1"},
        {"P.a.b=1", "P", "a.b", "1"},
        {"\"a.b\".'c=d'=1", "a.b", "c=d", "1"},
        {"'it\\'s'=1", "", "it's", "1"},
        {"'storey'=1", "", "storey", "1"},
    };
    for (const TextRow& row : rows) {
        SCOPED_TRACE(row.pText);
        const auto parsed = assignmentFromText(row.pText);
        ASSERT_TRUE(std::holds_alternative<Assignment>(parsed)) << std::get<std::string>(parsed);
        const auto& assignment = std::get<Assignment>(parsed);
        EXPECT_EQ(assignment.sSet, row.pSet);
        EXPECT_EQ(assignment.sName, row.pName);
        EXPECT_EQ(assignment.sValue, row.pValue);
    }
}

TEST(Assignment, TellsWhyATextIsNone) {
    const char* rows[][2] = {
        {"Name", "Name: has no = behind the name, as in Name=South or Pset_WallCommon.FireRating=F90"},
        {"'Name", "'Name: has a quote without its partner"},
        {"'a'b=1", "'a'b=1: has no = behind the name, as in Name=South or Pset_WallCommon.FireRating=F90"},
        {"=1", "=1: has no name before the ="},
        {"P.=1", "P.=1: has no name before the ="},
        {".P=1", ".P=1: has no name of a set before the point"},
        {"id=7", "id=7: id can be asked for and not set; what can be are attributes and properties"},
        {"type.Name=T", "type.Name=T: type can be asked for and not set; what can be are attributes and properties"},
    };
    for (const auto& row : rows) {
        const auto parsed = assignmentFromText(row[0]);
        ASSERT_TRUE(std::holds_alternative<std::string>(parsed)) << row[0];
        EXPECT_EQ(std::get<std::string>(parsed), row[1]);
    }
}

// "#10": what the wall South has then, with its type; of the refused what is said.
std::string sAssigned(Model& model, const std::string& sText, std::uint64_t iId = 10) {
    const auto assignment = std::get<Assignment>(assignmentFromText(sText));
    const std::vector<Element> elements{model.byId(iId)};
    try {
        if (const auto refused = assign(model, elements, assignment))
            return refused->refusal.sWhere + ": " + refused->refusal.sValue + ' ' + refused->refusal.sReason;
    } catch (const Error& error) {
        return error.what();
    }
    const auto found = property(elements.front(), assignment.sSet, assignment.sName);
    if (!found || found->value.isNull()) return found ? "no value" : "none";
    if (found->value.kind() != Kind::List) return std::string(found->value.typeName()) + ' ' + found->value.toString();
    return std::string(found->value.items().front().typeName()) + ' ' + found->value.toString();
}

TEST(Assignment, ValueHasTheTypeOfTheOneThere) {
    const char* rows[][2] = {
        {"Pset_WallCommon.FireRating=F 30", "IfcLabel F 30"},
        {"Pset_WallCommon.FireRating=30", "IfcLabel 30"},
        {"Pset_WallCommon.FireRating=TRUE", "IfcLabel TRUE"},
        {"Pset_WallCommon.FireRating=", "IfcLabel "},
        {"Pset_WallCommon.FireRating='it''s'", "IfcLabel it's"},
        {"Pset_WallCommon.FireRating='$'", "IfcLabel $"},
        {"Pset_WallCommon.FireRating=$", "no value"},
        {"Pset_WallCommon.FireRating=NULL", "no value"},
        {"Pset_WallCommon.FireRating=IFCTEXT(long)", "IfcText long"},
        {"Pset_WallCommon.FireRating=IfcReal(1)", "IfcReal 1"},
        {"Pset_WallCommon.FireRating=REI(90)", "IfcLabel REI(90)"},
        {"Pset_WallCommon.IsExternal=false", "IfcBoolean false"},
        {"Pset_WallCommon.IsExternal=.F.", "IfcBoolean false"},
        {"Pset_WallCommon.ThermalTransmittance=2", "IfcReal 2"},
        {"Pset_WallCommon.ThermalTransmittance=-1e-3", "IfcReal -0.001"},
        {"Kinds.List=(3,4)", "IfcInteger (3,4)"},
        {"Kinds.List=5", "IfcInteger (5)"},
        {"Kinds.Enumerated=('C,D',E)", "IfcLabel (C,D,E)"},
        // What is not there: by its form.
        {"New.Text=F 90", "IfcLabel F 90"},
        {"New.Number=1.5", "IfcReal 1.5"},
        {"New.Number=1e3", "IfcReal 1000"},
        {"New.Whole=-12", "IfcInteger -12"},
        {"New.Code=007", "IfcLabel 007"},
        {"New.Code=4006381333931", "IfcLabel 4006381333931"},
        {"New.Code='12'", "IfcLabel 12"},
        {"New.Truth=true", "IfcBoolean true"},
        {"New.Truth=T", "IfcLabel T"},
        {"New.Typed=IFCLENGTHMEASURE(2)", "IfcLengthMeasure 2"},
        {"New.Typed=IFCLOGICAL(unknown)", "IfcLogical unknown"},
        {"New.None=NULL", "none"},
    };
    for (const char* pSchema : test::g_families)
        for (const auto& row : rows) {
            SCOPED_TRACE(std::string(pSchema) + ": " + row[0]);
            Model model = Model::fromBuffer(test::houseText(pSchema, test::g_sHouse));
            EXPECT_EQ(sAssigned(model, row[0]), row[1]);
            const std::size_t iSize = model.size();
            EXPECT_EQ(sAssigned(model, row[0]), row[1]) << "once more";
            EXPECT_EQ(model.size(), iSize);
        }
}

TEST(Assignment, RefusesWhatDoesNotFit) {
    const char* rows[][2] = {
        {"Pset_WallCommon.IsExternal=maybe", "Pset_WallCommon.IsExternal: maybe is neither true nor false"},
        {"Pset_WallCommon.ThermalTransmittance=much", "Pset_WallCommon.ThermalTransmittance: much is no number"},
        {"Kinds.List=(1,x)", "Kinds.List: x is no whole number of 32 bits"},
        {"Kinds.List=(1,(2)", "Kinds.List: (1,(2) has a quote or a parenthesis without its partner"},
        {"New.Typed=IFCLABL(x)",
         "New.Typed: IFCLABL(x) begins with no type of IFC4; a text like this stands in single quotes"},
        {"New.Text=a\xff", "New.Text: the text is no UTF-8"},
        {"New.Text='it's'", "New.Text: 'it's' has a single quote inside; write ''"},
        {"Name=a\xff", "IfcWall.Name: the text is no UTF-8"},
        {"Nme=a", "IfcWall: Nme is none of its attributes"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row[0]);
        Model model = Model::fromBuffer(test::houseText("IFC4", test::g_sHouse));
        EXPECT_EQ(sAssigned(model, row[0]), row[1]);
    }
}

}   // namespace
}   // namespace oxa::convert
