// SPDX-License-Identifier: Apache-2.0
// From the words of a user to the value of an attribute.

#include "Convert/ValueFromText.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "StatementModel.h"

namespace oxa::convert {
namespace {

using test::StatementModel;

constexpr const char* g_pPoint = "#1=IFCCARTESIANPOINT((0.,1.));\n"
                                 "#2=IFCPOLYLINE((#1));\n"
                                 "#3=IFCMATERIAL('Oak',$,$);\n"
                                 "#4=IFCPROPERTYSINGLEVALUE('Fire',$,$,$);\n"
                                 "#5=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);\n"
                                 "#6=IFCBUILDING('0TdSR4dSbLuwdbL5HLUvM0',$,$,$,$,$,$,$,$,$,$,$);\n"
                                 "#7=IFCSITE('1CCJ9i1$jSdgYVC2yzHPtC',$,$,$,$,$,$,$,$,$,$,$,$,$);\n"
                                 "#8=IFCPIXELTEXTURE(.T.,.F.,$,$,$,1,1,1,(\"0FF\"));\n"
                                 "#9=IFCCARTESIANPOINTLIST2D(((1.,2.)));\n";

struct SetRow {
    const char* pRule;
    std::size_t iNumber;
    const char* pAttribute;
    const char* pText;
    const char* pStatement;
};

TEST(ValueFromText, SetsWhatFits) {
    // clang-format off
    const SetRow rows[] = {
        {"a text", 3, "Name", "Elm", "#3=IFCMATERIAL('Elm',$,$);"},
        {"the name in any case", 3, "nAME", "Elm", "#3=IFCMATERIAL('Elm',$,$);"},
        {"quotes go", 3, "Name", "'it''s'", "#3=IFCMATERIAL('it''s',$,$);"},
        {"no value", 3, "Category", "$", "#3=IFCMATERIAL('Oak',$,$);"},
        {"a text that is a dollar sign", 3, "Category", "'$'", "#3=IFCMATERIAL('Oak',$,'$');"},
        {"a number", 6, "ElevationOfTerrain", "1e3",
         "#6=IFCBUILDING('0TdSR4dSbLuwdbL5HLUvM0',$,$,$,$,$,$,$,$,$,1000.,$);"},
        {"an enumerator", 5, "Prefix", "milli", "#5=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);"},
        {"an enumerator between dots", 5, "Prefix", ".KILO.", "#5=IFCSIUNIT(*,.LENGTHUNIT.,.KILO.,.METRE.);"},
        {"a truth value", 8, "RepeatS", "false", "#8=IFCPIXELTEXTURE(.F.,.F.,$,$,$,1,1,1,(\"0FF\"));"},
        {"a whole number", 8, "Width", "7", "#8=IFCPIXELTEXTURE(.T.,.F.,$,$,$,7,1,1,(\"0FF\"));"},
        {"bytes", 8, "Pixel", "(00a1)", "#8=IFCPIXELTEXTURE(.T.,.F.,$,$,$,1,1,1,(\"000A1\"));"},
        {"a select", 4, "NominalValue", "IfcReal(2)", "#4=IFCPROPERTYSINGLEVALUE('Fire',$,IFCREAL(2.),$);"},
        {"a reference in a select", 4, "Unit", "#5", "#4=IFCPROPERTYSINGLEVALUE('Fire',$,$,#5);"},
        {"a list", 1, "Coordinates", "(1, 2.5)", "#1=IFCCARTESIANPOINT((1.,2.5));"},
        {"a list of references", 2, "Points", "(#1,#1)", "#2=IFCPOLYLINE((#1,#1));"},
        {"rows", 9, "CoordList", "((1,2),(3,4))", "#9=IFCCARTESIANPOINTLIST2D(((1.,2.),(3.,4.)));"},
        {"its own GlobalId", 6, "GlobalId", "0TdSR4dSbLuwdbL5HLUvM0",
         "#6=IFCBUILDING('0TdSR4dSbLuwdbL5HLUvM0',$,$,$,$,$,$,$,$,$,$,$);"},
    };
    // clang-format on
    for (const SetRow& row : rows) {
        SCOPED_TRACE(row.pRule);
        StatementModel model(g_pPoint);
        const auto refusal = setFromText(model.data(), model.entity(row.iNumber), row.pAttribute, row.pText);
        EXPECT_FALSE(refusal) << refusal->sReason;
        EXPECT_EQ(model.sStatement(row.iNumber), row.pStatement);
    }
}

using Why = Refusal::Why;

struct RefusedTextRow {
    const char* pRule;
    std::size_t iNumber;
    const char* pAttribute;
    const char* pText;
    Why eWhy;
    const char* pWhere;
    const char* pValue;
    const char* pReason;
    std::vector<std::string> names;
};

TEST(ValueFromText, RefusalHasThePartsOfASentence) {
    // clang-format off
    const RefusedTextRow rows[] = {
        {"no such attribute", 1, "Q", "1", Why::Attribute, "IfcCartesianPoint", "Q", "is none of its attributes",
         {"Coordinates"}},
        {"a derived one", 5, "Dimensions", "#1", Why::Fixed, "IfcSIUnit.Dimensions", "#1",
         "is derived from other attributes", {}},
        {"no value for a mandatory one", 3, "Name", "$", Why::Fixed, "IfcMaterial.Name", "$", "is mandatory", {}},
        {"no number", 6, "ElevationOfTerrain", "high", Why::Value, "IfcBuilding.ElevationOfTerrain", "high",
         "is no number", {}},
        {"an item", 1, "Coordinates", "(1,x)", Why::Value, "IfcCartesianPoint.Coordinates", "x", "is no number", {}},
        {"items too many", 1, "Coordinates", "(1,2,3,4)", Why::Value, "IfcCartesianPoint.Coordinates", "(1,2,3,4)",
         "has 4 items; its type is LIST [1:3] OF IfcLengthMeasure", {}},
        {"an enumerator of others", 8, "RepeatS", "maybe", Why::Value, "IfcPixelTexture.RepeatS", "maybe",
         "is neither true nor false", {}},
        {"no enumerator", 6, "CompositionType", "whole", Why::Enumerator, "IfcBuilding.CompositionType", "whole",
         "is no enumerator of IfcElementCompositionEnum", {"COMPLEX", "ELEMENT", "PARTIAL"}},
        {"no number of an entity", 2, "Points", "(#1,#1x)", Why::Number, "IfcPolyline.Points", "#1x",
         "is no number of an entity, as #12 is", {}},
        {"an entity that there is not", 2, "Points", "(#1,#99)", Why::Value, "IfcPolyline.Points", "#99",
         "does not exist", {}},
        {"an entity of another type", 2, "Points", "(#1,#3)", Why::Value, "IfcPolyline.Points", "#3",
         "is an IfcMaterial, no IfcCartesianPoint", {}},
        {"the GlobalId of another", 6, "GlobalId", "1CCJ9i1$jSdgYVC2yzHPtC", Why::Value, "IfcBuilding.GlobalId",
         "1CCJ9i1$jSdgYVC2yzHPtC", "is the GlobalId of #7", {}},
        {"bytes that are no UTF-8", 3, "Name", "\xff", Why::Value, "IfcMaterial.Name", "the text", "is no UTF-8", {}},
    };
    // clang-format on
    for (const RefusedTextRow& row : rows) {
        SCOPED_TRACE(row.pRule);
        StatementModel model(g_pPoint);
        const std::string sBefore = model.sStatement(row.iNumber);
        const auto refusal = setFromText(model.data(), model.entity(row.iNumber), row.pAttribute, row.pText);
        ASSERT_TRUE(refusal);
        EXPECT_EQ(refusal->eWhy, row.eWhy);
        EXPECT_EQ(refusal->sWhere, row.pWhere);
        EXPECT_EQ(refusal->sValue, row.pValue);
        EXPECT_EQ(refusal->sReason, row.pReason);
        EXPECT_EQ(refusal->names, row.names);
        EXPECT_EQ(model.sStatement(row.iNumber), sBefore);
    }
}

TEST(ValueFromText, SelectTellsTheTypesThatItTakes) {
    StatementModel model(g_pPoint);
    const auto refusal = setFromText(model.data(), model.entity(4), "NominalValue", "F30");
    ASSERT_TRUE(refusal);
    EXPECT_EQ(refusal->eWhy, Why::SelectType);
    EXPECT_EQ(refusal->sType, "IfcValue");
    EXPECT_EQ(refusal->sReason, "has no type of IfcValue in front, as in " + refusal->names.front() + "(value)");
    EXPECT_NE(std::find(refusal->names.begin(), refusal->names.end(), "IFCLABEL"), refusal->names.end());
}

}   // namespace
}   // namespace oxa::convert
