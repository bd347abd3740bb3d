// SPDX-License-Identifier: Apache-2.0
#include "Format/Ifc/Read/BatchQueue.h"

#include <thread>
#include <utility>

namespace oxa::ifc::io {

namespace {

constexpr unsigned g_iLooks = 10;                      // for a share, before a sleep
constexpr std::size_t g_iKeptCapacity = 1024 * 1024;   // a text larger than that is not kept for reuse

// One by one: a long chain must not end as deep as it is.
void vChainEnd(BatchPtr& pBatches) noexcept {
    while (pBatches) pBatches = std::move(pBatches->m_pNext);
}

}   // namespace

BatchQueue::~BatchQueue() { vChainEnd(m_pFirst); }

void Batch::vClear() {
    m_text.vForget(g_iKeptCapacity);
    m_boLost = false;
    m_lines.clear();
    m_entities.clear();
    m_rooted.vClear();
}

void BatchQueue::vPush(BatchPtr pBatch) noexcept {
    {
        const std::lock_guard lock(m_mutex);
        BatchPtr& pEnd = m_pLast ? m_pLast->m_pNext : m_pFirst;
        pEnd = std::move(pBatch);
        m_pLast = pEnd.get();
        if (++m_iCount < m_iWakeAt) return;
        m_boShare.store(true, std::memory_order_relaxed);
    }
    m_changed.notify_one();
}

void BatchQueue::vPushFront(BatchPtr pBatches) noexcept {
    if (!pBatches) return;
    Batch* pLast = pBatches.get();
    std::size_t iCount = 1;
    for (; pLast->m_pNext; pLast = pLast->m_pNext.get()) ++iCount;
    {
        const std::lock_guard lock(m_mutex);
        pLast->m_pNext = std::move(m_pFirst);
        m_pFirst = std::move(pBatches);
        if (!m_pLast) m_pLast = pLast;
        m_iCount += iCount;
        m_boShare.store(true, std::memory_order_relaxed);
    }
    m_changed.notify_one();
}

// The first iMost batches, in their order; null when there is none. Under the lock.
BatchPtr BatchQueue::pTake(std::size_t iMost) noexcept {
    BatchPtr* pEnd = &m_pFirst;
    for (std::size_t i = 0; i < iMost && *pEnd; ++i, --m_iCount) pEnd = &(*pEnd)->m_pNext;
    BatchPtr pRest = std::move(*pEnd);
    BatchPtr pTaken = std::move(m_pFirst);
    m_pFirst = std::move(pRest);
    if (m_pFirst) return pTaken;
    m_pLast = nullptr;
    m_boShare.store(m_boClosed, std::memory_order_relaxed);
    return pTaken;
}

// To wake a thread that has just fallen asleep takes longer than the share that it is woken for.
void BatchQueue::vLook() const noexcept {
    for (unsigned i = 0; i < g_iLooks && !m_boShare.load(std::memory_order_relaxed); ++i) std::this_thread::yield();
}

// Once the queue is closed no thread waits for a full share any more, and each takes one batch at a time: so the last
// ones are spread over all workers.
BatchPtr BatchQueue::pPop(std::size_t iMost) {
    vLook();
    std::unique_lock lock(m_mutex);
    if (!m_pFirst) m_changed.wait(lock, [this] { return m_iCount >= m_iWakeAt || m_boClosed; });
    return pTake(m_boClosed ? 1 : iMost);
}

BatchPtr BatchQueue::pTryPop(std::size_t iMost) {
    const std::lock_guard lock(m_mutex);
    return pTake(iMost);
}

void BatchQueue::vClose() {
    {
        const std::lock_guard lock(m_mutex);
        m_boClosed = true;
        m_boShare.store(true, std::memory_order_relaxed);
    }
    m_changed.notify_all();
}

void BatchQueue::vOpen() {
    const std::lock_guard lock(m_mutex);
    m_boClosed = false;
    m_boShare.store(m_pFirst != nullptr, std::memory_order_relaxed);
}

BatchStock::~BatchStock() { vChainEnd(m_pFirst); }

BatchPtr BatchStock::pTake() {
    {
        const std::lock_guard lock(m_mutex);
        ++m_iOut;
        if (BatchPtr pBatch = std::move(m_pFirst)) {
            m_pFirst = std::move(pBatch->m_pNext);
            return pBatch;
        }
    }
    try {
        auto pBatch = std::make_unique<Batch>();
        pBatch->m_lines.reserve(g_iBatchLines);
        pBatch->m_entities.reserve(g_iBatchLines);
        return pBatch;
    } catch (...) {
        const std::lock_guard lock(m_mutex);
        --m_iOut;
        throw;
    }
}

void BatchStock::vReturn(BatchPtr pBatches) noexcept {
    while (BatchPtr pBatch = std::move(pBatches)) {
        pBatches = std::move(pBatch->m_pNext);
        pBatch->vClear();
        const std::lock_guard lock(m_mutex);
        pBatch->m_pNext = std::move(m_pFirst);
        m_pFirst = std::move(pBatch);
        if (m_iOut-- == m_iMost) m_returned.notify_all();
    }
}

bool BatchStock::boAllOut() {
    const std::lock_guard lock(m_mutex);
    return m_iOut >= m_iMost;
}

void BatchStock::vHoldBack() {
    std::unique_lock lock(m_mutex);
    m_returned.wait(lock, [this] { return m_iOut < m_iMost; });
}

}   // namespace oxa::ifc::io
