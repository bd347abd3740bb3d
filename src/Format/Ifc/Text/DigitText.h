// SPDX-License-Identifier: Apache-2.0
// DigitText: whole numbers as text, in place, without the library.
//
// For      the writers: numbers of instances, integers, and the digits of reals.
// Speed    eight digits come at once and lie in one integer, the first in its lowest byte. How many of them are zeros in
//          front, or behind, is counted there: no branch depends on the length of a number, which is hard to foresee.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace oxa::ifc::details {

inline constexpr std::uint64_t g_zeroDigits = 0x3030303030303030u;   // eight times "0"

// The eight digits of a number below 1E8, as values from 0 to 9.
//
// The number is cut into halves of four digits, those into pairs, and the pairs into digits: each time all parts at once,
// in lanes of one integer that are wide enough for the products. Division by 100 and by 10 is a multiplication there,
// exact for numbers as small as these.
[[nodiscard]] constexpr std::uint64_t uDigits8(std::uint32_t uNumber) noexcept {
    const std::uint64_t uFours = uNumber / 10000 | std::uint64_t{uNumber % 10000} << 32;
    const std::uint64_t uHundreds = (uFours * 10486 >> 20) & 0x0000007F'0000007Fu;
    const std::uint64_t uPairs = uHundreds | (uFours - 100 * uHundreds) << 16;
    const std::uint64_t uTens = (uPairs * 103 >> 10) & 0x000F000F'000F000Fu;
    return uTens | (uPairs - 10 * uTens) << 8;
}

// Eight bytes of a text at once.
inline void vBytes8(char* pTo, std::uint64_t uBytes) noexcept {
    static_assert(std::endian::native == std::endian::little, "the first byte is the lowest");
    std::memcpy(pTo, &uBytes, sizeof uBytes);
}

inline constexpr std::size_t g_iNumberText = 32;              // bytes that those below may touch
inline constexpr std::uint64_t g_eightDigits = 100'000'000;   // what numbers of eight digits are below

// The digits at pTo of a number of eight at the most; their end.
[[nodiscard]] inline char* pShortNumberText(char* pTo, std::uint32_t uNumber) noexcept {
    const std::uint64_t uDigits = uDigits8(uNumber);
    // At least one is left: the last digit counts as none of the zeros in front.
    const int iZeros = std::countr_zero(uDigits | std::uint64_t{1} << 56) / 8;
    vBytes8(pTo, (uDigits | g_zeroDigits) >> 8 * iZeros);
    return pTo + 8 - iZeros;
}

// The same of a number that has more.
[[nodiscard]] char* pLongNumberText(char* pTo, std::uint64_t uNumber) noexcept;

// The same of any number.
[[nodiscard]] inline char* pNumberText(char* pTo, std::uint64_t uNumber) noexcept {
    if (uNumber < g_eightDigits) return pShortNumberText(pTo, static_cast<std::uint32_t>(uNumber));
    return pLongNumberText(pTo, uNumber);
}

// The same with a sign in front of a number below zero.
[[nodiscard]] inline char* pIntegerText(char* pTo, long long iNumber) noexcept {
    *pTo = '-';
    const auto uNumber = static_cast<std::uint64_t>(iNumber);
    return iNumber < 0 ? pNumberText(pTo + 1, 0 - uNumber) : pNumberText(pTo, uNumber);
}

}   // namespace oxa::ifc::details
