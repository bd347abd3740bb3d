// SPDX-License-Identifier: Apache-2.0
// Memory as the system maps it, and the stack of its threads.
#include "platform/System.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace oxa::platform {
namespace {

constexpr std::size_t g_iPage = 16 * 1024;   // of the systems in question, the largest
constexpr std::size_t g_iSegment = std::size_t{2} * 1024 * 1024;

bool boZeros(const char* pBytes, std::size_t iCount) {
    return std::all_of(pBytes, pBytes + iCount, [](char c) { return c == 0; });
}

TEST(SystemMemory, IsZeroedAndWritable) {
    for (const Pages ePages : {Pages::MayStayEmpty, Pages::WillBeFilled}) {
        auto* pBytes = static_cast<char*>(pMap(g_iSegment, ePages));
        ASSERT_NE(pBytes, nullptr);
        EXPECT_TRUE(boZeros(pBytes, g_iSegment));
        std::fill_n(pBytes, g_iSegment, 'x');
        EXPECT_EQ(std::count(pBytes, pBytes + g_iSegment, 'x'), static_cast<std::ptrdiff_t>(g_iSegment));
        vUnmap(pBytes, g_iSegment);
    }
}

TEST(SystemMemory, ThatIsGivenBackIsZeroOrAsItWas) {
    auto* pBytes = static_cast<char*>(pMap(g_iSegment, Pages::MayStayEmpty));
    ASSERT_NE(pBytes, nullptr);
    pBytes[0] = 'a';
    pBytes[g_iSegment - 1] = 'z';
    vFillSoon(pBytes + 1, g_iSegment - 2);
    vPopulate(pBytes + 1, g_iSegment - 2);
    vGiveBack(pBytes + 1, g_iSegment - 2);   // the first and the last page are not whole
    vGiveBack(pBytes + 1, g_iPage / 4);
    EXPECT_EQ(pBytes[0], 'a');
    EXPECT_TRUE(boZeros(pBytes + 1, g_iSegment - 2));
    EXPECT_EQ(pBytes[g_iSegment - 1], 'z');
    std::fill_n(pBytes + g_iPage, g_iPage, 'x');
    EXPECT_EQ(std::count(pBytes, pBytes + g_iSegment, 'x'), static_cast<std::ptrdiff_t>(g_iPage));
    vUnmap(pBytes, g_iSegment);
}

TEST(SystemMemory, NobodyHasIsNotGiven) {
    EXPECT_EQ(pMap(std::size_t{1} << 62, Pages::MayStayEmpty), nullptr);
    EXPECT_EQ(pMap(std::size_t{1} << 61, Pages::WillBeFilled), nullptr);
}

TEST(SystemThread, HasAStack) { EXPECT_GE(iThreadStack(), std::size_t{64} * 1024); }

}   // namespace
}   // namespace oxa::platform
