// SPDX-License-Identifier: Apache-2.0
// Instance numbers: those that a file brought, and those dealt on demand.
#include "Format/Ifc/Store/EntityIdMap.h"

#include <gtest/gtest.h>

#include <set>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/OnThreads.h"
#include "Format/Ifc/Read/ReadContext.h"
#include "Format/Ifc/Store/SeenNumbers.h"

namespace oxa::ifc {
namespace {

class SeededMap : public testing::Test {
protected:
    Data data;
    io::ReadError errors;
    ReadInfoCommon info{errors};
    EntityIdMap map{0};

    // One slot of a chunk.
    void seed(const EntitySlot& slot, std::size_t iId) {
        EntityIdMap::Defined defined;
        const std::size_t iSlot = iId % defined.size();
        defined.set(iSlot);
        map.vSeed(&slot - iSlot, iId - iSlot, defined);
    }
};

TEST_F(SeededMap, NumbersOfSeededSlotsAreKept) {
    for (const std::uint32_t iId : {7U, 32'768U, 50'000'000U}) seed(info.slotGet(data, iId), iId);
    seed(info.slotGet(data, 7), 7);
    EXPECT_EQ(map.size(), 3U);
    for (const std::uint32_t iId : {7U, 32'768U, 50'000'000U}) {
        const Entity* pEntity = &info.slotGet(data, iId).entity;
        EXPECT_EQ(map.find(pEntity), iId);
        EXPECT_EQ(map.pSeededFromId(iId), pEntity);
        EXPECT_EQ(map.get(pEntity), std::pair(std::size_t{iId}, false));
    }
    EXPECT_EQ(map.find(&info.slotGet(data, 8).entity), std::nullopt);
    EXPECT_EQ(map.pSeededFromId(8), nullptr);
    EXPECT_EQ(map.pSeededFromId(1'000'000), nullptr);
    // A new number is the count with it, whatever numbers the file brought.
    Entity other;
    EXPECT_EQ(map.get(&other), std::pair(std::size_t{4}, true));
    EXPECT_EQ(map.get(&other), std::pair(std::size_t{4}, false));
    EXPECT_EQ(map.size(), 4U);
}

// What "count with it" comes to in a file with gaps.
TEST_F(SeededMap, ADealtNumberMayBeOneThatTheFileHas) {
    for (const std::uint32_t iId : {2U, 3U}) seed(info.slotGet(data, iId), iId);
    Entity other;
    EntityIdMap::Near near;
    const EntityIdMap::Number dealt = map.number(&other, near);
    EXPECT_EQ(dealt.iId, 3U);
    EXPECT_TRUE(dealt.boNew);
    EXPECT_FALSE(dealt.boSeeded);
    EXPECT_TRUE(map.number(&info.slotGet(data, 3).entity, near).boSeeded);
    EXPECT_EQ(map.number(&info.slotGet(data, 3).entity, near).iId, 3U);
    EXPECT_EQ(map.pSeededFromId(3), &info.slotGet(data, 3).entity);
}

// Bits stand for numbers of 32 bits; a larger one, which a document can have, is looked up by its entity.
TEST_F(SeededMap, IsSeededUpTo32Bits) {
    constexpr std::size_t g_iBehind = std::size_t{1} << 32;
    const EntitySlot& last = info.slotGet(data, 65'535);
    const EntitySlot& behind = info.slotGet(data, 9);
    seed(last, g_iBehind - 1);
    seed(behind, g_iBehind + 9);
    EntityIdMap::Near near;
    for (int i = 0; i < 2; ++i) {
        const EntityIdMap::Number small = map.number(&last.entity, near);
        EXPECT_EQ(small.iId, g_iBehind - 1);
        EXPECT_TRUE(small.boSeeded);
        const EntityIdMap::Number large = map.number(&behind.entity, near);
        EXPECT_EQ(large.iId, g_iBehind + 9);
        EXPECT_FALSE(large.boSeeded);
        EXPECT_FALSE(large.boNew);
    }
}

TEST_F(SeededMap, DealsAboveTheHighestWhereToldSo) {
    const Entity first;
    const Entity second;
    EXPECT_EQ(map.iHighest(), 0U);
    for (const std::uint32_t iId : {9U, 2U, 40'000U, 33'000U}) seed(info.slotGet(data, iId), iId);
    EXPECT_EQ(map.iHighest(), 40'000U);
    EXPECT_EQ(map.get(&first).first, 5U);
    map.vDealAbove();
    EXPECT_EQ(map.iHighest(), 40'000U);
    EXPECT_EQ(map.get(&first).first, 5U) << "who has a number keeps it";
    EXPECT_EQ(map.get(&second).first, 40'001U);
    EXPECT_EQ(map.iHighest(), 40'001U);
    EXPECT_EQ(map.size(), 6U);
    EXPECT_EQ(map.find(&second), 40'001U);
}

TEST_F(SeededMap, AnswersWithoutDealing) {
    seed(info.slotGet(data, 7), 7);
    seed(info.slotGet(data, 8), 8);
    const Entity other;
    EntityIdMap::Near near;
    EXPECT_FALSE(map.known(&other, near));
    EXPECT_EQ(map.size(), 2U);
    for (int i = 0; i < 2; ++i)   // far, then near
        for (const std::uint32_t iId : {7U, 8U}) {
            const auto known = map.known(&info.slotGet(data, iId).entity, near);
            ASSERT_TRUE(known);
            EXPECT_EQ(known->iId, iId);
            EXPECT_TRUE(known->boSeeded);
            EXPECT_FALSE(known->boNew);
        }
    EXPECT_FALSE(map.known(&info.slotGet(data, 9).entity, near)) << "near, but not defined";
    static_cast<void>(map.get(&other));
    const auto known = map.known(&other, near);
    ASSERT_TRUE(known);
    EXPECT_EQ(known->iId, 3U);
    EXPECT_FALSE(known->boSeeded);
}

TEST_F(SeededMap, GivesSeededEntitiesByTheirNumbers) {
    SeenNumbers seen;
    SeenNumbers::Near near;
    EXPECT_TRUE(map.seededOf(seen).empty());
    std::vector<const Entity*> expected;
    for (const std::uint32_t iId : {0U, 1U, 32'767U, 32'768U, 100'000U, 50'000'000U}) {
        seed(info.slotGet(data, iId), iId);
        if (iId == 1) continue;   // not seen
        seen.boMark(iId, near);
        expected.push_back(&info.slotGet(data, iId).entity);
    }
    EXPECT_EQ(map.seededOf(seen), expected);
}

// Wherever the last entity was found, the next one gets its own number.
TEST_F(SeededMap, NumbersDoNotDependOnTheLastOne) {
    for (const std::uint32_t iId : {1U, 32'767U, 32'768U, 100'000U, 50'000'000U}) seed(info.slotGet(data, iId), iId);
    const Entity other;
    EntityIdMap::Near near;
    for (const std::uint32_t iLast : {1U, 32'767U, 32'768U, 100'000U, 50'000'000U})
        for (const std::uint32_t iId : {1U, 32'767U, 32'768U, 100'000U, 50'000'000U}) {
            EXPECT_EQ(map.number(&info.slotGet(data, iLast).entity, near).iId, iLast);
            EXPECT_EQ(map.number(&info.slotGet(data, iId).entity, near).iId, iId);
        }
    // A slot that was not seeded is an entity like any other, also near one that was.
    EXPECT_FALSE(map.number(&info.slotGet(data, 50'000'001).entity, near).boSeeded);
    EXPECT_FALSE(map.number(&other, near).boSeeded);
}

// An address beside a slot's own, in front of a chunk or behind it, is no seeded entity.
TEST_F(SeededMap, TellsNumbersFromBesideTheLastOne) {
    for (const std::uint32_t iId : {7U, 9U, 32'767U, 40'000U}) seed(info.slotGet(data, iId), iId);
    EntityIdMap::Near near;
    const auto beside = [&](std::uint32_t iId) { return EntityIdMap::iBeside(&info.slotGet(data, iId).entity, near); };
    EXPECT_EQ(beside(7), EntityIdMap::g_iNoneBeside) << "no last one";
    EXPECT_EQ(map.number(&info.slotGet(data, 9).entity, near).iId, 9U);
    const struct {
        std::uint32_t iId;
        std::size_t iBeside;
    } rows[] = {
        {7, 7}, {9, 9}, {32'767, 32'767}, {8, EntityIdMap::g_iNoneBeside}, {40'000, EntityIdMap::g_iNoneBeside}};
    for (const auto& row : rows) EXPECT_EQ(beside(row.iId), row.iBeside) << row.iId;
    EXPECT_EQ(EntityIdMap::iBeside(nullptr, near), EntityIdMap::g_iNoneBeside);
    const Entity other;
    EXPECT_EQ(EntityIdMap::iBeside(&other, near), EntityIdMap::g_iNoneBeside);
    const auto* pBytes = reinterpret_cast<const char*>(&info.slotGet(data, 7).entity);
    EXPECT_EQ(EntityIdMap::iBeside(reinterpret_cast<const Entity*>(pBytes + 8), near), EntityIdMap::g_iNoneBeside);
}

TEST_F(SeededMap, OnlyTheAddressOfASlotCounts) {
    EntitySlot* pChunk = info.pChunkGet(data, 0);
    seed(pChunk[0], 0);
    seed(pChunk[32767], 32767);
    const char* pBytes = reinterpret_cast<const char*>(pChunk);
    const auto find = [&](std::ptrdiff_t iOffset) {
        return map.find(reinterpret_cast<const Entity*>(pBytes + iOffset));
    };
    EXPECT_EQ(find(0), 0U);
    EXPECT_EQ(find(32767 * 32), 32767U);
    for (const std::ptrdiff_t iOffset : {8, 31, 32, 32767 * 32 + 8}) EXPECT_EQ(find(iOffset), std::nullopt) << iOffset;
    const auto uFirst = reinterpret_cast<std::uintptr_t>(pBytes);
    for (const std::uintptr_t uAddress : {uFirst - 32, uFirst + 32768 * 32})
        EXPECT_EQ(map.find(reinterpret_cast<const Entity*>(uAddress)), std::nullopt);
}

TEST(EntityIdMap, DealsEachEntityOneNumber) {
    EntityIdMap map(1000);
    std::vector<Entity> entities(1000);
    vOnThreads(8, [&](std::size_t) {
        for (const Entity& entity : entities) static_cast<void>(map.get(&entity));
    });
    std::set<std::size_t> numbers;
    for (const Entity& entity : entities) numbers.insert(*map.find(&entity));
    EXPECT_EQ(numbers.size(), 1000U);
    EXPECT_EQ(*numbers.begin(), 1U);
    EXPECT_EQ(*numbers.rbegin(), 1000U);
}

}   // namespace
}   // namespace oxa::ifc
