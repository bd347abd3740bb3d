#include "Format/Ifc/IfcLineReadThreadPool.h"

#include <new>
#include <thread>
#include <utility>

#include "platform/Assert.h"
#include "platform/Utilities.h"

namespace oxa::ifc::io {

namespace {

constexpr std::size_t g_iBatchLines = 200;
constexpr int g_iIntervalMs = 10;                     // between two calls of a thread's function, which waits itself
constexpr std::size_t g_iBatchesPerWorker = 12;       // on their way at once
constexpr std::chrono::milliseconds g_longestWait(20);
constexpr std::size_t g_iKeptCapacity = 1024 * 1024;  // a text larger than that is not kept for reuse

// For as long as the result lives: an assertion on this thread must not open anything that waits for a user.
auto quietAssertions() {
    return Assert::getRegisteredForCurrentThread().registerHandler([](const AssertInfo&) { Debugger::vBreak(); });
}

}   // namespace

IfcLineReadThreadPool::Queue::~Queue() {
    while (m_pFirst) m_pFirst = std::move(m_pFirst->m_pNext);   // one by one: a long chain must not end as deep as it is
}

void IfcLineReadThreadPool::Batch::vClear() {
    if (m_text.capacity() > g_iKeptCapacity) m_text = std::string();
    m_text.clear();
    m_lines.clear();
    m_entities.clear();
    m_rooted.clear();
}

void IfcLineReadThreadPool::Queue::vPush(BatchPtr pBatch) noexcept {
    {
        const std::lock_guard lock(m_mutex);
        BatchPtr& pEnd = m_pLast ? m_pLast->m_pNext : m_pFirst;
        pEnd = std::move(pBatch);
        m_pLast = pEnd.get();
        if (++m_iCount < m_iWakeAt) return;
    }
    m_changed.notify_one();
}

void IfcLineReadThreadPool::Queue::vPushFront(BatchPtr pBatches) noexcept {
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
    }
    m_changed.notify_one();
}

// The first iMost batches, in their order; null when there is none. Under the lock.
IfcLineReadThreadPool::BatchPtr IfcLineReadThreadPool::Queue::pTake(std::size_t iMost) noexcept {
    BatchPtr* pEnd = &m_pFirst;
    for (std::size_t i = 0; i < iMost && *pEnd; ++i, --m_iCount) pEnd = &(*pEnd)->m_pNext;
    BatchPtr pRest = std::move(*pEnd);
    BatchPtr pTaken = std::move(m_pFirst);
    m_pFirst = std::move(pRest);
    if (!m_pFirst) m_pLast = nullptr;
    return pTaken;
}

IfcLineReadThreadPool::BatchPtr IfcLineReadThreadPool::Queue::pPop(std::size_t iMost,
                                                                   const std::atomic<bool>& boActive) {
    std::unique_lock lock(m_mutex);
    if (!m_pFirst) m_changed.wait(lock, [&] { return m_iCount >= m_iWakeAt || !boActive; });
    return pTake(boActive ? iMost : 1);
}

IfcLineReadThreadPool::BatchPtr IfcLineReadThreadPool::Queue::pPop(std::size_t iMost,
                                                                   std::chrono::milliseconds longest) {
    std::unique_lock lock(m_mutex);
    if (longest.count() > 0) m_changed.wait_for(lock, longest, [this] { return m_pFirst != nullptr; });
    return pTake(iMost);
}

void IfcLineReadThreadPool::Queue::vWake() {
    {
        // Nobody is between a look at the flag and the wait any more.
        const std::lock_guard lock(m_mutex);
    }
    m_changed.notify_all();
}

IfcLineReadThreadPool::IfcLineReadThreadPool(StepReadInfoDataCommon& info, FileBase& file, bool boOneWorker)
    : m_pBatch(std::make_unique<Batch>()), m_pInfo(&info), m_pFile(&file), m_boOneWorker(boOneWorker) {
    info.m_boParallel = true;
}

IfcLineReadThreadPool::~IfcLineReadThreadPool() {
    vBatchQueue();
    m_boWorkersActive = false;
    m_lineQueue.vWake();
    for (util::ThreadedLoop& worker : m_workers) worker.vStop();   // each drains the queue in its last call
    m_boCollectorActive = false;
    m_doneQueue.vWake();
    m_collector.vStop();
    // From here on every statement is in the model.
}

std::size_t IfcLineReadThreadPool::iWorkerCount() noexcept {
    static const std::size_t g_iCount = [] {
        const std::size_t iHalf = std::thread::hardware_concurrency() / 2;
        return iHalf > 3 ? iHalf - 2 : std::size_t{2};
    }();
    return g_iCount;
}

void IfcLineReadThreadPool::vStart() {
    const std::size_t iWorkers = m_boOneWorker ? 1 : iWorkerCount();
    Pool& pool = m_pFile->dataBase().pool();
    for (std::size_t i = 0; i < iWorkers + 1; ++i) m_threads.push_back(std::make_unique<StepReadThread>(pool));
    m_workers = std::vector<util::ThreadedLoop>(iWorkers);
    constexpr util::ThreadedLoop::Options g_options{2, true};
    for (std::size_t i = 0; i < iWorkers; ++i)
        m_workers[i].perform({}, [this, pThread = m_threads[i].get()] { return readLines(*pThread); }, g_iIntervalMs,
                             g_options);
    m_collector.perform({}, [this] { return finalizeLines(); }, g_iIntervalMs, g_options);
}

