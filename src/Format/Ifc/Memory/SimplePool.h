// SPDX-License-Identifier: Apache-2.0
/// @file
/// SimplePool: memory for the many small things of one model, which all die together.
///
/// For      entities, attribute blocks, texts, lists and list nodes of one Data.
/// Callers  Data, the cells, the setters. Library users only hand a pool on.
/// Not for  objects with a destructor to run (none is run), or memory to be given back one by one.
/// Threads  any number at once; the common path is one atomic add, a new block takes a lock. A thread that allocates
///          much has a PoolArena (PoolArena.h).
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

#include "Format/Ifc/Memory/ZeroedBytes.h"

/// Memory of a model as a whole.
namespace oxa::memory {

/// What one thread writes often and others read stands this many bytes apart from the rest: processors exchange memory in
/// pieces of 64 bytes, and fetch them in pairs.
constexpr std::size_t g_iApart = 128;

/// Bump allocation in blocks of iBlockSize bytes; iAlignment 0: no alignment is added, a caller who needs
/// one asks for sizes that keep it or aligns by itself (pAllocateAligned).
template <class Byte, std::size_t iBlockSize, std::size_t iAlignment>
class SimplePool {
    static_assert(sizeof(Byte) == 1 && iAlignment == 0, "a pool of bytes, without alignment");

public:
    SimplePool() = default;
    SimplePool(const SimplePool&) = delete;
    SimplePool& operator=(const SimplePool&) = delete;

    /// iBytes of zeroed memory at any byte address, good until the pool dies. Throws std::bad_alloc.
    ///
    /// The common path is one atomic add. The thread that adds owns the bytes between the old and the new count, since
    /// no two adds give the same range. If the range passes the end, the block is closed: the overshoot stays in the
    /// count, so that every later add fails as well, and the first to take the lock opens a new block. Another thread
    /// that failed finds m_pCurrent changed and starts over. What is left at the end of a closed block is lost. The
    /// pointer is published with release order after the block's memory is zero.
    [[nodiscard]] void* pAllocate(std::size_t iBytes) {
        if (iBytes > iBlockSize) return pAllocateLarge(iBytes);
        for (;;) {
            Block* pBlock = m_pCurrent.load(std::memory_order_acquire);
            if (pBlock) {
                // Nothing is taken back on failure: the overshoot is what closes the block.
                const std::uint64_t iUsed = pBlock->m_iUsed.fetch_add(iBytes, std::memory_order_relaxed);
                if (iUsed + iBytes < iBlockSize) return pBlock->m_pData.get() + iUsed;
            }
            if (void* pBytes = pOpenBlock(pBlock, iBytes)) return pBytes;
        }
    }

    /// The same at an address that is a multiple of 8.
    [[nodiscard]] void* pAllocateAligned(std::size_t iBytes) {
        void* pBytes = pAllocate(iBytes + 7);
        std::size_t iSpace = iBytes + 7;
        return std::align(8, iBytes, pBytes, iSpace);
    }

    /// There are about so many bytes to come, as from a large file. From half a MiB on the pool then counts as large.
    void vExpect(std::size_t iBytes) noexcept { m_iExpected.store(iBytes, std::memory_order_relaxed); }
    /// What vExpect said last.
    [[nodiscard]] std::size_t iExpected() const noexcept { return m_iExpected.load(std::memory_order_relaxed); }

    /// Whether pieces are cut from segments: where much is to come, or there is that much already.
    [[nodiscard]] bool boLarge() const noexcept {
        return iExpected() >= g_iMuch || m_iReserved.load(std::memory_order_relaxed) >= g_iSegmentsFrom;
    }

    /// The same for a large piece that its owner fills from its start to its end: its pages are there. Once the pool is
    /// large, pieces are cut from segments.
    ///
    /// The system clears a segment as a whole where it is touched first, and all of it again for each further thread that
    /// touches it meanwhile, to throw that away. So whoever opens a segment touches it before others get a part of it. They
    /// do not wait for that, and take a piece from elsewhere, unless to find the pages of one takes longer.
    [[nodiscard]] void* pAllocatePiece(std::size_t iBytes) {
        if (!boLarge()) return pFilled(pAllocate(iBytes), iBytes);
        if (iBytes > g_iSegmentBytes) return pKept(zeroedTable(iBytes), iBytes);
        std::unique_lock lock(m_segmentMutex, std::defer_lock);
        if (iBytes >= g_iWorthAWait)
            lock.lock();
        else if (!lock.try_lock())
            return pFilled(pAllocateLarge(iBytes), iBytes);
        Segment* pSegment = nullptr;
        for (Segment& each : m_segments)
            if (each.iLeft >= iBytes && (!pSegment || each.iLeft < pSegment->iLeft)) pSegment = &each;
        if (!pSegment) pSegment = &segmentOpened();
        pSegment->iLeft -= iBytes;
        return std::exchange(pSegment->pFree, pSegment->pFree + iBytes);
    }

