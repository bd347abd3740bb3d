// SPDX-License-Identifier: Apache-2.0
// A thread's next piece of a shared pool.
#include "Format/Ifc/Memory/PoolArena.h"

namespace oxa::ifc {

void* PoolArena::pAllocateSlow(std::size_t iBytes) {
    // A large request goes past the arena, so that it does not throw half a piece away.
    if (iBytes >= m_iPiece / 4) return m_pPool->pAllocatePiece(iBytes);
    if (m_pPool->iExpected() >= memory::g_iSegmentBytes) m_iPiece = g_iLargestPiece;
    m_pNext = static_cast<char*>(m_pPool->pAllocatePiece(m_iPiece));
    m_pEnd = m_pNext + m_iPiece;
    if (m_iPiece < g_iLargestPiece) m_iPiece *= 2;
    return pAllocate(iBytes);
}

}   // namespace oxa::ifc
