// SPDX-License-Identifier: Apache-2.0
// InstanceNumber: the number behind "#", at the head of a statement and in a reference (ISO 10303-21, 6.3).
//
// For      Data::boReadLine and the cells, inside this folder.
// Rule     at the head the number is all that stands before "=", an optional "-" and digits for 32 bits; one character at
//          least stands there, even a "=". In a reference it is read as atoi does: blanks and a sign in front, whatever
//          stands behind the digits is ignored, no digits are 0, and a number beyond 32 bits becomes the largest one, so
//          that it can't be taken for another instance.
// Speed    nearly all numbers have one to seven digits and nothing else. These are taken from eight bytes at once; both
//          rules ask for that first, and for all else go byte by byte. A test holds the two ways together.
// Threads  any number at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "Format/Ifc/IfcNumbers.h"

namespace oxa::ifc::details {

// One to seven digits; else iCount is 0. From first on 8 bytes can be read.
[[nodiscard]] inline Digits shortNumber(const char* first) noexcept {
    const Digits digits = digitsOf8(first);
    return digits.iCount < 8 ? digits : Digits{0, 0};
}

// The "=" that ends the head of a statement; null when there is none. first is behind the "#".
[[nodiscard]] inline const char* pHeadEnd(const char* first, const char* last) noexcept {
    if (last - first < 2) return nullptr;
    return static_cast<const char*>(std::memchr(first + 1, '=', static_cast<std::size_t>(last - first - 1)));
}

// The rule byte by byte: the "=" behind the number; null, with iId untouched, when there is none or it ends no number.
[[nodiscard]] inline const char* pHeadNumberPlain(const char* first, const char* last, std::int32_t& iId) noexcept {
    const char* const pEnd = pHeadEnd(first, last);
    return pEnd && pReadInteger(first, pEnd, 10, iId) == pEnd ? pEnd : nullptr;
}

[[nodiscard]] inline const char* pHeadNumber(const char* first, const char* last, std::int32_t& iId) noexcept {
    if (last - first >= 8)
        if (const Digits digits = shortNumber(first); digits.iCount > 0 && first[digits.iCount] == '=') {
            iId = static_cast<std::int32_t>(digits.uValue);
            return first + digits.iCount;
        }
    return pHeadNumberPlain(first, last, iId);
}

// The rule byte by byte; first is behind the "#", last behind the token.
[[nodiscard]] inline std::int32_t iReferencePlain(const char* first, const char* last) noexcept {
    while (first != last && (*first == ' ' || (*first >= '\t' && *first <= '\r'))) ++first;
    const bool boNegative = first != last && *first == '-';
    if (boNegative || (first != last && *first == '+')) ++first;
    const std::int64_t iLimit = std::int64_t{std::numeric_limits<std::int32_t>::max()} + boNegative;
    std::int64_t iValue = 0;
    for (; first != last && *first >= '0' && *first <= '9'; ++first) {
        iValue = iValue * 10 + (*first - '0');
        if (iValue > iLimit) iValue = iLimit;
    }
    return static_cast<std::int32_t>(boNegative ? -iValue : iValue);
}

// Bytes up to pReadable, behind last or there, can be read.
[[nodiscard]] inline std::int32_t iReference(const char* first, const char* last, const char* pReadable) noexcept {
    if (pReadable - first >= 8)
        if (const Digits digits = shortNumber(first); digits.iCount > 0 && digits.iCount <= last - first)
            return static_cast<std::int32_t>(digits.uValue);
    return iReferencePlain(first, last);
}

}   // namespace oxa::ifc::details
