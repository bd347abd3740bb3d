// SPDX-License-Identifier: Apache-2.0
/// @file
/// EntityTable: the place of each instance number while a file is read.
///
/// Each number n has a fixed place, chunk n >> 15, slot n & 0x7fff, so that "#123" becomes a pointer before statement
/// 123 has been read, or even if it never comes.
///
///     slot, 32 bytes     offset 0  Entity, 24 referenced, 25 state, 26 unused
///     chunk, 1 MiB       32,768 slots, zeroed, from the pool of the Data; outlives the table that found it
///
/// Callers  the scanner, the line workers, the ifcXML import. Library users do not meet it.
/// Threads  any number may ask for chunks and mark slots; creation is guarded, the common path is one
///          atomic load. The table itself forgets everything when the read ends.
#pragma once

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/Memory/SimplePool.h"
#include "platform/SharedMutex.h"

namespace oxa::ifc {

class Data;
struct ReadTrace;   // IfcReadOptions.h

namespace details {
class NumberSet;   // NumberSet.h
}   // namespace details

/// One place of the entity table. The pointer to a slot is the pointer to its Entity.
struct EntitySlot {
    Entity entity;             ///< zeroed until a statement defines it
    std::uint8_t referenced;   ///< true once anything named this number or defined it, but see ReadInfoCommon::m_pNamed
    std::uint8_t state;        ///< whether a thread holds "entity", see EntitySlotLock
    std::uint8_t unused[6];    ///< zero; a write of the first one makes the system map the page

    /// Test before store: with other threads at work the cache line stays shared unless the flag has to change, instead
    /// of moving to this processor. On one thread the load would only be a cache miss to wait for.
    void vReferencedSet(bool boParallel = true) noexcept {
        std::atomic_ref flag(referenced);
        if (!boParallel || !flag.load(std::memory_order_relaxed)) flag.store(1, std::memory_order_relaxed);
    }
    /// Whether anything named this number or defined it, so far.
    [[nodiscard]] bool boReferenced() noexcept {
        return std::atomic_ref(referenced).load(std::memory_order_relaxed) != 0;
    }
    /// The slot of an entity that stands in a table; of no other one.
    [[nodiscard]] static EntitySlot& fromEntity(Entity& entity) noexcept {
        return reinterpret_cast<EntitySlot&>(entity);
    }
};
static_assert(sizeof(EntitySlot) == 32 && offsetof(EntitySlot, entity) == 0);

/// Holds a slot's Entity against a second statement of the same number on another thread. Such a file is
/// faulty, and which statement wins is open, but nothing may be torn. Without a rival it costs one exchange.
class EntitySlotLock {
public:
    /// Waits until nobody else holds the slot.
    explicit EntitySlotLock(EntitySlot& slot) noexcept;
    ~EntitySlotLock();
    EntitySlotLock(const EntitySlotLock&) = delete;
    EntitySlotLock& operator=(const EntitySlotLock&) = delete;

private:
    std::atomic_ref<std::uint8_t> m_state;
};

/// The entity table, with where the read reports.
///
/// Why a table of chunks. Statements name each other in any order, and the references of one statement are parsed on
/// one thread while their targets are parsed on another, or have not been scanned yet. If number n always has the same
/// address, a reference is that address, and nothing has to be patched later. A vector that grows would move; a hash
/// table would need a lock or a probe for each reference. Chunks of 32,768 slots never move, are found by one atomic
/// load, and cost memory only where numbers are: the pages of a chunk that nothing is written to are never mapped.
struct ReadInfoCommon {
    static constexpr std::size_t g_iSlotsPerChunk = 32768;                                ///< numbers of a chunk
    static constexpr std::size_t g_iChunkBytes = g_iSlotsPerChunk * sizeof(EntitySlot);   ///< 1 MiB
    static constexpr std::size_t g_iFirstChunks = 1000;   ///< chunks that need no look-up
    /// The first chunk of numbers beyond 32 bits.
    static constexpr std::size_t g_iFarChunk = (std::size_t{1} << 32) / g_iSlotsPerChunk;