void IfcLineReadThreadPool::addLineToQueue(std::string_view line, unsigned iLine) {
    if (!m_boWorkersActive || !m_boCollectorActive) {
        if (Assert::isEnabled())
            Assert::addAssert("Format/Ifc/IfcLineReadThreadPool",
                              "oxa::ifc::io::IfcLineReadThreadPool::addLineToQueue", "Thread pool is not active",
                              __LINE__);
        return;
    }
    if (m_workers.empty()) vStart();
    Batch& batch = *m_pBatch;
    batch.m_lines.push_back({batch.m_text.size(), line.size(), iLine});
    batch.m_text.append(line).push_back('\0');
    if (batch.m_lines.size() < g_iBatchLines) return;
    vBatchQueue();
    m_pBatch = pBatchNext();
}

// Hands the batch on, also an empty one. There is none when no memory was to be had for it.
void IfcLineReadThreadPool::vBatchQueue() {
    if (m_pBatch) m_lineQueue.vPush(std::move(m_pBatch));
}

// An empty batch for the next statements. The workers' work is the larger part: a scanner far ahead of them would hold
// the file in memory twice, so it helps them. Batches that an exception has lost never come back, and then the wait
// ends by itself.
IfcLineReadThreadPool::BatchPtr IfcLineReadThreadPool::pBatchNext() {
    const bool boMore = m_iBatches < g_iBatchesPerWorker * (m_workers.size() + 1);
    for (;;) {
        if (BatchPtr pBatch = m_freeQueue.pPop(1, std::chrono::milliseconds(0))) return pBatch;
        if (boMore || !boHelp()) break;
    }
    if (!boMore)
        if (BatchPtr pBatch = m_freeQueue.pPop(1, g_longestWait)) return pBatch;
    ++m_iBatches;
    return std::make_unique<Batch>();
}

// Parses a batch on the scanner's thread, as a worker does it. False when none waits, or there is to be one worker only.
bool IfcLineReadThreadPool::boHelp() {
    if (m_boOneWorker || m_threads.empty()) return false;
    BatchPtr pBatches = m_lineQueue.pPop(g_iBatchesShared, std::chrono::milliseconds(0));
    if (!pBatches) return false;
    bool boMemory = true;
    util::ThreadedLoop::boGuarded([&] {
        try {
            const auto handler = quietAssertions();
            vBatchesRead(std::move(pBatches), *m_threads.back());
        } catch (const std::bad_alloc&) {
            boMemory = false;
        }
        return true;
    });
    if (!boMemory) throw std::bad_alloc();   // this thread has a caller who can be told
    return true;
}

void IfcLineReadThreadPool::vBatchRead(BatchPtr pBatch, StepReadThread& thread) {
    Data& data = m_pFile->dataBase();
    for (const QueuedLine& line : pBatch->m_lines) {
        StepReadInfoData info(pBatch->text(line), line.m_iLine, *m_pInfo, &thread);
        info.m_pRooted = &pBatch->m_rooted;
        data.boReadLine(info, pBatch->m_entities);
    }
    m_doneQueue.vPush(std::move(pBatch));
}

// One after the other. What is thrown loses the one in hand; those behind it go back to the queue.
void IfcLineReadThreadPool::vBatchesRead(BatchPtr pBatches, StepReadThread& thread) {
    struct Rest {
        Queue& queue;
        BatchPtr pBatches;
        ~Rest() { queue.vPushFront(std::move(pBatches)); }
    } rest{m_lineQueue, std::move(pBatches)};
    while (BatchPtr pBatch = std::move(rest.pBatches)) {
        rest.pBatches = std::move(pBatch->m_pNext);
        vBatchRead(std::move(pBatch), thread);
    }
}

// What is queued is parsed to the end, also after a fatal fault.
bool IfcLineReadThreadPool::readLines(StepReadThread& thread) {
    const auto handler = quietAssertions();
    while (BatchPtr pBatches = m_lineQueue.pPop(g_iBatchesShared, m_boWorkersActive))
        vBatchesRead(std::move(pBatches), thread);
    return m_boWorkersActive;
}

void IfcLineReadThreadPool::vBatchFinalize(const Batch& batch) {
    Data& data = m_pFile->dataBase();
    auto rooted = batch.m_rooted.begin();
    for (std::size_t i = 0; i < batch.m_lines.size(); ++i) {
        const QueuedLine& line = batch.m_lines[i];
        const bool boRooted = rooted != batch.m_rooted.end() && rooted->iResult == i;
        data.finalizeEntity(batch.m_entities[i], boRooted ? &rooted++->guid : nullptr, *m_pInfo, batch.text(line),
                            line.m_iLine);
    }
}

bool IfcLineReadThreadPool::finalizeLines() {
    while (BatchPtr pBatch = m_doneQueue.pPop(1, m_boCollectorActive)) {
        vBatchFinalize(*pBatch);
        pBatch->vClear();
        m_freeQueue.vPush(std::move(pBatch));
    }
    return m_boCollectorActive;
}

}   // namespace oxa::ifc::io
