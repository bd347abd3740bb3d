// SPDX-License-Identifier: Apache-2.0
// Parameters: cutting a parameter list, or a list inside of one, at its commas.
//
// For      the parsers of statements, of header statements and of aggregates (ISO 10303-21, 11.2 and 6.4.5).
// Rule     "'" toggles a string, so a doubled one needs no special case; "(" and ")" outside strings count a
//          depth, which a stray ")" makes negative; "," outside strings at depth 0 ends an item, even an empty
//          one. What stands behind the last such comma is one more item unless it is empty.
// Speed    sixteen bytes at once give a mask of those that matter, and no byte is looked at twice: a list inside of the
//          list is cut in passing.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "Format/Ifc/Text/ByteBlock.h"
#include "platform/Compiler.h"

namespace oxa::ifc::details {

// Where the items of a list end. The next one begins behind the comma.
struct ItemEnds {
    static constexpr std::size_t g_iMost = 16;   // that are noted

    std::size_t iCount;         // of the items
    const char* const* pEnds;   // of all of them, or of the first g_iMost

    [[nodiscard]] bool boAllKnown() const noexcept { return iCount <= g_iMost; }
};

// Some items of a list, in their order. What lies behind the last of them has no value.
struct CutItems {
    static constexpr std::size_t g_iMost = 16;
    static constexpr std::size_t g_iNoList = static_cast<std::size_t>(-1);

    struct Item {
        const char* pEnd;
        std::size_t iItems;   // of one that is a list, from its "(" to its ")"; else g_iNoList
    };
    const char* pBegin;   // of the first one; each other begins behind the comma in front of it
    std::size_t iCount;
    std::array<Item, g_iMost> items;
    std::array<std::array<const char*, ItemEnds::g_iMost>, g_iMost> inside;   // for each the ends of its items

    // Where the ends of its items go.
    [[nodiscard]] const char** pInside(const Item* pItem) noexcept {
        return inside[static_cast<std::size_t>(pItem - items.data())].data();
    }
    // The items of item i; pEnds is null for what is no list.
    [[nodiscard]] ItemEnds endsInside(std::size_t i) const noexcept {
        return {items[i].iItems, items[i].iItems == g_iNoList ? nullptr : inside[i].data()};
    }
    // Calls take(begin, end, i) for each.
    template <class Take>
    void vEach(Take&& take) const {
        const char* pFrom = pBegin;
        for (std::size_t i = 0, iEnd = iCount; i < iEnd; ++i) {
            const char* const pEnd = items[i].pEnd;
            take(pFrom, pEnd, i);
            pFrom = pEnd + 1;
        }
    }
};

// Cuts a list, some items at a time: in a loop of its own, whose few variables a processor has registers for.
template <class Block = ByteBlock>
class ItemCut {
public:
    // Bytes from pReadable on, at or in front of first, can be read, and they outlive this.
    ItemCut(const char* pReadable, const char* first, const char* last) noexcept
        : m_pNext(first),
          m_marks{pReadable, last, first, first == last ? 0 : Marks::uOf(pReadable, first, last)} {}

    // Cuts the next items, as many as there are room for; true when there are more.
    OXA_NEVER_INLINE bool boNext(CutItems& cut) noexcept {
        const char* pBegin = cut.pBegin = m_pNext;
        cut.iCount = 0;
        Marks marks = m_marks;
        const char* const pLast = marks.pLast;
        if (pBegin == pLast) return false;
        CutItems::Item* pItem = cut.items.data();
        do {
            const char* p = marks.pNext();
            std::size_t iItems = CutItems::g_iNoList;
            if (p != pLast && *p != ',')
                p = p == pBegin && *p == '(' ? marks.pListEnd(iItems, cut.pInside(pItem)) : marks.pItemEnd(p);
            *pItem++ = {p, iItems};
            if (p == pLast) {
                pBegin = p;
                break;
            }
            pBegin = p + 1;
        } while (pBegin != pLast && pItem != cut.items.data() + CutItems::g_iMost);
        m_pNext = pBegin;
        m_marks = marks;
        cut.iCount = static_cast<std::size_t>(pItem - cut.items.data());
        return pBegin != pLast;
    }

private:
    // The bytes that may matter, one after the other.
    struct Marks {
        const char* pReadable;
        const char* pLast;
        const char* pWord;      // 64 bytes, or as many as there are
        std::uint64_t uMarks;   // of those, what is still to come

        static constexpr std::ptrdiff_t g_iBlock = Block::g_iSize;
        static constexpr std::ptrdiff_t g_iWord = 64;

