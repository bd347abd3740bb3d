// SPDX-License-Identifier: Apache-2.0
// PoolArena: bump allocation for one thread out of a shared pool.
//
// For      a parsing thread: it draws larger pieces, and so touches the shared counter once for some hundred allocations.
// Shape    what it holds unused at its end is lost to the pool; the pieces therefore start small and double, so that a
//          small model wastes little.
// Threads  one.
#pragma once

#include <cstddef>

#include "Format/Ifc/Memory/SimplePool.h"

namespace oxa::ifc {

// Even one atomic add is too much for each cell: the counter's cache line would move between the processors at every
// allocation. A parsing thread therefore takes pieces for itself and cuts them up without any synchronisation. Pieces
// begin at 16 KiB and double up to 128 KiB, which they have at once where much is to come; a statement alone that
// is read into a large model must not cost as much.
class PoolArena {
public:
    explicit PoolArena(Pool& pool) noexcept : m_pPool(&pool) {}
    ~PoolArena() { memory::vGiveBack(m_pNext, static_cast<std::size_t>(m_pEnd - m_pNext)); }
    PoolArena(const PoolArena&) = delete;
    PoolArena& operator=(const PoolArena&) = delete;

    // As SimplePool::pAllocate, without the threads.
    [[nodiscard]] void* pAllocate(std::size_t iBytes) {
        if (iBytes > static_cast<std::size_t>(m_pEnd - m_pNext) || !m_pNext) return pAllocateSlow(iBytes);
        char* pBytes = m_pNext;
        m_pNext += iBytes;
        return pBytes;
    }

private:
    static constexpr std::size_t g_iFirstPiece = 16 * 1024;
    static constexpr std::size_t g_iLargestPiece = 128 * 1024;

    void* pAllocateSlow(std::size_t iBytes);   // kept out of line: one call in some thousand

    Pool* m_pPool;
    char* m_pNext = nullptr;
    char* m_pEnd = nullptr;
    std::size_t m_iPiece = g_iFirstPiece;
};

}   // namespace oxa::ifc
