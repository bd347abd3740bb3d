// SPDX-License-Identifier: Apache-2.0
// ByteClass: of each byte the classes that it belongs to, as the productions of ISO 10303-21 name them.
//
// For      Lexer, whose loops look bytes up in it.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace oxa::check {

enum ByteClass : std::uint8_t {
    Blank = 1,          // space, tab, CR, vertical tab and form feed; LF is told apart, since it ends a line
    Digit = 2,          // 0 to 9
    Upper = 4,          // A to Z and _
    Lower = 8,          // a to z, which no token but a string has
    Hex = 16,           // 0 to 9, A to F
    StringPlain = 32,   // what stands for itself in a string
    Graphic = 64,       // the basic alphabet: space to ~
    High = 128,         // from 0x80 on
};

inline constexpr std::array<std::uint8_t, 256> g_byteClass = [] {
    std::array<std::uint8_t, 256> table{};
    for (unsigned c = 0x80; c < 0x100; ++c) table[c] = High;
    for (unsigned c = ' '; c <= '~'; ++c) {
        table[c] = Graphic;
        if (c != '\'' && c != '\\') table[c] |= StringPlain;
    }
    const auto mark = [&table](std::string_view bytes, unsigned uClass) {
        for (const char c : bytes) {
            auto& entry = table[static_cast<unsigned char>(c)];
            entry = static_cast<std::uint8_t>(entry | uClass);
        }
    };
    mark(" \t\r\v\f", Blank);
    mark("0123456789", Digit | Hex);
    mark("ABCDEFGHIJKLMNOPQRSTUVWXYZ_", Upper);
    mark("abcdefghijklmnopqrstuvwxyz", Lower);
    mark("ABCDEF", Hex);
    return table;
}();
static_assert(g_byteClass[0] == 0 && g_byteClass['\n'] == 0, "0 ends every loop, LF too");

[[nodiscard]] inline bool boIs(char c, unsigned uClasses) noexcept {
    return (g_byteClass[static_cast<unsigned char>(c)] & uClasses) != 0;
}

// The first byte from p on that is of none of the classes; a zero byte is.
[[nodiscard]] inline const char* pSkip(const char* p, unsigned uClasses) noexcept {
    while (boIs(*p, uClasses)) ++p;
    return p;
}

}   // namespace oxa::check
