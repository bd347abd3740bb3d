// SPDX-License-Identifier: Apache-2.0
// Models changed: what is created, set and removed, what is refused with which words, and who refers to whom afterwards.
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "Model/ModelText.h"

namespace oxa::test {

namespace {

// A storey with two walls, one with a property set; in every schema.
std::string sHouse(std::string_view schema) {
    const bool boOld = schema == "IFC2X3";
    const std::string sWallEnd = boOld ? ");\n" : ",$);\n";
    return "#1=IFCPROJECT('0000000000000000000001',#50,'P',$,$,$,$,(),#51);\n"
           "#2=IFCBUILDINGSTOREY('0000000000000000000002',#50,'EG',$,$,$,$,$,.ELEMENT.,0.);\n"
           "#3=IFCWALL('0000000000000000000003',#50,'A',$,$,$,$,$" +
           sWallEnd + "#4=IFCWALL('0000000000000000000004',#50,'B',$,$,$,$,$" + sWallEnd +
           "#5=IFCRELCONTAINEDINSPATIALSTRUCTURE('0000000000000000000005',#50,$,$,(#3,#4),#2);\n"
           "#6=IFCPROPERTYSET('0000000000000000000006',#50,'Pset_WallCommon',$,(#7));\n"
           "#7=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F 30'),$);\n"
           "#8=IFCRELDEFINESBYPROPERTIES('0000000000000000000008',#50,$,$,(#3),#6);\n"
           "#50=IFCOWNERHISTORY(#52,#53,$,.ADDED.,$,$,$,0);\n#51=IFCUNITASSIGNMENT(());\n#52=IFCPERSONANDORGANIZATION(#"
           "54,#55,$);\n"
           "#53=IFCAPPLICATION(#55,'1','A','A');\n#54=IFCPERSON($,'N',$,$,$,$,$,$);\n#55=IFCORGANIZATION($,'O',$,$,$);"
           "\n";
}

Model house(std::string_view schema = "IFC4") { return modelOf(schema, sHouse(schema)); }

constexpr const char* g_schemas[] = {"IFC2X3", "IFC4", "IFC4X3_ADD2"};

}   // namespace

TEST(ModelCreate, DealsNumberAndGlobalId) {
    for (const char* pSchema : g_schemas) {
        SCOPED_TRACE(pSchema);
        Model model = house(pSchema);
        const Element door = model.create("ifcdoor", {{"Name", "D1"}, {"overallWidth", 0.9}, {"OverallHeight", 2}});
        EXPECT_EQ(door.id(), 56U) << "above all that the file has";
        EXPECT_EQ(door.guid().size(), 22U);
        EXPECT_EQ(model.byGuid(door.guid()), door);
        EXPECT_EQ(model.byId(56), door);
        EXPECT_EQ(door.text("Name"), "D1");
        EXPECT_EQ(door.number("OverallWidth"), 0.9);
        EXPECT_EQ(door.number("OverallHeight"), 2.0);
        EXPECT_EQ(sIds(model.all("IfcElement")), "#3 #4 #56");
        EXPECT_EQ(model.create("IfcDirection", {{"DirectionRatios", {0.0, 0.0, 1.0}}}).id(), 57U);
    }
}

TEST(ModelCreate, OfNothing) {
    Model model("IFC4");
    EXPECT_TRUE(model.whole());
    const Element project = model.create("IfcProject", {{"GlobalId", "1hOSvn6df7F8_7GcBWlRGQ"}});
    EXPECT_EQ(project.id(), 1U);
    EXPECT_EQ(model.byGuid("1hOSvn6df7F8_7GcBWlRGQ"), project);
    EXPECT_EQ(model.size(), 1U);
}

TEST(ModelCreate, TakesEveryKindOfValue) {
    Model model = house();
    const Element point = model.create("IfcCartesianPoint", {{"Coordinates", {1.0, 2, 3.5}}});
    const Element line = model.create("IfcLine", {{"Pnt", point}});
    const struct {
        const char* pType;
        const char* pName;
        NewValue value;
        const char* sText;
        const char* sType;
    } rows[] = {
        {"IfcWall", "PredefinedType", "solidwall", "SOLIDWALL", "IfcWallTypeEnum"},
        {"IfcWall", "Description", std::string("\xC3\xA4"), "\xC3\xA4", "IfcText"},
        {"IfcWall", "Description", nullptr, "", "IfcText"},
        {"IfcPropertySingleValue", "NominalValue", typed("IfcLabel", "x"), "x", "IfcLabel"},
        {"IfcPropertySingleValue", "NominalValue", typed("ifcboolean", true), "true", "IfcBoolean"},
        {"IfcPropertySingleValue", "NominalValue", typed("IfcLogical", LogicalValue::Unknown), "unknown", "IfcLogical"},
        {"IfcPropertySingleValue", "NominalValue", typed("IfcReal", 2), "2", "IfcReal"},
        {"IfcPropertySingleValue", "NominalValue", typed("IfcInteger", -7), "-7", "IfcInteger"},
        {"IfcPropertySingleValue", "NominalValue", typed("IfcBinary", Bytes{1, 255}), "01FF", "IfcBinary"},
        {"IfcPropertySingleValue", "NominalValue", typed("IfcComplexNumber", {1.0, 2.0}), "(1,2)", "IfcComplexNumber"},
        {"IfcPropertySingleValue", "NominalValue", typed("IfcCompoundPlaneAngleMeasure", {1, 2, 3}), "(1,2,3)",
         "IfcCompoundPlaneAngleMeasure"},
        {"IfcPropertyEnumeratedValue",
         "EnumerationValues",
         {typed("IfcLabel", "a"), typed("IfcInteger", 1)},
         "(a,1)",
         ""},
        {"IfcSIUnit", "Dimensions", derived, "*", ""},
        {"IfcCartesianPointList3D", "CoordList", {{0.0, 0.0, 0.0}, {1.0, 0.5, 2.0}}, "((0,0,0),(1,0.5,2))", ""},
        {"IfcTriangulatedFaceSet", "CoordIndex", {{1, 2, 3}}, "((1,2,3))", ""},
        {"IfcIndexedPolyCurve",
         "Segments",
         {typed("IfcLineIndex", {1, 2}), typed("IfcArcIndex", {2, 3, 1})},
         "((1,2),(2,3,1))",
         ""},
        {"IfcBSplineSurfaceWithKnots",
         "ControlPointsList",
         {{point, point}, {point, point}},
         "((#56,#56),(#56,#56))",
         ""},
        {"IfcTrimmedCurve", "Trim1", {point, typed("IfcParameterValue", 0.5)}, "(#56,0.5)", ""},
        {"IfcPerson", "MiddleNames", std::vector<std::string>{"a", "b"}, "(a,b)", ""},
        {"IfcPixelTexture", "Pixel", {Bytes{0}, Bytes{255, 1}}, "(00,FF01)", ""},
        {"IfcBlobTexture", "RasterCode", Bytes{9}, "09", "IfcBinary"},
        {"IfcTrimmedCurve", "BasisCurve", line, "#57", "IfcLine"},
        {"IfcBSplineCurveWithKnots", "ClosedCurve", false, "false", "IfcLogical"},
        {"IfcRelDeclares", "RelatedDefinitions", model.all("IfcWall"), "(#3,#4)", ""},
        {"IfcRelDefinesByProperties", "RelatingPropertyDefinition",
         typed("IfcPropertySetDefinitionSet", {model.byId(6)}), "(#6)", "IfcPropertySetDefinitionSet"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.pType) + "." + row.pName);
        const Element element = model.create(row.pType, {{row.pName, row.value}});
        EXPECT_EQ(element[row.pName].toString(), row.sText);
        EXPECT_EQ(element[row.pName].typeName(), row.sType);
        // What a value holds can be set elsewhere.
        const Element copy = model.create(row.pType, {{row.pName, element[row.pName]}});
        EXPECT_EQ(copy[row.pName].toString(), row.sText);
    }
}

