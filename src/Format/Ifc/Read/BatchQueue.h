// SPDX-License-Identifier: Apache-2.0
// Batches of statements, and the queues between the threads of a read.
//
// For      the pool of line workers and the scan in blocks, inside this folder.
// Owner    a batch belongs to who holds its pointer: one queue, one chain or one thread. A chain is a batch and what follows it
//          by m_pNext.
// Threads  a queue: any number at once. A batch: its holder.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

#include "Format/Ifc/Memory/SimplePool.h"
#include "Format/Ifc/Read/ReadContext.h"
#include "Format/Ifc/Read/StatementBuffer.h"

namespace oxa::ifc {
class Entity;
}   // namespace oxa::ifc

namespace oxa::ifc::io {

// Statements of a batch: what a lock costs is nothing beside what they do.
inline constexpr std::size_t g_iBatchLines = 200;

// A statement in a batch.
struct QueuedLine {
    StatementBuffer::Place m_place;   // in the batch's text
    std::uint32_t m_iLine;            // where it ends in the file, from 1
    std::uint32_t m_iEnd;   // where its ";" stands in the stream, as ReadProgress tells it; of a scan in blocks alone
};
struct Batch;
using BatchPtr = std::unique_ptr<Batch>;

// Statements that go from thread to thread together.
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
    // Makes it fit for the next statements; its memory is kept, as far as it is not much.
    void vClear();
};

// A queue of batches that several threads share. Batches are linked through their own m_pNext, so that pushing and
// taking allocates nothing and cannot fail; a queue that had to allocate could lose a batch when memory runs out.
// m_iWakeAt is a low-water mark: a thread that slept for one batch would be woken some thousand times for a large
// file, and waking costs about what parsing a batch does.
class alignas(memory::g_iApart) BatchQueue {
public:
    // A thread that finds the queue empty sleeps until there are iWakeAt batches.
    explicit BatchQueue(std::size_t iWakeAt = 1) noexcept : m_iWakeAt(iWakeAt) {}
    ~BatchQueue();
    BatchQueue(const BatchQueue&) = delete;
    BatchQueue& operator=(const BatchQueue&) = delete;

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
    void vLook() const noexcept;

    // Whether one is there or the queue is closed; set with m_mutex, a hint without.
    std::atomic<bool> m_boShare{false};
    std::size_t m_iWakeAt;   // guarded by m_mutex, as the next four
    BatchPtr m_pFirst;
    Batch* m_pLast = nullptr;
    std::size_t m_iCount = 0;
    bool m_boClosed = false;
    std::mutex m_mutex;
    std::condition_variable m_changed;
};

// Where batches come from and go back to. Those that came back keep the capacity of their texts. Any number of threads.
class alignas(memory::g_iApart) BatchStock {
public:
    BatchStock() = default;
    ~BatchStock();
    BatchStock(const BatchStock&) = delete;
    BatchStock& operator=(const BatchStock&) = delete;

    // From how many that are out vHoldBack() waits; before there is a second thread.
    void vLimit(std::size_t iMost) noexcept { m_iMost = iMost; }
    // An empty one. Throws std::bad_alloc.
    [[nodiscard]] BatchPtr pTake();
    // A chain, or null.
    void vReturn(BatchPtr pBatches) noexcept;
    [[nodiscard]] bool boAllOut();
    // Waits until not so many are out.
    void vHoldBack();

private:
    std::size_t m_iMost = 0;
    std::mutex m_mutex;   // guards what follows
    BatchPtr m_pFirst;
    std::size_t m_iOut = 0;
    std::condition_variable m_returned;
};

}   // namespace oxa::ifc::io
