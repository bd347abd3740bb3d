// SPDX-License-Identifier: Apache-2.0
// TextRoom: a string that text is composed into through a plain pointer, with room ahead of it.
//
// For      the composers of statements. A text of many short pieces costs a store for each of them, where it would cost a
//          call of the string.
// Rule     who asks for room may write that much, and g_iRoom more for what stands around it, before asking again. The
//          pointer is the caller's: only it says how far the text has come.
// Memory   the string's size is the room, whatever the bytes behind the text are. Who is done cuts it off.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

namespace oxa::ifc::details {

class TextRoom {
public:
    static constexpr std::size_t g_iRoom = 128;     // behind all that was asked for
    static constexpr std::size_t g_iFirst = 1024;   // in a string that has none

    // Behind the first bytes of the text, so many as are to stay.
    TextRoom(std::string& text, std::size_t iUsed) : m_text(text) {
        if (text.size() < iUsed + g_iRoom) text.resize(std::max(iUsed + iUsed / 8 + g_iRoom, g_iFirst));
        m_pLast = m_text.data() + m_text.size() - g_iRoom;
    }
    TextRoom(const TextRoom&) = delete;
    TextRoom& operator=(const TextRoom&) = delete;

    // Where the text is at that place, and where it is.
    [[nodiscard]] char* pAt(std::size_t iPlace) const noexcept { return m_text.data() + iPlace; }
    [[nodiscard]] std::size_t iPlaceOf(const char* p) const noexcept {
        return static_cast<std::size_t>(p - m_text.data());
    }

    // p, in a string that may have moved.
    [[nodiscard]] char* pRoom(char* p) { return p <= m_pLast ? p : pMore(p, 0); }
    [[nodiscard]] char* pRoom(char* p, std::size_t iBytes) {
        return p <= m_pLast && static_cast<std::size_t>(m_pLast - p) >= iBytes ? p : pMore(p, iBytes);
    }

private:
    char* pMore(char* p, std::size_t iBytes);

    std::string& m_text;
    char* m_pLast;   // g_iRoom in front of the end
};

// A text of any length, where it has room; its end. Short ones, nearly all, without a call of the library: in pieces of
// one size, the last of which is the end of the text and overlaps the one before.
[[nodiscard]] inline char* pCopied(char* pTo, std::string_view text) noexcept {
    constexpr std::size_t g_iCall = 128;   // above that one pays
    const char* pFrom = text.data();
    const std::size_t iSize = text.size();
    const auto vEnds = [&]<std::size_t iPiece>(std::integral_constant<std::size_t, iPiece>) {
        char first[iPiece];
        char last[iPiece];
        std::memcpy(first, pFrom, iPiece);
        std::memcpy(last, pFrom + iSize - iPiece, iPiece);
        std::memcpy(pTo, first, iPiece);
        std::memcpy(pTo + iSize - iPiece, last, iPiece);
    };
    if (iSize > g_iCall) {
        std::memcpy(pTo, pFrom, iSize);
    } else if (iSize >= 16) {
        for (std::size_t i = 0; i + 16 < iSize; i += 16) std::memcpy(pTo + i, pFrom + i, 16);
        std::memcpy(pTo + iSize - 16, pFrom + iSize - 16, 16);
    } else if (iSize >= 8) {
        vEnds(std::integral_constant<std::size_t, 8>());
    } else if (iSize >= 4) {
        vEnds(std::integral_constant<std::size_t, 4>());
    } else {
        for (std::size_t i = 0; i < iSize; ++i) pTo[i] = pFrom[i];
    }
    return pTo + iSize;
}

}   // namespace oxa::ifc::details
