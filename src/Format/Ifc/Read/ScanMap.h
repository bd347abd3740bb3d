// SPDX-License-Identifier: Apache-2.0
// ScanMap: where in a buffer the bytes stand that mean something to the statement scanner.
//
// For      ReadFile, inside this folder.
// Shape    a bit a byte: one pass over a buffer finds them all, and every step of the scanner is a search for the next
//          set bit, mostly in the word where the last one was.
// Rule     which bytes these are stands here once, as texts; the table of byte classes and the search of whole words are
//          made of them, and a test holds the two together.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

#include "Format/Ifc/Text/ByteBlock.h"

namespace oxa::ifc::details {

enum ScanClass : std::uint8_t {
    Statement = 1,   // what the main loop acts on, the number sign aside
    Number = 2,      // the same with "#", which matters once a statement
    String = 4,      // what ends or interrupts the run of plain bytes inside a string
};

inline constexpr std::string_view g_stringBytes = "'\\\n";
inline constexpr std::string_view g_blankBytes = " \n\r";   // what vanishes outside strings
inline constexpr std::string_view g_statementBytes = "'\\\n\r ;/=";
static_assert(g_blankBytes.size() == 3, "the scanner has a case for each");
static_assert(g_statementBytes.starts_with(g_stringBytes), "one comparison serves both classes of a word");

inline constexpr std::array<std::uint8_t, 256> g_scanClass = [] {
    std::array<std::uint8_t, 256> table{};
    const auto mark = [&table](std::string_view bytes, int classes) {
        for (const char c : bytes) {
            auto& entry = table[static_cast<unsigned char>(c)];
            entry = static_cast<std::uint8_t>(entry | classes);
        }
    };
    mark(g_statementBytes, Statement | Number);
    mark("#", Number);
    mark(g_stringBytes, String);
    return table;
}();

// The first byte of [first, last) of one of the classes, or last.
[[nodiscard]] inline const char* pFindClass(const char* first, const char* last, std::uint8_t uClass) noexcept {
    while (first != last && !(g_scanClass[static_cast<unsigned char>(*first)] & uClass)) ++first;
    return first;
}

// 64 bytes in two bits each.
struct ScanWord {
    std::uint64_t uStatement = 0;
    std::uint64_t uString = 0;
};

// Calls test(byte...) with the bytes of a text.
template <const std::string_view& sBytes, class Test>
[[nodiscard]] constexpr auto withBytesOf(Test&& test) noexcept {
    return [&]<std::size_t... i>(std::index_sequence<i...>) { return test(sBytes[i]...); }
    (std::make_index_sequence<sBytes.size()>());
}

[[nodiscard]] constexpr bool boScanBlank(char c) noexcept {
    return c == g_blankBytes[0] || c == g_blankBytes[1] || c == g_blankBytes[2];
}

template <class Block = ByteBlock>
[[nodiscard]] inline ScanWord scanWord(const char* pBytes) noexcept {
    ScanWord word;
    for (unsigned i = 0; i < 64; i += Block::g_iSize) {
        const Block text(pBytes + i);
        const auto among = [&text](auto... bytes) { return text.among(bytes...).uHighBits(); };
        word.uString |= std::uint64_t{withBytesOf<g_stringBytes>(among)} << i;
        word.uStatement |= std::uint64_t{withBytesOf<g_statementBytes>(among)} << i;
    }
    return word;
}

// The bits of one buffer of at most iSize bytes. One bit behind the last byte ends every search.
//
// Why a map and not a search: a statement has a byte that matters every ten or twenty bytes, and a vector search that
// starts anew at each of them pays for its start every time. The map takes a fixed run of instructions for 64 bytes,
// without a branch that could be mispredicted; afterwards the next byte of interest is a shift and a count of trailing
// zeros, mostly in the same 64-bit word. Two classes share it: the bytes between strings, and those inside of one.
template <std::size_t iSize>
class ScanMap {
public:
    // Reads up to 64 bytes from the last one on: the buffer is padded.
    void vBuild(const char* pBytes, unsigned iCount) noexcept {
        for (unsigned i = 0; i < iCount; i += 64) m_words[i / 64] = scanWord(pBytes + i);
        // Every search ends here, whatever the padding holds.
        ScanWord& last = m_words[iCount / 64];
        const std::uint64_t uEnd = std::uint64_t{1} << iCount % 64;
        last.uStatement |= uEnd;
        last.uString |= uEnd;
    }

    // The next byte at or behind iFrom that the main loop acts on, the number sign aside; the count when there is none.
    [[nodiscard]] unsigned iFindStatement(unsigned iFrom) const noexcept { return iFind(&ScanWord::uStatement, iFrom); }
    // Of those bytes the ones at and behind iFrom in the same 64 bytes: bit n is for byte iFrom + n.
    [[nodiscard]] std::uint64_t uStatementFrom(unsigned iFrom) const noexcept {
        return m_words[iFrom / 64].uStatement >> iFrom % 64;
    }
    // The next byte that ends or interrupts the plain text of a string.
    [[nodiscard]] unsigned iFindString(unsigned iFrom) const noexcept { return iFind(&ScanWord::uString, iFrom); }

private:
    [[nodiscard]] unsigned iFind(std::uint64_t ScanWord::*pClass, unsigned iFrom) const noexcept {
        unsigned i = iFrom / 64;
        std::uint64_t uBits = m_words[i].*pClass >> iFrom % 64;
        if (uBits) return iFrom + static_cast<unsigned>(std::countr_zero(uBits));
        while (!(uBits = m_words[++i].*pClass)) {}
        return i * 64 + static_cast<unsigned>(std::countr_zero(uBits));
    }

    std::array<ScanWord, iSize / 64 + 1> m_words{{{1, 1}}};   // of no byte at first
};

}   // namespace oxa::ifc::details
