// SPDX-License-Identifier: Apache-2.0
// Properties set in three schema families: what is made, what is copied first, and what stays as it is.
#include <string>

#include "Model/HouseText.h"
#include "Model/Relations.h"
#include "Model/Selector.h"
#include "Model/SetProperty.h"

namespace oxa::test {

namespace {

// Two walls that share a set over one relationship, one that shares a property with them, one without anything.
constexpr char g_sShared[] =
    "#1=IFCWALL(@,'A',$,$,$,$,$);\n#2=IFCWALL(@,'B',$,$,$,$,$);\n#3=IFCWALL(@,'C',$,$,$,$,$);\n"
    "#4=IFCWALL(@,'D',$,$,$,$,$);\n#5=IFCWALL(@,'E',$,$,$,$,$);\n"
    "#10=IFCPROPERTYSET(@,'S',$,(#11,#12));\n"
    "#11=IFCPROPERTYSINGLEVALUE('P',$,IFCIDENTIFIER('old'),$);\n"
    "#12=IFCPROPERTYSINGLEVALUE('Q',$,IFCREAL(1.),$);\n"
    "#13=IFCRELDEFINESBYPROPERTIES(@,$,$,(#1,#2),#10);\n"
    "#20=IFCPROPERTYSET(@,'S',$,(#11));\n#21=IFCRELDEFINESBYPROPERTIES(@,$,$,(#3),#20);\n"
    "#30=IFCWALLTYPE(@,'T',$,$,(#31),$,$,$,.STANDARD.);\n"
    "#31=IFCPROPERTYSET(@,'S',$,(#32));\n#32=IFCPROPERTYSINGLEVALUE('P',$,IFCTEXT('type'),$);\n"
    "#33=IFCRELDEFINESBYTYPE(@,$,$,(#4),#30);\n#34=IFCWALLTYPE(@,'U',$,$,(#31),$,$,$,.STANDARD.);\n";

// "S.P" of the five walls and both types, with the type of the value.
std::string sValues(const Model& model, const char* pName = "P") {
    std::string sText;
    for (const unsigned iId : {1U, 2U, 3U, 4U, 5U, 30U, 34U}) {
        const std::optional<Property> found = property(model.byId(iId), "S", pName);
        sText += (sText.empty() ? "" : " ") + (found ? found->value.toString() : "-");
    }
    return sText;
}

}   // namespace

TEST(SetProperty, ChangesTheElementAlone) {
    const struct {
        const char* sRule;
        std::uint64_t iId;
        const char* pExpected;
        const char* pType;
        std::size_t iMore;   // elements than before
    } rows[] = {
        {"a set that two share is copied, the property too", 1, "new old old type - type type", "IfcIdentifier", 3},
        {"a property that two sets list is copied, the set is not", 3, "old old new type - type type", "IfcIdentifier",
         1},
        {"what the type says is hidden", 4, "old old old new - type type", "IfcText", 3},
        {"what nobody says is made", 5, "old old old type new type type", "IfcLabel", 3},
        {"a set that two types share is copied", 30, "old old old new - new type", "IfcText", 2},
    };
    for (const char* pSchema : g_families)
        for (const auto& row : rows) {
            SCOPED_TRACE(std::string(pSchema) + ": " + row.sRule);
            Model model = Model::fromBuffer(houseText(pSchema, g_sShared));
            const std::size_t iBefore = model.size();
            const Element set = setProperty(model, model.byId(row.iId), "S", "P", "new");
            EXPECT_EQ(sValues(model), row.pExpected);
            EXPECT_EQ(set["NominalValue"].typeName(), row.pType);
            EXPECT_EQ(model.size(), iBefore + row.iMore);
            EXPECT_EQ(sValues(model, "Q").substr(0, 3), "1 1");
            // The second time all is the element's own.
            EXPECT_EQ(setProperty(model, model.byId(row.iId), "S", "P", "new"), set);
            EXPECT_EQ(model.size(), iBefore + row.iMore);
            EXPECT_EQ(sValues(model), row.pExpected);
        }
}

TEST(SetProperty, AddsToTheSetThatIsThere) {
    for (const char* pSchema : g_families) {
        SCOPED_TRACE(pSchema);
        Model model = Model::fromBuffer(houseText(pSchema, g_sShared));
        const std::size_t iBefore = model.size();
        setProperty(model, model.byId(3), "S", "New", 2.5);
        EXPECT_EQ(model.size(), iBefore + 1);
        setProperty(model, model.byId(2), "S", "New", 1);
        EXPECT_EQ(model.size(), iBefore + 4);   // with a copy of the set that two share, and its relationship
        EXPECT_EQ(sValues(model, "New"), "- 1 2.5 - - - -");
        EXPECT_EQ(sValues(model), "old old old type - type type");
        EXPECT_EQ(psets(model.byId(2)).size(), 1U);
        EXPECT_EQ(sIds(Selector("S.New>0").select(model).elements), "#2 #3");
    }
}

// What is known of properties in several sets holds over changes of its own, and is asked again after others.
TEST(SetProperty, KnowsWhichPropertiesStandInSeveralSets) {
    for (const char* pSchema : g_families) {
        SCOPED_TRACE(pSchema);
        Model model = Model::fromBuffer(houseText(pSchema, g_sShared));
        const std::size_t iBefore = model.size();
        setProperty(model, model.byId(1), "S", "Q", 2.0);   // a copy of the set, which lists P too, and of Q
        EXPECT_EQ(model.size(), iBefore + 3);
        setProperty(model, model.byId(1), "S", "P", "a");   // P stands in three sets now
        EXPECT_EQ(model.size(), iBefore + 4);
        setProperty(model, model.byId(3), "S", "P", "c");
        EXPECT_EQ(model.size(), iBefore + 5);
        setProperty(model, model.byId(2), "S", "P", "b");   // and in one
        EXPECT_EQ(model.size(), iBefore + 5);
        EXPECT_EQ(sValues(model), "a b c type - type type");
        EXPECT_EQ(sValues(model, "Q"), "2 1 - - - - -");
        model.append(model.byId(20), "HasProperties", model.byId(12));   // Q in another set
        setProperty(model, model.byId(2), "S", "Q", 3.0);
        EXPECT_EQ(sValues(model, "Q"), "2 3 1 - - - -");
    }
}

TEST(SetProperty, TypesTheValue) {
    const struct {
        const char* sRule;
        NewValue value;
        const char* pType;
        const char* pText;
    } rows[] = {
        {"a text", "x", "IfcLabel", "x"},
        {"a long text", std::string(256, 'x'), "IfcText", nullptr},
        {"255 characters of two bytes",
         [] {
             std::string sText;
             for (int i = 0; i < 255; ++i) sText += "\xC3\xA4";
             return sText;
         }(),
         "IfcLabel", nullptr},
        {"a number", 2.5, "IfcReal", "2.5"},
        {"an integer", 7, "IfcInteger", "7"},
        {"a truth value", true, "IfcBoolean", "true"},
        {"a logical value", LogicalValue::Unknown, "IfcLogical", "unknown"},
        {"as asked", typed("IfcLengthMeasure", 2.0), "IfcLengthMeasure", "2"},
        {"none", nullptr, "IfcValue", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        Model model = Model::fromBuffer(houseText("IFC4", g_sShared));
        const Element made = setProperty(model, model.byId(5), "New", "P", row.value);
        EXPECT_EQ(made["NominalValue"].typeName(), row.pType);
        if (row.pText) {
            EXPECT_EQ(made["NominalValue"].toString(), row.pText);
        }
    }
    Model model = Model::fromBuffer(houseText("IFC4", g_sShared));
    EXPECT_EQ(setProperty(model, model.byId(5), "S", "L", {1, 2})["ListValues"].toString(), "(1,2)");
    EXPECT_EQ(setProperty(model, model.byId(5), "S", "L", 3)["ListValues"].toString(), "(3)");
    EXPECT_EQ(setProperty(model, model.byId(1), "S", "P", typed("IfcText", "x"))["NominalValue"].typeName(), "IfcText");
    EXPECT_EQ(setProperty(model, model.byId(1), "S", "Q", 3)["NominalValue"].typeName(), "IfcReal");
}

TEST(SetProperty, SetsQuantitiesAndAttributesOfSets) {
    for (const char* pSchema : g_families) {
        SCOPED_TRACE(pSchema);
        Model model = house(pSchema);
        // The complex quantity lists it as well, so that the set gets another one: the second time it is its own.
        const std::size_t iBefore = model.size();
        setProperty(model, model.byId(10), "Qto_WallBaseQuantities", "NetVolume", 1.5);
        EXPECT_EQ(model.size(), iBefore + 1);
        setProperty(model, model.byId(10), "Qto_WallBaseQuantities", "NetVolume", 3.5);
        EXPECT_EQ(property(model.byId(10), "Qto_WallBaseQuantities", "Length")->value.number(), 4000);
        EXPECT_EQ(property(model.byId(10), "Qto_WallBaseQuantities", "NetVolume")->value.number(), 3.5);
        EXPECT_EQ(property(model.byId(10), "Qto_WallBaseQuantities", "Layers.NetVolume")->value.number(), 2.5);
        EXPECT_EQ(model.size(), iBefore + 1);
        setProperty(model, model.byId(20), "Panel", "PanelDepth", 50.0);
        EXPECT_EQ(property(model.byId(11), "Panel", "PanelDepth")->value.number(), 50);
        EXPECT_EQ(setProperty(model, model.byId(20), "Kinds", "Enumerated", {"B"})["EnumerationValues"].toString(),
                  "(B)");
    }
}

TEST(SetProperty, RefusesWithNothingChanged) {
    Model model = house("IFC4");
    const Model other = house("IFC4");
    const std::size_t iBefore = model.size();
    const auto sSet = [&](std::uint64_t iId, const char* pSet, const char* pName, const NewValue& value) {
        return sThrown([&] { setProperty(model, model.byId(iId), pSet, pName, value); });
    };
    EXPECT_EQ(sSet(70, "S", "P", 1), "ValueError: IfcMaterial #70 is of a type that has no property sets");
    EXPECT_EQ(sSet(10, "", "P", 1), "ValueError: a property needs the name of its set and a name");
    EXPECT_EQ(sSet(10, "S", "", 1), "ValueError: a property needs the name of its set and a name");
    EXPECT_EQ(sSet(20, "Kinds", "Bounded", 1.0),
              "ValueError: IfcPropertyBoundedValue #56 does not hold one value, or a list of values, that can be set");
    EXPECT_EQ(sSet(20, "Kinds", "Complex.Inner", 1),
              "ValueError: IfcPropertySingleValue #61 is a part of a complex property; Model::set sets it");
    EXPECT_EQ(sSet(10, "Qto_WallBaseQuantities", "New", 1),
              "ValueError: IfcElementQuantity #63 has no \"New\", and takes no property");
    EXPECT_EQ(sSet(10, "Pset_WallCommon", "IsExternal", "yes").substr(0, 11), "ValueError:");
    EXPECT_EQ(sSet(10, "New", "P", model.byId(70)).substr(0, 11), "ValueError:");
    EXPECT_EQ(sThrown([&] { setProperty(model, other.byId(10), "S", "P", 1); }).substr(0, 12), "HandleError:");
    EXPECT_EQ(sSet(16, "\xFF", "P", 1).substr(0, 11), "ValueError:");
    EXPECT_EQ(model.size(), iBefore);
}

// What all that have it are given is changed where it is; what only some of them have is copied once for these.
TEST(SetProperty, SeveralShareWhatTheyCan) {
    const struct {
        const char* sRule;
        std::vector<std::uint64_t> ids;
        const char* pExpected;
        std::size_t iMore;   // elements than before
    } rows[] = {
        {"both that share a set, whose property another set has too", {1, 2}, "new new old type - type type", 1},
        {"all that have the property", {1, 2, 3}, "new new new type - type type", 1},
        {"two without a set, one with a type that says one", {4, 5}, "old old old new new type type", 6},
        {"two without a set and two with one", {2, 5, 3}, "old new new type new type type", 7},
        {"both types that share a set", {30, 34}, "old old old new - new new", 0},
        {"one of two that share a set", {2}, "old new old type - type type", 3},
        {"the same, named twice", {2, 2}, "old new old type - type type", 3},
        {"nobody", {}, "old old old type - type type", 0},
    };
    for (const char* pSchema : g_families)
        for (const auto& row : rows) {
            SCOPED_TRACE(std::string(pSchema) + ": " + row.sRule);
            Model model = Model::fromBuffer(houseText(pSchema, g_sShared));
            const std::size_t iBefore = model.size();
            std::vector<Element> elements;
            for (const std::uint64_t iId : row.ids) elements.push_back(model.byId(iId));
            for (int iTime = 0; iTime < 2; ++iTime) {
                setProperty(model, elements, "S", "P", "new");
                EXPECT_EQ(sValues(model), row.pExpected);
                EXPECT_EQ(model.size(), iBefore + row.iMore);
            }
        }
    // Those without a set have one in common, and lose it to nobody.
    Model model = Model::fromBuffer(houseText("IFC4", g_sShared));
    const std::vector<Element> walls{model.byId(1), model.byId(5)};
    setProperty(model, walls, "New", "P", 7);
    EXPECT_EQ(psets(walls[0]).back().element, psets(walls[1]).back().element);
    setProperty(model, walls[1], "New", "P", 8);
    EXPECT_EQ(property(walls[0], "New", "P")->value.toString(), "7");
    EXPECT_EQ(property(walls[1], "New", "P")->value.toString(), "8");
}

}   // namespace oxa::test
