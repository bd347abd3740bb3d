// SPDX-License-Identifier: Apache-2.0
// StatementBuffer: the text of the statement that the scanner assembles from the pieces between its blanks, and of those
// before it that were kept.
//
// For      the scanner and the pool of line workers, inside this folder: statements that go to a worker together stand in
//          one buffer from the start, so that none is copied again.
// Speed    most pieces are some bytes long, and there are several in a statement: those are copied without a call, in
//          blocks of 32 bytes and without a look at the rest.
// Threads  one.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

namespace oxa::ifc::io {

class StatementBuffer {
public:
    // Bytes behind a piece that may be looked at, whatever they are.
    static constexpr std::size_t g_iOverread = 32;

    // There is a byte at least, and g_iOverread more can be read behind the last one. Throws std::bad_alloc, and is then
    // unchanged.
    void vAppend(const char* pBytes, std::size_t iCount) {
        char* pTo = pRoom(iCount);
        m_iSize += iCount;
        if (iCount > g_iInBlocks) {
            std::memcpy(pTo, pBytes, iCount);
            return;
        }
        const char* const pEnd = pBytes + iCount;
        do {
            std::memcpy(pTo, pBytes, g_iOverread);
            pTo += g_iOverread;
            pBytes += g_iOverread;
        } while (pBytes < pEnd);
    }
    // Where the next bytes go: room for so many, and g_iOverread more that may be written over. Throws as vAppend.
    [[nodiscard]] char* pRoom(std::size_t iCount) {
        if (m_iCapacity - m_iSize < iCount + g_iOverread) vGrow(iCount);
        return m_pBytes.get() + m_iSize;
    }
    // The bytes from there up to pEnd are the statement's.
    void vTaken(const char* pEnd) noexcept { m_iSize = static_cast<std::size_t>(pEnd - m_pBytes.get()); }
    // The same for a text behind which no byte may be looked at.
    void vAppendExact(std::string_view text) {
        text.copy(pRoom(text.size()), text.size());
        m_iSize += text.size();
    }
    // Takes the last byte of the statement away. There is one.
    void vDropLast() noexcept { --m_iSize; }
    // Forgets the statement in hand.
    void vClear() noexcept { m_iSize = m_iBegin; }

    // Of the statement in hand. Good until the next change.
    [[nodiscard]] std::string_view text() const noexcept { return {m_pBytes.get() + m_iBegin, m_iSize - m_iBegin}; }

    // Where a kept statement stands.
    struct Place {
        std::size_t iBegin;
        std::size_t iLength;
    };
    // Keeps the statement in hand, with a NUL behind it, and begins the next one. Throws as vAppend.
    Place keep() {
        const Place place{m_iBegin, m_iSize - m_iBegin};
        if (m_iCapacity - m_iSize < 1 + g_iOverread) vGrow(1);
        m_pBytes[m_iSize++] = '\0';
        m_iBegin = m_iSize;
        return place;
    }
    // Good until the next change.
    [[nodiscard]] std::string_view kept(const Place& place) const noexcept {
        return {m_pBytes.get() + place.iBegin, place.iLength};
    }
    // Forgets all statements. Memory of more than iMost bytes is given back.
    void vForget(std::size_t iMost) noexcept {
        m_iSize = m_iBegin = 0;
        if (m_iCapacity <= iMost) return;
        m_pBytes.reset();
        m_iCapacity = 0;
    }

private:
    static constexpr std::size_t g_iDoubled = 8 * 1024;
    static constexpr std::size_t g_iInBlocks = 8 * g_iOverread;   // a longer piece is worth a call

    void vGrow(std::size_t iCount) {
        // Doubled while that is little: there are many such buffers, and what they do not use is theirs all the same.
        const std::size_t iMore = m_iCapacity < g_iDoubled ? m_iCapacity : m_iCapacity / 4;
        const std::size_t iCapacity = std::max(m_iCapacity + iMore, m_iSize + iCount + 16 * g_iOverread);
        std::unique_ptr<char[]> pBytes(new char[iCapacity]);
        if (m_iSize) std::memcpy(pBytes.get(), m_pBytes.get(), m_iSize);
        m_pBytes = std::move(pBytes);
        m_iCapacity = iCapacity;
    }

    std::unique_ptr<char[]> m_pBytes;
    std::size_t m_iBegin = 0;   // of the statement in hand
    std::size_t m_iSize = 0;
    std::size_t m_iCapacity = 0;
};

}   // namespace oxa::ifc::io
