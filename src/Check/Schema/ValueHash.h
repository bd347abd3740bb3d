// SPDX-License-Identifier: Apache-2.0
// ValueHash: one number for a value, the same for equal ones: UNIQUE items and UNIQUE rules compare by it.
//
// For      SchemaLevel.
// Equal    numbers and texts by their value, whatever their form; all else, and texts beyond a token's length, by its bytes.
//          Two different values have one hash by an accident that needs billions of them.
// Threads  plain functions.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <string>
#include <string_view>

#include "Check/Syntax/Token.h"
#include "Format/Ifc/IfcNumbers.h"
#include "Format/Ifc/IfcStepStrings.h"

namespace oxa::check {

inline constexpr std::uint64_t g_listHash = 0x9E3779B97F4A7C15U;

[[nodiscard]] inline std::uint64_t mixedHash(std::uint64_t iHash, std::uint64_t iValue) noexcept {
    std::uint64_t i = iHash * 0xD6E8FEB86659FD93U + iValue + 0x9E3779B97F4A7C15U;
    i = (i ^ (i >> 30)) * 0xBF58476D1CE4E5B9U;
    i = (i ^ (i >> 27)) * 0x94D049BB133111EBU;
    return i ^ (i >> 31);
}

[[nodiscard]] inline std::uint64_t bytesHash(std::string_view bytes) noexcept {
    std::uint64_t iHash = 0xCBF29CE484222325U;
    for (const char c : bytes) iHash = (iHash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    return mixedHash(iHash, bytes.size());
}

// Of a string between its quotes: "\X\E4" and "\X2\00E4\X0\" are one letter. Pages, and bytes that no string may have,
// stay as they are written.
[[nodiscard]] inline std::uint64_t textHash(std::string_view text) {
    const bool boPlain = text.find_first_of("\\'") == std::string_view::npos;
    const auto boOther = [](char c) { return static_cast<unsigned char>(c) > 0x7E; };
    if (boPlain || text.find("\\P") != std::string_view::npos || std::any_of(text.begin(), text.end(), boOther))
        return bytesHash(text);
    std::string sDecoded;
    ifc::vIfcStrToUtf8(sDecoded, text.data(), text.size());
    return bytesHash(sDecoded);
}

[[nodiscard]] inline std::uint64_t valueHash(const Token& value) {
    const auto iKind = static_cast<std::uint64_t>(value.kind);
    if (value.boCut) return mixedHash(iKind, value.iHash);
    if (value.kind == TokenKind::InstanceName) return mixedHash(iKind, value.iNumber);
    if (value.kind == TokenKind::String && value.text.size() > 1)
        return mixedHash(iKind, textHash(value.text.substr(1, value.text.size() - 2)));
    if (value.kind != TokenKind::Real && value.kind != TokenKind::Integer)
        return mixedHash(iKind, bytesHash(value.text));
    const std::string_view text = value.text.starts_with('+') ? value.text.substr(1) : value.text;
    const auto number = ifc::toDouble(text.data(), text.data() + text.size());
    // Integers beyond the digits of a double differ by what these leave out.
    const bool boExact = !number || (value.kind == TokenKind::Integer && text.size() > 15);
    return boExact ? bytesHash(text) : mixedHash(1, std::bit_cast<std::uint64_t>(*number == 0 ? 0.0 : *number));
}

}   // namespace oxa::check
