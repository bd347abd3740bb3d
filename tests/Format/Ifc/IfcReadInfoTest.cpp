// Memory of a model: the pool, the entity table, numbers, lists, and the cutting of parameter lists.
#include "Format/Ifc/IfcReadInfo.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "Format/Ifc/IfcEntityIdMap.h"
#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcParameters.h"

namespace oxa::ifc {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::Each;

template <class Work>
void vOnThreads(std::size_t iThreads, Work&& work) {
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < iThreads; ++i) threads.emplace_back([&work, i] { work(i); });
    for (std::thread& thread : threads) thread.join();
}

std::string sZeroed(const void* pBytes, std::size_t iBytes) {
    return std::string(static_cast<const char*>(pBytes), iBytes) == std::string(iBytes, '\0') ? "zeroed" : "dirty";
}

TEST(SimplePool, ABlockServesOneByteLessThanItsSize) {
    Pool pool;
    auto* pFirst = static_cast<char*>(pool.pAllocate(1));
    EXPECT_EQ(pool.pAllocate(16382), pFirst + 1);   // 16,383 bytes in all
    EXPECT_EQ(pool.iBytesReserved(), 16384U);
    EXPECT_NE(pool.pAllocate(1), pFirst + 16383);
    EXPECT_EQ(pool.iBytesReserved(), 32768U);
}

TEST(SimplePool, SizesChooseTheirPlace) {
    struct Row {
        std::size_t iBytes;
        std::size_t iReserved;   // beyond the first block
    };
    for (const Row& row : {Row{0, 0}, Row{16382, 0}, Row{16383, 16384}, Row{16384, 16384}, Row{16385, 16385},
                           Row{1048576, 1048576}}) {
        SCOPED_TRACE(row.iBytes);
        Pool pool;
        static_cast<void>(pool.pAllocate(1));
        void* pBytes = pool.pAllocate(row.iBytes);
        EXPECT_EQ(sZeroed(pBytes, row.iBytes), "zeroed");
        EXPECT_EQ(pool.iBytesReserved() - 16384, row.iReserved);
    }
}

// Each thread fills what it got with its own byte: nobody got a byte twice.
TEST(SimplePool, ServesManyThreads) {
    Pool pool;
    constexpr std::size_t g_iThreads = 8;
    constexpr std::size_t g_iRequests = 4000;
    std::vector<std::vector<std::pair<char*, std::size_t>>> got(g_iThreads);
    vOnThreads(g_iThreads, [&](std::size_t iThread) {
        for (std::size_t i = 0; i < g_iRequests; ++i) {
            const std::size_t iBytes = 1 + (i * 37 + iThread) % 90;
            auto* pBytes = static_cast<char*>(pool.pAllocate(iBytes));
            std::memset(pBytes, static_cast<int>(iThread + 1), iBytes);
            got[iThread].emplace_back(pBytes, iBytes);
        }
    });
    for (std::size_t iThread = 0; iThread < g_iThreads; ++iThread)
        for (const auto& [pBytes, iBytes] : got[iThread])
            ASSERT_EQ(std::string(pBytes, iBytes), std::string(iBytes, static_cast<char>(iThread + 1)));
}

