// SPDX-License-Identifier: Apache-2.0
// The pool of a model and the arenas of its threads.
#include "Format/Ifc/Memory/SimplePool.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>

#include "Format/Ifc/Memory/PoolArena.h"
#include "Format/Ifc/OnThreads.h"

namespace oxa::ifc {
namespace {

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
    for (const Row& row :
         {Row{0, 0}, Row{16382, 0}, Row{16383, 16384}, Row{16384, 16384}, Row{16385, 16385}, Row{1048576, 1048576}}) {
        SCOPED_TRACE(row.iBytes);
        Pool pool;
        static_cast<void>(pool.pAllocate(1));
        void* pBytes = pool.pAllocate(row.iBytes);
        EXPECT_EQ(sZeroed(pBytes, row.iBytes), "zeroed");
        EXPECT_EQ(pool.iBytesReserved() - 16384, row.iReserved);
    }
}

// From where each kind of memory comes.
TEST(SimplePool, StandsElsewhereAfterEachAllocation) {
    Pool pool;
    Pool::Position last = pool.position();
    const struct {
        const char* sKind;
        void (*vAllocate)(Pool&);
    } rows[] = {
        {"the first block", [](Pool& from) { static_cast<void>(from.pAllocate(1)); }},
        {"of that", [](Pool& from) { static_cast<void>(from.pAllocate(1)); }},
        {"the next block", [](Pool& from) { static_cast<void>(from.pAllocate(16383)); }},
        {"aligned", [](Pool& from) { static_cast<void>(from.pAllocateAligned(8)); }},
        {"a large one", [](Pool& from) { static_cast<void>(from.pAllocate(16385)); }},
        {"a piece", [](Pool& from) { static_cast<void>(from.pAllocatePiece(16384)); }},
        {"a segment",
         [](Pool& from) {
             from.vExpect(std::size_t{1} << 20);
             static_cast<void>(from.pAllocatePiece(16384));
         }},
        {"of that segment", [](Pool& from) { static_cast<void>(from.pAllocatePiece(1)); }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sKind);
        EXPECT_TRUE(pool.position() == last) << "nothing was allocated";
        row.vAllocate(pool);
        EXPECT_FALSE(pool.position() == last);
        last = pool.position();
    }
    pool.vTrim();
    EXPECT_TRUE(pool.position() == last);
}

TEST(SimplePool, AlignsOnDemand) {
    struct Row {
        std::size_t iBytes;
        std::size_t iReserved;   // beyond the first block
    };
    for (const Row& row : {Row{0, 0}, Row{1, 0}, Row{8, 0}, Row{16376, 16384}, Row{16377, 16384}, Row{16378, 16385}}) {
        SCOPED_TRACE(row.iBytes);
        for (std::size_t iBefore = 1; iBefore <= 8; ++iBefore) {
            Pool pool;
            static_cast<void>(pool.pAllocate(iBefore));
            auto* pBytes = static_cast<char*>(pool.pAllocateAligned(row.iBytes));
            ASSERT_NE(pBytes, nullptr);
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pBytes) % 8, 0U);
            std::memset(pBytes, 1, row.iBytes);
            EXPECT_EQ(pool.iBytesReserved() - 16384, row.iReserved);
        }
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

// Small blocks, so that most requests find the block full and several threads open the next one at once.
TEST(SimplePool, OpensOneBlockForThreadsThatMeet) {
    constexpr std::size_t g_iThreads = 4;
    constexpr std::size_t g_iRequests = 30'000;
    memory::SimplePool<char, 64, 0> pool;
    std::vector<std::vector<char*>> got(g_iThreads);
    vOnThreads(g_iThreads, [&](std::size_t iThread) {
        for (std::size_t i = 0; i < g_iRequests; ++i) {
            auto* pBytes = static_cast<char*>(pool.pAllocate(20));
            std::memset(pBytes, static_cast<int>(iThread + 1), 20);
            got[iThread].push_back(pBytes);
        }
    });
    for (std::size_t iThread = 0; iThread < g_iThreads; ++iThread)
        for (const char* pBytes : got[iThread])
            ASSERT_EQ(std::string(pBytes, 20), std::string(20, static_cast<char>(iThread + 1)));
    // Three requests fill a block; one that several had opened would not be filled.
    EXPECT_EQ(pool.iBytesReserved(), g_iThreads * g_iRequests / 3 * 64);
}

TEST(ZeroedBytes, AreThereEvenForNone) {
    constexpr std::size_t g_iMegabyte = 1024 * 1024;   // from here on the system maps them
    for (const std::size_t iBytes : {std::size_t{0}, std::size_t{1}, g_iMegabyte - 1, g_iMegabyte, 4 * g_iMegabyte}) {
        SCOPED_TRACE(iBytes);
        const memory::ZeroedBytes pBytes = memory::zeroedBytes(iBytes);
        ASSERT_NE(pBytes, nullptr);
        EXPECT_EQ(sZeroed(pBytes.get(), iBytes), "zeroed");
        std::memset(pBytes.get(), 1, iBytes);
    }
}

// Pieces are large allocations first; from 4 MiB on several share a segment of 2 MiB, which is no piece's own.
TEST(SimplePool, CutsPiecesFromSegments) {
    struct Row {
        std::size_t iBytes;
        std::size_t iReserved;   // by this request
    };
    constexpr std::size_t g_iMiB = 1024 * 1024;
    Pool pool;
    for (const Row& row : {Row{100, 16384}, Row{g_iMiB, g_iMiB}, Row{3 * g_iMiB, 3 * g_iMiB}, Row{g_iMiB, 2 * g_iMiB},
                           Row{g_iMiB, 0}, Row{g_iMiB + 1, 2 * g_iMiB}, Row{g_iMiB - 1, 0}, Row{1, 2 * g_iMiB},
                           Row{3 * g_iMiB, 3 * g_iMiB}, Row{2 * g_iMiB, 2 * g_iMiB}}) {
        SCOPED_TRACE(row.iBytes);
        const std::size_t iBefore = pool.iBytesReserved();
        void* pBytes = pool.pAllocatePiece(row.iBytes);
        EXPECT_EQ(pool.iBytesReserved() - iBefore, row.iReserved);
        EXPECT_EQ(sZeroed(pBytes, row.iBytes), "zeroed");
        std::memset(pBytes, 1, row.iBytes);
    }
}

// Where much is to come the first piece is cut from a segment, and the largest ones stand alone.
TEST(SimplePool, CutsPiecesFromSegmentsAtOnceWhereMuchIsExpected) {
    struct Row {
        std::size_t iExpected;
        std::size_t iBytes;
        std::size_t iReserved;   // by this request
    };
    constexpr std::size_t g_iMiB = 1024 * 1024;
    Pool pool;
    EXPECT_EQ(pool.iExpected(), 0U);
    for (const Row& row :
         {Row{g_iMiB / 2 - 1, 100, 16384}, Row{g_iMiB / 2 - 1, 20'000, 20'000}, Row{g_iMiB / 2, 20'000, 2 * g_iMiB},
          Row{g_iMiB / 2, g_iMiB, 0}, Row{g_iMiB / 2, 2 * g_iMiB + 1, 2 * g_iMiB + 1}, Row{g_iMiB / 2, 20'000, 0},
          Row{g_iMiB / 2, 5 * g_iMiB, 5 * g_iMiB}}) {
        SCOPED_TRACE(std::to_string(row.iExpected) + ", " + std::to_string(row.iBytes));
        pool.vExpect(row.iExpected);
        EXPECT_EQ(pool.iExpected(), row.iExpected);
        const std::size_t iBefore = pool.iBytesReserved();
        void* pBytes = pool.pAllocatePiece(row.iBytes);
        EXPECT_EQ(pool.iBytesReserved() - iBefore, row.iReserved);
        EXPECT_EQ(sZeroed(pBytes, row.iBytes), "zeroed");
        std::memset(pBytes, 1, row.iBytes);
    }
}

// What a large piece leaves of a segment is for small ones: each is cut where the least is left. Of two that are open the one
// with less left makes room for a third.
TEST(SimplePool, FillsTwoSegments) {
    constexpr std::size_t g_iQuarter = 256 * 1024;
    Pool pool;
    pool.vExpect(std::size_t{1} << 20);
    std::vector<char*> segments;   // in the order in which they were opened
    struct Row {
        std::size_t iQuarters;
        std::size_t iSegment;   // opened by this request where it is the next one
        std::size_t iPlace;     // there, in quarters of a MiB
    };
    for (const Row& row : {Row{5, 0, 0}, Row{4, 1, 0}, Row{1, 0, 5}, Row{4, 1, 4}, Row{1, 0, 6}, Row{6, 2, 0},
                           Row{1, 0, 7}, Row{1, 2, 6}, Row{6, 3, 0}, Row{1, 2, 7}, Row{1, 3, 6}, Row{8, 4, 0}}) {
        SCOPED_TRACE(std::to_string(row.iQuarters) + " of segment " + std::to_string(row.iSegment));
        const std::size_t iBefore = pool.iBytesReserved();
        auto* pBytes = static_cast<char*>(pool.pAllocatePiece(row.iQuarters * g_iQuarter));
        EXPECT_EQ(pool.iBytesReserved() - iBefore, row.iSegment == segments.size() ? 8 * g_iQuarter : 0);
        if (row.iSegment == segments.size()) segments.push_back(pBytes);
        ASSERT_LT(row.iSegment, segments.size());
        EXPECT_EQ(pBytes, segments[row.iSegment] + row.iPlace * g_iQuarter);
        EXPECT_EQ(sZeroed(pBytes, row.iQuarters * g_iQuarter), "zeroed");
        std::memset(pBytes, 1, row.iQuarters * g_iQuarter);
    }
}

// Threads that meet where a segment is opened get pieces from elsewhere: of whichever kind, each is zeroed and its owner's.
TEST(SimplePool, ServesPiecesToManyThreads) {
    constexpr std::size_t g_iThreads = 4;
    constexpr std::size_t g_iRequests = 60;
    constexpr std::size_t g_iPiece = 128 * 1024;
    Pool pool;
    static_cast<void>(pool.pAllocate(4 * 1024 * 1024));
    std::vector<std::vector<char*>> got(g_iThreads);
    std::vector<std::size_t> zeroed(g_iThreads);
    vOnThreads(g_iThreads, [&](std::size_t iThread) {
        for (std::size_t i = 0; i < g_iRequests; ++i) {
            auto* pBytes = static_cast<char*>(pool.pAllocatePiece(g_iPiece));
            zeroed[iThread] += sZeroed(pBytes, g_iPiece) == "zeroed";
            std::memset(pBytes, static_cast<int>(iThread + 1), g_iPiece);
            got[iThread].push_back(pBytes);
        }
    });
    for (std::size_t iThread = 0; iThread < g_iThreads; ++iThread) {
        EXPECT_EQ(zeroed[iThread], g_iRequests);
        for (const char* pBytes : got[iThread])
            ASSERT_EQ(std::string(pBytes, g_iPiece), std::string(g_iPiece, static_cast<char>(iThread + 1)));
    }
    EXPECT_GE(pool.iBytesReserved(), g_iThreads * g_iRequests * g_iPiece);
}

TEST(SimplePool, ATrimmedSegmentServesZeroesAgain) {
    Pool pool;
    static_cast<void>(pool.pAllocate(4 * 1024 * 1024));
    auto* pFirst = static_cast<char*>(pool.pAllocatePiece(100'000));
    std::memset(pFirst, 1, 100'000);
    pool.vTrim();
    EXPECT_EQ(std::string(pFirst, 100'000), std::string(100'000, '\1'));
    void* pSecond = pool.pAllocatePiece(1'000'000);
    EXPECT_EQ(pSecond, pFirst + 100'000);
    EXPECT_EQ(sZeroed(pSecond, 1'000'000), "zeroed");
    std::memset(pSecond, 2, 1'000'000);
    EXPECT_EQ(std::string(pFirst, 100'000), std::string(100'000, '\1'));
}

struct PageRow {
    std::size_t iOffset;
    std::size_t iBytes;
};

// Only whole pages within the range go back; what stands around them stays, wherever the range begins and ends.
TEST(ZeroedBytes, PagesComeAndGoWithinTheirRange) {
    constexpr std::size_t g_iSize = 64 * 1024;
    for (const PageRow& row : {PageRow{0, 0}, PageRow{0, g_iSize}, PageRow{1, 4095}, PageRow{1, 8191}, PageRow{1, 9000},
                               PageRow{4096, 4096}, PageRow{5000, 30'000}, PageRow{g_iSize - 10, 10}}) {
        SCOPED_TRACE(std::to_string(row.iOffset) + ", " + std::to_string(row.iBytes));
        const memory::ZeroedBytes pBytes = memory::zeroedSegment();
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pBytes.get()) % 4096, 0U);
        memory::vPopulate(pBytes.get() + row.iOffset, row.iBytes);
        EXPECT_EQ(sZeroed(pBytes.get(), g_iSize), "zeroed");
        std::memset(pBytes.get(), 1, g_iSize);
        std::memset(pBytes.get() + row.iOffset, 0, row.iBytes);
        memory::vGiveBack(pBytes.get() + row.iOffset, row.iBytes);
        EXPECT_EQ(std::string(pBytes.get(), row.iOffset), std::string(row.iOffset, '\1'));
        EXPECT_EQ(sZeroed(pBytes.get() + row.iOffset, row.iBytes), "zeroed");
        const std::size_t iBehind = g_iSize - row.iOffset - row.iBytes;
        EXPECT_EQ(std::string(pBytes.get() + g_iSize - iBehind, iBehind), std::string(iBehind, '\1'));
    }
}

// Through all sizes of pieces, from blocks of the heap to segments, and with segments from the first piece on; large requests
// among small ones.
class PoolArenaPieces : public testing::TestWithParam<std::size_t> {};

TEST_P(PoolArenaPieces, AreFilledToTheirEnd) {
    Pool pool;
    pool.vExpect(GetParam());
    std::vector<std::pair<char*, std::size_t>> got;
    {
        PoolArena arena(pool);
        for (std::size_t i = 0; i < 100'000; ++i) {
            const std::size_t iBytes = i % 10'000 == 9'999 ? i * 30 : 1 + i * 37 % 200;
            auto* pBytes = static_cast<char*>(arena.pAllocate(iBytes));
            ASSERT_EQ(sZeroed(pBytes, iBytes), "zeroed");
            std::memset(pBytes, static_cast<int>(i % 255 + 1), iBytes);
            got.emplace_back(pBytes, iBytes);
        }
    }
    pool.vTrim();
    for (std::size_t i = 0; i < got.size(); ++i)
        ASSERT_EQ(std::string(got[i].first, got[i].second), std::string(got[i].second, static_cast<char>(i % 255 + 1)));
}

INSTANTIATE_TEST_SUITE_P(Expected, PoolArenaPieces, testing::Values(0, 100'000'000));

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

}   // namespace
}   // namespace oxa::ifc
