// SPDX-License-Identifier: Apache-2.0
// The container: creation, order, ranges, moves, numbers.
#include "Format/Ifc/IfcFileDataSimple.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <set>

#include "Format/Ifc/AssertLog.h"
#include "Format/Ifc/IfcMissingType.h"
#include "Format/Ifc/WrittenText.h"
#include "platform/Utilities.h"
#include "provider/SchemaLoader.h"

namespace oxa::ifc {
namespace {

using def::schema::AttributeName;
using def::schema::ObjectName;
using testing::UnorderedElementsAre;

struct Ifc4Data : Data {
    Ifc4Data() { vSchemaSet(SchemaLoader::pBuiltIn("IFC4")); }
};

std::ptrdiff_t iCount(const Data& data, const char* sName, bool boSubtypes) {
    const auto [first, last] = data.range(ObjectName(sName), boSubtypes);
    return last - first;
}

template <class Call>
std::string sThrown(Call&& call) {
    try {
        call();
    } catch (const MissingType& fault) {
        return std::string("MissingType: ") + fault.what();
    } catch (const oxa::exception& fault) {
        return fault.what();
    }
    return "nothing";
}

TEST(Data, AnEmptyOneHasEmptyRanges) {
    const Data bare;
    EXPECT_EQ(iCount(bare, "IFCWALL", true), 0);
    const Ifc4Data data;
    EXPECT_EQ(iCount(data, "IFCWALL", true), 0);
    EXPECT_EQ(iCount(data, "IFCNO", true), 0);
    EXPECT_EQ(iCount(data, "IFCLABEL", true), 0);
}

TEST(Data, CreatesOnlyWhatTheSchemaAllows) {
    Data bare;
    EXPECT_EQ(bare.pEntityCreate(ObjectName("IFCWALL")), nullptr);
    Ifc4Data data;
    EXPECT_EQ(data.pEntityCreate(ObjectName("IFCNO")), nullptr);
    EXPECT_EQ(data.pEntityCreate(ObjectName("IFCLABEL")), nullptr);
    EXPECT_EQ(data.pEntityCreate(static_cast<const def::schema::Entity*>(nullptr)), nullptr);
    EXPECT_EQ(sThrown([&] { data.pEntityCreate(ObjectName("IFCROOT")); }), "Can't create abstract class");
    EXPECT_TRUE(data.entities().empty());
    Entity* pWall = data.pEntityCreate(ObjectName("IFCWALL"));
    ASSERT_NE(pWall, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pWall) % alignof(Entity), 0U);
    EXPECT_EQ(pWall->schemaEntity().sName, "IfcWall");
}

TEST(Data, RangeSortsAgainAfterAnAddition) {
    Ifc4Data data;
    data.pEntityCreate(ObjectName("IFCWALL"));
    EXPECT_EQ(iCount(data, "IFCDOOR", false), 0);
    data.pEntityCreate(ObjectName("IFCDOOR"));
    data.pEntityCreate(ObjectName("IFCWALLSTANDARDCASE"));
    EXPECT_EQ(iCount(data, "IFCDOOR", false), 1);
    EXPECT_EQ(iCount(data, "IFCWALL", true), 2);
    EXPECT_EQ(iCount(data, "IFCELEMENT", true), 3);
}

// Against a walk over all entities, for each type of the schema.
TEST(Data, RangesHoldExactlyTheirTypes) {
    Ifc4Data data;
    std::vector<const def::schema::Entity*> types;
    for (const auto& record : data.pSchema()->objects)
        if (const def::schema::Entity* pType = def::schema::pAsEntity(record.pObject)) types.push_back(pType);
    ASSERT_GT(types.size(), 500U);
    std::mt19937 random(1);
    for (int i = 0; i < 3000; ++i) {
        const def::schema::Entity* pType = types[random() % types.size()];
        if (!pType->boAbstract) data.pEntityCreate(pType);
    }
    for (const def::schema::Entity* pType : types)
        for (const bool boSubtypes : {false, true}) {
            const auto [first, last] = data.range(ObjectName(*pType), boSubtypes);
            std::set<const Entity*> expected;
            for (const Entity* pEntity : data.entities())
                if (boSubtypes ? pEntity->boIsCompatible(pType) : &pEntity->schemaEntity() == pType)
                    expected.insert(pEntity);
            ASSERT_EQ(std::set<const Entity*>(first, last), expected) << pType->sName << boSubtypes;
            ASSERT_EQ(static_cast<std::size_t>(last - first), expected.size());
        }
}

TEST(Data, TheFirstProjectStays) {
    Ifc4Data data;
    EXPECT_EQ(data.pProject(), nullptr);
    data.pEntityCreate(ObjectName("IFCWALL"));
    Entity* pProject = data.pEntityCreate(ObjectName("IFCPROJECT"));
    data.pEntityCreate(ObjectName("IFCPROJECT"));
    EXPECT_EQ(data.pProject(), pProject);
}

TEST(Data, AnEntityWithoutASchemaIsAnInsideFault) {
    Ifc4Data data;
    Entity empty;
    EXPECT_EQ(sThrown([&] { data.entityAdd(&empty); }), "MissingType: returning nullptr");
    data.pEntityCreate(ObjectName("IFCPROJECT"));
    data.entityAdd(&empty);   // with a project nobody asks for its type any more
    EXPECT_EQ(sThrown([&] { static_cast<void>(data.entities()); }), "MissingType: returning nullptr");
    data.entityAdd(nullptr);
    data.deleteIncompleteEntities();
    EXPECT_EQ(data.entities().size(), 1U);
}

TEST(Data, AMoveTakesAllButTheSchema) {
    Ifc4Data source;
    Entity* pProject = source.pEntityCreate(ObjectName("IFCPROJECT"));
    Entity* pWall = source.pEntityCreate(ObjectName("IFCWALL"));
    const std::size_t iId = source.iIdFromEntity(*pWall);
    Data target(std::move(source));
    EXPECT_EQ(target.pProject(), pProject);
    EXPECT_EQ(source.pProject(), pProject);   // a copy stays
    EXPECT_TRUE(source.guidEntityMap().empty());
    EXPECT_THAT(target.entities(), UnorderedElementsAre(pProject, pWall));
    EXPECT_EQ(target.iIdFromEntity(*pWall), iId);
    EXPECT_TRUE(source.entities().empty());
    EXPECT_EQ(source.pSchema(), target.pSchema());
    Ifc4Data other;
    other.pEntityCreate(ObjectName("IFCDOOR"));   // dies with its pool
    static_cast<Data&>(other) = std::move(target);
    EXPECT_THAT(other.entities(), UnorderedElementsAre(pProject, pWall));
    Data& same = other;
    same = std::move(static_cast<Data&>(other));
    EXPECT_THAT(other.entities(), UnorderedElementsAre(pProject, pWall));
    EXPECT_NE(other.pEntityCreate(ObjectName("IFCDOOR")), nullptr);
}

// What a read has counted goes with the entities.
TEST(Data, AMoveTakesTheCountOfInverseEntries) {
    ReadFileModel model = io::modelOf("#1=IFCPROJECT('" + sGuidOf(0) + "',$,$);#9=IFCRELLINK('" + sGuidOf(1) +
                                      "',$,#1,(#8,#8));#8=IFCELEMENT('" + sGuidOf(2) + "',$,$,$);");
    Data& source = model.file.data();
    const std::size_t iEntries = source.iInverseEntries();
    EXPECT_EQ(iEntries, 3U) << "the project once, the element twice";
    Data target(std::move(source));
    EXPECT_EQ(target.iInverseEntries(), iEntries);
    EXPECT_EQ(source.iInverseEntries(), 0U);
    Data assigned;
    assigned = std::move(target);
    EXPECT_EQ(assigned.iInverseEntries(), iEntries);
    EXPECT_EQ(target.iInverseEntries(), 0U);
}

// Everything that a container knows, after a construction and after an assignment over another model.
TEST(Data, AMoveKeepsEveryAnswer) {
    const AttributeName globalId("GlobalId");
    const auto guidOf = [](std::uint32_t i) { return Guid{i, 2, 3, {}}; };
    for (const bool boAssign : {false, true})
        for (const bool boSorted : {false, true}) {
            SCOPED_TRACE(std::string(boAssign ? "assignment" : "construction") + (boSorted ? ", sorted" : ""));
            Ifc4Data source;
            Entity* pWall = source.pEntityCreate(ObjectName("IFCWALL"));
            Entity* pDoor = source.pEntityCreate(ObjectName("IFCDOOR"));
            Entity* pProject = source.pEntityCreate(ObjectName("IFCPROJECT"));
            Entity* pPending = source.pEntityCreate(ObjectName("IFCWALL"));
            pWall->boValueSet(globalId, guidOf(1), source);
            EXPECT_EQ(source.pEntityFromGuid(guidOf(1)), pWall);
            EXPECT_EQ(source.iIdFromEntity(*pDoor), 1U);
            EXPECT_EQ(source.iIdFromEntity(*pWall), 2U);
            if (boSorted) static_cast<void>(source.entities());

            Ifc4Data former;
            former.pEntityCreate(ObjectName("IFCPROJECT"))->boValueSet(globalId, guidOf(9), former);
            EXPECT_NE(former.pEntityFromGuid(guidOf(9)), nullptr);
            former.pEntityCreate(ObjectName("IFCSLAB"));   // pending
            static_cast<void>(former.entityIdMap(false));
            if (!boSorted) static_cast<void>(former.entities());
            former.vSchemaSet(SchemaLoader::pBuiltIn("IFC2X3"));
            const std::weak_ptr<const Pool> life = source.poolLife();
            const std::weak_ptr<const Pool> formerLife = former.poolLife();
            Data target = boAssign ? Data(std::move(former)) : Data(std::move(source));
            if (boAssign) target = std::move(static_cast<Data&>(source));

            ASSERT_FALSE(life.expired());
            EXPECT_EQ(&target.pool(), life.lock().get());
            EXPECT_EQ(formerLife.expired(), boAssign);
            EXPECT_EQ(target.pSchema(), SchemaLoader::pBuiltIn("IFC4"));
            EXPECT_EQ(target.pProject(), pProject);
            EXPECT_EQ(iCount(target, "IFCWALL", false), 2);
            EXPECT_EQ(iCount(target, "IFCBUILDINGELEMENT", true), 3);
            EXPECT_EQ(iCount(target, "IFCPROJECT", false), 1);
            EXPECT_EQ(target.iIdFromEntity(*pProject), 3U) << "after those that were dealt";
            EXPECT_EQ(target.iIdFromEntity(*pWall), 2U);
            EXPECT_EQ(target.iIdFromEntity(*pDoor), 1U);
            EXPECT_EQ(target.pEntityFromGuid(guidOf(1)), pWall);
            EXPECT_EQ(target.pEntityFromGuid(guidOf(9)), nullptr);
            pPending->boValueSet(globalId, guidOf(2), target);
            EXPECT_EQ(target.pEntityFromGuid(guidOf(2)), pPending) << "it was pending";
            Entity* pNew = target.pEntityCreate(ObjectName("IFCROOF"));
            pNew->boValueSet(globalId, guidOf(3), target);
            EXPECT_EQ(target.pEntityFromGuid(guidOf(3)), pNew) << "of the schema's root";
            EXPECT_EQ(target.guidEntityMap().size(), 3U);
        }
}

TEST(Data, ANullSchemaTakesTheSchemaAway) {
    Ifc4Data data;
    data.pEntityCreate(ObjectName("IFCWALL"));
    EXPECT_EQ(iCount(data, "IFCWALL", true), 1);
    data.vSchemaSet(nullptr);
    EXPECT_EQ(iCount(data, "IFCWALL", true), 0);
    EXPECT_EQ(data.pEntitySchemaFromName(ObjectName("IFCWALL")), nullptr);
    EXPECT_EQ(data.pEntityCreate(ObjectName("IFCWALL")), nullptr);
    EXPECT_EQ(data.entities().size(), 1U);
}

TEST(Data, ADebugMessageIsAnAssertion) {
    for (const bool boEnabled : {true, false}) {
        const AssertLog log(boEnabled);
        testing::internal::CaptureStderr();
        Data::vDebugMessage(nullptr, "odd");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "odd");
        EXPECT_EQ(log.texts(), boEnabled ? std::vector<std::string>{"odd"} : std::vector<std::string>{});
    }
}

TEST(Data, DealsNumbersOnDemand) {
    Ifc4Data data;
    Entity* pWall = data.pEntityCreate(ObjectName("IFCWALL"));
    Entity* pDoor = data.pEntityCreate(ObjectName("IFCDOOR"));
    EXPECT_EQ(data.iIdFromEntity(*pDoor), 1U);
    EXPECT_EQ(data.iIdFromEntity(*pWall), 2U);
    EXPECT_EQ(data.iIdFromEntity(*pDoor), 1U);
    static_cast<void>(data.entityIdMap(true));
    EXPECT_EQ(data.iIdFromEntity(*pWall), 1U);
}

}   // namespace
}   // namespace oxa::ifc
