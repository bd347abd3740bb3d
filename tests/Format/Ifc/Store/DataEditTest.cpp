// SPDX-License-Identifier: Apache-2.0
// What keeps list, GUID map and project right when callers make and remove entities.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Format/Ifc/AssertLog.h"
#include "Format/Ifc/IfcMissingType.h"
#include "Format/Ifc/SmallModel.h"
#include "platform/Utilities.h"

namespace oxa::ifc {
namespace {

using def::schema::AttributeName;
using def::schema::ObjectName;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr AttributeName g_globalId("GlobalId");

Guid guidOf(std::size_t iNumber) { return IfcGuid::fromIfcGuid(sGuidOf(iNumber)).value(); }

// A data that a caller fills.
struct EditData : Data {
    using Data::vGuidUpdate;

    EditData() { vSchemaSet(&smallSchema()); }
    Entity& made(const char* sKeyword) { return *pEntityCreate(ObjectName(sKeyword)); }
    Entity& made(const char* sKeyword, std::size_t iGuid) {
        Entity& entity = made(sKeyword);
        EXPECT_TRUE(entity.boValueSet(g_globalId, guidOf(iGuid), *this));
        return entity;
    }
};

TEST(GuidSet, MovesTheEntityInTheMap) {
    EditData data;
    Entity& first = data.made("IFCELEMENT", 1);
    Entity& second = data.made("IFCELEMENT", 2);
    EXPECT_TRUE(data.boGuidSet(first, guidOf(3)));
    EXPECT_EQ(data.pEntityFromGuid(guidOf(3)), &first);
    EXPECT_EQ(data.pEntityFromGuid(guidOf(1)), nullptr);
    EXPECT_TRUE(data.boGuidSet(second, guidOf(1))) << "nobody has it any more";
    EXPECT_EQ(data.pEntityFromGuid(guidOf(1)), &second);
    EXPECT_TRUE(data.boGuidSet(first, guidOf(3))) << "it has it already";

    Entity& without = data.made("IFCELEMENT");
    EXPECT_TRUE(data.boGuidSet(without, guidOf(4)));
    EXPECT_EQ(data.pEntityFromGuid(guidOf(4)), &without);
    EXPECT_EQ(data.guidEntityMap().size(), 3U);
}

TEST(GuidSet, RefusesWhatCanBeFoundByNobody) {
    EditData data;
    Entity& first = data.made("IFCELEMENT", 1);
    Entity& second = data.made("IFCELEMENT", 2);
    EXPECT_FALSE(data.boGuidSet(first, guidOf(2)));
    EXPECT_FALSE(data.boGuidSet(first, Guid{}));
    EXPECT_FALSE(data.boGuidSet(data.made("IFCPOINT"), guidOf(3))) << "not rooted";
    EXPECT_EQ(data.pEntityFromGuid(guidOf(1)), &first);
    EXPECT_EQ(data.pEntityFromGuid(guidOf(2)), &second);
    EXPECT_EQ(data.pEntityFromGuid(guidOf(3)), nullptr);
}

TEST(EntityDelete, TakesTheEntityOutOfTheListAndTheMap) {
    EditData data;
    Entity& first = data.made("IFCELEMENT", 1);
    Entity& second = data.made("IFCELEMENT", 2);
    Entity& third = data.made("IFCELEMENT", 3);
    Entity& point = data.made("IFCPOINT");
    ASSERT_EQ(data.pEntityFromGuid(guidOf(2)), &second);

    EXPECT_TRUE(data.boEntityDelete(&second));
    EXPECT_THAT(data.entities(), testing::UnorderedElementsAre(&first, &third, &point));
    const auto [begin, end] = data.range(ObjectName("IFCELEMENT"), false);
    EXPECT_THAT(std::vector<Entity*>(begin, end), ElementsAre(&first, &third)) << "the others keep their order";
    EXPECT_EQ(data.pEntityFromGuid(guidOf(2)), nullptr);
    EXPECT_EQ(data.pEntityFromGuid(guidOf(1)), &first);
    EXPECT_EQ(second.sWriteLine(data), "#1=IFCELEMENT('" + sGuidOf(2) + "',$,$,$);") << "it stays usable";

    EXPECT_FALSE(data.boEntityDelete(&second)) << "it is not there any more";
    EXPECT_TRUE(data.boEntityDelete(&point));
    EXPECT_THAT(data.entities(), ElementsAre(&first, &third));
}

TEST(EntityDelete, RefusesWhatIsNotThere) {
    EditData data;
    EditData other;
    Entity& here = data.made("IFCELEMENT", 1);
    Entity& stranger = other.made("IFCELEMENT", 1);
    EXPECT_FALSE(data.boEntityDelete(nullptr));
    EXPECT_FALSE(data.boEntityDelete(&stranger));
    EXPECT_THAT(data.entities(), ElementsAre(&here));
    EXPECT_EQ(data.pEntityFromGuid(guidOf(1)), &here);

    Data withoutSchema;
    EXPECT_FALSE(withoutSchema.boEntityDelete(&here));
    Entity empty;
    try {
        static_cast<void>(data.boEntityDelete(&empty));
        FAIL() << "an entity without a schema";
    } catch (const MissingType& fault) {
        EXPECT_STREQ(fault.what(), "returning nullptr");
    }
}

TEST(EntityDelete, LooksForExactlyItsType) {
    EditData data;
    std::vector<Entity*> points;
    for (int i = 0; i < 100; ++i) {
        data.made("IFCELEMENT", static_cast<std::size_t>(i) + 1);
        points.push_back(&data.made("IFCPOINT"));
        data.made("IFCPROPERTY");
    }
    for (std::size_t i = 0; i < points.size(); i += 2) EXPECT_TRUE(data.boEntityDelete(points[i]));
    EXPECT_EQ(data.entities().size(), 250U);
    const auto [begin, end] = data.range(ObjectName("IFCPOINT"), false);
    ASSERT_EQ(end - begin, 50);
    for (std::size_t i = 0; i < 50; ++i) EXPECT_EQ(begin[static_cast<std::ptrdiff_t>(i)], points[2 * i + 1]);
}

// The present schema need not be the one that an entity is of.
TEST(EntityDelete, GoesByTheEntitysOwnType) {
    const std::pair<const char*, const char*> rows[] = {
        {"lacks the type", "ENTITY IfcFirst; END_ENTITY;"},
        {"has it elsewhere", "ENTITY IfcA; END_ENTITY; ENTITY IfcB; END_ENTITY; ENTITY IfcElement; END_ENTITY;"},
    };
    for (const auto& [sRule, sSchema] : rows) {
        SCOPED_TRACE(sRule);
        EditData data;
        Entity& removed = data.made("IFCELEMENT", 1);
        Entity& other = data.made("IFCELEMENT", 2);
        Entity& point = data.made("IFCPOINT");
        const auto pSchema = pSchemaOf(sSchema);
        data.vSchemaSet(pSchema.get());
        EXPECT_TRUE(data.boEntityDelete(&removed));
        EXPECT_FALSE(data.boEntityDelete(&removed));
        EXPECT_THAT(data.entities(), testing::UnorderedElementsAre(&other, &point));
        EXPECT_EQ(data.pEntityFromGuid(guidOf(1)), nullptr);
        EXPECT_EQ(data.pEntityFromGuid(guidOf(2)), &other);
        data.vSchemaSet(nullptr);
        EXPECT_FALSE(data.boEntityDelete(&other)) << "without a schema nothing is found";
        EXPECT_EQ(data.entities().size(), 2U);
    }
}

TEST(EntityDelete, EntersPendingGuidsFirst) {
    EditData data;
    Entity& removed = data.made("IFCELEMENT", 1);
    Entity& other = data.made("IFCELEMENT", 2);
    ASSERT_THAT(data.guidEntityMap(), IsEmpty()) << "both are pending";
    EXPECT_TRUE(data.boEntityDelete(&removed));
    EXPECT_EQ(data.guidEntityMap().size(), 1U);
    EXPECT_EQ(data.guidEntityMap().pFind(guidOf(2)), &other);
}

TEST(EntityDelete, LeavesTheMapAloneWithoutAGuid) {
    EditData data;
    data.made("IFCELEMENT", 1);
    Entity& unset = data.made("IFCELEMENT");
    EXPECT_TRUE(data.boEntityDelete(&unset));
    EXPECT_EQ(data.guidEntityMap().size(), 1U);
}

// A GlobalId of a type that is not rooted is an attribute like any other.
const char* const g_looseGlobalId = "TYPE IfcGloballyUniqueId = STRING(22) FIXED; END_TYPE;"
                                    "ENTITY IfcRoot; GlobalId : IfcGloballyUniqueId; END_ENTITY;"
                                    "ENTITY IfcLoose; GlobalId : IfcGloballyUniqueId; END_ENTITY;";

TEST(EntityDelete, LeavesTheMapAloneForATypeThatIsNotRooted) {
    const auto pSchema = pSchemaOf(g_looseGlobalId);
    Data data;
    data.vSchemaSet(pSchema.get());
    Entity* const pRoot = data.pEntityCreate(ObjectName("IFCROOT"));
    Entity* const pLoose = data.pEntityCreate(ObjectName("IFCLOOSE"));
    for (Entity* pEntity : {pRoot, pLoose}) EXPECT_TRUE(pEntity->boValueSet(g_globalId, guidOf(1), data));
    EXPECT_EQ(data.pEntityFromGuid(guidOf(1)), pRoot);
    EXPECT_TRUE(data.boEntityDelete(pLoose));
    EXPECT_EQ(data.pEntityFromGuid(guidOf(1)), pRoot);
}

TEST(GuidUpdate, EntersNoTypeThatIsNotRooted) {
    const auto pSchema = pSchemaOf(g_looseGlobalId);
    Data data;
    data.vSchemaSet(pSchema.get());
    Entity* const pLoose = data.pEntityCreate(ObjectName("IFCLOOSE"));
    EXPECT_TRUE(pLoose->boValueSet(g_globalId, guidOf(1), data));
    EXPECT_EQ(data.pEntityFromGuid(guidOf(1)), nullptr);
}

TEST(EntityDelete, ForgetsTheProject) {
    EditData data;
    Entity& project = data.made("IFCPROJECT", 1);
    Entity& second = data.made("IFCPROJECT", 2);
    ASSERT_EQ(data.pProject(), &project);
    EXPECT_TRUE(data.boEntityDelete(&second));
    EXPECT_EQ(data.pProject(), &project);
    EXPECT_TRUE(data.boEntityDelete(&project));
    EXPECT_EQ(data.pProject(), nullptr);
}

TEST(EntityDelete, KeepsNumbersAndReferences) {
    ReadFileModel model(sFileOf("#7=IFCPROPERTY('a',#9,(),$);#9=IFCPOINT((1.));"), true, schemaIs(smallSchema()));
    Data& data = model.file.data();
    Entity* pPoint = data.pEntityFromId(9);
    EXPECT_TRUE(data.boEntityDelete(pPoint));
    EXPECT_EQ(data.pEntityFromId(9), pPoint);
    EXPECT_EQ(data.pEntityFromId(7)->sWriteLine(data), "#7=IFCPROPERTY('a',#9,(),$);");
}

TEST(EntityDelete, TakesOneOfTwoEqualPointers) {
    ReadFileModel model(sFileOf("#7=IFCPOINT((1.));#7=IFCPOINT((2.));"), true, schemaIs(smallSchema()));
    Data& data = model.file.data();
    ASSERT_EQ(data.entities().size(), 2U);
    EXPECT_TRUE(data.boEntityDelete(data.pEntityFromId(7)));
    EXPECT_EQ(data.entities().size(), 1U);
}

TEST(GuidUpdate, FindsAnEntityOnceItsGlobalIdIsSet) {
    EditData data;
    Entity& element = data.made("IFCELEMENT");
    EXPECT_EQ(data.pEntityFromGuid(guidOf(1)), nullptr);
    EXPECT_THAT(data.guidEntityMap(), IsEmpty()) << "and it stays pending";
    EXPECT_TRUE(element.boValueSet(g_globalId, guidOf(1), data));
    EXPECT_EQ(data.pEntityFromGuid(guidOf(1)), &element);
    EXPECT_EQ(data.pEntityFromGuid(guidOf(2)), nullptr);
    EXPECT_EQ(data.pEntityFromGuid(Guid{}), nullptr);
}

TEST(GuidUpdate, KeepsTheFirstOfTwoEqualGuidsAndAssertsTheOther) {
    for (const bool boEnabled : {true, false}) {
        SCOPED_TRACE(boEnabled);
        EditData data;
        Entity& first = data.made("IFCELEMENT", 1);
        Entity& second = data.made("IFCELEMENT", 1);
        const AssertLog log(boEnabled);
        data.vGuidUpdate();
        const std::vector<std::string> expected(boEnabled, "Guid already exist in m_guidEntityMap");
        EXPECT_EQ(log.texts(), expected);
        EXPECT_EQ(data.pEntityFromGuid(guidOf(1)), &first);

        // The second one is dropped from those that wait: nobody looks at it again.
        EXPECT_TRUE(second.boValueSet(g_globalId, guidOf(2), data));
        data.vGuidUpdate();
        EXPECT_EQ(data.pEntityFromGuid(guidOf(2)), nullptr);
        EXPECT_EQ(log.texts(), expected);
        EXPECT_EQ(data.entities().size(), 2U);
    }
}

TEST(GuidUpdate, AssertsWithItsOwnName) {
    EditData data;
    data.made("IFCELEMENT", 1);
    data.made("IFCELEMENT", 1);
    const bool boEnabledBefore = Assert::isEnabled();
    std::string sSeen;
    Assert::setEnabled(true);
    Assert::setHandler(
        [&sSeen](const AssertInfo& info) { sSeen = std::string(info.source) + '|' + std::string(info.function); });
    data.vGuidUpdate();
    Assert::setHandler({});
    Assert::setEnabled(boEnabledBefore);
    EXPECT_EQ(sSeen, "Format/Ifc/IfcFileDataSimple|oxa::ifc::Data::vGuidUpdate");
}

TEST(GuidUpdate, LeavesEntitiesOfAFileAlone) {
    ReadFileModel model(sFileOf("#7=IFCELEMENT('" + sGuidOf(1) + "',$,$,$);"), true, schemaIs(smallSchema()));
    const AssertLog log;
    EXPECT_EQ(model.file.data().pEntityFromGuid(guidOf(1)), model.file.data().pEntityFromId(7));
    EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(DeleteIncomplete, TakesOutWhatHasNoSchema) {
    EditData data;
    data.made("IFCPROJECT", 1);   // with a project, an empty entity is taken
    Entity& element = data.made("IFCELEMENT", 2);
    std::vector<Entity> empty(3);
    data.entityAdd(&empty[0]);
    Entity& point = data.made("IFCPOINT");
    data.entityAdd(&empty[1]);
    data.entityAdd(&empty[2]);
    data.deleteIncompleteEntities();
    EXPECT_THAT(data.entities(), testing::UnorderedElementsAre(data.pProject(), &element, &point));
    EXPECT_EQ(data.pEntityFromGuid(guidOf(2)), &element);
    data.deleteIncompleteEntities();
    EXPECT_EQ(data.entities().size(), 3U);
}

}   // namespace
}   // namespace oxa::ifc
