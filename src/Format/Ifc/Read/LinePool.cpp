// SPDX-License-Identifier: Apache-2.0
// How the threads of a read share its statements. Where the stream can be read at any place, each takes blocks of its bytes,
// and does all there is to do with them (BlockScan.h):
//
//   worker   --a block--> StatementFinder --batches of 200--> Data::boReadLine --results--> BatchCollector
//
// Else one thread reads the bytes, and hands statements on:
//
//   scanner  --batches of 200--> workers: Data::boReadLine --results--> BatchCollector
//
// Shares   a worker takes eight batches at once, about a block's: statements name what stands near them in the file, so the
//          slots and pages of one worker's share are mostly its own. With smaller shares two processors would write to the same
//          cache lines of the entity table (false sharing) more often.
// Memory   statements are assembled where they are parsed, in the text of a batch. Batches are reused, with the capacity of
//          their texts. So many are out at once that a thread which is kept from its work for some milliseconds (a page that
//          the system has to find first, another process) does not stop the others at once; then they wait for it.
// Wakes    putting a thread to sleep and waking it costs as much as a batch, and may put it on the processor of who woke it:
//          a worker that takes blocks never sleeps unless it has to wait for a proof or for batches. One that waits for
//          batches sleeps until there is a share for it, after a few looks between which others run, and the scanner never
//          does while there is something to parse: it then works as one of the workers.
// Stops    the scan in blocks ends, or is ended; then the line queue is closed: a worker takes what is left, and ends when
//          there is nothing.
// Progress no state exists in which all threads sleep before that. Who waits for a proof waits for an earlier block, and the
//          earliest that is not proven is with a thread that waits for none. Who waits for batches holds none. A batch that is
//          out is held by a thread at work, or waits in the line queue, or in the collector for an earlier one; a lost batch goes
//          there, too. Workers sleep over fewer than eight in the line queue; the scanner, which sleeps only when 48 and more
//          are out, takes those itself before. (A single worker takes all batches in order: none waits in the collector.)
#include "Format/Ifc/IfcLineReadThreadPool.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "Core/Utilities/Threads/ThreadedLoop.h"
#include "Format/Ifc/IfcReadOptions.h"
#include "Format/Ifc/Read/BatchCollector.h"
#include "Format/Ifc/Read/BatchQueue.h"
#include "Format/Ifc/Read/BlockScan.h"
#include "Format/Ifc/Read/InstanceNumber.h"
#include "Format/Ifc/Read/ReadThread.h"
#include "Format/Ifc/Read/StageWatch.h"
#include "Format/Ifc/Read/StatementBuffer.h"
#include "platform/Assert.h"
#include "platform/Seats.h"
#include "platform/SharedBytes.h"
#include "platform/Utilities.h"

namespace oxa::ifc::io {

namespace {

constexpr std::size_t g_iFetchAhead = 4;                 // statements: as long as a slot takes to come
constexpr std::uint64_t g_iLeastInBlocks = 512 * 1024;   // bytes
constexpr std::size_t g_iBatchesPerThread = 16;          // out at once, at the least
constexpr std::size_t g_iMostBatchesPerThread = 64;

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
    [[nodiscard]] std::optional<BlockPlace> blocksRead(stream::SharedBytes& bytes, std::uint64_t iBase,
                                                       const BlockPlace& begin, const ReadProgress& progress);

private:
    static constexpr std::size_t g_iBatchesShared = 8;   // taken by a worker at once

    [[nodiscard]] std::size_t iWorkers() const noexcept { return m_boOneWorker ? 1 : iWorkerCount(); }
    // Whether there is a processor for it beside the workers.
    [[nodiscard]] bool boScannerHelps() const { return std::thread::hardware_concurrency() > iWorkers(); }
    void vStart(std::size_t iMostOut);
    void vWorkersEnd();
    void vBatchQueue();
    [[nodiscard]] BatchPtr pBatchNext();
    void vSlotFetch(std::string_view line) const noexcept;
    void vBatchRead(Batch& batch, StepReadThread& thread);
    [[nodiscard]] bool boBatchesRead(BatchPtr pBatches, StepReadThread& thread, StageWatch& watch);
    [[nodiscard]] bool boHelp();
    [[nodiscard]] bool boBlockRead(BlockFinder& finder, std::size_t iThread);
    [[nodiscard]] BatchPtr pBlockScan(BlockFinder& finder, std::size_t iBlock, StageWatch& watch);
    [[nodiscard]] BatchPtr pBlockProve(BlockFinder::Found& found, const BlockPlace& begin);
    [[nodiscard]] BlockPlace blocksFollow(stream::SharedBytes& bytes, std::uint64_t iBase,
                                          const ReadProgress& progress);
    [[nodiscard]] StageTime* pTimeOf(std::size_t iThread) noexcept;
    void vTraceTell() const;
    void readLines(std::size_t iWorker);

