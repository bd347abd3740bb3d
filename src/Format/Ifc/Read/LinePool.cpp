// SPDX-License-Identifier: Apache-2.0
// How the threads of a read share its statements:
//
//   scanner  --batches of 200-->  line workers: Data::boReadLine  --results-->  collector: Data::finalizeEntity
//
// Shares   a worker takes eight batches at once: statements name what stands near them in the file, so the slots and
//          pages of one worker's share are mostly its own. With smaller shares two processors would write to the same
//          cache lines of the entity table (false sharing) more often.
// Order    batches finish in any order and are numbered: the collector enters them in the order of the file and keeps
//          what comes too early, so that a model is the same for any number of threads.
// Memory   the scanner assembles statements where their worker reads them, in the text of a batch. Batches are reused: the
//          collector returns them to the scanner with the capacity of their texts. There are so few that they stay in the
//          last-level cache; when all are in use, the scanner has to wait.
// Wakes    putting a thread to sleep and waking it costs as much as a batch: each sleeps until there is a share for it,
//          after a few looks between which others run, and the scanner never does while there is something to parse: it
//          then works as one of the workers.
// Stops    each queue can be closed: a thread that waits then takes what is left, and ends when there is nothing. The
//          line queue is closed first; once its workers have ended, nothing can come to the done queue any more, and it
//          is closed too.
// Progress no state exists in which all threads sleep before that. A batch is in one of the queues or held by a thread,
//          which then is awake, or kept by the collector as too early; a lost batch goes there, too. Workers sleep over
//          fewer than eight batches in the line queue, the collector over fewer than eight in the done queue, and over
//          fewer the more it keeps: over none when it and that queue have sixteen. The scanner sleeps only when the free
//          queue is empty and all batches are made, 24 or more, and where it may help there is none in the line queue
//          either. So, unless a thread is awake, either the line queue has eight or the collector and the done queue
//          have sixteen; the earliest of these is not kept, so the done queue is not empty, and the collector wakes.
//          (A single worker takes all batches in order: the collector keeps none.)
#include "Format/Ifc/IfcLineReadThreadPool.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <new>
#include <thread>
#include <utility>
#include <vector>

#include "Core/Utilities/Threads/ThreadedLoop.h"
#include "Format/Ifc/IfcReadOptions.h"
#include "Format/Ifc/Read/InstanceNumber.h"
#include "Format/Ifc/Read/ReadThread.h"
#include "Format/Ifc/Read/StageWatch.h"
#include "Format/Ifc/Read/StatementBuffer.h"
#include "platform/Assert.h"
#include "platform/Utilities.h"

namespace oxa::ifc::io {

namespace {

constexpr std::size_t g_iBatchLines = 200;
constexpr std::size_t g_iFetchAhead = 4;               // statements: as long as a slot takes to come
constexpr std::size_t g_iBatchesPerWorker = 12;        // on their way at once
constexpr unsigned g_iLooks = 10;                      // for a share, before a sleep
constexpr std::size_t g_iKeptCapacity = 1024 * 1024;   // a text larger than that is not kept for reuse

// For as long as the result lives: an assertion on this thread must not open anything that waits for a user.
auto quietAssertions() {
    return Assert::getRegisteredForCurrentThread().registerHandler([](const AssertInfo&) { Debugger::vBreak(); });
}

}   // namespace

class IfcLineReadThreadPool::Work {
public:
    Work(StepReadInfoDataCommon& info, FileBase& file, bool boOneWorker);
    ~Work();
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;

    void addLineToQueue(std::string_view line, unsigned iLine);
    [[nodiscard]] StatementBuffer& buffer();
    void vStatementTake(unsigned iLine);

private:
    struct QueuedLine {
        StatementBuffer::Place m_place;   // in the batch's text
        std::uint32_t m_iLine;
    };
    struct Batch;
    using BatchPtr = std::unique_ptr<Batch>;
    struct alignas(memory::g_iApart) Batch {
        BatchPtr m_pNext;           // while it is in a queue, or in a chain
        std::size_t m_iOrder = 0;   // of the batches of the file, from 0
        bool m_boLost = false;      // nothing of it came into the model
        StatementBuffer m_text;     // the statements, one behind the other, a NUL behind each
        std::vector<QueuedLine> m_lines;
        std::vector<Entity*> m_entities;   // one for each line; null where the statement yielded none
        RootedResults m_rooted;            // what the map of GUIDs takes of them

