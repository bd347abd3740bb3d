// SPDX-License-Identifier: Apache-2.0
// Memory as Linux and macOS map it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "platform/System.h"

namespace oxa::platform {
namespace {

constexpr std::size_t g_iPage = 64 * 1024;   // of the machines in question, the largest
constexpr std::size_t g_iSegment = std::size_t{2} * 1024 * 1024;

// Of any size, several at once; else a system would have no huge pages for them.
TEST(SystemMemory, ThatWillBeFilledBeginsAtAHugePage) {
    std::vector<std::pair<char*, std::size_t>> all;
    for (const std::size_t iBytes : {g_iSegment, g_iSegment + 1, g_iPage, 3 * g_iSegment, g_iSegment, std::size_t{1},
                                     5 * g_iSegment - g_iPage, g_iSegment}) {
        auto* pBytes = static_cast<char*>(pMap(iBytes, Pages::WillBeFilled));
        ASSERT_NE(pBytes, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pBytes) % g_iSegment, 0U) << iBytes;
        EXPECT_EQ(std::count(pBytes, pBytes + iBytes, 0), static_cast<std::ptrdiff_t>(iBytes));
        std::fill_n(pBytes, iBytes, static_cast<char>('a' + all.size()));
        all.emplace_back(pBytes, iBytes);
    }
    for (std::size_t i = 0; i < all.size(); ++i) {
        const auto [pBytes, iBytes] = all[i];
        EXPECT_EQ(std::count(pBytes, pBytes + iBytes, static_cast<char>('a' + i)), static_cast<std::ptrdiff_t>(iBytes));
        vUnmap(pBytes, iBytes);
    }
}

TEST(SystemMemory, OfWholePagesGivenBackIsZero) {
    auto* pBytes = static_cast<char*>(pMap(g_iSegment, Pages::WillBeFilled));
    ASSERT_NE(pBytes, nullptr);
    std::fill_n(pBytes, g_iSegment, 'x');
    vGiveBack(pBytes + 1, g_iSegment - 1);
    EXPECT_EQ(pBytes[0], 'x');
    EXPECT_TRUE(std::all_of(pBytes + g_iPage, pBytes + g_iSegment, [](char c) { return c == 0; }));
    vUnmap(pBytes, g_iSegment);
}
}   // namespace
}   // namespace oxa::platform
