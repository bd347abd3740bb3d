// SPDX-License-Identifier: Apache-2.0
// Keyword: the name of a type in a statement, "#1=IFCWALL(" (ISO 10303-21, 6.2): where it ends, and whether it is a
// given one.
//
// For      the head of statements, inside this folder and Read.
// Speed    a name has 7 to 50 bytes, and a statement one: a call of the library costs more than the look itself.
// Threads  any number at once.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "Format/Ifc/Text/ByteBlock.h"

namespace oxa::ifc::details {

// The first "(" of [first, last), or null.
template <class Block = ByteBlock>
[[nodiscard]] inline const char* pFindOpening(const char* first, const char* last) noexcept {
    constexpr std::ptrdiff_t iBlock = Block::g_iSize;
    for (; last - first >= iBlock; first += iBlock)
        if (const unsigned uMask = Block(first).among('(').uHighBits()) return first + std::countr_zero(uMask);
    return first == last ? nullptr
                         : static_cast<const char*>(std::memchr(first, '(', static_cast<std::size_t>(last - first)));
}

// As ==. The last word overlaps the one before where the length is no multiple of eight.
[[nodiscard]] inline bool boSameText(std::string_view a, std::string_view b) noexcept {
    using Word = std::uint64_t;
    if (a.size() != b.size()) return false;
    if (a.size() < sizeof(Word)) return a == b;
    const auto boSameWord = [&](std::size_t i) {
        Word ofA;
        Word ofB;
        std::memcpy(&ofA, a.data() + i, sizeof ofA);
        std::memcpy(&ofB, b.data() + i, sizeof ofB);
        return ofA == ofB;
    };
    const std::size_t iLast = a.size() - sizeof(Word);
    for (std::size_t i = 0; i < iLast; i += sizeof(Word))
        if (!boSameWord(i)) return false;
    return boSameWord(iLast);
}

}   // namespace oxa::ifc::details
