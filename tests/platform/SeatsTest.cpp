// SPDX-License-Identifier: Apache-2.0
// Threads that work together leave each other's processor, and nobody waits for a thread that does not come.
//
// The system may move any thread at any time: what it decides about holds for most of some rounds.
#include "platform/Seats.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <optional>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/System.h"

namespace oxa::platform {
namespace {

constexpr int g_iRounds = 20;
constexpr int g_iMost = 15;

// Whether threads can be on several processors, and the system tells on which.
bool boHasProcessors() { return processors().size() > 1 && processorNow().has_value(); }

// Where two threads are that begin on the same processor, once they have a seat. None ends before the other has one.
std::array<std::optional<unsigned>, 2> placesOfTwo(unsigned iProcessor) {
    Seats seats(2);
    std::atomic<unsigned> iTaken = 0;
    std::array<std::optional<unsigned>, 2> places;
    const auto run = [&](std::size_t iThread) {
        vMoveTo(iProcessor);
        seats.vTake(iThread);
        places[iThread] = processorNow();
        ++iTaken;
        while (iTaken.load() < 2U) continue;
    };
    std::thread other([&run] { run(1); });
    run(0);
    other.join();
    return places;
}

TEST(Seats, AreOnDifferentProcessors) {
    if (!boHasProcessors()) GTEST_SKIP() << "one processor, or none that the system tells";
    const std::vector<unsigned> allowed = processors();
    int iDifferent = 0;
    for (int iRound = 0; iRound < g_iRounds; ++iRound) {
        const auto places = placesOfTwo(allowed[static_cast<std::size_t>(iRound) % allowed.size()]);
        ASSERT_TRUE(places[0].has_value() && places[1].has_value());
        if (places[0] != places[1]) ++iDifferent;
    }
    EXPECT_GE(iDifferent, g_iMost);
}

TEST(Seats, AreWhereTheThreadIsIfNoOtherIs) {
    if (!boHasProcessors()) GTEST_SKIP() << "one processor, or none that the system tells";
    const std::vector<unsigned> allowed = processors();
    int iSame = 0;
    for (int iRound = 0; iRound < g_iRounds; ++iRound) {
        const unsigned iProcessor = allowed[static_cast<std::size_t>(iRound) % allowed.size()];
        Seats seats(2);
        vMoveTo(iProcessor);
        seats.vTake(1);
        seats.vTake(1);   // its own seat is in nobody's way
        if (processorNow() == iProcessor) ++iSame;
    }
    EXPECT_GE(iSame, g_iMost);
}

TEST(Seats, LeaveTheProcessorsThatMayBeUsed) {
    if (!boHasProcessors()) GTEST_SKIP() << "one processor, or none that the system tells";
    const std::vector<unsigned> allowed = processors();
    for (const unsigned iProcessor : {allowed.front(), allowed.back()}) {
        SCOPED_TRACE(iProcessor);
        Seats seats(2);
        vMoveTo(iProcessor);
        seats.vTake(0);
        EXPECT_EQ(processors(), allowed);
        std::vector<unsigned> before;
        std::vector<unsigned> after;
        std::thread other([&] {
            before = processors();
            vMoveTo(iProcessor);
            seats.vTake(1);   // has to move
            after = processors();
        });
        other.join();
        EXPECT_EQ(before, allowed);
        EXPECT_EQ(after, allowed);
    }
}

TEST(Seats, MayBeMoreThanProcessors) {
    const std::vector<unsigned> allowed = processors();
    const std::size_t iThreads = std::max<std::size_t>(allowed.size(), std::thread::hardware_concurrency()) + 3;
    Seats seats(iThreads);
    std::atomic<std::size_t> iTaken = 0;
    std::vector<std::optional<unsigned>> places(iThreads);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < iThreads; ++i) {
        threads.emplace_back([&, i] {
            for (int iTurn = 0; iTurn < 3; ++iTurn) seats.vTake(i);
            places[i] = processorNow();
            ++iTaken;
            while (iTaken.load() < iThreads) std::this_thread::yield();
            seats.vAwait();
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (const std::optional<unsigned>& place : places) {
        EXPECT_EQ(place.has_value(), !allowed.empty());
        if (place) {
            EXPECT_EQ(std::count(allowed.begin(), allowed.end(), *place), 1);
        }
    }
}

TEST(Seats, AreNotAwaitedForLong) {
    Seats seats(3);
    seats.vTake(0);
    seats.vTake(2);
    const auto begin = std::chrono::steady_clock::now();
    seats.vAwait();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

}   // namespace
}   // namespace oxa::platform