    /// An empty table. Reports go to "error", which is not owned.
    explicit ReadInfoCommon(io::ReadError& error) noexcept : m_pError(&error) {}
    ReadInfoCommon(const ReadInfoCommon&) = delete;
    ReadInfoCommon& operator=(const ReadInfoCommon&) = delete;

    /// Never null. Creates the chunk in the pool of "data" when it does not exist yet. Its caller may mark and fill any
    /// slot of it, so all of them are visited from here on; slotGet, for one number, notes the slot's page alone.
    [[nodiscard]] EntitySlot* pChunkGet(Data& data, std::size_t iChunk);

    /// The slot of a number; from here on vForEachSlot visits it.
    [[nodiscard]] EntitySlot& slotGet(Data& data, std::size_t iId) {
        const std::size_t iChunk = iId >> 15;
        const std::size_t iSlot = iId & 0x7fffU;
        if (iChunk < g_iFirstChunks) {
            Chunk& chunk = m_chunks[iChunk];
            if (EntitySlot* pSlots = chunk.m_pSlots.load(std::memory_order_acquire)) {
                chunk.vTouch(pSlots[iSlot], iSlot);
                return pSlots[iSlot];
            }
        }
        return slotCreate(data, iChunk, iSlot);
    }

    /// The first slot of a chunk below g_iFirstChunks, which is made when it is not there yet. For who notes elsewhere which of
    /// its numbers are named (m_pNamed): what is neither noted nor defined is not visited.
    [[nodiscard]] EntitySlot* pSlots(Data& data, std::size_t iChunk) { return chunkGet(data, iChunk).pFirst(); }

    /// Has the processor fetch the slot of a number that is about to be filled, where its chunk is there already.
    void vFetch(std::size_t iId) const noexcept;

    /// Unmaps the pages that were never accessed (madvise): those of a chunk that was expected to be full. Not while
    /// other threads ask for slots.
    void vTrim() noexcept;

    class Chunk;

    /// The chunks that are there, by number, ascending. Not while other threads create chunks.
    [[nodiscard]] std::vector<std::pair<std::size_t, Chunk*>> chunks();

    /// Calls visit(number, slot) for the slots of all pages touched so far, numbers ascending. Not while
    /// other threads create chunks.
    template <class Visit>
    void vForEachSlot(Visit&& visit) {
        for (const auto& [iChunk, pChunk] : chunks())
            pChunk->vForEachSlot([&, iFirst = iChunk * g_iSlotsPerChunk](std::size_t iSlot, EntitySlot& slot) {
                visit(iFirst + iSlot, slot);
            });
    }

    io::ReadError* m_pError;         ///< where the read reports
    bool m_boParallel = false;       ///< several threads parse statements of this read at once, and may complete it
    ReadTrace* m_pTrace = nullptr;   ///< who asks what the threads did; not owned
    /// Numbers that statements have named, beside those whose slots say so: a thread that parses keeps them by itself, since
    /// a slot far away would be a cache line to fetch, mostly from another processor. Null where no thread had any.
    std::shared_ptr<details::NumberSet> m_pNamed;

    /// The slots of 32,768 numbers, from a multiple of that on.
    ///
    /// One bit a page of 128 slots, 4 KiB, that was accessed, so that completion does not walk the empty rest of a chunk
    /// in a file with sparse numbers: the walk alone would have the kernel map those pages.
    class Chunk {
    public:
        /// The slot of its first number.
        [[nodiscard]] EntitySlot* pFirst() const noexcept { return m_pSlots.load(std::memory_order_acquire); }
        /// Calls visit(place in the chunk, slot) for the slots of all pages touched so far, ascending.
        template <class Visit>
        void vForEachSlot(Visit&& visit) const {
            EntitySlot* const pFirstSlot = pFirst();
            for (std::size_t iPage = 0; iPage < g_iPages; ++iPage) {
                if (!boTouched(iPage)) continue;
                for (std::size_t i = iPage * g_iPageSlots; i < (iPage + 1) * g_iPageSlots; ++i) visit(i, pFirstSlot[i]);
            }
        }
        /// From here on the pages of these slots, a bit each, are visited, too.
        void vNote(const std::array<std::uint64_t, g_iSlotsPerChunk / 64>& slots) noexcept {
            static_assert(g_iPageSlots == 128);
            for (std::size_t iPage = 0; iPage < g_iPages; ++iPage)
                if (!boTouched(iPage) && (slots[2 * iPage] | slots[2 * iPage + 1]))
                    m_pages[iPage / 64].fetch_or(std::uint64_t{1} << iPage % 64, std::memory_order_relaxed);
        }

