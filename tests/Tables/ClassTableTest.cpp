// SPDX-License-Identifier: Apache-2.0
// The table of a class: a typed column an attribute.

#include <algorithm>
#include <cctype>

#include <gtest/gtest.h>

#include "Model/HouseText.h"
#include "Tables/TableText.h"

namespace oxa::test {
namespace {

// "Name:text", "Coordinates:number[]" and so on, behind file, id and type.
std::string sColumns(const Model& model, std::string_view table) {
    constexpr const char* types[] = {"truth", "integer", "number", "text", "json"};
    std::string sText;
    const tables::Table told = tables::table(model, table);
    for (std::size_t i = 3; i < told.columns.size(); ++i) {
        const tables::Column& column = told.columns[i];
        sText += (i > 3 ? " " : "") + column.name + ":" + types[static_cast<std::size_t>(column.type)];
        for (unsigned iList = 0; iList < column.lists; ++iList) sText += "[]";
    }
    return sText;
}

struct ClassRow {
    const char* pClass;
    const char* pColumns;
    const char* pStatements;
    std::vector<std::string> rows;
};
const ClassRow g_classes[] = {
    {"IfcCartesianPoint",
     "Coordinates:number[]",
     "#1=IFCCARTESIANPOINT((0.1,2.,-3.E300));\n#2=IFCCARTESIANPOINT($);\n",
     {"1|IfcCartesianPoint|[0.1,2,-3e+300]", "2|IfcCartesianPoint|~"}},
    {"IfcCartesianPointList3D",
     "CoordList:number[][]",
     "#1=IFCCARTESIANPOINTLIST3D(((0.,1.,2.),(3.,4.,5.)));\n",
     {"1|IfcCartesianPointList3D|[[0,1,2],[3,4,5]]"}},
    {"IfcPolyline",
     "Points:integer[]",
     "#1=IFCCARTESIANPOINT((0.,1.));\n#2=IFCPOLYLINE((#1,#1));\n",
     {"2|IfcPolyline|[1,1]"}},
    {"IfcPropertySingleValue",
     "Name:text Description:text NominalValue:text NominalValue_type:text Unit:integer Unit_type:text",
     "#1=IFCPROPERTYSINGLEVALUE('a',$,IFCLABEL('F 90'),$);\n"
     "#2=IFCPROPERTYSINGLEVALUE('b','',IFCREAL(0.1),#9);\n"
     "#3=IFCPROPERTYSINGLEVALUE('c',$,IFCBOOLEAN(.F.),$);\n"
     "#4=IFCPROPERTYSINGLEVALUE('d',$,IFCCOMPLEXNUMBER((1.,2.)),$);\n"
     "#5=IFCPROPERTYSINGLEVALUE('e',$,$,$);\n"
     "#9=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);\n",
     {"1|IfcPropertySingleValue|a|~|F 90|IfcLabel|~|~", "2|IfcPropertySingleValue|b||0.1|IfcReal|9|IfcSIUnit",
      "3|IfcPropertySingleValue|c|~|false|IfcBoolean|~|~", "4|IfcPropertySingleValue|d|~|[1,2]|IfcComplexNumber|~|~",
      "5|IfcPropertySingleValue|e|~|~|~|~|~"}},
    {"IfcPropertyEnumeratedValue",
     "Name:text Description:text EnumerationValues:json EnumerationReference:integer",
     "#1=IFCPROPERTYENUMERATEDVALUE('a',$,(IFCLABEL('x'),IFCINTEGER(2147483647)),$);\n",
     {"1|IfcPropertyEnumeratedValue|a|~|[{\"type\":\"IfcLabel\",\"value\":\"x\"},{\"type\":\"IfcInteger\",\"value\":"
      "2147483647}]|~"}},
    {"IfcTrimmedCurve",
     "BasisCurve:integer Trim1:json Trim2:json SenseAgreement:truth MasterRepresentation:text",
     "#1=IFCCARTESIANPOINT((0.,1.));\n#2=IFCTRIMMEDCURVE(#3,(#1,IFCPARAMETERVALUE(0.5)),(),.T.,.PARAMETER.);\n"
     "#3=IFCLINE(#1,$);\n",
     {"2|IfcTrimmedCurve|3|[{\"ref\":1},{\"type\":\"IfcParameterValue\",\"value\":0.5}]|[]|true|PARAMETER"}},
    {"IfcBSplineSurface",   // a class with a subtype, a LOGICAL, lists of lists of references
     "UDegree:integer VDegree:integer ControlPointsList:integer[][] SurfaceForm:text UClosed:text VClosed:text "
     "SelfIntersect:text",
     "#1=IFCCARTESIANPOINT((0.,1.));\n"
     "#2=IFCBSPLINESURFACEWITHKNOTS(1,2,((#1,#1),(#1,#1)),.UNSPECIFIED.,.T.,.F.,.U.,(2),(2),(0.),(1.),.UNSPECIFIED.);"
     "\n",
     {"2|IfcBSplineSurfaceWithKnots|1|2|[[1,1],[1,1]]|UNSPECIFIED|true|false|unknown"}},
    {"IfcPixelTexture",
     "RepeatS:truth RepeatT:truth Mode:text TextureTransform:integer Parameter:text[] Width:integer Height:integer "
     "ColourComponents:integer Pixel:text[]",
     "#1=IFCPIXELTEXTURE(.T.,.F.,$,$,('a','b'),1,1,1,(\"0FF\"));\n",
     {"1|IfcPixelTexture|true|false|~|~|[\"a\",\"b\"]|1|1|1|[\"FF\"]"}},
    {"IfcSIUnit",   // a derived attribute
     "Dimensions:integer UnitType:text Prefix:text Name:text",
     "#1=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n",
     {"1|IfcSIUnit|~|LENGTHUNIT|MILLI|METRE"}},
    {"IfcMeasureWithUnit",
     "ValueComponent:text ValueComponent_type:text UnitComponent:integer UnitComponent_type:text",
     "#1=IFCMEASUREWITHUNIT(IFCLENGTHMEASURE(25.4),#2);\n#2=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n",
     {"1|IfcMeasureWithUnit|25.4|IfcLengthMeasure|2|IfcSIUnit"}},
    {"IfcTextStyleTextModel",   // a select of numbers and texts
     "TextIndent:text TextIndent_type:text TextAlign:text TextDecoration:text LetterSpacing:text "
     "LetterSpacing_type:text WordSpacing:text WordSpacing_type:text TextTransform:text LineHeight:text "
     "LineHeight_type:text",
     "#1=IFCTEXTSTYLETEXTMODEL(IFCLENGTHMEASURE(1.5),$,$,IFCDESCRIPTIVEMEASURE('normal'),$,$,$);\n",
     {"1|IfcTextStyleTextModel|1.5|IfcLengthMeasure|~|~|normal|IfcDescriptiveMeasure|~|~|~|~|~"}},
    {"IfcVertexLoop", "LoopVertex:integer", "#1=IFCVERTEXLOOP(#99);\n", {"1|IfcVertexLoop|~"}},
};

TEST(ClassTable, ATypedColumnAnAttribute) {
    for (const ClassRow& row : g_classes) {
        SCOPED_TRACE(row.pClass);
        const Model model = modelOf("IFC4", row.pStatements);
        EXPECT_EQ(sColumns(model, row.pClass), row.pColumns);
        EXPECT_EQ(tableRows(model, row.pClass), row.rows);
    }
}

TEST(ClassTable, HasSubtypes) {
    const Model model = house("IFC4");
    EXPECT_EQ(tableRows(model, "IfcWall").size(), 3U);
    EXPECT_EQ(tableRows(model, "IfcWallStandardCase").size(), 1U);
    EXPECT_EQ(tableRows(model, "IfcRoot").size(), 14U + 5U + 17U);
    EXPECT_EQ(tableRows(model, "IfcBoiler").size(), 0U);
}

// SQL knows names in any case of letters; no schema may have a column twice.
TEST(ClassTable, ColumnsHaveNamesOfTheirOwn) {
    for (const char* pSchema : g_families) {
        const Model model(pSchema);
        for (const char* pClass : {"IfcDocumentReference", "IfcTable", "IfcActor", "IfcPropertyTableValue"}) {
            std::vector<std::string> names;
            for (const tables::Column& column : tables::table(model, pClass).columns) {
                std::string sLower = column.name;
                for (char& c : sLower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
                names.push_back(sLower);
            }
            std::ranges::sort(names);
            EXPECT_EQ(std::ranges::adjacent_find(names), names.end()) << pClass;
        }
    }
}

}   // namespace
}   // namespace oxa::test