TEST(PoolArena, GivesZeroedMemoryOfThePool) {
    Pool pool;
    PoolArena arena(pool);
    EXPECT_NE(arena.pAllocate(0), nullptr);
    std::set<char*> seen;
    for (std::size_t i = 0; i < 20000; ++i) {
        auto* pBytes = static_cast<char*>(arena.pAllocate(i % 50 + 1));
        ASSERT_EQ(sZeroed(pBytes, i % 50 + 1), "zeroed");
        std::memset(pBytes, 1, i % 50 + 1);
        ASSERT_TRUE(seen.insert(pBytes).second);
    }
    EXPECT_EQ(sZeroed(arena.pAllocate(300'000), 300'000), "zeroed");
}

class EntityTable : public testing::Test {
protected:
    Data data;
    io::ReadError errors;
    ReadInfoCommon info{errors};
};

TEST_F(EntityTable, GivesEachNumberItsPlace) {
    EntitySlot* pChunk0 = info.pChunkGet(data, 0);
    EXPECT_EQ(&info.slotGet(data, 0), pChunk0);
    EXPECT_EQ(&info.slotGet(data, 32767), pChunk0 + 32767);
    EXPECT_EQ(&info.slotGet(data, 32768), info.pChunkGet(data, 1));
    EXPECT_EQ(&info.slotGet(data, 32'768'000), info.pChunkGet(data, 1000));
    EXPECT_EQ(&info.slotGet(data, 0xFFFFFFFFU), info.pChunkGet(data, 131071) + 32767);
    EXPECT_EQ(data.pool().iBytesReserved(), 4 * ReadInfoCommon::g_iChunkBytes);
    EXPECT_EQ(sZeroed(info.pChunkGet(data, 1), ReadInfoCommon::g_iChunkBytes), "zeroed");
}

TEST_F(EntityTable, VisitsTouchedPagesInOrder) {
    for (const std::uint32_t iId : {40'000'000U, 5U, 70'000U, 32'768'000U}) info.slotGet(data, iId).vReferencedSet();
    std::vector<std::uint32_t> referenced;
    std::size_t iVisited = 0;
    info.vForEachSlot([&](std::uint32_t iId, EntitySlot& slot) {
        ++iVisited;
        if (slot.boReferenced()) referenced.push_back(iId);
    });
    EXPECT_THAT(referenced, ElementsAre(5, 70'000, 32'768'000, 40'000'000));
    EXPECT_EQ(iVisited, 4 * 512U);
}

TEST_F(EntityTable, ThreadsThatRaceForAChunkGetTheSame) {
    for (const std::size_t iChunk : {std::size_t{5}, std::size_t{1005}}) {
        const std::size_t iBefore = data.pool().iBytesReserved();
        std::vector<EntitySlot*> got(8);
        vOnThreads(8, [&](std::size_t i) { got[i] = info.pChunkGet(data, iChunk); });
        EXPECT_THAT(got, Each(got[0]));
        EXPECT_EQ(data.pool().iBytesReserved() - iBefore, ReadInfoCommon::g_iChunkBytes);
    }
}

TEST_F(EntityTable, ThreadsMarkSlotsTogether) {
    vOnThreads(8, [&](std::size_t i) {
        for (std::uint32_t iId = 0; iId < 100'000; ++iId)
            if (iId % 8 <= i) info.slotGet(data, iId).vReferencedSet();
    });
    std::size_t iReferenced = 0;
    info.vForEachSlot([&](std::uint32_t, EntitySlot& slot) { iReferenced += slot.boReferenced(); });
    EXPECT_EQ(iReferenced, 100'000U);
}

TEST_F(EntityTable, ASlotIsHeldByOneAtATime) {
    EntitySlot& slot = info.slotGet(data, 1);
    int iCount = 0;   // unguarded but for the lock
    vOnThreads(8, [&](std::size_t) {
        for (int i = 0; i < 2000; ++i) {
            const EntitySlotLock lock(slot);
            ++iCount;
        }
    });
    EXPECT_EQ(iCount, 16000);
}

TEST_F(EntityTable, NumbersOfSeededSlotsAreKept) {
    EntityIdMap map(0);
    for (const std::uint32_t iId : {7U, 32'768U, 50'000'000U}) map.vSeed(info.slotGet(data, iId), iId);
    map.vSeed(info.slotGet(data, 7), 7);
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

struct CutRow {
    const char* sText;
    std::vector<std::string> items;
};

const CutRow g_cutRows[] = {
    {"", {}},
    {"a", {"a"}},
    {"a,b", {"a", "b"}},
    {"a,b,", {"a", "b"}},
    {",", {""}},
    {",,", {"", ""}},
    {"a,,b", {"a", "", "b"}},
    {"'a,b',(1,2),3", {"'a,b'", "(1,2)", "3"}},
    {"'it''s',2", {"'it''s'", "2"}},
    {"'a)',2", {"'a)'", "2"}},
    {"(1,2,3", {"(1,2,3"}},
    {"1),2,(3,4", {"1),2,(3", "4"}},   // a stray parenthesis hides commas until the depth is 0 again
    {"'a,b", {"'a,b"}},
    {"*,+1,-2,\"0,1\"", {"*", "+1", "-2", "\"0", "1\""}},
};

TEST(Parameters, AreCutAtTopLevelCommas) {
    for (const CutRow& row : g_cutRows) {
        SCOPED_TRACE(row.sText);
        // In a buffer of exactly that size, at each alignment, in front of and behind long items.
        for (std::size_t iBefore = 0; iBefore < 40; ++iBefore) {
            const std::string sText = std::string(iBefore, 'x') + (iBefore ? "," : "") + row.sText;
            const std::vector<char> exact(sText.begin(), sText.end());
            std::vector<std::string> items;
            details::vForEachItem(exact.data(), exact.data() + exact.size(),
                                  [&](const char* first, const char* last) { items.emplace_back(first, last); });
            std::vector<std::string> expected = row.items;
            if (iBefore) expected.insert(expected.begin(), std::string(iBefore, 'x'));
            ASSERT_EQ(items, expected);
        }
    }
}

class ListTest : public testing::Test {
protected:
    using Head = ForwardListHead<int>;
    std::vector<int> items() const { return pHead ? std::vector<int>(walk()) : std::vector<int>(); }
    std::vector<int> walk() const {
        std::vector<int> found;
        for (const int iItem : *pHead) found.push_back(iItem);
        return found;
    }
    void vAppend(int iItem) { vListAppend(pHead, iItem, allocate); }

    Pool pool;
    std::function<void*(std::size_t)> allocate = [this](std::size_t iBytes) { return pool.pAllocate(iBytes); };
    Head* pHead = nullptr;
};

TEST_F(ListTest, AppendsBehindTheTrueEnd) {
    vAppend(1);
    EXPECT_EQ(pHead->tail.load(), nullptr);   // unknown as long as there is only the head
    vAppend(2);
    vAppend(3);
    EXPECT_THAT(items(), ElementsAre(1, 2, 3));
    pHead->tail = nullptr;
    vAppend(4);
    EXPECT_THAT(items(), ElementsAre(1, 2, 3, 4));
    pHead->tail = pHead;   // a hint that lies behind
    vAppend(5);
    EXPECT_THAT(items(), ElementsAre(1, 2, 3, 4, 5));
}

TEST_F(ListTest, AssignsReusingNodes) {
    const std::vector<int> three{1, 2, 3};
    const std::vector<int> one{9};
    vListAssign(pHead, three.begin(), three.end(), allocate);
    const Head* pBefore = pHead;
    vListAssign(pHead, one.begin(), one.end(), allocate);
    EXPECT_EQ(pHead, pBefore);
    EXPECT_EQ(pHead->tail.load(), pHead);
    EXPECT_THAT(items(), ElementsAre(9));
    vListAssign(pHead, three.begin(), three.end(), allocate);
    EXPECT_THAT(items(), ElementsAreArray(three));
    vListAssign(pHead, three.end(), three.end(), allocate);
    EXPECT_EQ(pHead, nullptr);
}

TEST_F(ListTest, RemovesTheFirstOfAKind) {
    struct Row {
        std::vector<int> before;
        int iRemoved;
        bool boFound;
        std::vector<int> after;
    };
    for (const Row& row : {Row{{}, 1, false, {}}, Row{{1}, 1, true, {}}, Row{{1, 2}, 1, true, {2}},
                           Row{{1, 2}, 2, true, {1}}, Row{{1, 2, 1}, 1, true, {2, 1}}, Row{{1, 2}, 3, false, {1, 2}}}) {
        pHead = nullptr;
        vListAssign(pHead, row.before.begin(), row.before.end(), allocate);
        EXPECT_EQ(boListRemove(pHead, row.iRemoved), row.boFound);
        EXPECT_EQ(items(), row.after);
        if (!pHead) continue;
        vAppend(7);   // the tail is right, or unknown
        std::vector<int> expected = row.after;
        expected.push_back(7);
        EXPECT_EQ(items(), expected);
    }
}

}   // namespace
}   // namespace oxa::ifc
