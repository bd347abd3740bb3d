// SPDX-License-Identifier: Apache-2.0
// Parameters: cutting a parameter list, or a list inside of one, at its commas.
//
// For      the parsers of statements, of header statements and of aggregates (ISO 10303-21, 11.2 and 6.4.5).
// Rule     "'" toggles a string, so a doubled one needs no special case; "(" and ")" outside strings count a
//          depth, which a stray ")" makes negative; "," outside strings at depth 0 ends an item, even an empty
//          one. What stands behind the last such comma is one more item unless it is empty.
// Speed    sixteen bytes at once to the next byte that matters, strings by memchr.
#pragma once

#include <bit>
#include <cstddef>
#include <cstring>

#include "Format/Ifc/Text/ByteBlock.h"

namespace oxa::ifc::details {

// The first byte of [first, last) between "'" and cHigh, or last. Bytes from pReadable on can be read.
//
// The bytes that cut a list are ' ( ) , and lie in one run of the code table, 0x27 to 0x2C, together with * and +. So
// one test for a range finds all of them, where the four would need four comparisons; "*" and "+" come along and are
// rare: a derived value, the sign of an exponent. The caller passes over them. What is left behind the last whole
// block, fewer than sixteen bytes, is searched as the end of the block that ends with it, and the bits of the bytes in
// front are shifted out; pReadable says whether there are so many bytes in front.
template <char cHigh, class Block = ByteBlock>
[[nodiscard]] inline const char* pFindFromQuoteTo(const char* pReadable, const char* first, const char* last) noexcept {
    constexpr std::ptrdiff_t iBlock = Block::g_iSize;
    const auto uFound = [](const char* p) { return Block(p).between('\'', cHigh).uHighBits(); };
    for (; last - first >= iBlock; first += iBlock)
        if (const unsigned uMask = uFound(first)) return first + std::countr_zero(uMask);
    // The rest is the end of the last block.
    if (first != last && last - pReadable >= iBlock) {
        const unsigned uMask = uFound(last - iBlock) >> (iBlock - (last - first));
        return uMask ? first + std::countr_zero(uMask) : last;
    }
    while (first != last && (*first < '\'' || *first > cHigh)) ++first;
    return first;
}

// From the quote that opens a string to the one that closes it; to the last byte when none does. p is in front of last.
[[nodiscard]] inline const char* pStringEnd(const char* p, const char* last) noexcept {
    const void* pQuote = std::memchr(p + 1, '\'', static_cast<std::size_t>(last - p - 1));
    return pQuote ? static_cast<const char*>(pQuote) : last - 1;
}

// Behind the parenthesis at p, which opens or closes, to where the depth is that of p again; or last.
[[nodiscard]] inline const char* pNestedEnd(const char* pReadable, const char* p, const char* last) noexcept {
    std::ptrdiff_t iDepth = 0;
    for (; p != last; p = pFindFromQuoteTo<')'>(pReadable, p, last)) {
        switch (*p) {
        case '\'': p = pStringEnd(p, last); break;
        case '(': ++iDepth; break;
        default: --iDepth; break;
        }
        ++p;
        if (iDepth == 0) break;
    }
    return p;
}

// Calls item(begin, end) for each item of [first, last). Bytes from pReadable on, at or in front of first, can be read.
template <class Item>
inline void vForEachItem(const char* pReadable, const char* first, const char* last, Item&& item) {
    const char* pItem = first;
    for (const char* p = first; (p = pFindFromQuoteTo<','>(pReadable, p, last)) != last;) {
        switch (*p) {
        case '\'': p = pStringEnd(p, last) + 1; break;
        case '(':
        case ')': p = pNestedEnd(pReadable, p, last); break;
        case ',':
            item(pItem, p);
            pItem = ++p;
            break;
        default: ++p; break;
        }
    }
    if (pItem != last) item(pItem, last);
}

}   // namespace oxa::ifc::details
