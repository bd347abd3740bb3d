// SPDX-License-Identifier: Apache-2.0
// Changes of inverse lists are told to all who have a moment, whichever thread changes them.
#include "Format/Ifc/Store/InverseChanges.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

namespace oxa::ifc {
namespace {

TEST(InverseChanges, AreToldToAllWhoAskedBefore) {
    const std::uint64_t iFirst = InverseChanges::iMoment();
    const std::uint64_t iSame = InverseChanges::iMoment();
    EXPECT_TRUE(InverseChanges::boNoneSince(iFirst));
    EXPECT_TRUE(InverseChanges::boNoneSince(iSame));
    InverseChanges::vTell();
    InverseChanges::vTell();
    const std::uint64_t iThen = InverseChanges::iMoment();
    EXPECT_FALSE(InverseChanges::boNoneSince(iFirst));
    EXPECT_FALSE(InverseChanges::boNoneSince(iSame));
    EXPECT_TRUE(InverseChanges::boNoneSince(iThen));
    InverseChanges::vTell();
    EXPECT_FALSE(InverseChanges::boNoneSince(iFirst));
    EXPECT_FALSE(InverseChanges::boNoneSince(iThen));
}

// Each has a model of its own; a change that another one is telling must not hide the own one.
TEST(InverseChanges, OfEachThreadAreSeenByIt) {
    constexpr int g_iThreads = 4;
    constexpr int g_iTimes = 200000;
    std::atomic<int> iMissed{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < g_iThreads; ++i)
        threads.emplace_back([&iMissed] {
            for (int iTime = 0; iTime < g_iTimes; ++iTime) {
                const std::uint64_t iRead = InverseChanges::iMoment();
                InverseChanges::vTell();
                iMissed += InverseChanges::boNoneSince(iRead);
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(iMissed, 0);
}

}   // namespace
}   // namespace oxa::ifc
