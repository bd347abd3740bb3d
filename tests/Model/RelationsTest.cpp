// SPDX-License-Identifier: Apache-2.0
// Relations of a small house, the same in three schema families; what only IFC4 knows; and circles.
#include <string>
#include <vector>

#include "Model/HouseText.h"
#include "Model/Relations.h"

namespace oxa::test {

namespace {

std::string sSource(Source eSource) { return eSource == Source::Type ? "t" : "i"; }

std::string sProperty(const Property& property) {
    std::string sText = property.name + "=" + property.value.toString();
    if (!property.lower.isNull() || !property.upper.isNull())
        sText += "[" + property.lower.toString() + ".." + property.upper.toString() + "]";
    if (!property.defining.isNull()) sText += "<" + property.defining.toString();
    if (property.unit) sText += " " + sId(property.unit);
    if (property.kind == PropertyKind::Complex) {
        sText += "{";
        for (const Property& part : property.properties) sText += sProperty(part) + ";";
        sText += "}";
    }
    return sText + " " + sSource(property.source);
}

std::string sSets(const std::vector<PropertySet>& sets) {
    std::string sText;
    for (const PropertySet& set : sets) {
        sText += set.name + " " + sId(set.element) + " " + sSource(set.source) + "\n";
        for (const Property& property : set.properties) sText += "  " + sProperty(property) + "\n";
    }
    return sText;
}

std::string sMaterials(const Element& element) {
    std::string sText;
    for (const Material& one : materials(element)) {
        sText += one.name + "(" + one.part + ") " + sId(one.of) + " of " + one.setName + " " + sId(one.set) + " " +
                 sSource(one.source);
        if (one.thickness) sText += " " + std::to_string(static_cast<int>(*one.thickness));
        if (one.fraction) sText += " " + std::to_string(static_cast<int>(*one.fraction * 100)) + "%";
        sText += "\n";
    }
    return sText;
}

std::string sClassifications(const Element& element) {
    std::string sText;
    for (const Classification& one : classifications(element))
        sText +=
            sId(one.element) + " " + one.system + "|" + one.code + "|" + one.name + " " + sSource(one.source) + "\n";
    return sText;
}

}   // namespace

TEST(Relations, LeadUpAndDown) {
    const struct {
        std::uint64_t iId;
        const char* pType;
        const char* pParent;
        const char* pContainer;
        const char* pStorey;
        const char* pBuilding;
        const char* pParts;
        const char* pContents;
        const char* pGroups;
    } rows[] = {
        {1, "-", "-", "-", "-", "-", "#3", "", ""},         {3, "-", "#1", "-", "-", "-", "#4 #5", "", ""},
        {4, "-", "#3", "#3", "-", "#3", "#6", "#10", ""},   {5, "-", "#3", "#3", "-", "#3", "", "#11 #14", ""},
        {6, "-", "#4", "#4", "#4", "#3", "", "", ""},       {10, "#20", "#4", "#4", "#4", "#3", "#12", "", "#90"},
        {11, "#20", "#5", "#5", "#5", "#3", "", "", "#90"}, {12, "-", "#10", "#4", "#4", "#3", "#13", "", ""},
        {13, "-", "#12", "#4", "#4", "#3", "", "", ""},     {14, "-", "#5", "#5", "#5", "#3", "#15", "", ""},
        {15, "-", "#14", "#5", "#5", "#3", "", "", ""},     {16, "-", "-", "-", "-", "-", "", "", ""},
        {70, "-", "-", "-", "-", "-", "", "", ""},
    };
    for (const char* pSchema : g_families) {
        const Model model = house(pSchema);
        for (const auto& row : rows) {
            SCOPED_TRACE(std::string(pSchema) + " #" + std::to_string(row.iId));
            const Element element = model.byId(row.iId);
            EXPECT_EQ(sId(type(element)), row.pType);
            EXPECT_EQ(sId(parent(element)), row.pParent);
            EXPECT_EQ(sId(container(element)), row.pContainer);
            EXPECT_EQ(sId(storey(element)), row.pStorey);
            EXPECT_EQ(sId(building(element)), row.pBuilding);
            EXPECT_EQ(sIds(parts(element)), row.pParts);
            EXPECT_EQ(sIds(contents(element)), row.pContents);
            EXPECT_EQ(sIds(groups(element)), row.pGroups);
        }
    }
}

TEST(Relations, TellPropertiesOwnFirstThenOfTheType) {
    const char* const pKinds = "Kinds #51 t\n"
                               "  Enumerated=(A,B) t\n"
                               "  Bounded=[1..5] #7 t\n"
                               "  List=(1,2) t\n"
                               "  Table=(one)<(1) t\n"
                               "  Reference=#70 t\n"
                               "  Complex={Inner=7 t;Deep={Inner=7 t;Complex={} t;} t;} t\n"
                               "  Empty= t\n"
                               "Panel #52 t\n"
                               "  PanelDepth=40 t\n"
                               "  PanelOperation=SWINGING t\n"
                               "  PanelPosition=LEFT t\n";
    for (const char* pSchema : g_families) {
        SCOPED_TRACE(pSchema);
        const Model model = house(pSchema);
        EXPECT_EQ(sSets(psets(model.byId(10))), std::string("Pset_WallCommon #40 i\n"
                                                            "  FireRating=F 90 i\n"
                                                            "  IsExternal=true i\n"
                                                            "  ThermalTransmittance=0.24 i\n"
                                                            "  LoadBearing=false t\n") +
                                                    pKinds);
        EXPECT_EQ(sSets(psets(model.byId(11))), std::string("Pset_WallCommon #50 t\n"
                                                            "  FireRating=F 30 t\n"
                                                            "  LoadBearing=false t\n") +
                                                    pKinds);
        EXPECT_EQ(sSets(quantities(model.byId(10))), "Qto_WallBaseQuantities #63 i\n"
                                                     "  NetVolume=2.5 i\n"
                                                     "  Length=4000 #7 i\n"
                                                     "  Layers={NetVolume=2.5 i;} i\n");
        EXPECT_EQ(sSets(psets(model.byId(16))), "");
        EXPECT_EQ(psets(model.byId(20)).front().source, Source::Instance);
    }
}

TEST(Relations, FindOneProperty) {
    const struct {
        const char* sRule;
        std::uint64_t iId;
        const char* pSet;
        const char* pName;
        const char* pExpected;
    } rows[] = {
        {"its own", 10, "Pset_WallCommon", "FireRating", "FireRating=F 90 i"},
        {"of its type", 10, "Pset_WallCommon", "LoadBearing", "LoadBearing=false t"},
        {"of its type, which it does not hide", 11, "Pset_WallCommon", "FireRating", "FireRating=F 30 t"},
        {"of a type", 20, "Pset_WallCommon", "FireRating", "FireRating=F 30 i"},
        {"a quantity", 10, "Qto_WallBaseQuantities", "NetVolume", "NetVolume=2.5 i"},
        {"in a complex one", 10, "Kinds", "Complex.Inner", "Inner=7 t"},
        {"in a circle", 10, "Kinds", "Complex.Deep.Complex.Deep.Inner", "Inner=7 t"},
        {"an attribute of a set", 10, "Panel", "PanelDepth", "PanelDepth=40 t"},
        {"without a value", 10, "Kinds", "Empty", "Empty= t"},
        {"what every set has is no property", 10, "Panel", "Name", "-"},
        {"no such property", 10, "Pset_WallCommon", "firerating", "-"},
        {"no such set", 10, "Pset", "FireRating", "-"},
        {"no such part", 10, "Kinds", "Complex.Deep.", "-"},
    };
    for (const char* pSchema : g_families) {
        const Model model = house(pSchema);
        for (const auto& row : rows) {
            SCOPED_TRACE(std::string(pSchema) + ": " + row.sRule);
            const std::optional<Property> found = property(model.byId(row.iId), row.pSet, row.pName);
            EXPECT_EQ(found ? sProperty(*found) : "-", row.pExpected);
        }
    }
}

TEST(Relations, TellMaterialsOfTheInstanceElseOfTheType) {
    for (const char* pSchema : g_families) {
        SCOPED_TRACE(pSchema);
        const Model model = house(pSchema);
        EXPECT_EQ(sMaterials(model.byId(10)), "Brick() #72 of W36 #74 i 240\nWool() #73 of W36 #74 i 120\n");
        EXPECT_EQ(sMaterials(model.byId(11)), "Wool() - of  #77 t\nBrick() - of  #77 t\n");
        EXPECT_EQ(sMaterials(model.byId(13)), "Wool() - of  - i\n");
        EXPECT_EQ(sMaterials(model.byId(16)), "");
    }
}

TEST(Relations, TellMaterialsThatOnlyLaterSchemasKnow) {
    for (const char* pSchema : {"IFC4", "IFC4X3_ADD2"}) {
        SCOPED_TRACE(pSchema);
        const Model model = Model::fromBuffer(houseText(
            pSchema,
            "#1=IFCBEAM(@,$,$,$,$,$,$,$);\n#2=IFCDOOR(@,$,$,$,$,$,$);\n#3=IFCWALL(@,$,$,$,$,$,$,$);\n"
            "#4=IFCMATERIAL('Steel',$,'steel');\n#5=IFCMATERIAL('Glass',$,$);\n"
            "#6=IFCMATERIALPROFILE('Main',$,#4,$,$,$);\n#7=IFCMATERIALPROFILESET('HEB',$,(#6),$);\n"
            "#8=IFCMATERIALPROFILESETUSAGE(#7,$,$);\n#9=IFCRELASSOCIATESMATERIAL(@,$,$,(#1),#8);\n"
            "#10=IFCMATERIALCONSTITUENT('Frame',$,#4,0.25,$);\n#11=IFCMATERIALCONSTITUENT('Pane',$,#5,0.75,$);\n"
            "#12=IFCMATERIALCONSTITUENTSET('Leaf',$,(#10,#11));\n"
            "#13=IFCRELASSOCIATESMATERIAL(@,$,$,(#2),#12);\n#14=IFCMATERIALLAYER($,20.,$,'Air',$,$,$);\n"
            "#15=IFCRELASSOCIATESMATERIAL(@,$,$,(#3),#14);\n"));
        EXPECT_EQ(sMaterials(model.byId(1)), "Steel(Main) #6 of HEB #7 i\n");
        EXPECT_EQ(sMaterials(model.byId(2)), "Steel(Frame) #10 of Leaf #12 i 25%\nGlass(Pane) #11 of Leaf #12 i 75%\n");
        EXPECT_EQ(sMaterials(model.byId(3)), "(Air) #14 of  - i 20\n");
    }
}

TEST(Relations, TellClassificationsOfBoth) {
    for (const char* pSchema : g_families) {
        SCOPED_TRACE(pSchema);
        const Model model = house(pSchema);
        EXPECT_EQ(sClassifications(model.byId(10)), "#81 Uniclass|Ss_25|Walls i\n#82 |Ss_25_10|Framed walls t\n");
        EXPECT_EQ(sClassifications(model.byId(11)), "#82 |Ss_25_10|Framed walls t\n");
        EXPECT_EQ(sClassifications(model.byId(13)), "");
    }
    const Model old = Model::fromBuffer(
        houseText("IFC2X3", "#1=IFCWALL(@,$,$,$,$,$,$);\n#2=IFCCLASSIFICATIONNOTATIONFACET('B');\n"
                            "#3=IFCCLASSIFICATIONNOTATIONFACET('21');\n#4=IFCCLASSIFICATIONNOTATION((#2,#3));\n"
                            "#5=IFCRELASSOCIATESCLASSIFICATION(@,$,$,(#1),#4);\n"));
    EXPECT_EQ(sClassifications(old.byId(1)), "#4 |B.21| i\n");
    const Model nested = Model::fromBuffer(houseText(
        "IFC4",
        "#1=IFCWALL(@,$,$,$,$,$,$);\n#2=IFCCLASSIFICATION($,$,$,'CCI',$,$,$);\n"
        "#3=IFCCLASSIFICATIONREFERENCE($,'A','Outer',#2,$,$);\n#4=IFCCLASSIFICATIONREFERENCE($,'AB',$,#3,$,$);\n"
        "#5=IFCRELASSOCIATESCLASSIFICATION(@,$,$,(#1),#4);\n#6=IFCRELASSOCIATESCLASSIFICATION(@,$,$,(#1),#2);\n"
        "#7=IFCCLASSIFICATIONREFERENCE($,'X',$,#7,$,$);\n#8=IFCRELASSOCIATESCLASSIFICATION(@,$,$,(#1),#7);\n"));
    EXPECT_EQ(sClassifications(nested.byId(1)), "#4 CCI|AB| i\n#2 CCI|| i\n#7 |X| i\n");
}

TEST(Relations, CountInTheOrderOfTheirNumbers) {
    const Model model = Model::fromBuffer(houseText(
        "IFC4", "#30=IFCPROPERTYSET(@,'S',$,(#31));\n#31=IFCPROPERTYSINGLEVALUE('P',$,IFCLABEL('later'),$);\n"
                "#40=IFCRELDEFINESBYPROPERTIES(@,$,$,(#1),#30);\n#1=IFCWALL(@,$,$,$,$,$,$,$);\n"
                "#20=IFCRELDEFINESBYPROPERTIES(@,$,$,(#1),IFCPROPERTYSETDEFINITIONSET((#32,#10)));\n"
                "#10=IFCPROPERTYSET(@,'S',$,(#11,#12));\n#11=IFCPROPERTYSINGLEVALUE('P',$,IFCLABEL('first'),$);\n"
                "#12=IFCPROPERTYSINGLEVALUE('Q',$,IFCLABEL('q'),$);\n#32=IFCPROPERTYSET(@,$,$,$);\n"));
    EXPECT_EQ(sSets(psets(model.byId(1))), "IfcPropertySet #32 i\nS #10 i\n  P=first i\n  Q=q i\n");
    EXPECT_EQ(property(model.byId(1), "S", "P")->value.text(), "first");
}

TEST(Relations, EndWhereAFileMakesACircle) {
    const Model model =
        Model::fromBuffer(houseText("IFC4", "#1=IFCWALL(@,$,$,$,$,$,$,$);\n#2=IFCWALL(@,$,$,$,$,$,$,$);\n"
                                            "#3=IFCRELAGGREGATES(@,$,$,#1,(#2));\n#4=IFCRELAGGREGATES(@,$,$,#2,(#1));\n"
                                            "#5=IFCMATERIALLAYERSETUSAGE(#5,.AXIS2.,.POSITIVE.,0.,$);\n"
                                            "#6=IFCRELASSOCIATESMATERIAL(@,$,$,(#1),#5);\n"));
    EXPECT_EQ(sId(parent(model.byId(1))), "#2");
    EXPECT_FALSE(storey(model.byId(1)));
    EXPECT_EQ(sMaterials(model.byId(1)), "");
}

TEST(Relations, AskOnlyWhatIsThere) {
    EXPECT_EQ(sThrown([] { static_cast<void>(psets(Element())); }), "HandleError: the handle names no element");
    Element wall;
    {
        const Model model = house("IFC4");
        wall = model.byId(10);
    }
    EXPECT_EQ(sThrown([&] { static_cast<void>(storey(wall)); }), "HandleError: the model of this element is gone");
}

TEST(Relations, RoleSaysWhatAnEntityIsAboutAndForWhom) {
    const struct {
        std::uint64_t iId;
        Role role;
        std::vector<std::uint64_t> concerned;
    } rows[] = {
        {10, Role::Object, {}},   {20, Role::Object, {10, 11}}, {21, Role::TypeOf, {10, 11}},
        {30, Role::PlaceOf, {3}}, {33, Role::PlaceOf, {10}},    {36, Role::PlaceOf, {13}},
        {40, Role::Set, {10}},    {44, Role::SetsOf, {10}},     {50, Role::Set, {10, 11, 20}},
        {41, Role::Other, {}},
    };
    for (const char* pSchema : g_families) {
        const Model model = Model::fromBuffer(houseText(pSchema, g_sHouse));
        for (const auto& row : rows) {
            SCOPED_TRACE(std::string(pSchema) + " #" + std::to_string(row.iId));
            EXPECT_EQ(role(model.byId(row.iId)), row.role);
            std::vector<std::uint64_t> ids;
            for (const Element one : concerned(model.byId(row.iId))) ids.push_back(one.id());
            EXPECT_EQ(ids, row.concerned);
        }
    }
}

}   // namespace oxa::test
