// SPDX-License-Identifier: Apache-2.0
// The real at the start of a text: what C's strtod takes, in any locale and on any system.
#include "Format/Ifc/Text/LenientReal.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace oxa::ifc {
namespace {

using Limits = std::numeric_limits<double>;

struct RealRow {
    const char* pRule;
    std::string_view text;
    double value;
    std::size_t iLength;
};
const RealRow g_lenientRows[] = {
    {"nothing", "", 0, 0},
    {"blanks alone", " \t", 0, 0},
    {"a word", "x1", 0, 0},
    {"a sign alone", "-", 0, 0},
    {"two signs", "+-1", 0, 0},
    {"a point alone", ".", 0, 0},
    {"a whole number", "12", 12, 2},
    {"blanks before it", " \t\n\v\f\r-1.5", -1.5, 10},
    {"a plus", "+1.5", 1.5, 4},
    {"no digit before the point", ".5", 0.5, 2},
    {"none behind it", "5.", 5, 2},
    {"what follows stays", "1.5mm", 1.5, 3},
    {"a comma is no point", "1,5", 1, 1},
    {"an exponent", "1e3", 1000, 3},
    {"an exponent without digits is none", "1e+", 1, 1},
    {"negative zero", "-0", -0.0, 2},
    {"beyond the largest", "1e999", Limits::infinity(), 5},
    {"below the smallest", "-1e-999", -0.0, 7},
    {"the smallest", "4.9e-324", Limits::denorm_min(), 8},
    {"infinity", "-INFinityx", -Limits::infinity(), 9},
    {"in short", "infinit", Limits::infinity(), 3},
    {"hexadecimal", "0x1.8p1", 3, 7},
    {"in capitals", "-0XA.8P-1z", -5.25, 9},
    {"without a digit there is the zero", "0x.p1", 0, 1},
    {"with digits behind the point alone", "0x.8", 0.5, 4},
    {"a binary exponent without digits is none", "0x1p", 1, 3},
    {"a half goes to the even one", "0x1.00000000000008p0", 1, 20},
    {"and up where anything follows", "0x1.000000000000080000000001p0", 1 + Limits::epsilon(), 30},
    {"the largest", "0x1.fffffffffffffp1023", Limits::max(), 22},
    {"beyond it", "0x1.fffffffffffff8p1023", Limits::infinity(), 23},
    {"the smallest, by half", "0x0.8p-1074", 0, 11},
    {"and more than half", "0x0.8001p-1074", Limits::denorm_min(), 14},
    {"a huge exponent", "0x1p99999999999999999999", Limits::infinity(), 24},
    {"of nothing", "0x0p99999999999999999999", 0, 24},
};

std::uint64_t iBits(double value) {
    std::uint64_t iValue = 0;
    std::memcpy(&iValue, &value, sizeof value);
    return iValue;
}

TEST(LenientReal, TakesTheStartOfTheText) {
    for (const RealRow& row : g_lenientRows) {
        SCOPED_TRACE(row.pRule);
        const LenientReal real = lenientReal(row.text);
        EXPECT_EQ(iBits(real.value), iBits(row.value)) << real.value;
        EXPECT_EQ(real.iLength, row.iLength);
    }
    for (const std::string_view text : {"nan", "-NaN", "nan(1)"}) {
        EXPECT_TRUE(std::isnan(lenientReal(text).value)) << text;
        EXPECT_EQ(lenientReal(text).iLength, text.size());
    }
}

TEST(LenientReal, HexadecimalDigitsAreExact) {
    std::mt19937_64 random(5);
    for (int i = 0; i < 20'000; ++i) {
        double value = 0;
        const std::uint64_t iValue = random();
        std::memcpy(&value, &iValue, sizeof value);
        if (!std::isfinite(value)) continue;
        int iExponent = 0;
        const double fraction = std::frexp(value, &iExponent);
        const auto iDigits = static_cast<long long>(std::ldexp(std::fabs(fraction), Limits::digits));
        char text[64];
        std::snprintf(text, sizeof text, "%s0x%llxp%d", std::signbit(value) ? "-" : "", iDigits,
                      iExponent - Limits::digits);
        EXPECT_EQ(iBits(lenientReal(text).value), iBits(value)) << text;
    }
}

}   // namespace
}   // namespace oxa::ifc
