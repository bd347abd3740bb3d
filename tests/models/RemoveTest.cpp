// SPDX-License-Identifier: Apache-2.0
// Removal of entities from a real file: what is written afterwards names nothing that is gone.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "Format/Ifc/ModelText.h"
#include "models/ModelFiles.h"

namespace oxa::ifc::models {
namespace {

using def::schema::ObjectName;

constexpr char g_sModel[] = "revit2011-duplex-architecture.ifc";

std::map<std::string, std::size_t> countsOf(const Data& data) {
    std::map<std::string, std::size_t> counts;
    for (const Entity* pEntity : data.entities()) ++counts[pEntity->schemaEntity().sNameUpper];
    return counts;
}

// The inverse lists, as they are and as they are once they are built anew.
void vExpectInverseListsFit(const Data& data) {
    const ModelText before = modelText(data);
    for (Entity* pEntity : data.entities()) pEntity->attributeInverseClear();
    for (Entity* pEntity : data.entities()) pEntity->vAttributeInverseInit(const_cast<Data&>(data));
    EXPECT_TRUE(modelText(data) == before);
}

TEST(RemoveFromModel, AllDoors) {
    const std::string text = sContent(g_sModel);
    if (text.empty()) GTEST_SKIP() << "no " << g_sModel << ": set OXAIFC_MODELS to the folder that has it";
    ReadFileModel model(text, true, {});
    ASSERT_TRUE(model.boRead);
    Data& data = model.file.data();
    std::map<std::string, std::size_t> expected = countsOf(data);
    const auto [first, last] = data.range(ObjectName("IFCDOOR"), true);
    const std::vector<Entity*> doors(first, last);
    ASSERT_EQ(doors.size(), 14U);

    const EntityRemoval removal = data.entitiesRemove(doors);
    ASSERT_GE(removal.removed.size(), doors.size());
    EXPECT_TRUE(std::equal(doors.begin(), doors.end(), removal.removed.begin()));
    EXPECT_TRUE(removal.incomplete.empty());
    for (const Entity* pEntity : removal.removed) --expected[pEntity->schemaEntity().sNameUpper];
    for (const auto& [sKeyword, iCount] : expected) {
        const auto [begin, end] = data.range(ObjectName(sKeyword), false);
        EXPECT_EQ(static_cast<std::size_t>(end - begin), iCount) << sKeyword;
    }
    std::map<std::string, std::size_t> gone;
    for (const Entity* pEntity : removal.removed) ++gone[pEntity->schemaEntity().sNameUpper];
    for (const auto& [sKeyword, iCount] : gone)
        EXPECT_TRUE(sKeyword == "IFCDOOR" || sKeyword.starts_with("IFCREL")) << sKeyword;
    EXPECT_EQ(gone["IFCRELFILLSELEMENT"], 14U) << "the openings stay";
    vExpectInverseListsFit(data);

    std::ostringstream out;
    io::WriteError errors;
    ASSERT_TRUE(model.file.boWrite(out, errors, {}, true));
    EXPECT_EQ(out.str().find("=IFCDOOR("), std::string::npos);
    const ReadFileModel again(out.str(), true, {});
    EXPECT_TRUE(again.boRead);
    EXPECT_FALSE(boHasKey(again.errors, "Error_MissingEntityWithId"));
    EXPECT_TRUE(again.errors.records().empty());
    const auto [firstAgain, lastAgain] = again.file.data().range(ObjectName("IFCDOOR"), true);
    EXPECT_EQ(firstAgain, lastAgain);
    std::map<std::string, std::size_t> written = countsOf(again.file.data());
    EXPECT_EQ(written["IFCOPENINGELEMENT"], expected["IFCOPENINGELEMENT"]);
    EXPECT_EQ(written["IFCWALLSTANDARDCASE"], expected["IFCWALLSTANDARDCASE"]);
}

// Whatever is removed from whatever model: nothing that stays names it.
TEST(RemoveFromModel, AnyTypeLeavesNoReferenceBehind) {
    const std::string text = sContent(g_sModel);
    if (text.empty()) GTEST_SKIP() << "no " << g_sModel << ": set OXAIFC_MODELS to the folder that has it";
    for (const char* sKeyword :
         {"IFCWALLSTANDARDCASE", "IFCSHAPEREPRESENTATION", "IFCOWNERHISTORY", "IFCCARTESIANPOINT"}) {
        SCOPED_TRACE(sKeyword);
        ReadFileModel model(text, true, {});
        Data& data = model.file.data();
        const auto [first, last] = data.range(ObjectName(sKeyword), true);
        ASSERT_NE(first, last);
        const def::schema::Entity* pObject = data.pEntitySchemaFromName(ObjectName("IFCOBJECTDEFINITION"));
        const EntityRemoval removal = data.entitiesRemove({first, last});
        for (const Entity* pEntity : removal.removed)
            EXPECT_TRUE(pEntity->schemaEntity().sNameUpper == sKeyword || !pEntity->boIsCompatible(pObject))
                << pEntity->sWriteLine(data);
        vExpectInverseListsFit(data);
        std::ostringstream out;
        io::WriteError errors;
        data.boWrite(out, errors, true);
        const ReadFileModel again("ISO-10303-21;\n" + model.file.header().writeToString() + "DATA;\n" + out.str() +
                                      "ENDSEC;\nEND-ISO-10303-21;\n",
                                  true, {});
        EXPECT_TRUE(again.boRead);
        EXPECT_FALSE(boHasKey(again.errors, "Error_MissingEntityWithId"));
        EXPECT_EQ(again.file.data().entities().size(), data.entities().size());
    }
}

}   // namespace
}   // namespace oxa::ifc::models
