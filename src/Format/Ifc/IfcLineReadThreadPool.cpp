#include "Format/Ifc/IfcLineReadThreadPool.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

#include "platform/Assert.h"
#include "platform/Utilities.h"

namespace oxa::ifc::io {

namespace {

constexpr std::size_t g_iBatchLines = 200;
constexpr int g_iIntervalMs = 10;                    // latency of an idle worker
constexpr std::size_t g_iQueueLimit = 256;           // batches that may wait before the scanner does
constexpr std::chrono::microseconds g_scannerPause(500);
constexpr std::size_t g_iKeptCapacity = 64 * 1024;   // a text larger than that is not kept for reuse

}   // namespace

void IfcLineReadThreadPool::Queue::vPush(BatchPtr pBatch) {
    const std::lock_guard lock(m_mutex);
    m_batches.push_back(std::move(pBatch));
    m_iCount.store(m_batches.size(), std::memory_order_release);
}

IfcLineReadThreadPool::BatchPtr IfcLineReadThreadPool::Queue::pPop() {
    const std::lock_guard lock(m_mutex);
    if (m_batches.empty()) return nullptr;
    BatchPtr pBatch = std::move(m_batches.front());
    m_batches.pop_front();
    m_iCount.store(m_batches.size(), std::memory_order_release);
    return pBatch;
}

IfcLineReadThreadPool::IfcLineReadThreadPool(StepReadInfoDataCommon& info, FileBase& file, bool boOneWorker)
    : m_pBatch(std::make_unique<Batch>()), m_pInfo(&info), m_pFile(&file), m_boOneWorker(boOneWorker) {
    info.m_boParallel = true;
}

IfcLineReadThreadPool::~IfcLineReadThreadPool() {
    vBatchQueue();
    m_boWorkersActive = false;
    for (util::ThreadedLoop& worker : m_workers) worker.vStop();   // each drains the queue in its last call
    m_boCollectorActive = false;
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
    for (std::size_t i = 0; i < iWorkers; ++i) m_arenas.push_back(std::make_unique<PoolArena>(pool));
    m_workers = std::vector<util::ThreadedLoop>(iWorkers);
    constexpr util::ThreadedLoop::Options g_options{2, true};
    for (std::size_t i = 0; i < iWorkers; ++i)
        m_workers[i].perform({}, [this, pArena = m_arenas[i].get()] { return readLines(*pArena); }, g_iIntervalMs,
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
    if (batch.m_iLines == batch.m_lines.size()) batch.m_lines.emplace_back();
    QueuedLine& queued = batch.m_lines[batch.m_iLines++];
    queued.m_text = line;   // the text's capacity stays from batch to batch
    queued.m_iLine = iLine;
    if (batch.m_iLines < g_iBatchLines) return;
    vBatchQueue();
    // The workers' work is the larger part: a scanner far ahead of them would hold the file in memory twice. Where
    // exceptions have ended all of them, nobody is left to wait for.
    while (m_lineQueue.iCount() > g_iQueueLimit && std::ranges::any_of(m_workers, &util::ThreadedLoop::boRunning))
        std::this_thread::sleep_for(g_scannerPause);
}

// Hands the batch on, also an empty one, and takes a used one for the next statements where there is one.
void IfcLineReadThreadPool::vBatchQueue() {
    m_lineQueue.vPush(std::move(m_pBatch));
    m_pBatch = m_freeQueue.iCount() ? m_freeQueue.pPop() : nullptr;
    if (!m_pBatch) m_pBatch = std::make_unique<Batch>();
}

void IfcLineReadThreadPool::vBatchRead(BatchPtr pBatch, PoolArena& arena) {
    Data& data = m_pFile->dataBase();
    for (std::size_t i = 0; i < pBatch->m_iLines; ++i) {
        QueuedLine& line = pBatch->m_lines[i];
        StepReadInfoData info(line.m_text, line.m_iLine, *m_pInfo, &arena);
        data.boReadLine(info, pBatch->m_entities);
    }
    m_doneQueue.vPush(std::move(pBatch));
}

// What is queued is parsed to the end, also after a fatal fault.
bool IfcLineReadThreadPool::readLines(PoolArena& arena) {
    // An assertion on a worker must not open anything that waits for a user.
    const auto handler = Assert::getRegisteredForCurrentThread().registerHandler(
        [](const AssertInfo&) { Debugger::vBreak(); });
    while (m_lineQueue.iCount() != 0)
        if (BatchPtr pBatch = m_lineQueue.pPop()) vBatchRead(std::move(pBatch), arena);
    return m_boWorkersActive;
}

bool IfcLineReadThreadPool::finalizeLines() {
    Data& data = m_pFile->dataBase();
    while (m_doneQueue.iCount() != 0) {
        BatchPtr pBatch = m_doneQueue.pPop();
        if (!pBatch) continue;
        for (std::size_t i = 0; i < pBatch->m_iLines; ++i) {
            QueuedLine& line = pBatch->m_lines[i];
            data.finalizeEntity(pBatch->m_entities[i], *m_pInfo, line.m_text, line.m_iLine);
            if (line.m_text.capacity() > g_iKeptCapacity) line.m_text = std::string();
        }
        pBatch->m_iLines = 0;
        pBatch->m_entities.clear();
        m_freeQueue.vPush(std::move(pBatch));
    }
    return m_boCollectorActive;
}

}   // namespace oxa::ifc::io
