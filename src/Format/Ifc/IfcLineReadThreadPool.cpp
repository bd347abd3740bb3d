#include "Format/Ifc/IfcLineReadThreadPool.h"

#include <thread>
#include <utility>

#include "platform/Assert.h"
#include "platform/Utilities.h"

namespace oxa::ifc::io {

namespace {

constexpr std::size_t g_iBatchLines = 200;
constexpr int g_iIntervalMs = 10;                     // between two calls of a thread's function, which waits itself
constexpr std::size_t g_iBatchesPerWorker = 8;        // on their way at once
constexpr std::chrono::milliseconds g_longestWait(20);
constexpr std::size_t g_iKeptCapacity = 1024 * 1024;  // a text larger than that is not kept for reuse

}   // namespace

void IfcLineReadThreadPool::Batch::vClear() {
    if (m_text.capacity() > g_iKeptCapacity) m_text = std::string();
    m_text.clear();
    m_lines.clear();
    m_entities.clear();
    m_rooted.clear();
}

void IfcLineReadThreadPool::Queue::vPush(BatchPtr pBatch) {
    {
        const std::lock_guard lock(m_mutex);
        m_batches.push_back(std::move(pBatch));
    }
    m_changed.notify_one();
}

IfcLineReadThreadPool::BatchPtr IfcLineReadThreadPool::Queue::pFront() {
    if (m_batches.empty()) return nullptr;
    BatchPtr pBatch = std::move(m_batches.front());
    m_batches.pop_front();
    return pBatch;
}

IfcLineReadThreadPool::BatchPtr IfcLineReadThreadPool::Queue::pPop(const std::atomic<bool>& boActive) {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] { return !m_batches.empty() || !boActive; });
    return pFront();
}

IfcLineReadThreadPool::BatchPtr IfcLineReadThreadPool::Queue::pPop(std::chrono::milliseconds longest) {
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, longest, [this] { return !m_batches.empty(); });
    return pFront();
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
    for (std::size_t i = 0; i < iWorkers; ++i) m_threads.push_back(std::make_unique<StepReadThread>(pool));
    m_workers = std::vector<util::ThreadedLoop>(iWorkers);
    constexpr util::ThreadedLoop::Options g_options{2, true};
    for (std::size_t i = 0; i < iWorkers; ++i)
        m_workers[i].perform({}, [this, pThread = m_threads[i].get()] { return readLines(*pThread); }, g_iIntervalMs,
                             g_options);
    m_collector.perform({}, [this] { return finalizeLines(); }, g_iIntervalMs, g_options);
}

void IfcLineReadThreadPool::addLineToQueue(const std::string& line, unsigned iLine) {
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

// Hands the batch on, also an empty one.
void IfcLineReadThreadPool::vBatchQueue() {
    m_lineQueue.vPush(std::move(m_pBatch));
}

// An empty batch for the next statements. The workers' work is the larger part: a scanner far ahead of them would hold
// the file in memory twice. Batches that an exception has lost never come back, and then the wait ends by itself.
IfcLineReadThreadPool::BatchPtr IfcLineReadThreadPool::pBatchNext() {
    const bool boMore = m_iBatches < g_iBatchesPerWorker * (m_workers.size() + 1);
    BatchPtr pBatch = m_freeQueue.pPop(boMore ? std::chrono::milliseconds(0) : g_longestWait);
    if (pBatch) return pBatch;
    ++m_iBatches;
    return std::make_unique<Batch>();
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

// What is queued is parsed to the end, also after a fatal fault.
bool IfcLineReadThreadPool::readLines(StepReadThread& thread) {
    // An assertion on a worker must not open anything that waits for a user.
    const auto handler = Assert::getRegisteredForCurrentThread().registerHandler(
        [](const AssertInfo&) { Debugger::vBreak(); });
    while (BatchPtr pBatch = m_lineQueue.pPop(m_boWorkersActive)) vBatchRead(std::move(pBatch), thread);
    return m_boWorkersActive;
}

bool IfcLineReadThreadPool::finalizeLines() {
    Data& data = m_pFile->dataBase();
    while (BatchPtr pBatch = m_doneQueue.pPop(m_boCollectorActive)) {
        auto rooted = pBatch->m_rooted.begin();
        for (std::size_t i = 0; i < pBatch->m_lines.size(); ++i) {
            const QueuedLine& line = pBatch->m_lines[i];
            const bool boRooted = rooted != pBatch->m_rooted.end() && rooted->iResult == i;
            data.finalizeEntity(pBatch->m_entities[i], boRooted ? &rooted++->guid : nullptr, *m_pInfo,
                                pBatch->text(line), line.m_iLine);
        }
        pBatch->vClear();
        m_freeQueue.vPush(std::move(pBatch));
    }
    return m_boCollectorActive;
}

}   // namespace oxa::ifc::io
