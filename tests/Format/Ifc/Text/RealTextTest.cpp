// SPDX-License-Identifier: Apache-2.0
// The text of reals without the library, held against the library; and whether a text needs no encoding.
#include "Format/Ifc/Text/RealText.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "Format/Ifc/Text/TextScan.h"

namespace oxa::ifc::details {
namespace {

#if defined(OXA_HAS_UNSIGNED128)
// "%.16G" with a point behind whole numbers.
std::string sByLibrary(double value) {
    char text[64];
    char* const pEnd = std::to_chars(text, text + sizeof text, value, std::chars_format::general, 16).ptr;
    std::string sText(text, pEnd);
    if (sText.find('.') == std::string::npos) sText += '.';
    return sText;
}

std::string sReal(double value) {
    char text[g_iRealText];
    char* const pEnd = pRealText(text, value);
    return pEnd ? std::string(text, pEnd) : std::string();
}

TEST(RealText, HasSixteenDigits) {
    const struct {
        double value;
        const char* pText;
    } rows[] = {
        {0.5, "0.5"},
        {1.0, "1."},
        {2.5, "2.5"},
        {100.0, "100."},
        {0.1, "0.1"},
        {0.0001, "0.0001"},
        {0.00012, "0.00012"},
        {0.1 + 0.2, "0.3"},
        {1.0 / 3.0, "0.3333333333333333"},
        {2.0 / 3.0, "0.6666666666666666"},
        {123456789.125, "123456789.125"},
        {999999999999999.0, "999999999999999."},
        {999999999999999.9, "999999999999999.9"},
        {std::nextafter(1.0, 0.0), "0.9999999999999999"},
        {std::nextafter(1e15, 0.0), "999999999999999.9"},
        {562949953421312.25, "562949953421312.2"},   // ties go to the even digit
        {562949953421312.75, "562949953421312.8"},
        {4503599627370.49609375, "4503599627370.496"},
    };
    for (const auto& row : rows) EXPECT_EQ(sReal(row.value), row.pText);
}

TEST(RealText, LeavesOtherSizesToTheLibrary) {
    for (const double value : {0.0, -1.0, std::nextafter(1e-4, 0.0), 1e-300, 1e15, 1e300, HUGE_VAL, std::nan("")})
        EXPECT_EQ(sReal(value), "") << value;
}

TEST(RealText, IsThatOfTheLibrary) {
    std::mt19937_64 random(3);
    const auto iBelow = [&random](int iEnd) { return static_cast<int>(random() % static_cast<unsigned>(iEnd)); };
    for (int i = 0; i < 60'000; ++i) {
        const double power = std::pow(10.0, iBelow(20) - 4);
        const double unit = static_cast<double>(random() >> 11) * 0x1p-53;
        // Any; few decimals; beside a power of ten; ties of binary fractions.
        for (const double value : {unit * power, std::floor(unit * 1e9) / std::pow(10.0, iBelow(13)),
                                   power + (iBelow(400) - 200) * std::ldexp(power, -53),
                                   std::floor(unit * 0x1p53) * std::ldexp(1.0, -iBelow(60))})
            if (value >= 1e-4 && value < 1e15) {
                ASSERT_EQ(sReal(value), sByLibrary(value)) << std::hexfloat << value;
            }
    }
}
#endif

TEST(PlainText, IsPrintableAsciiWithoutQuoteAndBackslashAndIsCopied) {
    for (const std::size_t iSize : {0U, 1U, 2U, 3U, 4U, 5U, 7U, 8U, 9U, 15U, 16U, 17U, 31U, 32U, 33U, 50U}) {
        const auto vCheck = [iSize](const std::string& sText, bool boPlain) {
            const std::vector<char> from(sText.begin(), sText.end());   // a sanitizer sees every byte read outside
            std::string sTo(iSize + 2, '#');
            const char* pEnd = pPlainCopied(sTo.data() + 1, {from.data(), iSize});
            ASSERT_EQ(pEnd, boPlain ? sTo.data() + 1 + iSize : nullptr);
            ASSERT_EQ(sTo.front(), '#');
            ASSERT_EQ(sTo.back(), '#');
            if (boPlain) {
                ASSERT_EQ(sTo.substr(1, iSize), sText);
            }
        };
        vCheck(std::string(iSize, '~'), true);
        for (std::size_t iPlace = 0; iPlace < iSize; ++iPlace)
            for (int iByte = 0; iByte < 256; ++iByte)
                for (const char cOther : {'~', '\x28', '\x5B'}) {
                    std::string sText(iSize, cOther);
                    sText[iPlace] = static_cast<char>(iByte);
                    vCheck(sText, iByte >= ' ' && iByte <= '~' && iByte != '\'' && iByte != '\\');
                }
    }
}

}   // namespace
}   // namespace oxa::ifc::details
