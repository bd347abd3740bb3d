// SPDX-License-Identifier: Apache-2.0
// Values by kind: each kind as itself, and a TypeError as any other.
#include <string>
#include <vector>

#include "Model/ModelText.h"

namespace oxa::test {

namespace {

// One attribute of every kind.
const Model& model() {
    static const Model one = modelOf(
        "IFC4",
        "#1=IFCWALL('0000000000000000000001',$,'South \\X2\\00E4\\X0\\',$,$,#2,$,'T',.SOLIDWALL.);\n"
        "#2=IFCLOCALPLACEMENT($,#3);\n#3=IFCAXIS2PLACEMENT3D(#4,$,$);\n#4=IFCCARTESIANPOINT((1.,2.5,-3.));\n"
        "#5=IFCPROPERTYSINGLEVALUE('P',$,IFCLABEL('F 90'),$);\n#6=IFCPROPERTYSINGLEVALUE('P',$,IFCBOOLEAN(.T.),$);\n"
        "#7=IFCPROPERTYSINGLEVALUE('P',$,IFCLOGICAL(.U.),#8);\n#8=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n"
        "#9=IFCCARTESIANPOINTLIST2D(((0.,0.),(1.,0.5)));\n"
        "#10=IFCINDEXEDPOLYCURVE(#9,(IFCLINEINDEX((1,2)),IFCARCINDEX((2,1,2))),.F.);\n"
        "#11=IFCBLOBTEXTURE(.T.,.F.,$,$,$,'PNG',\"0FF0A\");\n"
        "#12=IFCTRIMMEDCURVE(#13,(#4,IFCPARAMETERVALUE(0.25)),(#4),.T.,.CARTESIAN.);\n"
        "#13=IFCLINE(#4,$);\n#14=IFCBSPLINESURFACEWITHKNOTS(1,1,((#4,#4),(#4,#4)),.UNSPECIFIED.,.F.,.F.,.U.,(2,2),"
        "(2,2),(0.,1.),(0.,1.),.UNSPECIFIED.);\n#15=IFCPIXELTEXTURE(.T.,.T.,$,$,$,1,2,3,(\"00000\",\"0FFFFFF\"));\n"
        "#16=IFCPROPERTYSINGLEVALUE('P',$,IFCCOMPLEXNUMBER((1.,2.)),$);\n"
        "#17=IFCPROPERTYENUMERATEDVALUE('P',$,(IFCLABEL('A'),IFCINTEGER(7)),$);\n"
        "#18=IFCPERSON($,'N',$,('a','b'),$,$,$,$);\n");
    return one;
}

Value valueOf(int iId, const char* pName) { return model().byId(static_cast<std::uint64_t>(iId))[pName]; }

}   // namespace

TEST(ValueKind, IsToldWithTypeAndText) {
    const struct {
        int iId;
        const char* pName;
        const char* pKind;
        const char* pType;
        bool boTyped;
        const char* pText;
    } rows[] = {
        {1, "GlobalId", "a text", "IfcGloballyUniqueId", false, "0000000000000000000001"},
        {1, "OwnerHistory", "no value", "", false, ""},
        {1, "Name", "a text", "IfcLabel", false, "South \xC3\xA4"},
        {1, "predefinedTYPE", "an enumerator", "IfcWallTypeEnum", false, "SOLIDWALL"},
        {1, "ObjectPlacement", "an element", "IfcLocalPlacement", false, "#2"},
        {4, "Coordinates", "a list", "", false, "(1,2.5,-3)"},
        {5, "NominalValue", "a text", "IfcLabel", true, "F 90"},
        {6, "NominalValue", "a boolean", "IfcBoolean", true, "true"},
        {7, "NominalValue", "a logical value", "IfcLogical", true, "unknown"},
        {7, "Unit", "an element", "IfcSIUnit", false, "#8"},
        {8, "Dimensions", "a derived value", "", false, "*"},
        {9, "CoordList", "a list", "", false, "((0,0),(1,0.5))"},
        {10, "Segments", "a list", "", false, "((1,2),(2,1,2))"},
        {10, "SelfIntersect", "a boolean", "IfcBoolean", false, "false"},
        {11, "RasterCode", "a binary", "IfcBinary", false, "FF0A"},
        {12, "Trim1", "a list", "", false, "(#4,0.25)"},
        {14, "UDegree", "an integer", "IfcInteger", false, "1"},
        {14, "SelfIntersect", "a logical value", "IfcLogical", false, "unknown"},
        {14, "ControlPointsList", "a list", "", false, "((#4,#4),(#4,#4))"},
        {15, "Pixel", "a list", "", false, "(0000,FFFFFF)"},
        {16, "NominalValue", "a list", "IfcComplexNumber", true, "(1,2)"},
        {17, "EnumerationValues", "a list", "", false, "(A,7)"},
        {18, "MiddleNames", "a list", "", false, "(a,b)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE("#" + std::to_string(row.iId) + " " + row.pName);
        const Value value = valueOf(row.iId, row.pName);
        EXPECT_EQ(kindName(value.kind()), row.pKind);
        EXPECT_EQ(value.typeName(), row.pType);
        EXPECT_EQ(value.isTyped(), row.boTyped);
        EXPECT_EQ(value.toString(), row.pText);
    }
}

TEST(ValueKind, IsNoOther) {
    const struct {
        const char* sRule;
        std::string sThrown;
        const char* sExpected;
    } rows[] = {
        {"a text is no number", sThrown([] { static_cast<void>(valueOf(1, "Name").number()); }),
         "TypeError: IfcWall #1: Name is a text (IfcLabel), not a number"},
        {"a list is no text", sThrown([] { static_cast<void>(valueOf(4, "Coordinates").text()); }),
         "TypeError: IfcCartesianPoint #4: Coordinates is a list, not a text"},
        {"a number is no integer", sThrown([] { static_cast<void>(valueOf(4, "Coordinates").items()[0].integer()); }),
         "TypeError: IfcCartesianPoint #4: Coordinates is a number (IfcLengthMeasure), not an integer"},
        {"numbers are no elements", sThrown([] { static_cast<void>(valueOf(4, "Coordinates").elements()); }),
         "TypeError: IfcCartesianPoint #4: Coordinates holds a number, not an element"},
        {"an element is no list", sThrown([] { static_cast<void>(valueOf(7, "Unit").items()); }),
         "TypeError: IfcPropertySingleValue #7: Unit is an element (IfcUnit), not a list"},
        {"a typed text is no boolean", sThrown([] { static_cast<void>(valueOf(5, "NominalValue").boolean()); }),
         "TypeError: IfcPropertySingleValue #5: NominalValue is a text (IfcLabel), not a truth value"},
        {"no value", sThrown([] { static_cast<void>(valueOf(1, "Tag").get<double>()); }),
         "TypeError: IfcWall #1: Tag is a text (IfcIdentifier), not a number"},
        {"no value", sThrown([] { static_cast<void>(valueOf(1, "Description").get<std::string>()); }),
         "ValueError: IfcWall #1: Description has no value"},
        {"no attribute", sThrown([] { static_cast<void>(model().byId(1).text("Nmae")); }),
         "NameError: IfcWall has no attribute Nmae; there are: GlobalId, OwnerHistory, Name, Description, ObjectType, "
         "ObjectPlacement, Representation, Tag, PredefinedType"},
        {"a near one", sThrown([] { static_cast<void>(model().byId(1).text("Names")); }),
         "NameError: IfcWall has no attribute Names; did you mean Name?"},
        {"an inverse one", sThrown([] { static_cast<void>(model().byId(1).text("isDefinedBy")); }),
         "NameError: IfcWall.IsDefinedBy is an inverse attribute: inverse(\"IsDefinedBy\") tells it"},
        {"no inverse one", sThrown([] { static_cast<void>(model().byId(1).inverse("Name")); }),
         "NameError: IfcWall.Name is no inverse attribute: [\"Name\"] tells it"},
        {"no type", sThrown([] { static_cast<void>(model().byId(1).is("IfcWaal")); }),
         "NameError: IFC4 has no entity type IfcWaal; did you mean IfcWall?"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(row.sThrown, row.sExpected);
    }
}

TEST(ValueGet, IsTyped) {
    const Element wall = model().byId(1);
    EXPECT_EQ(wall.get<std::string>("Name"), "South \xC3\xA4");
    EXPECT_EQ(wall.get<std::optional<std::string>>("Description"), std::nullopt);
    EXPECT_EQ(wall.get<Element>("ObjectPlacement").id(), 2U);
    EXPECT_EQ(valueOf(4, "Coordinates").get<std::vector<double>>(), (std::vector<double>{1, 2.5, -3}));
    EXPECT_EQ(valueOf(14, "UMultiplicities").get<std::vector<std::int64_t>>(), (std::vector<std::int64_t>{2, 2}));
    EXPECT_EQ(valueOf(18, "MiddleNames").get<std::vector<std::string>>(), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(valueOf(11, "RasterCode").get<Bytes>(), (Bytes{0xFF, 0x0A}));
    EXPECT_EQ(valueOf(14, "UDegree").get<int>(), 1);
    EXPECT_EQ(valueOf(14, "UDegree").get<double>(), 1.0);
    EXPECT_EQ(valueOf(6, "NominalValue").get<bool>(), true);
    EXPECT_EQ(valueOf(7, "NominalValue").get<LogicalValue>(), LogicalValue::Unknown);
    EXPECT_EQ(valueOf(7, "NominalValue").boolean(), std::nullopt);
    EXPECT_EQ(sIds(valueOf(14, "ControlPointsList").elements()), "#4 #4 #4 #4");
    EXPECT_EQ(sIds(valueOf(12, "Trim1").elements()), "#4");
    EXPECT_EQ(sIds(wall.elements("ObjectPlacement")), "#2");
    EXPECT_EQ(valueOf(10, "Segments").items()[1].typeName(), "IfcArcIndex");
    EXPECT_EQ(valueOf(17, "EnumerationValues").items()[1].integer(), 7);
    EXPECT_EQ(valueOf(9, "CoordList").size(), 2U);
    EXPECT_EQ(valueOf(4, "Coordinates").declaredType(), "LIST [1:3] OF IfcLengthMeasure");
}

TEST(ElementIs, OfItsTypeAndItsSupertypes) {
    const Element wall = model().byId(1);
    EXPECT_EQ(wall.type(), "IfcWall");
    EXPECT_TRUE(wall.is("ifcRoot"));
    EXPECT_FALSE(wall.is("IfcDoor"));
    EXPECT_TRUE(wall.has("name"));
    EXPECT_TRUE(wall.has("isDefinedBy"));
    EXPECT_FALSE(wall.has("OverallWidth"));
    EXPECT_EQ(wall.schema(), "IFC4");
    EXPECT_EQ(model().byId(4).guid(), "");
    std::string sNames;
    for (const Attribute& attribute : model().byId(5).attributes())
        sNames += std::string(attribute.name) + (attribute.optional ? "? " : " ") + attribute.value.toString() + "; ";
    EXPECT_EQ(sNames, "Name P; Description? ; NominalValue? F 90; Unit? ; ");
}

}   // namespace oxa::test
