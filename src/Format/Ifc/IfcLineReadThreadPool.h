// IfcLineReadThreadPool: parses entity statements on several threads while the scanner goes on reading.
//
//   scanner  --batches of 200-->  line workers: Data::boReadLine  --results-->  collector: Data::finalizeEntity
//
// Shares   a worker takes eight batches at once: statements name what stands near them, and where one worker's statements
//          end and another's begin, two processors want the same memory.
// Order    within a batch that of the file; batches finish in any order. Nothing in a read depends on the order,
//          save which of two equal GUIDs and which of several projects comes first.
// Memory   batches circulate: the collector hands them back to the scanner with the capacity of their texts. There are
//          so few that they stay in the processor's cache; when all are on their way, the scanner has to wait.
// Wakes    putting a thread to sleep and waking it costs as much as a batch: each sleeps until there is a share for it,
//          and the scanner never does while there is something to parse: it then works as one of the workers.
// Threads  addLineToQueue and the destructor on the scanner's thread.
// Errors   what boReadLine or finalizeEntity throws loses the batch (or its rest) and goes to the standard error
//          stream; see ThreadedLoop.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Utilities/Threads/ThreadedLoop.h"
#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcReadInfo.h"
#include "platform/Export.h"

namespace oxa::ifc::io {

class OXA_IFC_API IfcLineReadThreadPool {
public:
    // No thread starts before the first statement. Both arguments must outlive the pool.
    IfcLineReadThreadPool(StepReadInfoDataCommon& info, FileBase& file, bool boOneWorker);
    // Drains and joins: the one way to wait for the work. Every statement is parsed and finalised afterwards.
    ~IfcLineReadThreadPool();
    IfcLineReadThreadPool(const IfcLineReadThreadPool&) = delete;
    IfcLineReadThreadPool& operator=(const IfcLineReadThreadPool&) = delete;

    // Copies the statement. Throws std::system_error when the first one finds no thread to be had.
    void addLineToQueue(std::string_view line, unsigned iLine);

    // Half the hardware threads, less two where that half is above three, else two. Counted once a process.
    [[nodiscard]] static std::size_t iWorkerCount() noexcept;

private:
    struct QueuedLine {
        std::size_t m_iBegin;    // in the batch's text
        std::size_t m_iLength;
        std::uint32_t m_iLine;
    };
    struct Batch;
    using BatchPtr = std::unique_ptr<Batch>;
    struct Batch {
        BatchPtr m_pNext;                   // while it is in a queue, or in a chain
        std::string m_text;                 // the statements, one behind the other, a NUL behind each
        std::vector<QueuedLine> m_lines;
        std::vector<Entity*> m_entities;    // one for each line; null where the statement yielded none
        std::vector<RootedResult> m_rooted; // those with a GUID, in their order

        [[nodiscard]] std::string_view text(const QueuedLine& line) const noexcept {
            return std::string_view(m_text).substr(line.m_iBegin, line.m_iLength);
        }
        void vClear();
    };
    // A queue of batches that several threads share. It allocates nothing.
    class Queue {
    public:
        // Who finds the queue empty sleeps until there are iWakeAt batches.
        explicit Queue(std::size_t iWakeAt = 1) noexcept : m_iWakeAt(iWakeAt) {}
        ~Queue();
        Queue(const Queue&) = delete;
        Queue& operator=(const Queue&) = delete;

        void vPush(BatchPtr pBatch) noexcept;
        // A chain of batches, which come first; null is no chain.
        void vPushFront(BatchPtr pBatches) noexcept;
        // Waits for batches and takes a chain of up to iMost, of one when "boActive" has fallen: all are to have a part
        // in the end. Null when the queue is empty then.
        [[nodiscard]] BatchPtr pPop(std::size_t iMost, const std::atomic<bool>& boActive);
        // Waits that long at most; null when none came.
        [[nodiscard]] BatchPtr pPop(std::size_t iMost, std::chrono::milliseconds longest);
        // To be called behind a fall of the flag that somebody may wait with.
        void vWake();

    private:
        [[nodiscard]] BatchPtr pTake(std::size_t iMost) noexcept;

        const std::size_t m_iWakeAt;
        BatchPtr m_pFirst;                // this and the next two are guarded by m_mutex
        Batch* m_pLast = nullptr;
        std::size_t m_iCount = 0;
        std::mutex m_mutex;
        std::condition_variable m_changed;
    };

    static constexpr std::size_t g_iBatchesShared = 8;       // taken by a worker at once
    static constexpr std::size_t g_iBatchesCollected = 8;    // that wake the collector

    void vStart();
    void vBatchQueue();
    [[nodiscard]] BatchPtr pBatchNext();
    void vBatchRead(BatchPtr pBatch, StepReadThread& thread);
    void vBatchesRead(BatchPtr pBatches, StepReadThread& thread);
    bool boHelp();
    bool readLines(StepReadThread& thread);
    void vBatchFinalize(const Batch& batch);
    bool finalizeLines();

    Queue m_lineQueue{g_iBatchesShared};      // waiting for a worker
    Queue m_doneQueue{g_iBatchesCollected};   // parsed, waiting for the collector
    Queue m_freeQueue;                        // finalised, empty again
    std::atomic<bool> m_boWorkersActive{true};
    std::atomic<bool> m_boCollectorActive{true};
    std::vector<std::unique_ptr<StepReadThread>> m_threads;   // one a worker, one of the scanner
    std::vector<util::ThreadedLoop> m_workers;                // empty until the first statement
    util::ThreadedLoop m_collector;
    BatchPtr m_pBatch;                                  // being filled; the scanner's
    std::size_t m_iBatches = 1;                         // made so far; the scanner's
    StepReadInfoDataCommon* m_pInfo;
    FileBase* m_pFile;
    bool m_boOneWorker;
};

}   // namespace oxa::ifc::io
