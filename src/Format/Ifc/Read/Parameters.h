// SPDX-License-Identifier: Apache-2.0
// Parameters: cutting a parameter list, or a list inside of one, at its commas.
//
// For      the parsers of statements and of aggregates (ISO 10303-21, 11.2 and 6.4.5), inside of this folder.
// Rule     "'" toggles a string, so a doubled one needs no special case; "(" and ")" outside strings count a
//          depth, which a stray ")" makes negative; "," outside strings at depth 0 ends an item, even an empty
//          one. What stands behind the last such comma is one more item unless it is empty.
// Speed    sixteen bytes at once to the next byte that matters, strings by memchr.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define OXA_IFC_SSE2 1
#endif

namespace oxa::ifc::details {

#if defined(OXA_IFC_SSE2)
// A bit for each of the 16 bytes from p on that lies between cLow and cLow + uSpan.
[[nodiscard]] inline unsigned uBetween16(const char* p, char cLow, unsigned char uSpan) noexcept {
    const __m128i bytes = _mm_sub_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)), _mm_set1_epi8(cLow));
    const __m128i inside = _mm_cmpeq_epi8(_mm_min_epu8(bytes, _mm_set1_epi8(static_cast<char>(uSpan))), bytes);
    return static_cast<unsigned>(_mm_movemask_epi8(inside));
}
#endif

// The first byte of [first, last) between "'" and cHigh, or last. The bytes that cut a list, ' ( ) ,, lie in one run of
// the code table with * and +, which the caller passes over. Bytes from pReadable on can be read.
template <char cHigh>
[[nodiscard]] inline const char* pFindFromQuoteTo([[maybe_unused]] const char* pReadable, const char* first,
                                                  const char* last) noexcept {
    constexpr unsigned char uSpan = cHigh - '\'';
#if defined(OXA_IFC_SSE2)
    for (; last - first >= 16; first += 16)
        if (const unsigned uMask = uBetween16(first, '\'', uSpan)) return first + std::countr_zero(uMask);
    // The rest is the end of the last 16 bytes.
    if (first != last && last - pReadable >= 16) {
        const unsigned uMask = uBetween16(last - 16, '\'', uSpan) >> (16 - (last - first));
        return uMask ? first + std::countr_zero(uMask) : last;
    }
#endif
    while (first != last && static_cast<unsigned char>(*first - '\'') > uSpan) ++first;
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
