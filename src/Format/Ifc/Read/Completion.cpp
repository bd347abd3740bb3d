// SPDX-License-Identifier: Apache-2.0
// The completion of a read: the numbers, then the inverse lists, which need every attribute in its place, then the order.
// Sorting comes last, so that inverse lists are made in the order in which the entities were entered.
//
// Each step falls into parts that several threads can do with the same result, which they do where the read had several.
// Reports are told on the caller's thread, in the order of the numbers.
#include <algorithm>
#include <memory>
#include <optional>

#include "Core/Utilities/Threads/Team.h"
#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/IfcReadOptions.h"
#include "Format/Ifc/Read/StageWatch.h"
#include "Format/Ifc/Store/EntityTable.h"
#include "Format/Ifc/Store/InverseChanges.h"
#include "Format/Ifc/Store/NumberSet.h"
#include "Format/Ifc/Store/Settle.h"

namespace oxa::ifc {

namespace {

// What a look at each slot of a chunk tells.
struct ChunkNumbers {
    EntityIdMap::Defined defined;
    std::vector<std::size_t> missing;   // places of the slots that were named and never defined
};

// pNamed: the numbers of the chunk that threads have kept, or null.
ChunkNumbers numbersOf(ReadInfoCommon::Chunk& chunk, const details::NumberSet::Chunk* pNamed) {
    static_assert(details::NumberSet::g_iNumbers == ReadInfoCommon::g_iSlotsPerChunk);
    ChunkNumbers numbers;
    if (pNamed) chunk.vNote(*pNamed);
    chunk.vForEachSlot([&numbers, pNamed](std::size_t iSlot, EntitySlot& slot) {
        if (slot.entity.pSchemaEntity())
            numbers.defined.set(iSlot);
        else if (slot.boReferenced() || (pNamed && (*pNamed)[iSlot / 64] >> iSlot % 64 & 1U))
            numbers.missing.push_back(iSlot);
    });
    return numbers;
}

// The steps, one after the other, where somebody asks.
class Traced {
public:
    explicit Traced(ReadTrace* pTrace) noexcept : m_pTrace(pTrace), m_watch(pTrace ? &m_time : nullptr) {}

    // The step up to here.
    void vTell(const char* pStage) {
        if (!m_pTrace) return;
        m_watch.vWorked();
        m_pTrace->rows.push_back({pStage, 0, m_time.busy, 0, 0});
        m_time = {};
    }

private:
    ReadTrace* m_pTrace;
    StageTime m_time;
    StageWatch m_watch;
};

using Chunks = std::vector<std::pair<std::size_t, ReadInfoCommon::Chunk*>>;

// Where numbers are sparse there may be 131,072 chunks; without gaps that many have 33 million instances.
constexpr std::size_t g_iChunksAtOnce = 1024;

// The numbers: the threads look at the slots, the first one takes up what they found, for some chunks at a time.
class NumberStep {
public:
    explicit NumberStep(ReadInfoCommon& info) : m_chunks(info.chunks()), m_pNamed(info.m_pNamed) {}

