// SPDX-License-Identifier: Apache-2.0
// Memory as Linux and macOS map it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

#include "platform/System.h"

namespace oxa::platform {
namespace {

constexpr std::size_t g_iPage = 64 * 1024;   // of the machines in question, the largest
constexpr std::size_t g_iSegment = std::size_t{2} * 1024 * 1024;

TEST(SystemMemory, OfASegmentBeginsAtAMultipleOfItsSize) {
    void* pBytes = pMap(g_iSegment, Pages::WillBeFilled);
    ASSERT_NE(pBytes, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pBytes) % g_iSegment, 0u);
    vUnmap(pBytes, g_iSegment);
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
