// IfcScanBytes: the next byte of a buffer that means something to the statement scanner.
//
// For      ReadFile, inside this folder.
// Speed    sixteen bytes at once where SSE2 is at hand, else by a table of byte classes. Both are tested
//          against each other.
#pragma once

#include <array>
#include <bit>
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
    Number = 2,      // "#", which matters once a statement
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

// The first byte of [first, last) that is among "bytes", which are those of class uClass, or last. Up to 15 bytes
// behind "last" may be looked at: the buffer is padded.
template <std::size_t N>
[[nodiscard]] inline const char* pFindAmong(const char* first, const char* last,
                                            [[maybe_unused]] const std::array<char, N>& bytes,
                                            [[maybe_unused]] std::uint8_t uClass) noexcept {
#if defined(OXA_IFC_SSE2)
    for (; first < last; first += 16) {
        const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(first));
        __m128i any = _mm_cmpeq_epi8(text, _mm_set1_epi8(bytes[0]));
        for (std::size_t i = 1; i < N; ++i) any = _mm_or_si128(any, _mm_cmpeq_epi8(text, _mm_set1_epi8(bytes[i])));
        if (const auto uMask = static_cast<unsigned>(_mm_movemask_epi8(any))) {
            first += std::countr_zero(uMask);
            break;
        }
    }
    return first < last ? first : last;
#else
    return pFindClass(first, last, uClass);
#endif
}

// The next byte that the main loop acts on, the number sign aside.
[[nodiscard]] inline const char* pFindStatement(const char* first, const char* last) noexcept {
    return pFindAmong(first, last, std::array{';', '\'', '/', '=', '\\', '\n', '\r', ' '}, Statement);
}

// The next byte that ends or interrupts the plain text of a string.
[[nodiscard]] inline const char* pFindString(const char* first, const char* last) noexcept {
    return pFindAmong(first, last, std::array{'\'', '\\', '\n'}, String);
}

}   // namespace oxa::ifc::details
