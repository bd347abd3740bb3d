// SPDX-License-Identifier: Apache-2.0
/// @file
/// Numbers: from the text of a token to its value.
///
/// - For: the parsers of attribute cells, the string codec, the ifcXML import.
/// - Grammar: wider than ISO 10303-21, clause 6.4 (INTEGER, REAL): ".5" and "1E3" are numbers too. What may never stand
///   there is a leading "+", a blank, or anything behind the number: "1.5mm" is none.
/// - Threads: any number at once. Nothing is allocated; the process locale has no say.
#pragma once

#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <optional>

#include "platform/Export.h"

namespace oxa::ifc {

namespace details {

// The integer at the front of [first, last), in base "base": an optional "-", then at least one digit.
// returns  the first byte behind it; or nullptr, with "value" untouched, when there is no digit or the number
//          needs more than 32 bits.
[[nodiscard]] inline const char* pReadInteger(const char* first, const char* last, int base,
                                              std::int32_t& value) noexcept {
    const auto [pEnd, error] = std::from_chars(first, last, value, base);
    return error == std::errc() ? pEnd : nullptr;
}

// 8 bytes of a text, the first one lowest.
[[nodiscard]] inline std::uint64_t uBytes8(const char* first) noexcept {
    static_assert(std::endian::native == std::endian::little, "the first byte is the lowest");
    std::uint64_t bytes;
    std::memcpy(&bytes, first, sizeof bytes);
    return bytes;
}

// The number of eight decimal digits, each a byte from 0 to 9, the first one lowest.
[[nodiscard]] constexpr std::uint32_t uNumberOf(std::uint64_t digits) noexcept {
    digits = (digits * 10 + (digits >> 8)) & 0x00FF00FF00FF00FFu;
    digits = (digits * 100 + (digits >> 16)) & 0x0000FFFF0000FFFFu;
    digits = (digits * 10000 + (digits >> 32)) & 0x00000000FFFFFFFFu;
    return static_cast<std::uint32_t>(digits);
}

// The decimal digits at the front of 8 bytes: how many, and their value.
struct Digits {
    unsigned iCount;
    std::uint32_t uValue;
};

// All at once instead of one after the other: how many digits a number has is hard to foresee for a processor. The first
// byte is the lowest.
[[nodiscard]] inline Digits digitsOf(std::uint64_t bytes) noexcept {
    constexpr std::uint64_t ones = 0x0101010101010101u;
    bytes ^= ones * '0';
    // The sum has the high bit of each byte from 10 on; what it carries over comes behind the first of those.
    const std::uint64_t others = ((bytes + ones * 0x76) | bytes) & (ones * 0x80);
    const auto iCount = static_cast<unsigned>(std::countr_zero(others)) / 8;
    if (iCount == 0) return {0, 0};
    return {iCount, uNumberOf(bytes << (64 - 8 * iCount))};   // zeros in front
}

// The same of the 8 bytes from first on.
[[nodiscard]] inline Digits digitsOf8(const char* first) noexcept { return digitsOf(uBytes8(first)); }

}   // namespace details

/// The whole range as a signed 32-bit integer in base 10; empty where it is none or does not fit.
[[nodiscard]] inline std::optional<int> toInt(const char* first, const char* last) noexcept {
    std::int32_t value = 0;
    if (details::pReadInteger(first, last, 10, value) != last || first == last) return std::nullopt;
    return value;
}

/// The whole range as the nearest double; "inf" and "nan" in any case are numbers. Empty where it is none or
/// lies beyond the range of a double: "1E999".
[[nodiscard]] OXA_IFC_API std::optional<double> toDouble(const char* first, const char* last) noexcept;

}   // namespace oxa::ifc
