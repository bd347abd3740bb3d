// SPDX-License-Identifier: Apache-2.0
#include "Format/Ifc/Read/BatchCollector.h"

#include <utility>

#include "Core/Utilities/Threads/ThreadedLoop.h"

namespace oxa::ifc::io {

BatchCollector::BatchCollector(StepReadInfoDataCommon& info, FileBase& file, BatchStock& stock) noexcept
    : m_pInfo(&info),
      m_pFile(&file),
      m_pStock(&stock) {}

BatchCollector::~BatchCollector() { m_pStock->vReturn(std::move(m_pKept)); }

void BatchCollector::vAdd(BatchPtr pBatch) noexcept {
    std::unique_lock lock(m_mutex);
    vKeep(std::move(pBatch));
    if (m_boBusy) return;
    m_boBusy = true;
    StageWatch watch(m_pInfo->m_pTrace ? &m_time : nullptr);
    while (BatchPtr pNext = pDue()) {
        lock.unlock();
        const std::size_t iBytes = pNext->iBytes();
        vCollect(std::move(pNext));
        watch.vWorked(iBytes);
        lock.lock();
    }
    m_boBusy = false;
}

// Under the lock. Mostly it comes first, or behind few.
void BatchCollector::vKeep(BatchPtr pBatch) noexcept {
    BatchPtr* pPlace = &m_pKept;
    while (*pPlace && (*pPlace)->m_iOrder < pBatch->m_iOrder) pPlace = &(*pPlace)->m_pNext;
    pBatch->m_pNext = std::move(*pPlace);
    *pPlace = std::move(pBatch);
}

// Under the lock. Null where the next one has not come.
BatchPtr BatchCollector::pDue() noexcept {
    if (!m_pKept || m_pKept->m_iOrder != m_iDue) return nullptr;
    ++m_iDue;
    BatchPtr pBatch = std::move(m_pKept);
    m_pKept = std::move(pBatch->m_pNext);
    return pBatch;
}

// iNext is the statement in hand.
void BatchCollector::vEnter(const Batch& batch, std::size_t& iNext) {
    Data& data = m_pFile->dataBase();
    for (const RootedResult& rooted : batch.m_rooted.results) data.guidEntityMap().vFetch(rooted.guid);
    auto rooted = batch.m_rooted.results.begin();
    for (; iNext < batch.m_lines.size(); ++iNext) {
        const QueuedLine& line = batch.m_lines[iNext];
        Entity* pEntity = batch.m_entities[iNext];
        // A number that was used again: by now its slot holds the later statement, and that is what counts.
        if (batch.m_rooted.boNumberReused) {
            data.finalizeEntity(pEntity, *m_pInfo, batch.text(line), line.m_iLine);
            continue;
        }
        const bool boRooted = rooted != batch.m_rooted.results.end() && rooted->iResult == iNext;
        data.vEntityEnterTold(pEntity, boRooted ? &rooted++->guid : nullptr, *m_pInfo, batch.text(line), line.m_iLine);
    }
}

void BatchCollector::vCollect(BatchPtr pBatch) noexcept {
    std::size_t iNext = 0;
    if (!pBatch->m_boLost && !util::ThreadedLoop::boGuarded([&] { return vEnter(*pBatch, iNext), true; }))
        m_pInfo->m_pError->vLostAdd(pBatch->m_lines.size() - iNext, pBatch->m_lines[iNext].m_iLine);
    m_pStock->vReturn(std::move(pBatch));
}

}   // namespace oxa::ifc::io
