// SPDX-License-Identifier: Apache-2.0
// Where text is composed in place: the room ahead of it, copies, and the digits of whole numbers.
#include "Format/Ifc/Text/TextRoom.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "Format/Ifc/Text/DigitText.h"

namespace oxa::ifc::details {
namespace {

constexpr std::size_t g_iRoom = TextRoom::g_iRoom;

TEST(TextRoom, KeepsWhatIsThereAndHasRoomBehindIt) {
    for (const std::size_t iUsed : {0U, 1U, 127U, 128U, 129U, 1023U, 1024U, 5000U})
        for (const std::size_t iSize : {iUsed, iUsed + 1, iUsed + g_iRoom - 1, iUsed + g_iRoom, iUsed + 9000}) {
            SCOPED_TRACE(std::to_string(iUsed) + " of " + std::to_string(iSize));
            std::string text(iUsed, 'a');
            text.resize(iSize, 'b');
            const TextRoom room(text, iUsed);
            EXPECT_GE(text.size(), iUsed + g_iRoom);
            EXPECT_EQ(text.substr(0, iUsed), std::string(iUsed, 'a'));
            EXPECT_EQ(room.iPlaceOf(room.pAt(iUsed)), iUsed);
        }
}

// Whatever is asked for, each time that much is written, and what may stand around it.
TEST(TextRoom, GrowsByAsMuchAsIsAskedFor) {
    for (const std::size_t iPiece : {0U, 1U, 100U, 895U, 896U, 897U, 1024U, 4096U, 70'000U}) {
        SCOPED_TRACE(iPiece);
        std::string text;
        TextRoom room(text, 0);
        char* p = room.pAt(0);
        std::string sExpected;
        for (int i = 0; i < 40; ++i) {
            const char c = static_cast<char>('a' + i % 26);
            p = room.pRoom(p, iPiece);
            ASSERT_GE(text.size(), sExpected.size() + iPiece + g_iRoom);
            p = std::fill_n(p, iPiece + g_iRoom, c);
            sExpected.append(iPiece + g_iRoom, c);
        }
        ASSERT_EQ(room.iPlaceOf(p), sExpected.size());
        text.resize(room.iPlaceOf(p));
        EXPECT_EQ(text, sExpected);
    }
    std::string text;
    TextRoom room(text, 0);
    char* p = room.pAt(0);
    std::string sExpected;
    for (std::size_t i = 0; i < 300; ++i) {
        p = room.pRoom(p);
        ASSERT_GE(text.size() - room.iPlaceOf(p), g_iRoom);
        p = std::fill_n(p, g_iRoom, '+');
        sExpected.append(g_iRoom, '+');
    }
    text.resize(room.iPlaceOf(p));
    EXPECT_EQ(text, sExpected);
}

TEST(CopiedText, IsThereToTheLastByteAndNoFurther) {
    for (std::size_t iSize = 0; iSize < 150; ++iSize) {
        std::string sText;
        for (std::size_t i = 0; i < iSize; ++i) sText += static_cast<char>(1 + i % 127);
        const std::vector<char> from(sText.begin(), sText.end());   // a sanitizer sees every byte read outside
        std::string sTo(iSize + 2, '#');
        EXPECT_EQ(pCopied(sTo.data() + 1, {from.data(), iSize}), sTo.data() + 1 + iSize);
        EXPECT_EQ(sTo, '#' + sText + '#') << iSize;
    }
}

std::string sNumber(std::uint64_t uNumber) {
    char text[g_iNumberText];
    return {text, pNumberText(text, uNumber)};
}
std::string sInteger(long long iNumber) {
    char text[g_iNumberText];
    return {text, pIntegerText(text, iNumber)};
}

TEST(NumberText, HasEveryDigitAndNoZeroInFront) {
    EXPECT_EQ(sNumber(0), "0");
    std::uint64_t uPower = 1;
    for (int iDigits = 1; iDigits <= 20; ++iDigits) {
        for (const std::uint64_t uNumber : {uPower - 1, uPower, uPower + 1, 2 * uPower - 1, 9 * (uPower / 10) + 8})
            EXPECT_EQ(sNumber(uNumber), std::to_string(uNumber));
        uPower *= 10;
    }
    EXPECT_EQ(sNumber(std::numeric_limits<std::uint32_t>::max()), "4294967295");
    EXPECT_EQ(sNumber(std::numeric_limits<std::uint64_t>::max()), "18446744073709551615");
    std::mt19937_64 random(7);
    for (int i = 0; i < 100'000; ++i) {
        const std::uint64_t uNumber = random() >> (i % 64);
        ASSERT_EQ(sNumber(uNumber), std::to_string(uNumber));
    }
}

TEST(NumberText, HasASignBelowZero) {
    const struct {
        long long iNumber;
        const char* sText;
    } rows[] = {{0, "0"},
                {-1, "-1"},
                {99'999'999, "99999999"},
                {-99'999'999, "-99999999"},
                {-100'000'000, "-100000000"},
                {std::numeric_limits<long long>::max(), "9223372036854775807"},
                {std::numeric_limits<long long>::min(), "-9223372036854775808"}};
    for (const auto& row : rows) EXPECT_EQ(sInteger(row.iNumber), row.sText);
}

// Each part that the digits are cut into, over its whole range.
TEST(EightDigits, AreThoseOfTheNumber) {
    const auto vCheck = [](std::uint32_t uNumber) {
        const std::uint64_t uDigits = uDigits8(uNumber);
        std::uint32_t uAgain = 0;
        for (int i = 0; i < 8; ++i) {
            const auto uDigit = static_cast<std::uint32_t>(uDigits >> 8 * i & 0xFF);
            ASSERT_LT(uDigit, 10U) << uNumber;
            uAgain = 10 * uAgain + uDigit;
        }
        ASSERT_EQ(uAgain, uNumber);
    };
    for (std::uint32_t i = 0; i < 10'000; ++i) {
        vCheck(i);
        vCheck(i * 10'000);
        vCheck(i * 10'000 + 9'999 - i);
    }
}

}   // namespace
}   // namespace oxa::ifc::details
