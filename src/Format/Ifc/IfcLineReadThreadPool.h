// SPDX-License-Identifier: Apache-2.0
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
// Stops    each queue can be closed: who waits then takes what is left, and ends when there is nothing. The line queue is
//          closed first; once its workers have ended, nothing can come to the done queue any more, and it is closed too.
// Progress no state exists in which all sleep before that. A batch is in one of the queues or in somebody's hands, and
//          whoever has it in hand is awake; a lost batch goes to the free queue like any other. The workers sleep over
//          fewer than eight batches in the line queue, the collector over fewer than eight in the done queue. The scanner
//          sleeps only when the free queue is empty and all batches are made, 24 or more. So more than eight lie in one
//          of the other two queues, or somebody is awake who will put his there.
// Threads  addLineToQueue and the destructor on the scanner's thread.
// Errors   what boReadLine throws loses the batch, what finalizeEntity throws the rest of it. The thread goes on with the
//          next one; the exception goes to the standard error stream and the loss to Errors::lostStatements().
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/Read/ReadContext.h"
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

    // Copies the statement. Throws std::system_error when the first one finds no thread to be had, and std::bad_alloc
    // without memory; the statement is lost then, and no other.
    void addLineToQueue(std::string_view line, unsigned iLine);

    // The workers of this machine. Counted once a process.
    [[nodiscard]] static std::size_t iWorkerCount() noexcept;
    // Half the hardware threads, less two where that half is above three, else two; 0 threads: not known.
    [[nodiscard]] static std::size_t iWorkersOf(unsigned iHardwareThreads) noexcept;

private:
    struct QueuedLine {
        std::size_t m_iBegin;   // in the batch's text
        std::size_t m_iLength;
        std::uint32_t m_iLine;
    };
    struct Batch;
    using BatchPtr = std::unique_ptr<Batch>;
    struct Batch {
        BatchPtr m_pNext;     // while it is in a queue, or in a chain
        std::string m_text;   // the statements, one behind the other, a NUL behind each
        std::vector<QueuedLine> m_lines;
        std::vector<Entity*> m_entities;   // one for each line; null where the statement yielded none
        RootedResults m_rooted;            // what the map of GUIDs takes of them

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
        // Waits for batches and takes a chain of up to iMost; of one when the queue is closed, so that all have a part in
        // the end. Null when it is closed and empty.
        [[nodiscard]] BatchPtr pPop(std::size_t iMost);
        // A chain of up to iMost without a wait; null when there is none.
        [[nodiscard]] BatchPtr pTryPop(std::size_t iMost);
        // Nothing is pushed any more, and nobody waits.
        void vClose();
        // Takes that back. Nobody waits.
        void vOpen();

    private:
        [[nodiscard]] BatchPtr pTake(std::size_t iMost) noexcept;

        const std::size_t m_iWakeAt;
        BatchPtr m_pFirst;   // guarded by m_mutex, as the next three
        Batch* m_pLast = nullptr;
        std::size_t m_iCount = 0;
        bool m_boClosed = false;
        std::mutex m_mutex;
        std::condition_variable m_changed;
    };

    static constexpr std::size_t g_iBatchesShared = 8;      // taken by a worker at once
    static constexpr std::size_t g_iBatchesCollected = 8;   // that wake the collector

    void vStart();
    void vWorkersEnd();
    void vBatchQueue();
    [[nodiscard]] BatchPtr pBatchNext();
    void vBatchFree(BatchPtr pBatch) noexcept;
    void vBatchRead(Batch& batch, StepReadThread& thread);
    [[nodiscard]] bool boBatchesRead(BatchPtr pBatches, StepReadThread& thread);
    [[nodiscard]] bool boHelp();
    void readLines(StepReadThread& thread);
    void vBatchFinalize(const Batch& batch, std::size_t& iNext);
    void finalizeLines();

    Queue m_lineQueue{g_iBatchesShared};                      // waiting for a worker
    Queue m_doneQueue{g_iBatchesCollected};                   // parsed, waiting for the collector
    Queue m_freeQueue;                                        // finalised, empty again
    std::vector<std::unique_ptr<StepReadThread>> m_threads;   // one a worker, one of the scanner
    std::vector<std::thread> m_workers;                       // empty until the first statement
    std::thread m_collector;
    BatchPtr m_pBatch;            // being filled; the scanner's; null until there is a statement
    std::size_t m_iBatches = 0;   // made so far; the scanner's
    StepReadInfoDataCommon* m_pInfo;
    FileBase* m_pFile;
    bool m_boOneWorker;
    bool m_boActive = true;   // false at the end; the scanner's
};

}   // namespace oxa::ifc::io