    // A thread's part. take(first number, chunk, numbers of it) is called on the first thread, for all chunks in order.
    template <class Take>
    [[nodiscard]] bool boRun(util::Team& team, unsigned iPart, const Take& take) {
        for (std::size_t iFirst = 0; iFirst < m_chunks.size(); iFirst += g_iChunksAtOnce) {
            const std::size_t iCount = std::min(m_chunks.size() - iFirst, g_iChunksAtOnce);
            if (iPart == 0) m_numbers.resize(iCount);
            if (!team.boMeet(iPart)) return false;
            for (std::size_t i = iPart; i < iCount; i += team.iParts()) {
                const auto& [iChunk, pChunk] = m_chunks[iFirst + i];
                m_numbers[i] = numbersOf(*pChunk, m_pNamed ? m_pNamed->pChunk(iChunk) : nullptr);
            }
            if (!team.boMeet(iPart)) return false;
            for (std::size_t i = 0; iPart == 0 && i < iCount; ++i)
                take(m_chunks[iFirst + i].first * ReadInfoCommon::g_iSlotsPerChunk, *m_chunks[iFirst + i].second,
                     m_numbers[i]);
        }
        return team.boMeet(iPart);
    }

private:
    Chunks m_chunks;
    std::shared_ptr<const details::NumberSet> m_pNamed;
    std::vector<ChunkNumbers> m_numbers;
};

}   // namespace

bool Data::boFinished(ReadInfoCommon& info, bool boKeepIds) { return boSettle(info, boKeepIds, true); }

void Data::vPartSettle(ReadInfoCommon& info, bool boKeepIds) { static_cast<void>(boSettle(info, boKeepIds, false)); }

// One team does all steps: to start its threads takes as long as a step of a small model.
bool Data::boSettle(ReadInfoCommon& info, bool boKeepIds, bool boTell) {
    const unsigned iThreads = info.m_boParallel ? iThreadsToSettle(m_entities.size()) : 1;
    const bool boSeed = boKeepIds && !m_pEntityIdMap;
    if (boSeed) m_pEntityIdMap = std::make_unique<EntityIdMap>(0);
    if (!boKeepIds) m_pEntityIdMap.reset();
    bool boComplete = true;
    // One report for each number that was named and never defined; by now it is no longer known which statement named it.
    // The others are kept, where that is asked for and no map is there yet. One visit of each slot serves both.
    const auto vNumbersTake = [&](std::size_t iFirstId, const ReadInfoCommon::Chunk& chunk, const ChunkNumbers& found) {
        if (boSeed && found.defined.any()) m_pEntityIdMap->vSeed(chunk.pFirst(), iFirstId, found.defined);
        boComplete = boComplete && found.missing.empty();
        if (!boTell) return;
        for (const std::size_t iSlot : found.missing)
            info.m_pError->add(nullptr, ReportKey::MissingEntityWithId, std::to_string(iFirstId + iSlot), {}, 0);
    };
    Traced traced(info.m_pTrace);
    NumberStep numbers(info);
    InverseStep inverses(m_entities, *m_pPool, iThreads);
    std::optional<SortStep> sort;
    util::Team::vRun(iThreads, [&](util::Team& team, unsigned iPart) {
        if (!numbers.boRun(team, iPart, vNumbersTake)) return;
        if (iPart == 0) traced.vTell("numbers");
        if (!inverses.boRun(team, iPart)) return;
        if (iPart == 0) {
            traced.vTell("inverse lists");
            vMemoryTrim(info);
            if (!boInOrder()) sort.emplace(m_entities, iThreads);
        }
        if (!team.boMeet(iPart)) return;
        if (sort && !sort->boRun(team, iPart)) return;
    });
    m_iInverseEntries += inverses.iEntered();
    m_boSorted = true;
    traced.vTell("order");
    // Workers offer projects as they come; of several the first one in the list counts, as on one thread.
    const auto [first, last] = range(def::schema::ObjectName("IFCPROJECT"), false);
    if (info.m_boParallel && std::find(first, last, pProject()) != last)
        m_pProject.store(*first, std::memory_order_relaxed);
    if (boComplete)
        m_readTo = {m_pPool->position(), InverseChanges::iMoment()};
    else
        m_readTo.reset();
    return boComplete;
}

// Nothing is read any more: what was taken for it and not used goes back to the system.
void Data::vMemoryTrim(ReadInfoCommon& info) noexcept {
    info.vTrim();
    m_pPool->vTrim();
    m_pPool->vExpect(0);
    const std::size_t iUnused = m_entities.capacity() - m_entities.size();
    if (iUnused > 0) memory::vGiveBack(m_entities.data() + m_entities.size(), iUnused * sizeof(Entity*));
}

// A second read has put its entities behind those of the first, which are in order.
bool Data::boInOrder() const {
    return m_boSorted && std::ranges::is_sorted(m_entities, {}, [](const Entity* pEntity) {
               return pEntity->schemaEntity().iTypeOrdinal;
           });
}

}   // namespace oxa::ifc
