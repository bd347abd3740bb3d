// SPDX-License-Identifier: Apache-2.0
// The bits of the numbers that a walk has met.
#include "Format/Ifc/Store/SeenNumbers.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "Format/Ifc/OnThreads.h"

namespace oxa::ifc {
namespace {

// On both sides of where a word, a page and a folder of the tree end. One thread may mark in a shorter way.
TEST(SeenNumbers, AnswerOnceForEachNumber) {
    constexpr std::uint32_t g_numbers[] = {0,          1,          62,          63,         64,         32'767,
                                           32'768,     16'777'215, 16'777'216,  16'777'217, 2147483647, 2147483648,
                                           4294934527, 4294934528, 4294967294U, 4294967295U};
    for (const auto boMark : {&SeenNumbers::boMark, &SeenNumbers::boMarkAlone}) {
        SCOPED_TRACE(boMark == &SeenNumbers::boMark ? "beside others" : "alone");
        SeenNumbers seen;
        SeenNumbers::Near near;
        EXPECT_EQ(seen.iCount(), 0U);
        for (const std::uint32_t iNumber : g_numbers) {
            EXPECT_FALSE(seen.boMarked(iNumber)) << iNumber;
            EXPECT_TRUE((seen.*boMark)(iNumber, near)) << iNumber;
            EXPECT_TRUE(seen.boMarked(iNumber)) << iNumber;
        }
        EXPECT_FALSE(seen.boMarked(2));
        EXPECT_FALSE(seen.boMarked(65));
        std::vector<std::uint32_t> visited;
        seen.vForEach([&visited](std::uint32_t iNumber) { visited.push_back(iNumber); });
        EXPECT_EQ(visited, std::vector<std::uint32_t>(std::begin(g_numbers), std::end(g_numbers)));
        EXPECT_EQ(seen.iCount(), std::size(g_numbers));
        for (const std::uint32_t iNumber : g_numbers) EXPECT_FALSE((seen.*boMark)(iNumber, near)) << iNumber;
        for (const std::uint32_t iNumber : g_numbers) {
            SeenNumbers::Near fresh;
            EXPECT_FALSE((seen.*boMark)(iNumber, fresh)) << iNumber;
        }
    }
}

// The short look knows the page of the last number alone, and answers "no" for any other.
TEST(SeenNumbers, AreToldFromBesideTheLastOne) {
    SeenNumbers seen;
    SeenNumbers::Near near;
    EXPECT_FALSE(SeenNumbers::boMarkedBeside(0, near));
    EXPECT_TRUE(seen.boMark(32'768, near));
    const struct {
        std::uint32_t iNumber;
        bool boMarked;
    } rows[] = {{32'768, true}, {32'769, false}, {65'535, false}, {0, false}, {32'767, false}, {65'536, false}};
    for (const auto& row : rows) EXPECT_EQ(SeenNumbers::boMarkedBeside(row.iNumber, near), row.boMarked) << row.iNumber;
    EXPECT_TRUE(seen.boMark(4294967295U, near));
    EXPECT_TRUE(SeenNumbers::boMarkedBeside(4294967295U, near));
    EXPECT_FALSE(SeenNumbers::boMarkedBeside(32'768, near)) << "on another page";
}

// A page a number, so that the threads come together where one is made.
TEST(SeenNumbers, AnswerOneOfManyThreads) {
    constexpr std::size_t g_iThreads = 4;
    constexpr std::uint32_t g_iPages = 4'000;
    SeenNumbers seen;
    std::vector<std::size_t> met(g_iThreads);
    vOnThreads(g_iThreads, [&](std::size_t iThread) {
        SeenNumbers::Near near;
        for (std::uint32_t i = 0; i < g_iPages; ++i) met[iThread] += seen.boMark(i * 32'768, near);
    });
    EXPECT_EQ(std::accumulate(met.begin(), met.end(), std::size_t{0}), g_iPages);
}

}   // namespace
}   // namespace oxa::ifc
