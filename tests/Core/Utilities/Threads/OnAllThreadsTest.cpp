// SPDX-License-Identifier: Apache-2.0
// Work on several threads: each step once, and what one of them throws comes out on the caller's thread.
#include "Core/Utilities/Threads/OnAllThreads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <set>
#include <stdexcept>
#include <string>

namespace oxa::util {
namespace {

TEST(OnAllThreads, EachStepRunsOnceOnAThreadOfItsOwn) {
    for (const std::size_t iExtra : {0U, 1U, 5U}) {
        SCOPED_TRACE(iExtra);
        std::mutex mutex;
        std::map<std::size_t, std::thread::id> steps;
        std::atomic<std::size_t> iHere{0};
        int iStops = 0;
        vOnAllThreads(
            iExtra,
            [&](std::size_t i) {
                for (++iHere; iHere <= iExtra;) std::this_thread::yield();   // all at once
                const std::lock_guard lock(mutex);
                EXPECT_TRUE(steps.emplace(i, std::this_thread::get_id()).second);
            },
            [&] { ++iStops; });
        std::set<std::thread::id> threads;
        for (const auto& [i, id] : steps) threads.insert(id);
        EXPECT_EQ(steps.size(), iExtra + 1);
        EXPECT_EQ(threads.size(), iExtra + 1);
        EXPECT_EQ(steps.at(0), std::this_thread::get_id());
        EXPECT_EQ(steps.rbegin()->first, iExtra);
        EXPECT_EQ(iStops, 0);
    }
}

struct ThrowRow {
    const char* sRule;
    std::size_t iExtra;
    std::set<std::size_t> throwing;
};

TEST(OnAllThreads, WhatAStepThrowsEndsTheOthersAndPasses) {
    const ThrowRow rows[] = {
        {"the caller alone", 0, {0}}, {"the caller beside others", 3, {0}},
        {"another", 3, {2}},          {"the last", 3, {3}},
        {"two others", 3, {1, 3}},    {"all", 3, {0, 1, 2, 3}},
    };
    for (const ThrowRow& row : rows) {
        SCOPED_TRACE(row.sRule);
        std::atomic<std::size_t> iStops{0};
        std::atomic<std::size_t> iEnded{0};
        std::string sThrown;
        try {
            vOnAllThreads(
                row.iExtra,
                [&](std::size_t i) {
                    if (row.throwing.contains(i)) throw std::runtime_error(std::to_string(i));
                    while (iStops == 0) std::this_thread::yield();   // work without an end
                    ++iEnded;
                },
                [&] { ++iStops; });
        } catch (const std::runtime_error& fault) {
            sThrown = fault.what();
        }
        ASSERT_FALSE(sThrown.empty());
        EXPECT_TRUE(row.throwing.contains(std::stoul(sThrown)));
        EXPECT_EQ(iStops, row.throwing.size());
        EXPECT_EQ(iEnded, row.iExtra + 1 - row.throwing.size());
    }
}

TEST(OnAllThreads, AnyTypeMayBeThrown) {
    for (const std::size_t iThrowing : {0U, 1U})
        EXPECT_THROW(vOnAllThreads(
                         1,
                         [&](std::size_t i) {
                             if (i == iThrowing) throw "a text";
                         },
                         [] {}),
                     const char*);
}

}   // namespace
}   // namespace oxa::util
