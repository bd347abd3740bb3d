// SPDX-License-Identifier: Apache-2.0
// The parts of the entity table that are not on the common path: the lock of a slot, and new chunks.
#include "Format/Ifc/Store/EntityTable.h"

#include <algorithm>
#include <thread>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "platform/Compiler.h"

namespace oxa::ifc {

namespace {

enum SlotState : std::uint8_t { Free = 0, Held = 1 };

constexpr std::size_t g_iChunksLookedAt = 4;   // before a new one

}   // namespace

EntitySlotLock::EntitySlotLock(EntitySlot& slot) noexcept : m_state(slot.state) {
    // A spin lock of one byte. It is contended only where two statements of a file have the same number, so in all
    // other reads it is one uncontended exchange on a cache line that this thread is about to write anyway. yield() and
    // not a pause: the holder parses a whole statement, and on one core it needs this processor to do so.
    while (m_state.exchange(Held, std::memory_order_acquire) == Held) std::this_thread::yield();
}

EntitySlotLock::~EntitySlotLock() { m_state.store(Free, std::memory_order_release); }

void ReadInfoCommon::vFetch(std::size_t iId) const noexcept {
    const std::size_t iChunk = iId >> 15;
    if (iChunk >= g_iFirstChunks) return;
    if (const EntitySlot* pSlots = m_chunks[iChunk].pFirst()) platform::vFetchToWrite(pSlots + (iId & 0x7fffU));
}

EntitySlot* ReadInfoCommon::pChunkGet(Data& data, std::size_t iChunk) {
    Chunk& chunk = chunkGet(data, iChunk);
    for (auto& word : chunk.m_pages) word.store(~std::uint64_t{0}, std::memory_order_relaxed);
    return chunk.m_pSlots.load(std::memory_order_acquire);
}

EntitySlot& ReadInfoCommon::slotCreate(Data& data, std::size_t iChunk, std::size_t iSlot) {
    Chunk& chunk = chunkGet(data, iChunk);
    EntitySlot& slot = chunk.m_pSlots.load(std::memory_order_acquire)[iSlot];
    chunk.vTouch(slot, iSlot);
    return slot;
}

// The chunk, with its slots.
//
// Double-checked creation. The pointer is stored with release order after the memory is zero, and loaded with acquire
// order by every reader, so none sees a chunk before its zeros. Chunks of a file without gaps come from a segment of
// the pool, where huge pages spare TLB misses; a chunk with none before it that is mostly full gets a mapping of its own,
// whose pages are mapped one by one, because then most of it will never be touched. Not its predecessor alone is looked
// at: statements name what stands further on in the file, so a chunk may be needed while those before it fill. Where it is
// known how much there is to read, all chunks up to that size are taken for full: an instance takes more bytes in a file
// than its slot does.
ReadInfoCommon::Chunk& ReadInfoCommon::chunkGet(Data& data, std::size_t iChunk) {
    const auto boOneFull = [this](std::size_t iBehind) {
        const std::size_t iFirst = iBehind - std::min(iBehind, g_iChunksLookedAt);
        return std::any_of(&m_chunks[iFirst], &m_chunks[iBehind], [](const Chunk& c) { return c.boMostlyTouched(); });
    };
    const auto vCreate = [&data](Chunk& chunk, bool boDense) {
        void* pSlots = boDense ? data.pool().pAllocatePiece(g_iChunkBytes) : data.pool().pAllocate(g_iChunkBytes);
        chunk.m_pSlots.store(static_cast<EntitySlot*>(pSlots), std::memory_order_release);
    };
    if (iChunk < g_iFirstChunks) {
        Chunk& chunk = m_chunks[iChunk];
        if (!chunk.m_pSlots.load(std::memory_order_acquire)) {
            const std::lock_guard lock(m_chunkMutex);
            if (chunk.m_pSlots.load(std::memory_order_relaxed)) return chunk;
            const bool boExpected = data.pool().boLarge() && iChunk * g_iChunkBytes < data.pool().iExpected();
            vCreate(chunk, boExpected || boOneFull(iChunk));
        }
        return chunk;
    }
    const std::size_t iMore = iChunk - g_iFirstChunks;
    {
        const std::shared_lock lock(m_moreChunksLock);
        if (iMore < m_moreChunks.size() && m_moreChunks[iMore]) return *m_moreChunks[iMore];
    }
    const std::unique_lock lock(m_moreChunksLock);
    // A table of all chunks of 32-bit numbers takes 1 MiB; one of 64-bit numbers would fit into no memory.
    if (iChunk < g_iFarChunk && iMore >= m_moreChunks.size()) m_moreChunks.resize(iMore + 1);
    std::unique_ptr<Chunk>& pChunk = iChunk < g_iFarChunk ? m_moreChunks[iMore] : m_farChunks[iChunk];
    if (!pChunk) {
        auto pNew = std::make_unique<Chunk>();
        vCreate(*pNew, false);
        pChunk = std::move(pNew);
    }
    return *pChunk;
}

std::vector<std::pair<std::size_t, ReadInfoCommon::Chunk*>> ReadInfoCommon::chunks() {
    std::vector<std::pair<std::size_t, Chunk*>> all;
    const auto vAdd = [&all](std::size_t iChunk, Chunk* pChunk) {
        if (pChunk && pChunk->pFirst()) all.emplace_back(iChunk, pChunk);
    };
    for (std::size_t i = 0; i < g_iFirstChunks; ++i) vAdd(i, &m_chunks[i]);
    for (std::size_t i = 0; i < m_moreChunks.size(); ++i) vAdd(g_iFirstChunks + i, m_moreChunks[i].get());
    for (const auto& [iChunk, pChunk] : m_farChunks) vAdd(iChunk, pChunk.get());
    return all;
}

void ReadInfoCommon::vTrim() noexcept {
    for (Chunk& chunk : m_chunks)
        if (chunk.m_pSlots.load(std::memory_order_relaxed)) chunk.vTrim();
}

}   // namespace oxa::ifc