    /// Returns the pages of the unused ends of segments to the system; they are mapped again when they are used.
    void vTrim() noexcept {
        const std::lock_guard lock(m_segmentMutex);
        for (const Segment& segment : m_segments) vGiveBack(segment.pFree, segment.iLeft);
    }

    /// Where the pool stands.
    struct Position {
        const void* pBlock;         ///< the one in use
        std::uint64_t iUsed;        ///< of that
        std::size_t iReserved;      ///< as iBytesReserved
        std::size_t iSegmentLeft;   ///< of segments
        /// Whether nothing was allocated in between.
        bool operator==(const Position&) const = default;
    };
    /// Where it stands now. While nobody allocates.
    [[nodiscard]] Position position() {
        const Block* pBlock = m_pCurrent.load(std::memory_order_acquire);
        const std::lock_guard lock(m_segmentMutex);
        return {pBlock, pBlock ? pBlock->m_iUsed.load(std::memory_order_relaxed) : 0, iBytesReserved(),
                m_segments[0].iLeft + m_segments[1].iLeft};
    }

    /// Bytes taken from the heap so far: blocks and large allocations.
    [[nodiscard]] std::size_t iBytesReserved() const noexcept { return m_iReserved.load(std::memory_order_relaxed); }

private:
    struct Block {
        Block(std::uint64_t iUsed, ZeroedBytes pData) noexcept : m_iUsed(iUsed), m_pData(std::move(pData)) {}
        std::atomic<std::uint64_t> m_iUsed;
        ZeroedBytes m_pData;
    };

    // A smaller pool would pay for a segment's unused end with a good part of its size.
    static constexpr std::size_t g_iSegmentsFrom = 2 * g_iSegmentBytes;
    static constexpr std::size_t g_iMuch = 512 * 1024;
    static constexpr std::size_t g_iWorthAWait = 512 * 1024;   // bytes of small pages: slower than a segment

    void* pAllocateLarge(std::size_t iBytes) { return pKept(zeroedBytes(iBytes), iBytes); }

    // One system call instead of a page fault for each page.
    static void* pFilled(void* pBytes, std::size_t iBytes) noexcept {
        vPopulate(pBytes, iBytes);
        return pBytes;
    }

    char* pKept(ZeroedBytes pBytes, std::size_t iBytes) {
        const std::lock_guard lock(m_largeMutex);
        m_large.push_back(std::move(pBytes));
        m_iReserved.fetch_add(iBytes, std::memory_order_relaxed);
        return m_large.back().get();
    }

    // The free end of one.
    struct Segment {
        char* pFree = nullptr;
        std::size_t iLeft = 0;
    };

    // In place of the one that has less left. Under the lock of segments.
    Segment& segmentOpened() {
        char* const pBytes = pKept(zeroedSegment(), g_iSegmentBytes);
        vPopulate(pBytes, g_iSegmentBytes);
        Segment& segment = m_segments[m_segments[0].iLeft > m_segments[1].iLeft];
        vGiveBack(segment.pFree, segment.iLeft);
        return segment = {pBytes, g_iSegmentBytes};
    }

    // Opens a new block and serves the request at its start; null when another thread was faster.
    void* pOpenBlock(const Block* pSeen, std::size_t iBytes) {
        const std::lock_guard lock(m_blockMutex);
        if (m_pCurrent.load(std::memory_order_relaxed) != pSeen) return nullptr;
        ZeroedBytes pData = zeroedBytes(iBlockSize);
        Block& block = m_blocks.emplace_back(iBytes, std::move(pData));
        m_iReserved.fetch_add(iBlockSize, std::memory_order_relaxed);
        m_pCurrent.store(&block, std::memory_order_release);
        return block.m_pData.get();
    }

    std::atomic<Block*> m_pCurrent{nullptr};
    std::list<Block> m_blocks;          // guarded by m_blockMutex
    std::vector<ZeroedBytes> m_large;   // guarded by m_largeMutex
    // Two, so that a large piece does not end one that small ones still fit into; guarded by m_segmentMutex.
    std::array<Segment, 2> m_segments;
    std::mutex m_blockMutex;
    std::mutex m_largeMutex;
    std::mutex m_segmentMutex;   // m_largeMutex may be taken under it
    std::atomic<std::size_t> m_iReserved{0};
    std::atomic<std::size_t> m_iExpected{0};
};

}   // namespace oxa::memory

namespace oxa::ifc {

/// The pool of a model.
using Pool = memory::SimplePool<char, 16384, 0>;

}   // namespace oxa::ifc
