// SPDX-License-Identifier: Apache-2.0
// RealText: a real number of ordinary size with up to sixteen digits, as "%.16G" has them, without the library.
//
// For      the cells that write reals. Not for numbers below 1E-4 or from 1E15 on: their text has an exponent, or all of
//          their digits in front of the point.
// Exact    a double is m * 2^e with m of 53 bits, and here e is below zero. With the power of ten that makes the number one
//          of sixteen digits in front of the point, 10^19 at the most, m fits into 117 bits. So shifting that right by -e
//          gives the sixteen digits, and what is shifted out says how to round: no step is inexact.
// Machines those whose compiler has integers of 128 bits; elsewhere the caller asks the library.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "Format/Ifc/Text/DigitText.h"
#include "platform/Compiler.h"

namespace oxa::ifc::details {

#if defined(OXA_HAS_UNSIGNED128)
using platform::Unsigned128;

inline constexpr std::size_t g_iRealText = 32;   // bytes that a text can touch

// Powers of ten that are doubles, from 1E-4 on; of those below 1 the double is a little more, and the next one less.
inline constexpr std::array<double, 20> g_realPowers = {1e-4, 1e-3, 1e-2, 1e-1, 1e0,  1e1,  1e2,  1e3,  1e4,  1e5,
                                                        1e6,  1e7,  1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

// 10 to the power of the index.
inline constexpr std::array<std::uint64_t, 20> g_realScales = [] {
    std::array<std::uint64_t, 20> scales{1};
    for (std::size_t i = 1; i < scales.size(); ++i) scales[i] = scales[i - 1] * 10;
    return scales;
}();

// The text at pTo, where g_iRealText bytes have room; its end. Null for a number below 1E-4 or from 1E15 on.
[[nodiscard]] inline char* pRealText(char* pTo, double size) noexcept {
    if (!(size >= g_realPowers.front() && size < g_realPowers.back())) return nullptr;
    const auto uBits = std::bit_cast<std::uint64_t>(size);
    const int iExponent = static_cast<int>(uBits >> 52) - 1075;   // of the last bit: -66 to -4
    const std::uint64_t uFraction = (uBits & ((std::uint64_t{1} << 52) - 1)) | std::uint64_t{1} << 52;
    // The power of ten that the number begins with: nearly by that of two, then by comparison.
    int iPower = (iExponent + 52) * 1233 >> 12;
    iPower += size >= g_realPowers[static_cast<std::size_t>(iPower + 5)];
    iPower -= size < g_realPowers[static_cast<std::size_t>(iPower + 4)];
    const Unsigned128 uScaled = Unsigned128{uFraction} * g_realScales[static_cast<std::size_t>(15 - iPower)];
    const int iShift = -iExponent;
    // To the nearest, a tie to the even one: with half of a last digit added, what is shifted out of a tie is all zeros.
    const Unsigned128 uRounded = uScaled + (Unsigned128{1} << (iShift - 1));
    auto uNumber = static_cast<std::uint64_t>(uRounded >> iShift);
    if (uRounded << (128 - iShift) == 0) uNumber &= ~std::uint64_t{1};
    if (uNumber == 10'000'000'000'000'000) {
        uNumber /= 10;
        ++iPower;
    }
    const std::uint64_t uHigh = uDigits8(static_cast<std::uint32_t>(uNumber / g_eightDigits));
    const auto uLowNumber = static_cast<std::uint32_t>(uNumber % g_eightDigits);
    const std::uint64_t uLow = uLowNumber ? uDigits8(uLowNumber) : 0;   // few decimals, as most have
    // Up to the last digit that is no zero; the first one of all is none.
    const int iLast = uLow ? 16 - std::countl_zero(uLow) / 8 : 8 - std::countl_zero(uHigh) / 8;
    if (iPower < 0) {
        std::memcpy(pTo, "0.000", 5);
        pTo += 1 - iPower;
        vBytes8(pTo, uHigh | g_zeroDigits);
        vBytes8(pTo + 8, uLow | g_zeroDigits);
        return pTo + iLast;
    }
    const int iWhole = iPower + 1;
    const Unsigned128 uDigits = Unsigned128{uLow | g_zeroDigits} << 64 | (uHigh | g_zeroDigits);
    const Unsigned128 uDecimals = uDigits >> 8 * iWhole;
    vBytes8(pTo, static_cast<std::uint64_t>(uDigits));
    vBytes8(pTo + 8, static_cast<std::uint64_t>(uDigits >> 64));
    pTo[iWhole] = '.';
    vBytes8(pTo + iWhole + 1, static_cast<std::uint64_t>(uDecimals));
    vBytes8(pTo + iWhole + 9, static_cast<std::uint64_t>(uDecimals >> 64));
    return pTo + std::max(iLast, iWhole) + 1;
}
#endif

}   // namespace oxa::ifc::details
