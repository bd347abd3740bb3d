// SPDX-License-Identifier: Apache-2.0
// The short way in by its rules: create, set, remove, set properties; inverse lists right after each change; handles to
// what is gone.
#include <algorithm>
#include <initializer_list>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Model/Relations.h"
#include "Model/RuleThrown.h"
#include "Model/SetProperty.h"

namespace oxa::test {
namespace {

class RuleChange : public testing::TestWithParam<const char*> {};

Model reread(Model& model) {
    std::stringstream file;
    (void)model.save(file);
    return Model::open(file);
}

std::string sProperty(const Element& element, const char* pSet, const char* pName) {
    const std::optional<Property> found = property(element, pSet, pName);
    return found ? found->value.toString() : "(none)";
}

// ---- create ---------------------------------------------------------------------------------------------------------

TEST_P(RuleChange, WhatIsCreatedHasAFreeNumberAndAGlobalId) {
    Model model = ruleHouse(GetParam());
    const std::size_t iBefore = model.size();
    std::set<std::uint64_t> numbers;
    std::set<std::string> guids;
    for (const Element one : model.all()) numbers.insert(one.id());
    for (int i = 0; i < 100; ++i) {
        const Element door =
            model.create("ifcDOOR", {{"OwnerHistory", model.byId(5)}, {"Name", "N"}, {"overallwidth", 1.25}});
        EXPECT_TRUE(numbers.insert(door.id()).second) << "a number that another has: " << door.id();
        EXPECT_EQ(door.guid().size(), 22U);
        EXPECT_TRUE(guids.insert(door.guid()).second);
        EXPECT_EQ(model.byGuid(door.guid()), door);
        EXPECT_EQ(model.byId(door.id()), door);
    }
    EXPECT_EQ(model.size(), iBefore + 100);
    EXPECT_EQ(model.all("IfcDoor").size(), 103U);
    const Element point = model.create("IfcCartesianPoint", {{"Coordinates", {1.0, 2.0}}});
    EXPECT_EQ(point.guid(), "");
    EXPECT_EQ(model.create("IfcDoor", {{"GlobalId", "3aaaaaaaaaaaaaaaaaaaaa"}, {"OwnerHistory", model.byId(5)}}).guid(),
              "3aaaaaaaaaaaaaaaaaaaaa");

    const Model again = reread(model);
    EXPECT_TRUE(again.whole()) << "no number stands twice";
    EXPECT_EQ(again.size(), model.size());
    EXPECT_EQ(again.all("IfcDoor")[50].number("OverallWidth"), 1.25);
    EXPECT_EQ(again.byId(point.id()).get<std::vector<double>>("Coordinates"), (std::vector<double>{1.0, 2.0}));
}

TEST_P(RuleChange, EachKindOfValueComesBack) {
    Model model = ruleHouse(GetParam());
    const Element door = model.byId(40);
    model.set(door, "Name", "T\u00fcr 'x' \\ \U0001F3E0\n");
    model.set(door, "OverallWidth", 1);   // an integer where a number is wanted
    model.set(door, "Description", nullptr);
    model.set(model.byId(45), "PredefinedType", "rigid_frame");   // any case
    model.set(model.byId(80), "NominalValue", typed("IfcText", "text"));
    model.set(model.byId(81), "NominalValue", typed("IfcLogical", LogicalValue::Unknown));
    model.set(model.byId(82), "NominalValue", typed("IfcBoolean", true));
    model.set(model.byId(92), "NominalValue", typed("IfcInteger", -5));
    model.set(model.byId(20), "RefLatitude", {1, 2, 3});
    model.set(model.byId(54), "RelatedElements", {model.byId(34), model.byId(30)});
    model.append(model.byId(54), "RelatedElements", model.byId(31));
    model.set(model.byId(93), "EnumerationValues", {typed("IfcLabel", "A"), typed("IfcInteger", 3)});
    model.set(model.byId(89), "NominalValue", model.byId(83)["NominalValue"]);
    const Element unit =
        model.create("IfcSIUnit", {{"Dimensions", derived}, {"UnitType", "AREAUNIT"}, {"Name", "SQUARE_METRE"}});
    for (int i = 0; i < 2; ++i) {
        const Model read = i == 0 ? Model("IFC4") : reread(model);
        const Model& seen = i == 0 ? model : read;
        SCOPED_TRACE(i == 0 ? "in memory" : "saved and read");
        EXPECT_TRUE(seen.whole());
        EXPECT_EQ(seen.byId(40).text("Name"), "T\u00fcr 'x' \\ \U0001F3E0\n");
        EXPECT_EQ(seen.byId(40).number("OverallWidth"), 1.0);
        EXPECT_TRUE(seen.byId(40)["Description"].isNull());
        EXPECT_EQ(seen.byId(45).text("PredefinedType"), "RIGID_FRAME");
        EXPECT_EQ(seen.byId(80)["NominalValue"].typeName(), "IfcText");
        EXPECT_EQ(seen.byId(81).logical("NominalValue"), LogicalValue::Unknown);
        EXPECT_EQ(seen.byId(82).boolean("NominalValue"), true);
        EXPECT_EQ(seen.byId(92).integer("NominalValue"), -5);
        EXPECT_EQ(seen.byId(20).get<std::vector<std::int64_t>>("RefLatitude"), (std::vector<std::int64_t>{1, 2, 3}));
        EXPECT_EQ(sNumbers(seen.byId(54).elements("RelatedElements")), "34 30 31");
        EXPECT_EQ(seen.byId(93)["EnumerationValues"].items()[1].integer(), 3);
        EXPECT_EQ(seen.byId(89).number("NominalValue"), 0.24);
        EXPECT_EQ(seen.byId(89)["NominalValue"].typeName(), "IfcThermalTransmittanceMeasure");
        EXPECT_EQ(seen.byId(unit.id())["Dimensions"].kind(), Kind::Derived);
    }
}

// ---- inverse lists --------------------------------------------------------------------------------------------------

TEST_P(RuleChange, InverseListsAreRightAfterEachChange) {
    Model model = ruleHouse(GetParam());
    const Element wall = model.byId(34);
    const auto sIn = [&wall] { return sNumbers(wall.inverse("ContainedInStructure")); };
    const Element eg = model.byId(22);
    const Element og = model.byId(23);
    EXPECT_EQ(sIn(), "");

    model.append(model.byId(54), "RelatedElements", wall);
    EXPECT_EQ(sIn(), "54") << "append";
    EXPECT_EQ(storey(wall), eg);
    model.set(model.byId(54), "RelatedElements", {model.byId(30), model.byId(31), model.byId(45)});
    EXPECT_EQ(sIn(), "") << "a list without it";
    const Element relation =
        model.create("IfcRelContainedInSpatialStructure",
                     {{"OwnerHistory", model.byId(5)}, {"RelatedElements", {wall}}, {"RelatingStructure", og}});
    EXPECT_EQ(sIn(), std::to_string(relation.id())) << "create";
    EXPECT_EQ(storey(wall), og);
    EXPECT_EQ(sNumbers(og.inverse("ContainsElements")), "55 " + std::to_string(relation.id()));
    model.set(relation, "RelatingStructure", eg);
    EXPECT_EQ(sNumbers(og.inverse("ContainsElements")), "55") << "a reference to another";
    EXPECT_EQ(sNumbers(eg.inverse("ContainsElements")), "54 " + std::to_string(relation.id()));
    EXPECT_EQ(storey(wall), eg);
    model.remove(relation);
    EXPECT_EQ(sIn(), "") << "remove";
    EXPECT_EQ(sNumbers(eg.inverse("ContainsElements")), "54");
    EXPECT_FALSE(storey(wall));

    EXPECT_THROW(model.set(model.byId(54), "RelatedElements", {wall, model.byId(12)}), ValueError);
    EXPECT_EQ(sIn(), "") << "what is refused leaves nothing";
    EXPECT_EQ(sNumbers(model.byId(30).inverse("ContainedInStructure")), "54");
    EXPECT_THROW((void)model.create("IfcRelContainedInSpatialStructure",
                                    {{"RelatedElements", {wall}}, {"RelatingStructure", model.byId(12)}}),
                 ValueError);
    EXPECT_EQ(sIn(), "");
}

// ---- remove ---------------------------------------------------------------------------------------------------------

struct RemoveRow {
    const char* pRule;
    std::vector<std::uint64_t> ids;
    std::vector<std::uint64_t> gone;
    std::vector<std::uint64_t> there;
};
const RemoveRow g_removals[] = {
    {"out of lists, whose relationships stay", {31}, {31, 106}, {54, 71, 104, 119, 132}},
    {"a relationship with nothing left goes", {43}, {43, 56}, {24, 28}},
    {"all of a list, one after the other", {32, 33, 41}, {32, 33, 41, 55, 61, 73, 76, 91, 109, 120}, {23, 63}},
    {"a door out of its opening", {40}, {40, 52, 78, 123, 134, 145}, {50, 51, 63, 141}},
    {"a wall from its opening", {30}, {30, 51, 103}, {50, 52, 40, 54, 71, 119, 132, 141}},
    {"a storey with its relationships", {23}, {23, 55}, {32, 33, 41, 27}},
    {"a set of properties with its relationship", {70}, {70, 71}, {30, 31, 80}},
    {"a relationship alone", {54}, {54}, {22, 30, 31, 45}},
    {"a type", {62}, {62, 63}, {40, 41}},
};

TEST_P(RuleChange, WhatIsRemovedIsOutOfAllThatRefersToIt) {
    for (const RemoveRow& row : g_removals) {
        for (const bool boTogether : {false, true}) {
            SCOPED_TRACE(std::string(row.pRule) + (boTogether ? ", together" : ""));
            Model model = ruleHouse(GetParam());
            const std::size_t iBefore = model.size();
            std::size_t iCount = 0;
            if (boTogether && row.ids.size() > 1) {
                iCount = model.remove(model.byId(23).inverse("ContainsElements")[0].elements("RelatedElements")).count;
            } else {
                for (const std::uint64_t uId : row.ids) iCount += model.remove(model.byId(uId)).count;
            }
            EXPECT_EQ(iCount, row.gone.size());
            EXPECT_EQ(model.size(), iBefore - row.gone.size());
            const Model again = reread(model);
            for (const std::uint64_t uId : row.gone) {
                EXPECT_FALSE(model.byId(uId)) << uId;
                EXPECT_FALSE(again.byId(uId)) << uId;
            }
            for (const std::uint64_t uId : row.there) {
                EXPECT_TRUE(model.byId(uId)) << uId;
                EXPECT_TRUE(again.byId(uId)) << uId;
            }
            std::ostringstream out;
            (void)model.save(out);
            for (const std::uint64_t uId : row.gone) {
                const std::string sRef = "#" + std::to_string(uId);
                for (const char cBehind : {',', ')', '='})
                    EXPECT_EQ(out.str().find(sRef + cBehind), std::string::npos) << sRef;
            }
        }
    }
}

TEST_P(RuleChange, ARemovalTellsWhatIsIncompleteNow) {
    Model model = ruleHouse(GetParam());
    const Removed removed = model.remove(model.byId(11));   // the axes of the context
    EXPECT_EQ(removed.count, 1U);
    EXPECT_EQ(sNumbers(removed.incomplete), "10");
    EXPECT_TRUE(model.byId(10)["WorldCoordinateSystem"].isNull());
}

// ---- handles --------------------------------------------------------------------------------------------------------

struct HandleRow {
    const char* pRule;
    void (*work)(const Element&);
};
// clang-format off
const HandleRow g_handles[] = {
    {"type", [](const Element& e) { (void)e.type(); }},
    {"id", [](const Element& e) { (void)e.id(); }},
    {"guid", [](const Element& e) { (void)e.guid(); }},
    {"is", [](const Element& e) { (void)e.is("IfcDoor"); }},
    {"has", [](const Element& e) { (void)e.has("Name"); }},
    {"schema", [](const Element& e) { (void)e.schema(); }},
    {"[]", [](const Element& e) { (void)e["Name"]; }},
    {"attributes", [](const Element& e) { (void)e.attributes(); }},
    {"inverse", [](const Element& e) { (void)e.inverse("IsDefinedBy"); }},
    {"text", [](const Element& e) { (void)e.text("Name"); }},
    {"number", [](const Element& e) { (void)e.number("OverallWidth"); }},
    {"element", [](const Element& e) { (void)e.element("OwnerHistory"); }},
    {"get", [](const Element& e) { (void)e.get<double>("OverallWidth"); }},
    {"core", [](const Element& e) { (void)e.core(); }},
    {"type of it", [](const Element& e) { (void)type(e); }},
    {"parent", [](const Element& e) { (void)parent(e); }},
    {"container", [](const Element& e) { (void)container(e); }},
    {"storey", [](const Element& e) { (void)storey(e); }},
    {"building", [](const Element& e) { (void)building(e); }},
    {"parts", [](const Element& e) { (void)parts(e); }},
    {"contents", [](const Element& e) { (void)contents(e); }},
    {"groups", [](const Element& e) { (void)groups(e); }},
    {"psets", [](const Element& e) { (void)psets(e); }},
    {"quantities", [](const Element& e) { (void)quantities(e); }},
    {"property", [](const Element& e) { (void)property(e, "Pset_DoorCommon", "FireRating"); }},
    {"materials", [](const Element& e) { (void)materials(e); }},
    {"classifications", [](const Element& e) { (void)classifications(e); }},
};
// clang-format on

void vDead(const Element& element, const std::vector<const char*>& told) {
    EXPECT_FALSE(element);
    for (const HandleRow& row : g_handles) {
        SCOPED_TRACE(row.pRule);
        EXPECT_TRUE(boTells(sThrown<HandleError>([&] { row.work(element); }), told));
    }
}

TEST_P(RuleChange, AHandleToWhatIsGoneSaysSo) {
    Model model = ruleHouse(GetParam());
    const Element door = model.byId(40);
    const Value name = door["Name"];
    const Elements doors = model.all("IfcDoor");
    model.remove(door);
    vDead(door, {"IfcDoor #40", "removed"});
    EXPECT_THROW((void)name.text(), HandleError);
    EXPECT_THROW((void)name.kind(), HandleError);
    EXPECT_FALSE(doors[0]);
    EXPECT_TRUE(doors[1]);
    EXPECT_EQ(sNumbers(model.all("IfcDoor")), "41 42");
    EXPECT_THROW(model.set(door, "Name", "x"), HandleError);
    EXPECT_THROW(model.set(model.byId(63), "RelatedObjects", {door}), HandleError);
    EXPECT_THROW(model.append(model.byId(63), "RelatedObjects", door), HandleError);
    EXPECT_THROW((void)model.create("IfcRelDefinesByType", {{"RelatedObjects", {door}}}), HandleError);
    EXPECT_THROW((void)model.remove(door), HandleError);
    EXPECT_THROW((void)setProperty(model, door, "Pset_DoorCommon", "FireRating", "x"), HandleError);
    for (int i = 0; i < 1000; ++i) (void)model.create("IfcDoor");
    vDead(door, {"IfcDoor #40", "removed"});
}

TEST_P(RuleChange, AHandleOfAModelThatIsGoneSaysSo) {
    Element destroyed;
    Value value;
    Elements several;
    {
        const Model model = ruleHouse(GetParam());
        destroyed = model.byId(40);
        value = destroyed["Name"];
        several = model.all("IfcDoor");
    }
    vDead(destroyed, {});
    EXPECT_THROW((void)value.text(), HandleError);
    EXPECT_THROW((void)value.toString(), HandleError);
    EXPECT_FALSE(several[0]);
    EXPECT_THROW((void)several.front().id(), HandleError);
    {
        std::vector<Model> others;
        for (int i = 0; i < 5; ++i) others.push_back(ruleHouse(GetParam()));
        vDead(destroyed, {});
        EXPECT_NE(destroyed, others[0].byId(40));
    }

    Model model = ruleHouse(GetParam());
    const Element before = model.byId(40);
    model = ruleHouse(GetParam());
    vDead(before, {});
    const Element moved = model.byId(40);
    const Model target = std::move(model);
    EXPECT_EQ(moved.text("Name"), "D1") << "handles go with a model that is moved";
    EXPECT_EQ(target.byId(40), moved);
    vDead(Element(), {});
}

TEST_P(RuleChange, AnElementOfAnotherModelIsRefused) {
    Model model = ruleHouse(GetParam());
    const Model other = ruleHouse(GetParam());
    const Element stranger = other.byId(40);
    EXPECT_NE(stranger, model.byId(40));
    EXPECT_THROW(model.set(stranger, "Name", "x"), HandleError);
    EXPECT_THROW(model.set(model.byId(63), "RelatedObjects", {stranger}), HandleError);
    EXPECT_THROW(model.append(model.byId(63), "RelatedObjects", stranger), HandleError);
    EXPECT_THROW((void)model.create("IfcRelDefinesByType", {{"RelatingType", other.byId(62)}}), HandleError);
    EXPECT_THROW((void)model.remove(stranger), HandleError);
    EXPECT_THROW((void)model.remove(other.all("IfcDoor")), HandleError);
    EXPECT_THROW((void)setProperty(model, stranger, "Pset_DoorCommon", "FireRating", "x"), HandleError);
    EXPECT_EQ(other.byId(40).text("Name"), "D1");
    EXPECT_EQ(sNumbers(model.all("IfcDoor")), "40 41 42");
}

// ---- properties -----------------------------------------------------------------------------------------------------

struct SetRow {
    const char* pRule;
    std::uint64_t uElement;
    const char* pSet;
    const char* pName;
    NewValue value;
    const char* pExpected;   // of the element
    const char* pType;       // of the value
    std::uint64_t uOther;    // another element, whose property stays
    const char* pUnchanged;
};

std::vector<SetRow> setRows() {
    return {
        {"in a set that others have", 30, "Pset_WallCommon", "FireRating", "F 120", "F 120", "IfcLabel", 31, "F 90"},
        {"truth in a set that others have", 31, "Pset_WallCommon", "IsExternal", false, "false", "IfcBoolean", 30,
         "true"},
        {"a number there", 30, "Pset_WallCommon", "ThermalTransmittance", 0.5, "0.5", "IfcThermalTransmittanceMeasure",
         31, "0.24"},
        {"new in a set that others have", 30, "Pset_WallCommon", "AcousticRating", "55 dB", "55 dB", "IfcLabel", 31,
         "(none)"},
        {"in a set of its own", 32, "Pset_WallCommon", "FireRating", "F 45", "F 45", "IfcLabel", 30, "F 90"},
        {"which its type has", 33, "Pset_WallCommon", "FireRating", "F 180", "F 180", "IfcLabel", 60, "F 60"},
        {"where there is none", 34, "Pset_WallCommon", "FireRating", "F 30", "F 30", "IfcLabel", 30, "F 90"},
        {"in a new set", 30, "My own", "Colour", "red", "red", "IfcLabel", 31, "(none)"},
        {"a new number", 34, "My own", "Size", 1.5, "1.5", "IfcReal", 30, "(none)"},
        {"a new integer", 34, "My own", "Count", 3, "3", "IfcInteger", 30, "(none)"},
        {"a new truth", 34, "My own", "Flag", true, "true", "IfcBoolean", 30, "(none)"},
        {"with a type", 34, "My own", "Width", typed("IfcLengthMeasure", 0.25), "0.25", "IfcLengthMeasure", 30,
         "(none)"},
        {"another type", 30, "Pset_WallCommon", "FireRating", typed("IfcText", "x"), "x", "IfcText", 31, "F 90"},
        {"of a type object", 60, "Pset_WallCommon", "FireRating", "F 15", "F 15", "IfcLabel", 30, "F 90"},
        {"a type object without sets", 62, "Pset_DoorCommon", "FireRating", "T 90", "T 90", "IfcLabel", 40, "T 30"},
        {"a quantity", 31, "Qto_WallBaseQuantities", "NetVolume", 9.5, "9.5", "IfcVolumeMeasure", 30, "2.5"},
        {"letters beyond ASCII", 34, "Gr\u00f6\u00dfe", "H\u00f6he", "\u00fc", "\u00fc", "IfcLabel", 30, "(none)"},
    };
}

TEST_P(RuleChange, APropertyIsSetForOneElementAlone) {
    for (const SetRow& row : setRows()) {
        SCOPED_TRACE(row.pRule);
        Model model = ruleHouse(GetParam());
        const Element element = model.byId(row.uElement);
        const Element holder = setProperty(model, element, row.pSet, row.pName, row.value);
        EXPECT_TRUE(holder);
        const std::size_t iOnce = model.size();
        for (int i = 0; i < 2; ++i) {
            const Model read = i == 0 ? Model("IFC4") : reread(model);
            const Model& seen = i == 0 ? model : read;
            SCOPED_TRACE(i == 0 ? "in memory" : "saved and read");
            EXPECT_TRUE(seen.whole());
            const std::optional<Property> found = property(seen.byId(row.uElement), row.pSet, row.pName);
            ASSERT_TRUE(found);
            EXPECT_EQ(found->value.toString(), row.pExpected);
            EXPECT_EQ(found->value.typeName(), row.pType);
            EXPECT_EQ(found->source, Source::Instance);
            EXPECT_EQ(sProperty(seen.byId(row.uOther), row.pSet, row.pName), row.pUnchanged);
        }
        EXPECT_EQ(sProperty(model.byId(30), "Qto_WallBaseQuantities", "Length"), "4.5");
        EXPECT_EQ(sProperty(model.byId(33), "Pset_WallCommon", "Reference"), "R-60") << "the type's others stay";

        const std::string sBefore = [&model] {
            std::ostringstream out;
            (void)model.save(out);
            return out.str().substr(out.str().find("DATA;"));
        }();
        (void)setProperty(model, element, row.pSet, row.pName, row.value);
        EXPECT_EQ(model.size(), iOnce) << "twice is once";
        std::ostringstream out;
        (void)model.save(out);
        EXPECT_EQ(out.str().substr(out.str().find("DATA;")), sBefore);
    }
}

TEST_P(RuleChange, ASharedSetIsCopiedWithAllThatItHas) {
    Model model = ruleHouse(GetParam());
    (void)setProperty(model, model.byId(30), "Pset_WallCommon", "FireRating", "F 120");
    for (const std::uint64_t uWall : {30U, 31U}) {
        SCOPED_TRACE(uWall);
        const Element wall = model.byId(uWall);
        EXPECT_EQ(sProperty(wall, "Pset_WallCommon", "FireRating"), uWall == 30 ? "F 120" : "F 90");
        EXPECT_EQ(sProperty(wall, "Pset_WallCommon", "IsExternal"), "true");
        EXPECT_EQ(sProperty(wall, "Pset_WallCommon", "LoadBearing"), "false");
        EXPECT_EQ(sProperty(wall, "Pset_WallCommon", "ThermalTransmittance"), "0.24");
        EXPECT_EQ(psets(wall).size(), 1U);
        EXPECT_EQ(psets(wall)[0].properties.size(), 4U);
    }
    EXPECT_NE(psets(model.byId(30))[0].element, psets(model.byId(31))[0].element);
    EXPECT_NE(psets(model.byId(30))[0].element.guid(), psets(model.byId(31))[0].element.guid());
    EXPECT_EQ(sNumbers(model.byId(71).elements("RelatedObjects")), "31");
    EXPECT_EQ(model.byId(31).inverse("IsDefinedBy").size(), 2U) << "its set and its quantities";
    EXPECT_EQ(model.byId(30).inverse("IsDefinedBy").size(), 2U);
}

// One property in the sets of two walls.
TEST_P(RuleChange, ASharedPropertyIsCopiedToo) {
    Model model = ruleHouse(GetParam());
    model.append(model.byId(72), "HasProperties", model.byId(83));   // of #32, and of the set of #30 and #31
    (void)setProperty(model, model.byId(32), "Pset_WallCommon", "ThermalTransmittance", 0.75);
    EXPECT_EQ(sProperty(model.byId(32), "Pset_WallCommon", "ThermalTransmittance"), "0.75");
    EXPECT_EQ(sProperty(model.byId(30), "Pset_WallCommon", "ThermalTransmittance"), "0.24");
    EXPECT_EQ(sProperty(model.byId(32), "Pset_WallCommon", "FireRating"), "F 30");
}

TEST_P(RuleChange, ListsAndNoValue) {
    Model model = ruleHouse(GetParam());
    (void)setProperty(model, model.byId(34), "My own", "Sizes", {1.5, 2.5});
    EXPECT_EQ(property(model.byId(34), "My own", "Sizes")->kind, PropertyKind::List);
    EXPECT_EQ(property(model.byId(34), "My own", "Sizes")->value.size(), 2U);
    (void)setProperty(model, model.byId(30), "Pset_WallCommon", "FireRating", nullptr);
    const std::optional<Property> none = property(model.byId(30), "Pset_WallCommon", "FireRating");
    ASSERT_TRUE(none) << "it is there, without a value";
    EXPECT_TRUE(none->value.isNull());
    EXPECT_EQ(sProperty(model.byId(31), "Pset_WallCommon", "FireRating"), "F 90");
    EXPECT_TRUE(reread(model).whole());
}

TEST_P(RuleChange, WhatCannotBeSetIsAnExceptionAndChangesNothing) {
    const struct {
        const char* pRule;
        std::uint64_t uElement;
        const char* pSet;
        const char* pName;
        NewValue value;
        std::vector<const char*> told;
    } rows[] = {
        {"no name of a set", 30, "", "FireRating", "x", {}},
        {"no name of a property", 30, "Pset_WallCommon", "", "x", {}},
        {"an element without sets", 12, "Pset_WallCommon", "FireRating", "x", {"IfcCartesianPoint"}},
        {"a text for a number", 30, "Pset_WallCommon", "ThermalTransmittance", "thin", {"number", "text"}},
        {"a text for truth", 30, "Pset_WallCommon", "IsExternal", "yes", {"text"}},
        {"no UTF-8", 30, "Pset_WallCommon", "FireRating", "\xC3(", {"UTF-8"}},
        {"a bounded one", 32, "My set", "Bound", 1.5, {"Bound"}},
        {"a table", 32, "My set", "Table", 1.5, {"Table"}},
        {"a complex one", 32, "My set", "Cx", "x", {"#97"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pRule);
        Model model = ruleHouse(GetParam());
        std::ostringstream before;
        (void)model.save(before);
        EXPECT_TRUE(boTells(sThrown<ValueError>([&] {
                                (void)setProperty(model, model.byId(row.uElement), row.pSet, row.pName, row.value);
                            }),
                            row.told));
        std::ostringstream after;
        (void)model.save(after);
        EXPECT_EQ(after.str().substr(after.str().find("DATA;")), before.str().substr(before.str().find("DATA;")));
    }
}

INSTANTIATE_TEST_SUITE_P(Schemas, RuleChange, testing::ValuesIn(g_ruleSchemas),
                         [](const auto& one) { return std::string(one.param); });

}   // namespace
}   // namespace oxa::test