        [[nodiscard]] std::string_view text(const QueuedLine& line) const noexcept { return m_text.kept(line.m_place); }
        // Of its statements.
        [[nodiscard]] std::size_t iBytes() const noexcept {
            return m_lines.empty() ? 0 : m_lines.back().m_place.iBegin + m_lines.back().m_place.iLength;
        }
        void vClear();
    };
    // A queue of batches that several threads share. Batches are linked through their own m_pNext, so that pushing and
    // taking allocates nothing and cannot fail; a queue that had to allocate could lose a batch when memory runs out.
    // m_iWakeAt is a low-water mark: a thread that slept for one batch would be woken some thousand times for a large
    // file, and waking costs about what parsing a batch does.
    class alignas(memory::g_iApart) Queue {
    public:
        // A thread that finds the queue empty sleeps until there are iWakeAt batches.
        explicit Queue(std::size_t iWakeAt = 1) noexcept : m_iWakeAt(iWakeAt) {}
        ~Queue();
        Queue(const Queue&) = delete;
        Queue& operator=(const Queue&) = delete;

        void vPush(BatchPtr pBatch) noexcept;
        // A chain of batches, which come first; null is no chain.
        void vPushFront(BatchPtr pBatches) noexcept;
        // Waits for batches and takes a chain of up to iMost; of one when the queue is closed, so that all have a part in
        // the end. Null when it is closed and empty.
        [[nodiscard]] BatchPtr pPop(std::size_t iMost);
        // From here on who finds the queue empty sleeps until there are that many. Nobody waits.
        void vWakeAt(std::size_t iWakeAt) noexcept;
        // A chain of up to iMost without a wait; null when there is none.
        [[nodiscard]] BatchPtr pTryPop(std::size_t iMost);
        // Nothing is pushed any more, and nobody waits.
        void vClose();
        // Takes that back. Nobody waits.
        void vOpen();

    private:
        [[nodiscard]] BatchPtr pTake(std::size_t iMost) noexcept;
        void vLook() const noexcept;

        std::atomic<bool> m_boShare{
            false};              // whether one is there or the queue is closed; set with m_mutex, a hint without
        std::size_t m_iWakeAt;   // guarded by m_mutex, as the next four
        BatchPtr m_pFirst;
        Batch* m_pLast = nullptr;
        std::size_t m_iCount = 0;
        bool m_boClosed = false;
        std::mutex m_mutex;
        std::condition_variable m_changed;
    };

    static constexpr std::size_t g_iBatchesShared = 8;      // taken by a worker at once
    static constexpr std::size_t g_iBatchesCollected = 8;   // that wake the collector, at most
    static constexpr std::size_t g_iBatchesKept = 16;       // of that many with it or waiting for it, one wakes it

    void vStart();
    void vWorkersEnd();
    void vBatchQueue();
    [[nodiscard]] BatchPtr pBatchNext();
    void vBatchFree(BatchPtr pBatch) noexcept;
    void vSlotFetch(std::string_view line) const noexcept;
    void vBatchRead(Batch& batch, StepReadThread& thread);
    [[nodiscard]] bool boBatchesRead(BatchPtr pBatches, StepReadThread& thread, StageWatch& watch);
    [[nodiscard]] bool boHelp();
    [[nodiscard]] StageTime* pTimeOf(std::size_t iThread) noexcept;
    void vTraceTell() const;
    void readLines(std::size_t iWorker);
    void vBatchFinalize(const Batch& batch, std::size_t& iNext);
    void vBatchCollect(BatchPtr pBatch);
    void finalizeLines();

