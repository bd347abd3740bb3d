// SPDX-License-Identifier: Apache-2.0
// DirectRead: tokens that show by themselves where they end, and short lists of numbers or references.
//
// For      EntityRead.cpp, inside this folder.
// Rule     a token ends where a search for commas would have cut it (Text/Parameters.h), and a list becomes the cell that
//          its constructor would make. Null, with nothing done, for all that is not in its usual form, and for whatever
//          there is something to say about: that is cut and read as a whole.
// Speed    most parameters of a model are of this kind. Where they end is found in passing, 16 bytes at once.
// Threads  one for each statement.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <new>

#include "Format/Ifc/IfcFileAttribute.h"
#include "Format/Ifc/Memory/List.h"
#include "Format/Ifc/Read/CellReading.h"
#include "Format/Ifc/Text/ByteBlock.h"
#include "Format/Ifc/Text/RealRead.h"

namespace oxa::ifc::details {

inline constexpr std::size_t g_iMostDirect = 16;   // items of a list

// Bytes of a statement up to the end of its parameters, for all that follows: so many are looked at at once.
inline constexpr std::ptrdiff_t g_iLeastDirect = ByteBlock::g_iSize;

// The first byte of [p, last) that "meant" marks in a block, or null.
template <class Meant>
[[nodiscard]] const char* pFindByte(const char* p, const char* last, Meant&& meant) noexcept {
    constexpr std::ptrdiff_t iBlock = ByteBlock::g_iSize;
    for (; last - p >= iBlock; p += iBlock)
        if (const unsigned uMarks = meant(ByteBlock(p)).uHighBits()) return p + std::countr_zero(uMarks);
    const unsigned uMarks = meant(ByteBlock(last - iBlock)).uHighBits() >> (iBlock - (last - p));
    return uMarks ? p + std::countr_zero(uMarks) : nullptr;
}

// The first of ' ( ) * + , in [p, last), or null. The four that matter lie in one run with "*" and "+", which are rare.
[[nodiscard]] inline const char* pFindMark(const char* p, const char* last) noexcept {
    return pFindByte(p, last, [](const ByteBlock& bytes) { return bytes.between('\'', ','); });
}

// Where the token ends that begins at p and is no list, in parameters that end at last.
[[nodiscard]] inline const char* pTokenEnd(const char* p, const char* last) noexcept {
    const auto pBehindText = [last](const char* pQuote) {
        const char* const pEnd = pFindByte(pQuote + 1, last, [](const ByteBlock& bytes) { return bytes.among('\''); });
        return pEnd ? pEnd + 1 : nullptr;
    };
    const auto pMark = [last](const char* pFrom) {
        const char* pFound = pFindMark(pFrom, last);
        while (pFound && (*pFound == '*' || *pFound == '+')) pFound = pFindMark(pFound + 1, last);
        return pFound;
    };
    const char* pEnd;
    if (*p == '\'') {
        pEnd = pBehindText(p);
        if (!pEnd) return nullptr;
    } else {
        pEnd = pMark(p);
        if (!pEnd) return last;
        if (*pEnd == '(') {   // a value with its type
            const char* const pValue = pEnd + 1;
            if (pValue == last) return nullptr;
            pEnd = *pValue == '\'' ? pBehindText(pValue) : pMark(pValue);
            if (!pEnd || pEnd == last || *pEnd != ')') return nullptr;
            ++pEnd;
        }
    }
    return pEnd == last || *pEnd == ',' ? pEnd : nullptr;
}

// Where a reference ends, "#" at p and one to seven digits, or null.
[[nodiscard]] inline const char* pReferenceEnd(const Token& token, const char* p, std::uint32_t& iNumber) noexcept {
    const std::string_view line = token.m_pInfo->m_line;
    const char* const pEnd = line.data() + line.size();
    const std::ptrdiff_t iLeft = pEnd - ++p;
    // Behind the end of the statement nothing is read: a zero byte is no digit.
    const Digits digits = iLeft >= 8 ? digitsOf8(p) : digitsOf(uBytes8(pEnd - 8) >> 8 * (8 - iLeft));
    iNumber = digits.uValue;
    return digits.iCount > 0 && digits.iCount < 8 ? p + digits.iCount : nullptr;
}

// The items behind the "(" at p, each by item(begin, n), which answers where it ends, or null. Behind the ")", if the
// parameters then go on with "," or end; their count goes to iCount.
template <class Item>
[[nodiscard]] const char* pItemsRead(const char* p, const char* last, std::size_t& iCount, Item&& item) {
    for (iCount = 0; iCount < g_iMostDirect;) {
        p = item(p + 1, iCount++);
        if (!p || p >= last) return nullptr;
        if (*p == ')') return p + 1 == last || p[1] == ',' ? p + 1 : nullptr;
        if (*p != ',') return nullptr;
    }
    return nullptr;
}

// A list of references or reals that begins at p: behind its ")".
[[nodiscard]] inline const char* pShortListRead(AttributeType eItems, void* pCell, const Token& token, const char* p,
                                                const char* last) {
    const char* const pLine = token.m_pInfo->m_line.data();
    const auto list = [&]() -> AttributeList& {
        auto* const pList = ::new (pCell) AttributeList;
        pList->m_eItemType = eItems;
        return *pList;
    };
    std::size_t iCount = 0;
    if (eItems == AttributeType::Real) {
        std::array<double, g_iMostDirect> values;
        const char* const pEnd = pItemsRead(p, last, iCount, [&](const char* pItem, std::size_t i) -> const char* {
            const char* const pItemEnd = pFindMark(pItem, last);
            return pItemEnd && boReadReal(pLine, pItem, pItemEnd, values[i]) ? pItemEnd : nullptr;
        });
        if (!pEnd) return nullptr;
        auto* const pArray = Array<double>::pFromBytes(pAllocate(token, Array<double>::iBlockSize(iCount)), iCount);
        for (std::size_t i = 0; i < iCount; ++i) pArray->begin()[i] = values[i];
        list().m_pItems = pArray;
        return pEnd;
    }
    if (eItems != AttributeType::Entity) return nullptr;
    std::array<std::uint32_t, g_iMostDirect> numbers;
    const char* const pEnd = pItemsRead(p, last, iCount, [&](const char* pItem, std::size_t i) -> const char* {
        return *pItem == '#' ? pReferenceEnd(token, pItem, numbers[i]) : nullptr;
    });
    if (!pEnd) return nullptr;
    ReferenceList references;
    for (std::size_t i = 0; i < iCount; ++i) references.vAppend(token, pNamed(token, numbers[i]));
    list().m_pItems = references.pFinished();
    return pEnd;
}

}   // namespace oxa::ifc::details