    BatchStock m_stock;
    BatchQueue m_lineQueue{g_iBatchesShared};                 // waiting for a worker
    BatchCollector m_collector;                               // of those that are parsed
    std::vector<std::unique_ptr<StepReadThread>> m_threads;   // one a worker, one of the scanner
    std::unique_ptr<platform::Seats> m_pSeats;                // of the workers
    std::vector<std::thread> m_workers;                       // empty until the first statement
    // Where asked for: of the workers, of the scanner as one of them.
    std::vector<StageTime> m_times;
    // A scan in blocks: null before it; of each thread that takes part.
    std::unique_ptr<BlockOrder> m_pOrder;
    std::vector<std::unique_ptr<BlockFinder>> m_finders;
    std::vector<StageTime> m_scanTimes;
    bool m_boProgress = false;   // whether somebody asks for it
    BatchPtr m_pBatch;           // being filled; the scanner's; null until there is a statement
    std::size_t m_iQueued = 0;   // handed to the workers so far; the scanner's
    StepReadInfoDataCommon* m_pInfo;
    FileBase* m_pFile;
    bool m_boOneWorker;
    StageTime m_scanTime;   // of the scanner; busy with its help to the workers, too
    StageWatch m_scanWatch;
    bool m_boActive = true;   // false at the end; the scanner's
};

IfcLineReadThreadPool::Work::Work(StepReadInfoDataCommon& info, FileBase& file, bool boOneWorker)
    : m_collector(info, file, m_stock),
      m_pInfo(&info),
      m_pFile(&file),
      m_boOneWorker(boOneWorker),
      m_scanWatch(info.m_pTrace ? &m_scanTime : nullptr) {
    info.m_boParallel = true;
    m_stock.vLimit(g_iBatchesPerThread);
}

// The workers empty the line queue before they end, and the last of them has entered what it parsed.
IfcLineReadThreadPool::Work::~Work() {
    m_boActive = false;
    vBatchQueue();
    m_scanWatch.vWorked();
    vWorkersEnd();
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
    const std::size_t iScanner = m_times.size() - 1;
    vAdd("scan", 0, m_scanTime, m_times[iScanner].busy);
    for (std::size_t i = 0; i + 1 < m_scanTimes.size(); ++i) vAdd("scan", i + 1, m_scanTimes[i]);
    for (std::size_t i = 0; i <= iScanner; ++i) vAdd("parse", i, m_times[i]);
    vAdd("collect", 0, m_collector.time());
}

// All threads or none: the next statement tries again.
void IfcLineReadThreadPool::Work::vStart(std::size_t iMostOut) {
    const std::size_t iWorkers = this->iWorkers();
    m_stock.vLimit(iMostOut);
    Pool& pool = m_pFile->dataBase().pool();
    if (!m_pInfo->m_pNamed) m_pInfo->m_pNamed = std::make_shared<details::NumberSet>();
    try {
        for (std::size_t i = 0; i < iWorkers + 1; ++i) m_threads.push_back(std::make_unique<StepReadThread>(pool));
        m_workers.reserve(iWorkers);
        if (m_pInfo->m_pTrace) m_times.resize(iWorkers + 1);
        m_pSeats = std::make_unique<platform::Seats>(iWorkers + (boScannerHelps() ? 1 : 0));
        if (boScannerHelps()) m_pSeats->vTake(iWorkers);
        for (std::size_t i = 0; i < iWorkers; ++i) m_workers.emplace_back([this, i] { readLines(i); });
    } catch (...) {
        vWorkersEnd();
        m_lineQueue.vOpen();
        throw;
    }
}

// What is queued is parsed first.
void IfcLineReadThreadPool::Work::vWorkersEnd() {
    if (m_pOrder) m_pOrder->vEnd();
    m_lineQueue.vClose();
    for (std::thread& worker : m_workers) worker.join();
    m_workers.clear();
    for (const auto& pThread : m_threads) pThread->vNamedInto(*m_pInfo->m_pNamed);
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
    if (m_workers.empty()) vStart(g_iBatchesPerThread * (iWorkers() + 1));
    Batch& batch = *m_pBatch;
    // There is room for the entry: a text without one would stay in the batch for nothing.
    batch.m_lines.push_back({batch.m_text.keep(), iLine, 0});
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
// whole file. When all batches are out that may be, the scanner takes a share from the line queue and parses it itself, which is
// the best use of its time, and only where there is nothing to parse does it wait for one to come back. That cannot be for
// ever: see Progress above.
BatchPtr IfcLineReadThreadPool::Work::pBatchNext() {
    while (m_stock.boAllOut()) {
        if (boHelp()) continue;
        m_scanWatch.vWorked();
        m_stock.vHoldBack();   // all are with other threads and come back
        m_scanWatch.vWaited();
    }
    return m_stock.pTake();
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
    const std::size_t iAhead = m_pOrder ? batch.m_lines.size() : g_iFetchAhead;   // in a block they are still here
    for (std::size_t i = 0; i < batch.m_lines.size(); ++i) {
        if (i + iAhead < batch.m_lines.size()) vSlotFetch(batch.text(batch.m_lines[i + iAhead]));
        const QueuedLine& line = batch.m_lines[i];
        StepReadInfoData info(batch.text(line), line.m_iLine, *m_pInfo, &thread);
        info.m_pRooted = &batch.m_rooted;
        data.boReadLine(info, batch.m_entities);
    }
}

// False when memory ran out; the batches behind that one are then back in the queue.
//
// A thread holds a chain of batches. Each is parsed under a guard of its own, so that an exception, which is an internal
// fault or a lack of memory, costs one batch and no more: it is counted as lost and goes on to the collector like any
// other, where those behind it would wait for it in vain. After std::bad_alloc the rest of the chain is put back in front
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
        m_collector.vAdd(std::move(pBatch));
        watch.vRestart();
    }
    m_lineQueue.vPushFront(std::move(pBatches));
    return boMemory;
}

