// SPDX-License-Identifier: Apache-2.0
#include "Format/Ifc/Store/EntityTable.h"

#include <thread>

#include "Format/Ifc/IfcFileDataSimple.h"

namespace oxa::ifc {

namespace {

enum SlotState : std::uint8_t { Free = 0, Held = 1 };

}   // namespace

EntitySlotLock::EntitySlotLock(EntitySlot& slot) noexcept : m_state(slot.state) {
    while (m_state.exchange(Held, std::memory_order_acquire) == Held) std::this_thread::yield();
}

EntitySlotLock::~EntitySlotLock() { m_state.store(Free, std::memory_order_release); }

EntitySlot* ReadInfoCommon::pChunkGet(Data& data, std::size_t iChunk) {
    Chunk& chunk = chunkGet(data, iChunk);
    for (auto& word : chunk.pages) word.store(~std::uint64_t{0}, std::memory_order_relaxed);
    return chunk.pSlots.load(std::memory_order_acquire);
}

EntitySlot& ReadInfoCommon::slotCreate(Data& data, std::size_t iChunk, std::size_t iSlot) {
    Chunk& chunk = chunkGet(data, iChunk);
    EntitySlot& slot = chunk.pSlots.load(std::memory_order_acquire)[iSlot];
    chunk.vTouch(slot, iSlot);
    return slot;
}

// The chunk, with its slots. The acquire load of a reader meets the release store here: it sees zeroed memory.
ReadInfoCommon::Chunk& ReadInfoCommon::chunkGet(Data& data, std::size_t iChunk) {
    const auto vCreate = [&data](Chunk& chunk, bool boDense) {
        void* pSlots = boDense ? data.pool().pAllocatePiece(g_iChunkBytes) : data.pool().pAllocate(g_iChunkBytes);
        chunk.pSlots.store(static_cast<EntitySlot*>(pSlots), std::memory_order_release);
    };
    if (iChunk < g_iFirstChunks) {
        Chunk& chunk = m_chunks[iChunk];
        if (!chunk.pSlots.load(std::memory_order_acquire)) {
            const std::lock_guard lock(m_chunkMutex);
            if (!chunk.pSlots.load(std::memory_order_relaxed))
                vCreate(chunk, iChunk > 0 && m_chunks[iChunk - 1].boMostlyTouched());
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

void ReadInfoCommon::vTrim() noexcept {
    for (Chunk& chunk : m_chunks)
        if (chunk.pSlots.load(std::memory_order_relaxed)) chunk.vTrim();
}

}   // namespace oxa::ifc