    private:
        friend ReadInfoCommon;
        static constexpr std::size_t g_iPageSlots = 128;
        static constexpr std::size_t g_iPages = g_iSlotsPerChunk / g_iPageSlots;
        static constexpr std::size_t g_iPagesGivenBack = 16;   // at once: fewer are not worth a system call

        std::atomic<EntitySlot*> m_pSlots{nullptr};
        std::array<std::atomic<std::uint64_t>, g_iPages / 64> m_pages{};

        // The first access to a page is a store: after a load the kernel would have mapped its shared zero page, and
        // would have to replace it at the first store, with a TLB shootdown on every processor that runs this process.
        void vTouch(EntitySlot& slot, std::size_t iSlot) noexcept {
            std::atomic<std::uint64_t>& word = m_pages[iSlot / g_iPageSlots / 64];
            const std::uint64_t uBit = std::uint64_t{1} << (iSlot / g_iPageSlots % 64);
            if (word.load(std::memory_order_relaxed) & uBit) return;
            std::atomic_ref(slot.unused[0]).store(0, std::memory_order_relaxed);
            word.fetch_or(uBit, std::memory_order_relaxed);
        }
        [[nodiscard]] bool boTouched(std::size_t iPage) const noexcept {
            return m_pages[iPage / 64].load(std::memory_order_relaxed) >> iPage % 64 & 1U;
        }
        // Its untouched pages: those at the end, and in between where many stand together.
        void vTrim() noexcept {
            EntitySlot* const pSlots = m_pSlots.load(std::memory_order_acquire);
            for (std::size_t iFirst = 0, iLast = 0; pSlots && iFirst < g_iPages; iFirst = iLast + 1) {
                for (iLast = iFirst; iLast < g_iPages && !boTouched(iLast);) ++iLast;
                if (iLast - iFirst >= g_iPagesGivenBack || (iLast > iFirst && iLast == g_iPages))
                    memory::vGiveBack(pSlots + iFirst * g_iPageSlots,
                                      (iLast - iFirst) * g_iPageSlots * sizeof(EntitySlot));
            }
        }
        // A file that numbers without gaps fills the next chunk, too.
        [[nodiscard]] bool boMostlyTouched() const noexcept {
            std::size_t iTouched = 0;
            for (const auto& word : m_pages)
                iTouched += static_cast<std::size_t>(std::popcount(word.load(std::memory_order_relaxed)));
            return iTouched >= g_iPages * 3 / 4;
        }
    };

private:
    EntitySlot& slotCreate(Data& data, std::size_t iChunk, std::size_t iSlot);
    Chunk& chunkGet(Data& data, std::size_t iChunk);

    std::array<Chunk, g_iFirstChunks> m_chunks;                  // numbers below 32,768,000
    std::mutex m_chunkMutex;                                     // guards creation in m_chunks
    std::vector<std::unique_ptr<Chunk>> m_moreChunks;            // numbers of 32 bits, at chunk number minus 1000
    std::map<std::size_t, std::unique_ptr<Chunk>> m_farChunks;   // larger ones, which only ifcXML has, by chunk number
    platform::SharedMutex m_moreChunksLock;                      // guards both
};

}   // namespace oxa::ifc