// A block, from its bytes to instances. False when there is none left.
//
// What a lack of memory has put back into the line queue comes first: it is on its way, and the collector waits for it.
bool IfcLineReadThreadPool::Work::boBlockRead(BlockFinder& finder, std::size_t iThread) {
    BatchPtr pBatches = m_lineQueue.pTryPop(g_iBatchesShared);
    if (!pBatches) {
        StageWatch watch(m_scanTimes.empty() ? nullptr : &m_scanTimes[iThread]);
        m_stock.vHoldBack();
        watch.vWaited();
        const std::optional<std::size_t> block = m_pOrder->take();
        if (!block) return false;
        pBatches = pBlockScan(finder, *block, watch);
    }
    StageWatch watch(pTimeOf(iThread));
    if (!boBatchesRead(std::move(pBatches), *m_threads[iThread], watch) && iThread + 1 == m_threads.size())
        throw std::bad_alloc();   // on the scanner's thread, which has a caller who can be told
    return true;
}

// The statements that begin in a block; null where there are none, or the scan has ended before.
BatchPtr IfcLineReadThreadPool::Work::pBlockScan(BlockFinder& finder, std::size_t iBlock, StageWatch& watch) {
    const std::uint64_t iBegin = m_pOrder->iBeginOf(iBlock);
    const std::uint64_t iEnd = m_pOrder->iBeginOf(iBlock + 1);
    std::optional<BlockFinder::Found> found;
    if (iBlock != 0) found = finder.suppose(iBegin, iEnd);
    watch.vWorked();
    const std::optional<BlockPlace> begin = m_pOrder->waitFor(iBlock);
    watch.vWaited();
    if (found && !(begin && found->boWhole && found->iBegin == begin->iPlace)) {
        m_stock.vReturn(std::move(found->pBatches));
        found.reset();
    }
    if (!begin) return nullptr;
    if (!found) found = finder.scan(begin->iPlace, iEnd);
    BatchPtr pBatches = pBlockProve(*found, *begin);
    watch.vWorked(found->iEnd - found->iBegin);
    return pBatches;
}