TEST(ModelCreate, RefusesWithReasons) {
    Model model = house();
    Model other = house();
    const std::size_t iSize = model.size();
    const Element wall = model.byId(3);
    const struct {
        const char* sRule;
        const char* pType;
        const char* pName;
        NewValue value;
        const char* sThrown;
    } rows[] = {
        {"an unknown type", "IfcDor", "Name", "x", "NameError: IFC4 has no entity type IfcDor; did you mean IfcDoor?"},
        {"an abstract type", "IfcRelDefines", "Name", "x",
         "ValueError: IfcRelDefines is abstract; its subtypes are: IfcRelDefinesByObject, IfcRelDefinesByProperties, "
         "IfcRelDefinesByTemplate, IfcRelDefinesByType"},
        {"an unknown attribute", "IfcDoor", "OveralWidth", 1.0,
         "NameError: IfcDoor has no attribute OveralWidth; did you mean OverallWidth?"},
        {"an inverse attribute", "IfcDoor", "IsDefinedBy", wall,
         "NameError: IfcDoor.IsDefinedBy is an inverse attribute: inverse(\"IsDefinedBy\") tells it"},
        {"a text for a number", "IfcDoor", "OverallWidth", "1",
         "ValueError: IfcDoor: OverallWidth takes a number (IfcPositiveLengthMeasure), not a text"},
        {"no finite number", "IfcDoor", "OverallWidth", std::numeric_limits<double>::infinity(),
         "ValueError: IfcDoor: OverallWidth takes no infinite number and none that is no number"},
        {"a number for a text", "IfcDoor", "Name", 1,
         "ValueError: IfcDoor: Name takes a text (IfcLabel), not an integer"},
        {"a list for a text",
         "IfcDoor",
         "Name",
         {"a"},
         "ValueError: IfcDoor: Name takes a text (IfcLabel), not a list"},
        {"no UTF-8", "IfcDoor", "Name", "\xE4",
         "ValueError: IfcDoor: Name takes UTF-8, which this text is not: \xC3\xA4"},
        {"a NUL", "IfcDoor", "Name", std::string("a\0b", 3),
         "ValueError: IfcDoor: Name takes no text with a NUL in it"},
        {"an enumerator that is none", "IfcDoor", "PredefinedType", "DOOOR",
         "ValueError: IfcDoor: PredefinedType takes an enumerator of IfcDoorTypeEnum, not \"DOOOR\"; did you mean "
         "DOOR?"},
        {"one that is far off", "IfcDoor", "PredefinedType", "x",
         "ValueError: IfcDoor: PredefinedType takes an enumerator of IfcDoorTypeEnum, not \"x\"; there are: DOOR, "
         "GATE, "
         "TRAPDOOR, USERDEFINED, NOTDEFINED"},
        {"a GlobalId that is none", "IfcDoor", "GlobalId", "x",
         "ValueError: IfcDoor: GlobalId takes a GlobalId of 22 characters, not \"x\""},
        {"one that is taken", "IfcDoor", "GlobalId", "0000000000000000000003",
         "ValueError: IfcDoor: GlobalId can't be 0000000000000000000003: that is IfcWall #3"},
        {"a reference to another type", "IfcDoor", "ObjectPlacement", wall,
         "ValueError: IfcDoor: ObjectPlacement takes an element of type IfcObjectPlacement, not IfcWall #3"},
        {"a reference of another model", "IfcRelAggregates", "RelatingObject", other.byId(3),
         "HandleError: IfcWall #3 is of another model"},
        {"a reference in a select", "IfcPropertySingleValue", "Unit", wall,
         "ValueError: IfcPropertySingleValue: Unit takes IfcUnit, not IfcWall #3"},
        {"a value without its type", "IfcPropertySingleValue", "NominalValue", "x",
         "ValueError: IfcPropertySingleValue: NominalValue takes IfcValue: the value needs its type, as in "
         "typed(\"IfcAbsorbedDoseMeasure\", value)"},
        {"a value of a type that is none", "IfcPropertySingleValue", "NominalValue", typed("IfcLable", "x"),
         "NameError: IfcPropertySingleValue: NominalValue takes IfcValue, which has no type IfcLable; did you mean "
         "IfcLabel?"},
        {"a value of a type that is not in the select", "IfcPropertySingleValue", "NominalValue",
         typed("IfcWallTypeEnum", "SOLIDWALL"),
         "NameError: IfcPropertySingleValue: NominalValue takes IfcValue, which has no type IfcWallTypeEnum"},
        {"a typed value of another kind", "IfcPropertySingleValue", "NominalValue", typed("IfcReal", "x"),
         "ValueError: IfcPropertySingleValue: NominalValue takes a number (IfcReal), not a text"},
        {"another type than the attribute's", "IfcDoor", "Name", typed("IfcText", "x"),
         "ValueError: IfcDoor: Name takes IfcLabel, not IfcText"},
        {"too many items",
         "IfcCartesianPoint",
         "Coordinates",
         {1.0, 2.0, 3.0, 4.0},
         "ValueError: IfcCartesianPoint: Coordinates takes LIST [1:3] OF IfcLengthMeasure, not 4 items"},
        {"too few items", "IfcRelAggregates", "RelatedObjects", NewValue::List{},
         "ValueError: IfcRelAggregates: RelatedObjects takes SET [1:?] OF IfcObjectDefinition, not 0 items"},
        {"too few in a row",
         "IfcCartesianPointList3D",
         "CoordList",
         {{1.0, 2.0}},
         "ValueError: IfcCartesianPointList3D: CoordList takes LIST [3:3] OF IfcLengthMeasure, not 2 items"},
        {"an array has all its items", "IfcPropertySingleValue", "NominalValue", typed("IfcComplexNumber", {1.0}),
         "ValueError: IfcPropertySingleValue: NominalValue takes ARRAY [1:2] OF REAL, not 1 item"},
        {"a text in a list of numbers",
         "IfcCartesianPoint",
         "Coordinates",
         {1.0, "x"},
         "ValueError: IfcCartesianPoint: Coordinates takes a number (IfcLengthMeasure), not a text"},
        {"one element twice in a set",
         "IfcRelAggregates",
         "RelatedObjects",
         {wall, wall},
         "ValueError: IfcRelAggregates: RelatedObjects takes each element once, and IfcWall #3 stands there twice"},
        {"an integer of 64 bits", "IfcBSplineSurfaceWithKnots", "UDegree", std::int64_t{1} << 40,
         "ValueError: IfcBSplineSurfaceWithKnots: UDegree takes an integer of 32 bits, not 1099511627776"},
        {"a number for an integer", "IfcBSplineSurfaceWithKnots", "UDegree", 2.0,
         "ValueError: IfcBSplineSurfaceWithKnots: UDegree takes an integer (IfcInteger), not a number"},
        {"unknown is no boolean", "IfcPropertySingleValue", "NominalValue", typed("IfcBoolean", LogicalValue::Unknown),
         "ValueError: IfcPropertySingleValue: NominalValue takes a truth value (IfcBoolean), not unknown"},
        {"a truth value for a number", "IfcDoor", "OverallWidth", true,
         "ValueError: IfcDoor: OverallWidth takes a number (IfcPositiveLengthMeasure), not a truth value"},
        {"nothing in a list",
         "IfcCartesianPoint",
         "Coordinates",
         {1.0, nullptr},
         "ValueError: IfcCartesianPoint: Coordinates takes a number (IfcLengthMeasure), not nothing"},
        {"no bytes", "IfcBlobTexture", "RasterCode", Bytes{},
         "ValueError: IfcBlobTexture: RasterCode takes a binary of one byte or more"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(sThrown([&] { model.create(row.pType, {{row.pName, row.value}}); }), row.sThrown);
    }
    EXPECT_EQ(model.size(), iSize) << "nothing half made is left";
    EXPECT_EQ(model.create("IfcDoor").id(), 56U);
}

TEST(ModelSet, ChangesOneAttribute) {
    Model model = house();
    const Element wall = model.byId(3);
    const Value name = wall["Name"];
    model.set(wall, "name", "South");
    EXPECT_EQ(name.text(), "South") << "a value is a view";
    model.set(wall, "Name", nullptr);
    EXPECT_TRUE(name.isNull());
    EXPECT_EQ(sThrown([&] { model.set(model.byId(6), "HasProperties", nullptr); }),
              "ValueError: IfcPropertySet #6: HasProperties is mandatory");
    EXPECT_EQ(sThrown([&] { model.set(wall, "PredefinedType", 1); }),
              "ValueError: IfcWall #3: PredefinedType takes an enumerator (IfcWallTypeEnum), not an integer");
    EXPECT_TRUE(wall["PredefinedType"].isNull());
    const Element unit = model.create("IfcSIUnit", {{"Dimensions", derived}, {"Name", "METRE"}});
    EXPECT_EQ(sThrown([&] { model.set(unit, "Dimensions", wall); }),
              "ValueError: IfcSIUnit #56: Dimensions is derived from other attributes");
    model.set(model.byId(7), "NominalValue", typed("IfcInteger", 90));
    EXPECT_EQ(model.byId(7)["NominalValue"].toString(), "90");
}

TEST(ModelSet, GlobalIdsAreFoundAnew) {
    Model model = house();
    const Element wall = model.byId(3);
    model.set(wall, "GlobalId", "1hOSvn6df7F8_7GcBWlRGQ");
    EXPECT_EQ(wall.guid(), "1hOSvn6df7F8_7GcBWlRGQ");
    EXPECT_EQ(model.byGuid("1hOSvn6df7F8_7GcBWlRGQ"), wall);
    EXPECT_FALSE(model.byGuid("0000000000000000000003"));
    EXPECT_EQ(sThrown([&] { model.set(wall, "GlobalId", "0000000000000000000004"); }),
              "ValueError: IfcWall #3: GlobalId can't be 0000000000000000000004: that is IfcWall #4");
    EXPECT_EQ(sThrown([&] { model.set(wall, "GlobalId", nullptr); }), "ValueError: IfcWall #3: GlobalId is mandatory");
    EXPECT_EQ(sThrown([&] { model.set(wall, "GlobalId", 1); }),
              "ValueError: IfcWall #3: GlobalId takes a text (IfcGloballyUniqueId), not an integer");
    model.set(model.byId(4), "GlobalId", "0000000000000000000003");
    EXPECT_EQ(model.byGuid("0000000000000000000003").id(), 4U);
}

TEST(ModelInverse, FollowsEachChange) {
    for (const char* pSchema : g_schemas) {
        SCOPED_TRACE(pSchema);
        Model model = house(pSchema);
        const Element a = model.byId(3);
        const Element b = model.byId(4);
        const Element contained = model.byId(5);
        EXPECT_EQ(sIds(a.inverse("isDefinedBy")), "#8");
        EXPECT_EQ(sIds(b.inverse("IsDefinedBy")), "");
        model.append(model.byId(8), "RelatedObjects", b);
        EXPECT_EQ(sIds(b.inverse("IsDefinedBy")), "#8");
        model.set(model.byId(8), "RelatedObjects", {b});
        EXPECT_EQ(sIds(a.inverse("IsDefinedBy")), "");
        EXPECT_EQ(sIds(b.inverse("IsDefinedBy")), "#8");
        model.set(model.byId(8), "RelatedObjects", {a, b});
        const Element second = model.create(
            "IfcRelDefinesByProperties", {{"RelatedObjects", {b, a}}, {"RelatingPropertyDefinition", model.byId(6)}});
        EXPECT_EQ(sIds(a.inverse("IsDefinedBy")), "#8 #56");
        EXPECT_EQ(sIds(model.byId(2).inverse("ContainsElements")), "#5");
        const Element storey = model.create("IfcBuildingStorey", {{"Name", "OG"}});
        model.set(contained, "RelatingStructure", storey);
        EXPECT_EQ(sIds(model.byId(2).inverse("ContainsElements")), "");
        EXPECT_EQ(sIds(storey.inverse("ContainsElements")), "#5");
        model.remove(second);
        EXPECT_EQ(sIds(a.inverse("IsDefinedBy")), "#8");
    }
}

TEST(ModelAppend, ChecksAsSetDoes) {
    Model model = house();
    const Element contained = model.byId(5);
    EXPECT_EQ(
        sThrown([&] { model.append(contained, "RelatedElements", model.byId(3)); }),
        "ValueError: IfcRelContainedInSpatialStructure #5: RelatedElements takes each element once, and IfcWall #3 "
        "stands there twice");
    EXPECT_EQ(
        sThrown([&] { model.append(contained, "RelatedElements", model.byId(6)); }),
        "ValueError: IfcRelContainedInSpatialStructure #5: RelatedElements takes an element of type IfcProduct, not "
        "IfcPropertySet #6");
    EXPECT_EQ(sThrown([&] { model.append(contained, "Name", "x"); }),
              "ValueError: IfcRelContainedInSpatialStructure #5: Name takes a text (IfcLabel), not a list");
    const Element person = model.byId(54);
    model.append(person, "MiddleNames", "a");
    model.append(person, "MiddleNames", "b");
    EXPECT_EQ(person["MiddleNames"].toString(), "(a,b)");
    const Element point = model.create("IfcCartesianPoint", {{"Coordinates", {1.0, 2.0, 3.0}}});
    EXPECT_EQ(sThrown([&] { model.append(point, "Coordinates", 4.0); }),
              "ValueError: IfcCartesianPoint #56: Coordinates takes LIST [1:3] OF IfcLengthMeasure, not 4 items");
}

TEST(ModelRemove, TakesReferencesAndEmptyRelationshipsAlong) {
    for (const char* pSchema : g_schemas) {
        SCOPED_TRACE(pSchema);
        Model model = house(pSchema);
        const Element a = model.byId(3);
        const Value name = a["Name"];
        const Removed removed = model.remove(a);
        EXPECT_EQ(removed.count, 2U) << "the wall, and the relationship that had only it";
        EXPECT_TRUE(removed.incomplete.empty());
        EXPECT_FALSE(a);
        EXPECT_EQ(sThrown([&] { static_cast<void>(a.text("Name")); }), "HandleError: IfcWall #3 was removed");
        EXPECT_EQ(sThrown([&] { static_cast<void>(name.text()); }), "HandleError: IfcWall #3 was removed");
        EXPECT_EQ(sThrown([&] { model.set(a, "Name", "x"); }), "HandleError: IfcWall #3 was removed");
        EXPECT_EQ(sThrown([&] { model.set(model.byId(5), "RelatedElements", {a}); }),
                  "HandleError: IfcWall #3 was removed");
        EXPECT_EQ(sThrown([&] { model.remove(a); }), "HandleError: IfcWall #3 was removed");
        EXPECT_FALSE(model.byId(3));
        EXPECT_FALSE(model.byId(8));
        EXPECT_FALSE(model.byGuid("0000000000000000000003"));
        EXPECT_EQ(sIds(model.byId(5).elements("RelatedElements")), "#4");
        EXPECT_EQ(sIds(model.all("IfcWall")), "#4");
        EXPECT_EQ(model.create("IfcWall").id(), 56U) << "no number is dealt twice";
    }
}

TEST(ModelRemove, OfManyWhileTheyAreWalked) {
    Model model = house();
    for (const Element wall : model.all("IfcWall")) model.remove(wall);
    EXPECT_TRUE(model.all("IfcWall").empty());
    EXPECT_TRUE(model.all("IfcRelContainedInSpatialStructure").empty());
    Model again = house();
    EXPECT_EQ(again.remove(again.all("IfcWall")).count, 4U);
    Model units = house();
    EXPECT_EQ(sIds(units.remove(units.byId(51)).incomplete), "");
    EXPECT_EQ(sIds(units.remove(units.byId(52)).incomplete), "#50");
}

}   // namespace oxa::test
