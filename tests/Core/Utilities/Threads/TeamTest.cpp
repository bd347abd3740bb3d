// SPDX-License-Identifier: Apache-2.0
// Teams of threads: who works, who waits for whom, and what becomes of a fault.
#include "Core/Utilities/Threads/Team.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace oxa::util {
namespace {

TEST(Team, EachPartIsWorkedOnOnceAndTheFirstByTheCaller) {
    for (const unsigned iThreads : {0U, 1U, 2U, 5U}) {
        std::array<std::atomic<int>, 5> calls{};
        std::thread::id first;
        Team::vRun(iThreads, [&](Team& team, unsigned iPart) {
            EXPECT_EQ(team.iParts(), std::max(iThreads, 1U));
            ++calls.at(iPart);
            if (iPart == 0) first = std::this_thread::get_id();
        });
        EXPECT_EQ(first, std::this_thread::get_id()) << iThreads;
        for (unsigned i = 0; i < calls.size(); ++i) EXPECT_EQ(calls[i], i < std::max(iThreads, 1U) ? 1 : 0) << iThreads;
    }
}

// Plain memory: a race here is one that the thread sanitizer tells.
TEST(Team, BehindAMeetingEachSeesWhatAllHaveWritten) {
    std::vector<std::array<int, 4>> rounds(200);
    std::atomic<int> iWrong{0};
    Team::vRun(4, [&](Team& team, unsigned iPart) {
        for (std::size_t i = 0; i < rounds.size(); ++i) {
            rounds[i][iPart] = static_cast<int>(i) + 1;
            ASSERT_TRUE(team.boMeet(iPart));
            for (const int iValue : rounds[i]) iWrong += iValue != static_cast<int>(i) + 1;
        }
    });
    EXPECT_EQ(iWrong, 0);
}

TEST(Team, AFaultReachesTheCallerAndEndsTheOthers) {
    struct Row {
        unsigned iPart;   // that throws
        int iMeetings;    // that it comes to before
    };
    for (const Row row : {Row{0, 0}, Row{0, 3}, Row{2, 0}, Row{2, 3}, Row{1, 9}}) {
        std::atomic<int> iEnded{0};
        std::string sTold;
        try {
            Team::vRun(3, [&](Team& team, unsigned iPart) {
                for (int i = 0; i < 10; ++i) {
                    if (iPart == row.iPart && i == row.iMeetings)
                        throw std::runtime_error("part " + std::to_string(iPart));
                    if (!team.boMeet(iPart)) break;
                }
                ++iEnded;
            });
        } catch (const std::runtime_error& fault) {
            sTold = fault.what();
        }
        EXPECT_EQ(sTold, "part " + std::to_string(row.iPart));
        EXPECT_EQ(iEnded, 2);
    }
}

TEST(Team, OfSeveralFaultsOneIsTold) {
    EXPECT_THROW(Team::vRun(4, [](Team&, unsigned) { throw std::runtime_error("each"); }), std::runtime_error);
}

}   // namespace
}   // namespace oxa::util
