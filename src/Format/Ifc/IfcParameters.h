// IfcParameters: cutting a parameter list, or a list inside of one, at its commas.
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

// The first byte of [first, last) between cLow and cHigh, or last. The bytes that cut a list, ' ( ) ,, lie in
// one run of the code table with * and +, which the caller passes over.
[[nodiscard]] inline const char* pFindBetween(const char* first, const char* last, char cLow, char cHigh) noexcept {
    const auto iSpan = static_cast<unsigned char>(cHigh - cLow);
#if defined(OXA_IFC_SSE2)
    const __m128i low = _mm_set1_epi8(cLow);
    const __m128i span = _mm_set1_epi8(static_cast<char>(iSpan));
    for (; last - first >= 16; first += 16) {
        const __m128i bytes = _mm_sub_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(first)), low);
        const int iMask = _mm_movemask_epi8(_mm_cmpeq_epi8(_mm_min_epu8(bytes, span), bytes));
        if (iMask) return first + std::countr_zero(static_cast<unsigned>(iMask));
    }
#endif
    while (first != last && static_cast<unsigned char>(*first - cLow) > iSpan) ++first;
    return first;
}

// Calls item(begin, end) for each item of [first, last).
template <class Item>
inline void vForEachItem(const char* first, const char* last, Item&& item) {
    const char* pItem = first;
    std::ptrdiff_t iDepth = 0;
    for (const char* p = first;;) {
        p = iDepth == 0 ? pFindBetween(p, last, '\'', ',') : pFindBetween(p, last, '\'', ')');
        if (p == last) break;
        switch (*p) {
        case '\'': {
            const void* pQuote = std::memchr(p + 1, '\'', static_cast<std::size_t>(last - p - 1));
            p = pQuote ? static_cast<const char*>(pQuote) : last - 1;
            break;
        }
        case '(': ++iDepth; break;
        case ')': --iDepth; break;
        case ',':
            item(pItem, p);
            pItem = p + 1;
            break;
        default: break;
        }
        ++p;
    }
    if (pItem != last) item(pItem, last);
}

}   // namespace oxa::ifc::details
