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

// Whether all of 8 bytes stand in a STEP string as they are: none is special, a control code, or beyond ASCII.
//
// As boHasSpecial, with two more: a byte below a blank borrows when a blank is subtracted, and 0x7F alone gets the high
// bit when 1 is added. A borrow, or a carry of 0xFF, into the byte above says "no" where that is the answer anyway.
[[nodiscard]] inline bool boPlain8(std::uint64_t bytes) noexcept {
    constexpr std::uint64_t ones = 0x0101010101010101u;
    const std::uint64_t backslash = bytes ^ (ones * '\\');
    const std::uint64_t quote = bytes ^ (ones * '\'');
    return ((bytes | (bytes - ones * ' ') | (bytes + ones) | (backslash - ones) | (quote - ones)) & (ones * 0x80)) == 0;
}
[[nodiscard]] constexpr bool boPlain(char c) noexcept { return c >= ' ' && c <= '~' && c != '\\' && c != '\''; }

// A bit for each byte of a block that does not.
[[nodiscard]] inline unsigned uOtherThanPlain(ByteBlock bytes) noexcept {
    constexpr unsigned uAll = (1U << ByteBlock::g_iSize) - 1;
    return uAll & (~bytes.between(' ', '~').uHighBits() | bytes.among('\\', '\'').uHighBits());
}

// Copies a text that stands in a STEP string as it is, to where it has room, while it is looked at; its end. Null for any
// other text, of which some bytes may be there then. In pieces of one size, the last of which is the end of the text.
[[nodiscard]] inline char* pPlainCopied(char* pTo, std::string_view text) noexcept {
    constexpr std::size_t iBlock = ByteBlock::g_iSize;
    const char* pFrom = text.data();
    const std::size_t iSize = text.size();
    const auto boBlock = [&](std::size_t i) {
        const ByteBlock bytes(pFrom + i);
        std::memcpy(pTo + i, pFrom + i, iBlock);
        return uOtherThanPlain(bytes) == 0;
    };
    const auto uPiece = [&]<class Piece>(std::size_t i, Piece uBytes) -> std::uint64_t {
        std::memcpy(&uBytes, pFrom + i, sizeof uBytes);
        std::memcpy(pTo + i, &uBytes, sizeof uBytes);
        return uBytes;
    };
    bool boAll = true;
    if (iSize >= iBlock) {
        for (std::size_t i = 0; i + iBlock < iSize; i += iBlock)
            if (!boBlock(i)) return nullptr;
        boAll = boBlock(iSize - iBlock);
    } else if (iSize >= 8) {
        boAll = boPlain8(uPiece(0, std::uint64_t{})) && boPlain8(uPiece(iSize - 8, std::uint64_t{}));
    } else if (iSize >= 4) {
        boAll = boPlain8(uPiece(0, std::uint32_t{}) | uPiece(iSize - 4, std::uint32_t{}) << 32);
    } else {
        for (std::size_t i = 0; i < iSize; ++i) boAll &= boPlain(pTo[i] = pFrom[i]);
    }
    return boAll ? pTo + iSize : nullptr;
}

}   // namespace oxa::ifc::details
