// SPDX-License-Identifier: Apache-2.0
// The completion of a read: the numbers, then the inverse lists, which need every attribute in its place, then the order.
// Sorting comes last, so that inverse lists are made in the order in which the entities were entered.
//
// Each step falls into parts that several threads can do with the same result, which they do where the read had several.
// Reports are told on the caller's thread, in the order of the numbers.
#include <algorithm>

#include "Core/Utilities/Threads/Team.h"
#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/IfcReadOptions.h"
#include "Format/Ifc/Read/StageWatch.h"
#include "Format/Ifc/Store/EntityTable.h"
#include "Format/Ifc/Store/Settle.h"

namespace oxa::ifc {

namespace {

// What a look at each slot of a chunk tells.
struct ChunkNumbers {
    EntityIdMap::Defined defined;
    std::vector<std::size_t> missing;   // places of the slots that were named and never defined
};

ChunkNumbers numbersOf(const ReadInfoCommon::Chunk& chunk) {
    ChunkNumbers numbers;
    chunk.vForEachSlot([&numbers](std::size_t iSlot, EntitySlot& slot) {
        if (slot.entity.pSchemaEntity())
            numbers.defined.set(iSlot);
        else if (slot.boReferenced())
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

// Of some chunks from iFirst on.
std::vector<ChunkNumbers> numbersOf(const Chunks& chunks, std::size_t iFirst, unsigned iThreads) {
    std::vector<ChunkNumbers> numbers(std::min(chunks.size() - iFirst, g_iChunksAtOnce));
    util::Team::vRun(iThreads, [&](util::Team& team, unsigned iPart) {
        for (std::size_t i = iPart; i < numbers.size(); i += team.iParts())
            numbers[i] = numbersOf(*chunks[iFirst + i].second);
    });
    return numbers;
}

}   // namespace

bool Data::boFinished(ReadInfoCommon& info, bool boKeepIds) {
    const bool boComplete = boNumbersSettle(info, boKeepIds, true);
    vEntitiesSettle(info);
    return boComplete;
}

void Data::vPartSettle(ReadInfoCommon& info, bool boKeepIds) {
    static_cast<void>(boNumbersSettle(info, boKeepIds, false));
    vEntitiesSettle(info);
}

void Data::vEntitiesSettle(ReadInfoCommon& info) {
    const unsigned iThreads = info.m_boParallel ? iThreadsToSettle(m_entities.size()) : 1;
    Traced traced(info.m_pTrace);
    m_iInverseEntries += iInversesBuild(m_entities, *m_pPool, iThreads);
    traced.vTell("inverse lists");
    info.vTrim();
    m_pPool->vTrim();
    // A second read has put its entities behind those of the first, which are in order.
    m_boSorted = m_boSorted && std::ranges::is_sorted(m_entities, {}, [](const Entity* pEntity) {
                     return pEntity->schemaEntity().iTypeOrdinal;
                 });
    if (!m_boSorted) vTypesSort(m_entities, iThreads);
    m_boSorted = true;
    traced.vTell("order");
    // Workers offer projects as they come; of several the first one in the list counts, as on one thread.
    const auto [first, last] = range(def::schema::ObjectName("IFCPROJECT"), false);
    if (info.m_boParallel && std::find(first, last, pProject()) != last)
        m_pProject.store(*first, std::memory_order_relaxed);
}

// One report for each number that was named and never defined; by now it is no longer known which statement named it.
// The others are kept, where that is asked for and no map is there yet. One visit of each slot serves both.
bool Data::boNumbersSettle(ReadInfoCommon& info, bool boKeepIds, bool boTell) {
    const bool boSeed = boKeepIds && !m_pEntityIdMap;
    if (boSeed) m_pEntityIdMap = std::make_unique<EntityIdMap>(0);
    if (!boKeepIds) m_pEntityIdMap.reset();
    const unsigned iThreads = info.m_boParallel ? iThreadsToSettle(m_entities.size()) : 1;
    Traced traced(info.m_pTrace);
    const Chunks chunks = info.chunks();
    std::vector<ChunkNumbers> numbers;
    bool boComplete = true;
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        if (i % g_iChunksAtOnce == 0) numbers = numbersOf(chunks, i, iThreads);
        const ChunkNumbers& found = numbers[i % g_iChunksAtOnce];
        const std::size_t iFirstId = chunks[i].first * ReadInfoCommon::g_iSlotsPerChunk;
        if (boSeed && found.defined.any()) m_pEntityIdMap->vSeed(chunks[i].second->pFirst(), iFirstId, found.defined);
        boComplete = boComplete && found.missing.empty();
        if (!boTell) continue;
        for (const std::size_t iSlot : found.missing)
            info.m_pError->add(nullptr, ReportKey::MissingEntityWithId, std::to_string(iFirstId + iSlot), {}, 0);
    }
    traced.vTell("numbers");
    return boComplete;
}

}   // namespace oxa::ifc
