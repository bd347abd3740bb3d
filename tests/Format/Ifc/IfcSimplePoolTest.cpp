// The pool of a model and the arenas of its threads.
#include "Format/Ifc/IfcSimplePool.h"

#include <gtest/gtest.h>

#include <set>

#include "OnThreads.h"

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
