// SPDX-License-Identifier: Apache-2.0
// Base64 as xs:base64Binary has it (RFC 4648, clause 4): white space may stand anywhere, and a text that is not valid
// decodes to no bytes.
//
// Written here, since the libraries that are at hand everywhere pass over bytes that are none of base64 and over missing
// padding, so that each text would have to be proven first, which is most of the work.
#include "platform/XmlBase64.h"

#include <array>
#include <cstdint>

namespace oxa::xml::utilities {

namespace {

constexpr std::string_view g_alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char g_cPadding = '=';

// The six bits of a character, or one of these.
constexpr std::uint8_t g_uBlank = 64;
constexpr std::uint8_t g_uForeign = 65;

constexpr std::array<std::uint8_t, 256> g_bits = [] {
    std::array<std::uint8_t, 256> table{};
    table.fill(g_uForeign);
    for (const char c : std::string_view(" \t\r\n")) table[static_cast<unsigned char>(c)] = g_uBlank;
    for (std::size_t i = 0; i < g_alphabet.size(); ++i)
        table[static_cast<unsigned char>(g_alphabet[i])] = static_cast<std::uint8_t>(i);
    return table;
}();

}   // namespace

std::string Base64::encode(const unsigned char* bytes, std::size_t size) {
    std::string text;
    text.reserve((size + 2) / 3 * 4);
    for (std::size_t i = 0; i < size; i += 3) {
        const auto byte = [&](std::size_t k) { return i + k < size ? std::uint32_t{bytes[i + k]} : 0; };
        const std::uint32_t uGroup = byte(0) << 16 | byte(1) << 8 | byte(2);
        for (unsigned k = 0; k < 4; ++k) text += i + k <= size ? g_alphabet[uGroup >> (18 - 6 * k) & 63] : g_cPadding;
    }
    return text;
}

std::vector<unsigned char> Base64::decode(std::string_view text) {
    std::vector<unsigned char> bytes;
    bytes.reserve(text.size() / 4 * 3);
    std::uint32_t uGroup = 0;
    unsigned iCount = 0;     // characters of the group, with its padding
    unsigned iPadding = 0;   // which stands in the last group alone
    for (const char c : text) {
        const std::uint8_t uBits = g_bits[static_cast<unsigned char>(c)];
        if (uBits == g_uBlank) continue;
        if (c == g_cPadding) {
            if (iCount < 2) return {};   // two characters at least make a byte
            ++iPadding;
        } else if (uBits == g_uForeign || iPadding) {
            return {};
        }
        uGroup = uGroup << 6 | (c == g_cPadding ? 0U : uBits);
        if (++iCount < 4) continue;
        for (unsigned k = 0; k < 3 - iPadding; ++k) bytes.push_back(static_cast<unsigned char>(uGroup >> (16 - 8 * k)));
        iCount = 0;
        uGroup = 0;
    }
    if (iCount) return {};
    return bytes;
}

}   // namespace oxa::xml::utilities
