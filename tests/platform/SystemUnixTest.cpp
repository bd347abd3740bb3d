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

constexpr std::size_t g_iUnixPage = 64 * 1024;   // of the machines in question, the largest
constexpr std::size_t g_iUnixSegment = std::size_t{2} * 1024 * 1024;

// Of any size, several at once; else a system would have no huge pages for them.
TEST(SystemMemory, ThatWillBeFilledBeginsAtAHugePage) {
    std::vector<std::pair<char*, std::size_t>> all;
    for (const std::size_t iBytes :
         {g_iUnixSegment, g_iUnixSegment + 1, g_iUnixPage, 3 * g_iUnixSegment, g_iUnixSegment, std::size_t{1},
          5 * g_iUnixSegment - g_iUnixPage, g_iUnixSegment}) {
        auto* pBytes = static_cast<char*>(pMap(iBytes, Pages::WillBeFilled));
        ASSERT_NE(pBytes, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pBytes) % g_iUnixSegment, 0U) << iBytes;
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
    auto* pBytes = static_cast<char*>(pMap(g_iUnixSegment, Pages::WillBeFilled));
    ASSERT_NE(pBytes, nullptr);
    std::fill_n(pBytes, g_iUnixSegment, 'x');
    vGiveBack(pBytes + 1, g_iUnixSegment - 1);
    EXPECT_EQ(pBytes[0], 'x');
    EXPECT_TRUE(std::all_of(pBytes + g_iUnixPage, pBytes + g_iUnixSegment, [](char c) { return c == 0; }));
    vUnmap(pBytes, g_iUnixSegment);
}
}   // namespace
}   // namespace oxa::platform
