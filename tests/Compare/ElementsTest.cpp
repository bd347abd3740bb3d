// SPDX-License-Identifier: Apache-2.0
// Differences by element, in three schema families; how they read is told where the program is tested.

#include "Compare/Elements.h"

#include <stop_token>
#include <string>

#include <gtest/gtest.h>

#include "Model/Error.h"
#include "Model/HouseText.h"
#include "Model/SetProperty.h"

namespace oxa::compare {
namespace {

// "South Pset_WallCommon.FireRating: F 90 -> F 30; " of each element, then how many entities are told apart.
std::string sTold(oxa::Model& before, oxa::Model& after, const Selector* pOnly = nullptr) {
    ElementOptions options;
    options.pOnly = pOnly;
    const ElementResult result = elementDifferences({before, "A"}, {after, "A"}, options);
    std::string sText;
    for (const ElementName& one : result.removed) sText += "- " + one.sName + "; ";
    for (const ElementName& one : result.added) sText += "+ " + one.sName + "; ";
    for (const ElementChange& change : result.changed)
        for (const ElementDifference& one : change.differences)
            sText += change.after.sName + ' ' + one.sWhat + ": " + one.sOld.value_or("-") + " -> " +
                     one.sNew.value_or("-") + "; ";
    const std::size_t iOthers =
        result.others.removed.size() + result.others.added.size() + result.others.changed.size();
    return sText + std::to_string(iOthers);
}

struct ElementRow {
    const char* pRule;
    void (*change)(oxa::Model& model);
    const char* pTold;
};
const ElementRow g_rows[] = {
    {"nothing", [](oxa::Model&) {}, "0"},
    {"an attribute", [](oxa::Model& model) { model.set(model.byId(16), "Tag", "t"); }, "Loose Tag: - -> t; 0"},
    {"a property of its own",
     [](oxa::Model& model) { setProperty(model, model.byId(10), "Pset_WallCommon", "FireRating", "F 30"); },
     "South Pset_WallCommon.FireRating: F 90 -> F 30; 0"},
    {"one that is made for it", [](oxa::Model& model) { setProperty(model, model.byId(16), "New", "P", 7); },
     "Loose New.P: - -> 7; 0"},
    {"the storey", [](oxa::Model& model) { model.set(model.byId(33), "RelatingStructure", model.byId(5)); },
     "South storey: EG -> OG; 0"},
    {"the type",
     [](oxa::Model& model) {
         model.set(model.byId(21), "RelatedObjects", {model.byId(10), model.byId(11), model.byId(16)});
     },
     nullptr},
    {"a removed element takes its relationships along",
     [](oxa::Model& model) { static_cast<void>(model.remove(model.byId(15))); }, "- Bar; 0"},
};

TEST(Elements, TellWhatChangedAboutThem) {
    for (const char* pSchema : test::g_families)
        for (const ElementRow& row : g_rows) {
            SCOPED_TRACE(std::string(pSchema) + ": " + row.pRule);
            const std::string sHouse = test::houseText(pSchema, test::g_sHouse);
            oxa::Model before = oxa::Model::fromBuffer(sHouse);
            oxa::Model after = oxa::Model::fromBuffer(sHouse);
            row.change(after);
            const std::string sFound = sTold(before, after);
            if (row.pTold) {
                EXPECT_EQ(sFound, row.pTold);
            } else {
                EXPECT_EQ(sFound.find("Loose type: - -> WT; "), 0U) << sFound;
                EXPECT_TRUE(sFound.ends_with("; 0")) << sFound;
            }
            const Selector others("IfcDoor");
            EXPECT_EQ(sTold(before, after, &others), "0");
        }
}

TEST(Elements, ComparisonEndsWhereItIsAskedTo) {
    oxa::Model model = oxa::Model::fromBuffer(test::houseText("IFC4", test::g_sHouse));
    std::stop_source stop;
    stop.request_stop();
    ElementOptions options;
    options.stop = stop.get_token();
    EXPECT_THROW(static_cast<void>(elementDifferences({model}, {model}, options)), Stopped);
}

}   // namespace
}   // namespace oxa::compare
