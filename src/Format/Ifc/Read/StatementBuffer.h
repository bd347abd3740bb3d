// SPDX-License-Identifier: Apache-2.0
// StatementBuffer: the text of the statement that the scanner assembles from the pieces between its blanks.
//
// For      ReadFile, inside this folder.
// Speed    most pieces are some bytes long, and there are several in a statement: up to 32 bytes are copied without a
//          call and without a look at their count.
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
    // Bytes behind a piece that are looked at, whatever they are.
    static constexpr std::size_t g_iOverread = 32;

    // Up to g_iOverread bytes from pBytes on can be read, even if there are fewer. Throws std::bad_alloc, and is then
    // unchanged.
    void vAppend(const char* pBytes, std::size_t iCount) {
        if (m_iCapacity - m_iSize < iCount + g_iOverread) vGrow(iCount);
        char* pTo = m_pBytes.get() + m_iSize;
        if (iCount <= g_iOverread)
            std::memcpy(pTo, pBytes, g_iOverread);
        else
            std::memcpy(pTo, pBytes, iCount);
        m_iSize += iCount;
    }
    // Takes the last byte away. There is one.
    void vDropLast() noexcept { --m_iSize; }
    void vClear() noexcept { m_iSize = 0; }

    // Good until the next change.
    [[nodiscard]] std::string_view text() const noexcept { return {m_pBytes.get(), m_iSize}; }

private:
    void vGrow(std::size_t iCount) {
        const std::size_t iCapacity = std::max(2 * m_iCapacity, m_iSize + iCount + 16 * g_iOverread);
        std::unique_ptr<char[]> pBytes(new char[iCapacity]);
        if (m_iSize) std::memcpy(pBytes.get(), m_pBytes.get(), m_iSize);
        m_pBytes = std::move(pBytes);
        m_iCapacity = iCapacity;
    }

    std::unique_ptr<char[]> m_pBytes;
    std::size_t m_iSize = 0;
    std::size_t m_iCapacity = 0;
};

}   // namespace oxa::ifc::io
