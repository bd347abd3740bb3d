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

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "platform/Compiler.h"

namespace oxa::ifc::details {

#if defined(OXA_HAS_UNSIGNED128)
using platform::Unsigned128;

inline constexpr int g_iRealDigits = 16;
inline constexpr std::size_t g_iRealText = 24;   // characters that a text can have

// Powers of ten that are doubles, from 1E-4 on; of those below 1 the double is a little more, and the next one less.
inline constexpr std::array<double, 20> g_realPowers = {1e-4, 1e-3, 1e-2, 1e-1, 1e0,  1e1,  1e2,  1e3,  1e4,  1e5,
                                                        1e6,  1e7,  1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

// 10 to the power of the index.
inline constexpr std::array<std::uint64_t, 20> g_realScales = [] {
    std::array<std::uint64_t, 20> scales{1};
    for (std::size_t i = 1; i < scales.size(); ++i) scales[i] = scales[i - 1] * 10;
    return scales;
}();

inline constexpr std::array<char, 200> g_digitPairs = [] {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

// Eight digits.
inline void vDigits8(char* pTo, std::uint32_t uNumber) noexcept {
    const std::uint32_t uHigh = uNumber / 10000;
    const std::uint32_t uLow = uNumber % 10000;
    for (const auto& [iPlace, uPair] : {std::pair{0, uHigh / 100}, {2, uHigh % 100}, {4, uLow / 100}, {6, uLow % 100}})
        std::memcpy(pTo + iPlace, &g_digitPairs[2 * std::size_t{uPair}], 2);
}

// The text at pTo, where g_iRealText characters have room; its end. Null for a number below 1E-4 or from 1E15 on.
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
    auto uDigits = static_cast<std::uint64_t>(uScaled >> iShift);
    const Unsigned128 uRest = uScaled - (Unsigned128{uDigits} << iShift);
    const Unsigned128 uHalf = Unsigned128{1} << (iShift - 1);
    uDigits += uRest > uHalf || (uRest == uHalf && (uDigits & 1));
    if (uDigits == 10'000'000'000'000'000) {
        uDigits /= 10;
        ++iPower;
    }
    std::array<char, g_iRealDigits> digits;
    vDigits8(digits.data(), static_cast<std::uint32_t>(uDigits / 100'000'000));
    vDigits8(digits.data() + 8, static_cast<std::uint32_t>(uDigits % 100'000'000));
    int iLast = g_iRealDigits;
    while (digits[static_cast<std::size_t>(iLast - 1)] == '0') --iLast;
    if (iPower < 0) {
        std::memcpy(pTo, "0.000", 5);
        pTo += 1 - iPower;
        std::memcpy(pTo, digits.data(), digits.size());
        return pTo + iLast;
    }
    const int iWhole = iPower + 1;
    std::memcpy(pTo, digits.data(), digits.size());
    pTo[iWhole] = '.';
    if (iLast <= iWhole) return pTo + iWhole + 1;
    std::memcpy(pTo + iWhole + 1, digits.data() + iWhole, static_cast<std::size_t>(iLast - iWhole));
    return pTo + iLast + 1;
}
#endif

}   // namespace oxa::ifc::details