        // The bytes that cut a list are ' ( ) , and lie in one run of the code table, 0x27 to 0x2C, together with * and
        // +. So one test for a range finds all of them, where the four would need four comparisons; "*" and "+" come
        // along and are rare: a derived value, the sign of an exponent.
        static std::uint64_t uOfBlock(const char* p) noexcept { return Block(p).between('\'', ',').uHighBits(); }

        // Of the word at p. The rest behind the last whole block is the end of the block that ends with it, if there
        // are so many bytes in front.
        OXA_NEVER_INLINE static std::uint64_t uOf(const char* pReadable, const char* p, const char* pLast) noexcept {
            const std::ptrdiff_t iEnd = std::min(pLast - p, g_iWord);
            std::uint64_t uFound = 0;
            std::ptrdiff_t i = 0;
            for (; iEnd - i >= g_iBlock; i += g_iBlock) uFound |= uOfBlock(p + i) << i;
            if (i == iEnd) return uFound;
            if (pLast - pReadable >= g_iBlock)
                return uFound | uOfBlock(pLast - g_iBlock) >> (g_iBlock - (iEnd - i)) << i;
            for (; i < iEnd; ++i) uFound |= static_cast<std::uint64_t>(p[i] >= '\'' && p[i] <= ',') << i;
            return uFound;
        }

        // The next one, or pLast.
        OXA_ALWAYS_INLINE const char* pNext() noexcept {
            while (!uMarks) {
                if (pLast - pWord <= g_iWord) return pLast;
                pWord += g_iWord;
                uMarks = uOf(pReadable, pWord, pLast);
            }
            const char* const p = pWord + std::countr_zero(uMarks);
            uMarks &= uMarks - 1;
            return p;
        }

        // The quote that closes a string, or pLast.
        OXA_ALWAYS_INLINE const char* pQuote() noexcept {
            const char* p;
            do p = pNext();
            while (p != pLast && *p != '\'');
            return p;
        }

        // From a mark inside of an item, which is the first one of it, to the item's end.
        OXA_ALWAYS_INLINE const char* pItemEnd(const char* p) noexcept {
            std::ptrdiff_t iDepth = 0;
            for (; p != pLast; p = pNext()) {
                const char c = *p;
                if (c == '\'') {
                    p = pQuote();
                    if (p == pLast) break;
                } else if (c == ',') {
                    if (iDepth == 0) break;
                } else if (c == '(') {
                    ++iDepth;
                } else if (c == ')') {
                    --iDepth;
                }
            }
            return p;
        }

        // The same behind the "(" that an item begins with. Of a list it notes what is inside.
        OXA_ALWAYS_INLINE const char* pListEnd(std::size_t& iItems, const char** pEnds) noexcept {
            std::size_t iCount = 0;
            const auto vNote = [&](const char* p) {
                if (iCount < ItemEnds::g_iMost) pEnds[iCount] = p;
                ++iCount;
            };
            const char* pItem = nullptr;   // behind the last comma
            std::ptrdiff_t iDepth = 1;
            for (const char* p; (p = pNext()) != pLast;) {
                const char c = *p;
                if (c == ',') {
                    if (iDepth != 1) continue;
                    vNote(p);
                    pItem = p + 1;
                } else if (c == ')') {
                    if (--iDepth != 0) continue;
                    const bool boEnd = p + 1 == pLast;
                    if (!boEnd && p[1] != ',') return pItemEnd(pNext());    // more than a list
                    if (p != pItem && (iCount || p[-1] != '(')) vNote(p);   // the last one, unless it is empty
                    iItems = iCount;
                    return boEnd ? pLast : pNext();
                } else if (c == '\'') {
                    if (pQuote() == pLast) break;
                } else if (c == '(') {
                    ++iDepth;
                }
            }
            return pLast;
        }
    };

    const char* m_pNext;   // where the next item begins
    Marks m_marks;
};

// Calls item(begin, end) for each item of [first, last). Bytes from pReadable on, at or in front of first, can be read.
template <class Item>
inline void vForEachItem(const char* pReadable, const char* first, const char* last, Item&& item) {
    CutItems cut;
    ItemCut items(pReadable, first, last);
    for (bool boMore = true; boMore;) {
        boMore = items.boNext(cut);
        cut.vEach([&](const char* pBegin, const char* pEnd, std::size_t) { item(pBegin, pEnd); });
    }
}

}   // namespace oxa::ifc::details
