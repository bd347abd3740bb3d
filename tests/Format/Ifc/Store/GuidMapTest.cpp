// SPDX-License-Identifier: Apache-2.0
// Entities by GlobalId.
#include "Format/Ifc/Store/GuidMap.h"

#include <gtest/gtest.h>

#include <cstring>
#include <deque>
#include <map>
#include <random>
#include <utility>

#include "Format/Ifc/IfcFileEntity.h"

namespace oxa::ifc {
namespace {

Guid guidOf(std::uint32_t i) {
    Guid guid;
    guid.Data1 = i;
    return guid;
}

TEST(GuidMap, KeepsTheEarlierEntity) {
    GuidMap map;
    Entity first;
    Entity second;
    EXPECT_TRUE(map.empty());
    EXPECT_EQ(map.pFind(guidOf(1)), nullptr);
    EXPECT_FALSE(map.boErase(guidOf(1)));
    EXPECT_TRUE(map.boInsert(guidOf(1), &first));
    EXPECT_FALSE(map.boInsert(guidOf(1), &second));
    EXPECT_EQ(map.pFind(guidOf(1)), &first);
    EXPECT_EQ(map.size(), 1U);
    EXPECT_EQ(map.pFind(guidOf(2)), nullptr);
    EXPECT_TRUE(map.boErase(guidOf(1)));
    EXPECT_FALSE(map.boErase(guidOf(1)));
    EXPECT_TRUE(map.boInsert(guidOf(1), &second));
    EXPECT_EQ(map.pFind(guidOf(1)), &second);
}

TEST(GuidMap, MovesAndLeavesNothing) {
    GuidMap map;
    Entity entity;
    map.boInsert(guidOf(1), &entity);
    GuidMap other(std::move(map));
    EXPECT_TRUE(map.empty());
    EXPECT_EQ(map.pFind(guidOf(1)), nullptr);
    EXPECT_EQ(other.pFind(guidOf(1)), &entity);
    EXPECT_TRUE(map.boInsert(guidOf(2), &entity));
    map = std::move(other);
    EXPECT_EQ(map.pFind(guidOf(1)), &entity);
    EXPECT_EQ(map.pFind(guidOf(2)), nullptr);
    EXPECT_EQ(map.size(), 1U);
    EXPECT_TRUE(other.empty());
}

// Against a map of the standard library, in tables from nearly empty to three quarters full.
TEST(GuidMap, AgreesWithAnOrderedMap) {
    std::mt19937 random(3);
    std::deque<Entity> entities(64);
    for (const std::uint32_t iRange : {3U, 12U, 13U, 100U, 3000U}) {
        SCOPED_TRACE(iRange);
        GuidMap map;
        std::map<std::uint32_t, Entity*> expected;
        for (int i = 0; i < 30'000; ++i) {
            const auto iGuid = static_cast<std::uint32_t>(random() % iRange);
            Entity* pEntity = &entities[random() % entities.size()];
            if (random() % 3) {
                ASSERT_EQ(map.boInsert(guidOf(iGuid), pEntity), expected.try_emplace(iGuid, pEntity).second);
            } else {
                ASSERT_EQ(map.boErase(guidOf(iGuid)), expected.erase(iGuid) == 1);
            }
            ASSERT_EQ(map.size(), expected.size());
            if (i % 100) continue;
            for (std::uint32_t iAny = 0; iAny < iRange; ++iAny) {
                const auto found = expected.find(iAny);
                ASSERT_EQ(map.pFind(guidOf(iAny)), found == expected.end() ? nullptr : found->second);
            }
        }
    }
}

// GUIDs that differ in any one of their bytes alone find places of their own: a million look-ups take no longer than
// those of others, which a table that ignores a byte would turn into hours.
TEST(GuidMap, LooksAtEveryByte) {
    Entity entity;
    for (std::size_t iByte = 0; iByte + 3 <= sizeof(Guid); ++iByte) {
        GuidMap map;
        for (std::uint32_t i = 0; i < 60'000; ++i) {
            Guid guid;
            std::memcpy(reinterpret_cast<char*>(&guid) + iByte, &i, 3);
            ASSERT_TRUE(map.boInsert(guid, &entity));
        }
        EXPECT_EQ(map.size(), 60'000U);
    }
}

}   // namespace
}   // namespace oxa::ifc