// Others wait for the proof: what only this thread needs to know comes behind it.
BatchPtr IfcLineReadThreadPool::Work::pBlockProve(BlockFinder::Found& found, const BlockPlace& begin) {
    BlockPlace next{.iPlace = found.iEnd,
                    .iLine = begin.iLine + found.iLines,
                    .iProgress = begin.iProgress,
                    .iBatches = begin.iBatches + found.iBatches};
    try {
        std::vector<std::uint32_t> told;
        for (const Batch* pBatch = m_boProgress ? found.pBatches.get() : nullptr; pBatch;
             pBatch = pBatch->m_pNext.get())
            for (const QueuedLine& line : pBatch->m_lines) {
                if (++next.iProgress < BlockPlace::g_iStep) continue;
                told.push_back(line.m_iEnd);
                next.iProgress = 0;
            }
        m_pOrder->vProve(next, !found.boWhole, told);
    } catch (const std::bad_alloc&) {   // then it is the scanner's, too
        m_pOrder->vProve(begin, true, {});
        m_stock.vReturn(std::move(found.pBatches));
        return nullptr;
    }
    std::size_t iOrder = begin.iBatches;
    for (Batch* pBatch = found.pBatches.get(); pBatch; pBatch = pBatch->m_pNext.get()) {
        pBatch->m_iOrder = iOrder++;
        for (QueuedLine& line : pBatch->m_lines) line.m_iLine += begin.iLine;
    }
    return std::move(found.pBatches);
}

// Few bytes are scanned before a thread has started.
std::optional<BlockPlace> IfcLineReadThreadPool::Work::blocksRead(stream::SharedBytes& bytes, std::uint64_t iBase,
                                                                  const BlockPlace& begin,
                                                                  const ReadProgress& progress) {
    const std::uint64_t iBegin = iBase + begin.iPlace;
    if (!m_workers.empty() || m_pOrder || bytes.iEnd() < iBegin + g_iLeastInBlocks) return std::nullopt;
    m_scanWatch.vWorked();
    m_boProgress = static_cast<bool>(progress);
    const auto iBlocks = static_cast<std::size_t>((bytes.iEnd() - iBegin) / BlockOrder::g_iBlockBytes);
    m_pOrder = std::make_unique<BlockOrder>(begin, iBlocks);
    for (std::size_t i = 0; i < iWorkers() + 1; ++i)
        m_finders.push_back(
            std::make_unique<BlockFinder>(bytes, iBase, *m_pInfo->m_pError, [this] { return m_stock.pTake(); }));
    if (m_pInfo->m_pTrace) m_scanTimes.resize(iWorkers() + 1);
    // Of a large file more may be out: a sixteenth of its text is little beside the model.
    const std::size_t iThreads = iWorkers() + 1;
    vStart(std::clamp(iBlocks / 2, g_iBatchesPerThread * iThreads, g_iMostBatchesPerThread * iThreads));
    try {
        const BlockPlace end = blocksFollow(bytes, iBase, progress);
        m_iQueued = end.iBatches;
        return end;
    } catch (...) {
        m_pOrder->vEnd();
        while (!m_pOrder->news(true).boEnded) {}   // no thread may read from a stream that the caller has back
        throw;
    }
}

// What the scanner does meanwhile: it tells how far the read is, and works as one of the workers where there is a processor
// for it.
BlockPlace IfcLineReadThreadPool::Work::blocksFollow(stream::SharedBytes& bytes, std::uint64_t iBase,
                                                     const ReadProgress& progress) {
    const auto handler = quietAssertions();
    bool boHelps = boScannerHelps();
    for (;;) {
        boHelps = boHelps && boBlockRead(*m_finders.back(), m_workers.size());
        m_scanWatch.vWorked();
        const BlockOrder::News news = m_pOrder->news(!boHelps);
        m_scanWatch.vWaited();
        bytes.vReached(iBase + news.place.iPlace);
        for (const std::uint32_t iPosition : news.told) progress(iPosition);
        if (news.boEnded) return news.place;
    }
}

// A worker. What is queued is parsed to the end, also after a fatal fault.
void IfcLineReadThreadPool::Work::readLines(std::size_t iWorker) {
    const auto handler = quietAssertions();
    if (m_pOrder) {
        m_pSeats->vTake(iWorker);
        m_pSeats->vAwait();
        BlockFinder& finder = *m_finders[iWorker];
        while (boBlockRead(finder, iWorker)) {}
        m_stock.vReturn(finder.pRelease());
    }
    StageWatch watch(pTimeOf(iWorker));
    while (BatchPtr pBatches = m_lineQueue.pPop(g_iBatchesShared)) {
        watch.vWaited();
        static_cast<void>(boBatchesRead(std::move(pBatches), *m_threads[iWorker], watch));
    }
    watch.vWaited();
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

std::optional<BlockPlace> IfcLineReadThreadPool::blocksRead(stream::SharedBytes& bytes, std::uint64_t iBase,
                                                            const BlockPlace& begin, const ReadProgress& progress) {
    return m_pWork->blocksRead(bytes, iBase, begin, progress);
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
