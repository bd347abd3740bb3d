// SPDX-License-Identifier: Apache-2.0
// ScanMap: where in a buffer the bytes stand that mean something to the statement scanner.
//
// For      ReadFile, inside this folder.
// Shape    a bit a byte: a buffer is looked at once, as a whole, and every step of the scanner is a search for the next
//          set bit, mostly in the word where the last one was.
// Speed    sixteen bytes at once where SSE2 is at hand, else by a table of byte classes. Both are tested
//          against each other.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define OXA_IFC_SSE2 1
#endif

namespace oxa::ifc::details {

enum ScanClass : std::uint8_t {
    Statement = 1,   // what the main loop acts on, the number sign aside
    Number = 2,      // the same with "#", which matters once a statement
    String = 4,      // what ends or interrupts the run of plain bytes inside a string
};

inline constexpr std::string_view g_statementBytes = ";'/=\\\n\r ";
inline constexpr std::string_view g_stringBytes = "'\\\n";

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

// On any machine.
[[nodiscard]] inline ScanWord scanWordPortable(const char* pBytes) noexcept {
    ScanWord word;
    for (unsigned i = 0; i < 64; ++i) {
        const std::uint64_t uClass = g_scanClass[static_cast<unsigned char>(pBytes[i])];
        word.uStatement |= (uClass / Statement & 1U) << i;
        word.uString |= (uClass / String & 1U) << i;
    }
    return word;
}

#if defined(OXA_IFC_SSE2)
[[nodiscard]] inline ScanWord scanWord(const char* pBytes) noexcept {
    ScanWord word;
    for (unsigned i = 0; i < 64; i += 16) {
        const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pBytes + i));
        const auto among = [&text](auto... bytes) {
            __m128i any = _mm_setzero_si128();
            ((any = _mm_or_si128(any, _mm_cmpeq_epi8(text, _mm_set1_epi8(bytes)))), ...);
            return any;
        };
        const __m128i string = among('\'', '\\', '\n');
        const __m128i statement = _mm_or_si128(string, among(';', '/', '=', '\r', ' '));
        word.uString |= static_cast<std::uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(string))) << i;
        word.uStatement |= static_cast<std::uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(statement))) << i;
    }
    return word;
}
#else
[[nodiscard]] inline ScanWord scanWord(const char* pBytes) noexcept { return scanWordPortable(pBytes); }
#endif

// The bits of one buffer of at most iSize bytes. One bit behind the last byte ends every search.
template <std::size_t iSize>
class ScanMap {
public:
    // Up to 64 bytes from the last one on may be looked at: the buffer is padded.
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