    Queue m_lineQueue{g_iBatchesShared};                      // waiting for a worker
    Queue m_doneQueue{g_iBatchesCollected};                   // parsed, waiting for the collector
    Queue m_freeQueue;                                        // finalised, empty again
    std::vector<std::unique_ptr<StepReadThread>> m_threads;   // one a worker, one of the scanner
    std::vector<std::thread> m_workers;                       // empty until the first statement
    std::thread m_collector;
    // Where asked for: of the workers, of the scanner as one of them, of the collector.
    std::vector<StageTime> m_times;
    BatchPtr m_pBatch;            // being filled; the scanner's; null until there is a statement
    std::size_t m_iBatches = 0;   // made so far; the scanner's
    std::size_t m_iQueued = 0;    // handed to the workers so far; the scanner's
    StepReadInfoDataCommon* m_pInfo;
    FileBase* m_pFile;
    bool m_boOneWorker;
    StageTime m_scanTime;   // of the scanner; busy with its help to the workers, too
    StageWatch m_scanWatch;
    bool m_boActive = true;   // false at the end; the scanner's
};

IfcLineReadThreadPool::Work::Queue::~Queue() {
    while (m_pFirst)
        m_pFirst = std::move(m_pFirst->m_pNext);   // one by one: a long chain must not end as deep as it is
}

void IfcLineReadThreadPool::Work::Batch::vClear() {
    m_text.vForget(g_iKeptCapacity);
    m_boLost = false;
    m_lines.clear();
    m_entities.clear();
    m_rooted.vClear();
}

void IfcLineReadThreadPool::Work::Queue::vPush(BatchPtr pBatch) noexcept {
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

void IfcLineReadThreadPool::Work::Queue::vPushFront(BatchPtr pBatches) noexcept {
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
IfcLineReadThreadPool::Work::BatchPtr IfcLineReadThreadPool::Work::Queue::pTake(std::size_t iMost) noexcept {
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
void IfcLineReadThreadPool::Work::Queue::vLook() const noexcept {
    for (unsigned i = 0; i < g_iLooks && !m_boShare.load(std::memory_order_relaxed); ++i) std::this_thread::yield();
}

// Once the queue is closed no thread waits for a full share any more, and each takes one batch at a time: so the last
// ones are spread over all workers.
IfcLineReadThreadPool::Work::BatchPtr IfcLineReadThreadPool::Work::Queue::pPop(std::size_t iMost) {
    vLook();
    std::unique_lock lock(m_mutex);
    if (!m_pFirst) m_changed.wait(lock, [this] { return m_iCount >= m_iWakeAt || m_boClosed; });
    return pTake(m_boClosed ? 1 : iMost);
}

IfcLineReadThreadPool::Work::BatchPtr IfcLineReadThreadPool::Work::Queue::pTryPop(std::size_t iMost) {
    const std::lock_guard lock(m_mutex);
    return pTake(iMost);
}

void IfcLineReadThreadPool::Work::Queue::vWakeAt(std::size_t iWakeAt) noexcept {
    const std::lock_guard lock(m_mutex);
    m_iWakeAt = iWakeAt;
}

void IfcLineReadThreadPool::Work::Queue::vClose() {
    {
        const std::lock_guard lock(m_mutex);
        m_boClosed = true;
        m_boShare.store(true, std::memory_order_relaxed);
    }
    m_changed.notify_all();
}

void IfcLineReadThreadPool::Work::Queue::vOpen() {
    const std::lock_guard lock(m_mutex);
    m_boClosed = false;
    m_boShare.store(m_pFirst != nullptr, std::memory_order_relaxed);
}

IfcLineReadThreadPool::Work::Work(StepReadInfoDataCommon& info, FileBase& file, bool boOneWorker)
    : m_pInfo(&info),
      m_pFile(&file),
      m_boOneWorker(boOneWorker),
      m_scanWatch(info.m_pTrace ? &m_scanTime : nullptr) {
    info.m_boParallel = true;
}

// The order matters: the workers empty the line queue before they end, so the done queue may be closed only after they
// have been joined, and the collector empties that one in turn.
IfcLineReadThreadPool::Work::~Work() {
    m_boActive = false;
    vBatchQueue();
    m_scanWatch.vWorked();
    vWorkersEnd();
    m_doneQueue.vClose();
    if (m_collector.joinable()) m_collector.join();
    // From here on every statement is in the model, or counted as lost.
    m_scanWatch.vWaited();
    if (m_pInfo->m_pTrace) vTraceTell();
}

// Null where nobody asks.
StageTime* IfcLineReadThreadPool::Work::pTimeOf(std::size_t iThread) noexcept {
    return m_times.empty() ? nullptr : &m_times[iThread];
}

void IfcLineReadThreadPool::Work::vTraceTell() const {
    std::vector<ReadTrace::Row>& rows = m_pInfo->m_pTrace->rows;
    const auto vAdd = [&rows](const char* pStage, std::size_t iThread, const StageTime& time, double otherwise = 0) {
        rows.push_back({pStage, iThread, time.busy - otherwise, time.waiting, time.iBytes});
    };
    if (m_times.empty()) return vAdd("scan", 0, m_scanTime);
    const std::size_t iScanner = m_times.size() - 2;
    vAdd("scan", 0, m_scanTime, m_times[iScanner].busy);
    for (std::size_t i = 0; i <= iScanner; ++i) vAdd("parse", i, m_times[i]);
    vAdd("collect", 0, m_times.back());
}

// All threads or none: the next statement tries again.
void IfcLineReadThreadPool::Work::vStart() {
    const std::size_t iWorkers = m_boOneWorker ? 1 : iWorkerCount();
    Pool& pool = m_pFile->dataBase().pool();
    try {
        for (std::size_t i = 0; i < iWorkers + 1; ++i) m_threads.push_back(std::make_unique<StepReadThread>(pool));
        m_workers.reserve(iWorkers);
        if (m_pInfo->m_pTrace) m_times.resize(iWorkers + 2);
        for (std::size_t i = 0; i < iWorkers; ++i) m_workers.emplace_back([this, i] { readLines(i); });
        m_collector = std::thread([this] { finalizeLines(); });
    } catch (...) {
        vWorkersEnd();
        m_lineQueue.vOpen();
        throw;
    }
}

// What is queued is parsed first.
void IfcLineReadThreadPool::Work::vWorkersEnd() {
    m_lineQueue.vClose();
    for (std::thread& worker : m_workers) worker.join();
    m_workers.clear();
    m_threads.clear();
}

void IfcLineReadThreadPool::Work::addLineToQueue(std::string_view line, unsigned iLine) {
    if (!m_boActive) {
        Assert::vTell("Format/Ifc/IfcLineReadThreadPool", "oxa::ifc::io::IfcLineReadThreadPool::addLineToQueue",
                      "Thread pool is not active");
        return;
    }
    StatementBuffer& text = buffer();
    text.vClear();
    text.vAppendExact(line);
    vStatementTake(iLine);
}

StatementBuffer& IfcLineReadThreadPool::Work::buffer() {
    if (!m_pBatch) m_pBatch = pBatchNext();
    return m_pBatch->m_text;
}

void IfcLineReadThreadPool::Work::vStatementTake(unsigned iLine) {
    if (m_workers.empty()) vStart();
    Batch& batch = *m_pBatch;
    // There is room for the entry: a text without one would stay in the batch for nothing.
    batch.m_lines.push_back({batch.m_text.keep(), iLine});
    if (batch.m_lines.size() >= g_iBatchLines) vBatchQueue();
}

// Hands the batch in hand on, if it has a statement.
void IfcLineReadThreadPool::Work::vBatchQueue() {
    if (!m_pBatch || m_pBatch->m_lines.empty()) return;
    m_pBatch->m_iOrder = m_iQueued++;
    m_scanWatch.vWorked(m_pBatch->iBytes());
    m_lineQueue.vPush(std::move(m_pBatch));
}

// An empty batch for the next statements.
//
// Where the scanner is held back. It runs several times as fast as one worker parses; left alone it would queue the
// whole file. The number of batches is therefore fixed once there are a dozen for each worker and for the scanner. When
// all are in use, the scanner takes a share from the line queue and parses it itself, which is the best use of its
// time, and only where there is nothing to parse does it wait for a batch to come back. That cannot be for ever: see
// Progress above.
IfcLineReadThreadPool::Work::BatchPtr IfcLineReadThreadPool::Work::pBatchNext() {
    for (;;) {
        if (BatchPtr pBatch = m_freeQueue.pTryPop(1)) return pBatch;
        if (m_iBatches < g_iBatchesPerWorker * (m_workers.size() + 1)) break;
        if (boHelp()) continue;
        m_scanWatch.vWorked();
        BatchPtr pBatch = m_freeQueue.pPop(1);   // all are with other threads and come back
        m_scanWatch.vWaited();
        return pBatch;
    }
    BatchPtr pBatch = std::make_unique<Batch>();
    pBatch->m_lines.reserve(g_iBatchLines);
    pBatch->m_entities.reserve(g_iBatchLines);
    ++m_iBatches;
    return pBatch;
}

void IfcLineReadThreadPool::Work::vBatchFree(BatchPtr pBatch) noexcept {
    pBatch->vClear();
    m_freeQueue.vPush(std::move(pBatch));
}

// Parses a share of batches on the scanner's thread, as a worker does it. False when none waits, or there is to be one
// worker only.
bool IfcLineReadThreadPool::Work::boHelp() {
    if (m_boOneWorker) return false;
    BatchPtr pBatches = m_lineQueue.pTryPop(g_iBatchesShared);
    if (!pBatches) return false;
    const auto handler = quietAssertions();
    StageWatch watch(pTimeOf(m_workers.size()));
    if (!boBatchesRead(std::move(pBatches), *m_threads.back(), watch))
        throw std::bad_alloc();   // this thread has a caller who can be told
    return true;
}

// A slot that statements on another thread have named is in that processor's cache.
void IfcLineReadThreadPool::Work::vSlotFetch(std::string_view line) const noexcept {
    std::int32_t iId = 0;
    if (!line.empty() && details::pHeadNumber(line.data() + 1, line.data() + line.size(), iId))
        m_pInfo->vFetch(static_cast<std::uint32_t>(iId));
}

void IfcLineReadThreadPool::Work::vBatchRead(Batch& batch, StepReadThread& thread) {
    Data& data = m_pFile->dataBase();
    for (std::size_t i = 0; i < batch.m_lines.size(); ++i) {
        if (i + g_iFetchAhead < batch.m_lines.size()) vSlotFetch(batch.text(batch.m_lines[i + g_iFetchAhead]));
        const QueuedLine& line = batch.m_lines[i];
        StepReadInfoData info(batch.text(line), line.m_iLine, *m_pInfo, &thread);
        info.m_pRooted = &batch.m_rooted;
        data.boReadLine(info, batch.m_entities);
    }
}

// False when memory ran out; the batches behind that one are then back in the queue.
//
// A worker holds a chain of up to eight batches. Each is parsed under a guard of its own, so that an exception, which
// is an internal fault or a lack of memory, costs one batch and no more: it is counted as lost and goes on to the
// collector like any other, which would wait for it in vain. After std::bad_alloc the rest of the chain is put back in front
// of the queue: another thread may have given memory back by then, and on the scanner's thread the caller can be told.
bool IfcLineReadThreadPool::Work::boBatchesRead(BatchPtr pBatches, StepReadThread& thread, StageWatch& watch) {
    bool boMemory = true;
    while (BatchPtr pBatch = boMemory ? std::move(pBatches) : nullptr) {
        pBatches = std::move(pBatch->m_pNext);
        const bool boRead = util::ThreadedLoop::boGuarded([&] {
            try {
                vBatchRead(*pBatch, thread);
            } catch (const std::bad_alloc&) {
                boMemory = false;
                throw;
            }
            return true;
        });
        if (!boRead) {
            m_pInfo->m_pError->vLostAdd(pBatch->m_lines.size(), pBatch->m_lines.front().m_iLine);
            pBatch->m_boLost = true;
        }
        watch.vWorked(pBatch->iBytes());
        m_doneQueue.vPush(std::move(pBatch));
    }
    m_lineQueue.vPushFront(std::move(pBatches));
    return boMemory;
}

// A worker. What is queued is parsed to the end, also after a fatal fault.
void IfcLineReadThreadPool::Work::readLines(std::size_t iWorker) {
    const auto handler = quietAssertions();
    StageWatch watch(pTimeOf(iWorker));
    while (BatchPtr pBatches = m_lineQueue.pPop(g_iBatchesShared)) {
        watch.vWaited();
        static_cast<void>(boBatchesRead(std::move(pBatches), *m_threads[iWorker], watch));
    }
    watch.vWaited();
}

// iNext is the statement in hand.
void IfcLineReadThreadPool::Work::vBatchFinalize(const Batch& batch, std::size_t& iNext) {
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

void IfcLineReadThreadPool::Work::vBatchCollect(BatchPtr pBatch) {
    std::size_t iNext = 0;
    if (!pBatch->m_boLost && !util::ThreadedLoop::boGuarded([&] { return vBatchFinalize(*pBatch, iNext), true; }))
        m_pInfo->m_pError->vLostAdd(pBatch->m_lines.size() - iNext, pBatch->m_lines[iNext].m_iLine);
    vBatchFree(std::move(pBatch));
}

// The collector. What comes too early is kept in a chain, in its order: mostly it comes behind all that is there.
void IfcLineReadThreadPool::Work::finalizeLines() {
    std::size_t iOrder = 0;   // of the batch that is next
    std::size_t iKept = 0;
    BatchPtr pKept;
    StageWatch watch(m_times.empty() ? nullptr : &m_times.back());
    while (BatchPtr pBatch = m_doneQueue.pPop(1)) {
        watch.vWaited();
        BatchPtr* pPlace = &pKept;
        while (*pPlace && (*pPlace)->m_iOrder < pBatch->m_iOrder) pPlace = &(*pPlace)->m_pNext;
        pBatch->m_pNext = std::move(*pPlace);
        *pPlace = std::move(pBatch);
        const std::size_t iBefore = iKept++;
        for (; pKept && pKept->m_iOrder == iOrder; ++iOrder, --iKept) {
            BatchPtr pNext = std::move(pKept->m_pNext);
            const std::size_t iBytes = pKept->iBytes();
            vBatchCollect(std::move(pKept));
            watch.vWorked(iBytes);
            pKept = std::move(pNext);
        }
        if (iKept == iBefore) continue;
        const std::size_t iMore = g_iBatchesKept - std::min(iKept, g_iBatchesKept - 1);
        m_doneQueue.vWakeAt(std::min(iMore, g_iBatchesCollected));
    }
}

IfcLineReadThreadPool::IfcLineReadThreadPool(StepReadInfoDataCommon& info, FileBase& file, bool boOneWorker)
    : m_pWork(std::make_unique<Work>(info, file, boOneWorker)) {}

IfcLineReadThreadPool::~IfcLineReadThreadPool() = default;

void IfcLineReadThreadPool::addLineToQueue(std::string_view line, unsigned iLine) {
    m_pWork->addLineToQueue(line, iLine);
}

StatementBuffer& IfcLineReadThreadPool::buffer() { return m_pWork->buffer(); }

StatementBuffer& IfcLineReadThreadPool::statementTake(unsigned iLine) {
    m_pWork->vStatementTake(iLine);
    return m_pWork->buffer();
}

std::size_t IfcLineReadThreadPool::iWorkerCount() noexcept {
    static const std::size_t g_iCount = iWorkersOf(std::thread::hardware_concurrency());
    return g_iCount;
}

std::size_t IfcLineReadThreadPool::iWorkersOf(unsigned iHardwareThreads) noexcept {
    const std::size_t iHalf = iHardwareThreads / 2;
    return iHalf > 3 ? iHalf - 2 : std::size_t{2};
}

}   // namespace oxa::ifc::io
