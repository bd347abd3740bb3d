// SPDX-License-Identifier: Apache-2.0
// TextScan: how far a text runs without a byte that means something in a STEP string.
//
// For      the string codec, and the cells that read and write texts.
// Special  are "\", "'" and every byte from 0x80. All else is copied as it stands.
// Speed    most strings of a model hold no special byte at all and are 5 to 40 bytes long.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "Format/Ifc/Text/ByteBlock.h"

namespace oxa::ifc::details {

[[nodiscard]] constexpr bool boSpecial(char c) noexcept {
    return c == '\\' || c == '\'' || static_cast<unsigned char>(c) >= 0x80;
}

// Whether one of the 8 bytes is special.
//
// Eight bytes in a register. x ^ 0x5C5C... makes a backslash 0; subtracting 1 from each byte then borrows, which sets
// the high bit of a byte that was 0. It is also set for bytes that had it already, and the borrow may set it in the
// byte above a 0. Both do no harm: the first are 8-bit bytes, which are special anyway, and for the second there is a
// special byte below, so "true" is right. Where the first one is the caller finds byte by byte.
[[nodiscard]] inline bool boHasSpecial(std::uint64_t bytes) noexcept {
    constexpr std::uint64_t ones = 0x0101010101010101u;
    const std::uint64_t backslash = bytes ^ (ones * '\\');
    const std::uint64_t quote = bytes ^ (ones * '\'');
    return ((bytes | (backslash - ones) | (quote - ones)) & (ones * 0x80)) != 0;
}

// The first special byte of [first, last), or "last". Eight bytes at once on any machine.
[[nodiscard]] inline const char* pFindSpecialPortable(const char* first, const char* last) noexcept {
    while (last - first >= 8) {
        std::uint64_t bytes;
        std::memcpy(&bytes, first, sizeof bytes);
        if (boHasSpecial(bytes)) break;
        first += 8;
    }
    while (first != last && !boSpecial(*first)) ++first;
    return first;
}

// The same, sixteen bytes at once.
[[nodiscard]] inline const char* pFindSpecial(const char* first, const char* last) noexcept {
    constexpr std::ptrdiff_t iBlock = ByteBlock::g_iSize;
    for (; last - first >= iBlock; first += iBlock) {
        const ByteBlock bytes(first);
        // The high bit is set in the bytes from 0x80 as well.
        if (const unsigned uMask = (bytes | bytes.among('\\', '\'')).uHighBits())
            return first + std::countr_zero(uMask);
    }
    return pFindSpecialPortable(first, last);
}

// Whether no byte of [first, last) is special. Bytes from pReadable on, at or in front of first, can be read.
[[nodiscard]] inline bool boVerbatim(const char* pReadable, const char* first, const char* last) noexcept {
    constexpr std::ptrdiff_t iBlock = ByteBlock::g_iSize;
    if (last - pReadable < iBlock) return pFindSpecialPortable(first, last) == last;
    const auto uFound = [](const char* p) {
        const ByteBlock bytes(p);
        return (bytes | bytes.among('\\', '\'')).uHighBits();   // set in the bytes from 0x80 as well
    };
    for (; last - first > iBlock; first += iBlock)
        if (uFound(first)) return false;
    // The rest is the end of the last block.
    return uFound(last - iBlock) >> (iBlock - (last - first)) == 0;
}

// Whether a text stands in a STEP string as it is: no byte is special, a control code, or beyond ASCII. A text that is
// shorter than a block goes byte by byte, the rest of a longer one as the end of its last block.
[[nodiscard]] inline bool boPlainText(std::string_view text) noexcept {
    constexpr std::size_t iBlock = ByteBlock::g_iSize;
    constexpr unsigned uAll = (1U << iBlock) - 1;
    const auto boPlainBlock = [](const char* p) {
        const ByteBlock bytes(p);
        return (bytes.between(' ', '~').uHighBits() & ~bytes.among('\\', '\'').uHighBits()) == uAll;
    };
    if (text.size() < iBlock) {
        bool boPlain = true;
        for (const char c : text) boPlain &= c >= ' ' && c <= '~' && c != '\\' && c != '\'';
        return boPlain;
    }
    for (std::size_t i = 0; i + iBlock < text.size(); i += iBlock)
        if (!boPlainBlock(text.data() + i)) return false;
    return boPlainBlock(text.data() + text.size() - iBlock);
}

}   // namespace oxa::ifc::details
