// SPDX-License-Identifier: Apache-2.0
// On several threads the inverse lists are made in rounds of some thousand instances. In each the threads take rows of
// instances and look for references, which are put down by the part of the memory that their target stands in; in the next
// one each part is entered by one thread, in the order of the instances. So every list is written by one thread, in the order
// that a single thread would have, and no lock is needed. Who has less to enter takes more rows.
#include "Format/Ifc/Store/Settle.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <limits>
#include <memory>
#include <span>
#include <thread>
#include <utility>

#include "Core/Utilities/Threads/Team.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/Memory/PoolArena.h"
#include "Format/Ifc/Store/InverseBuilder.h"
#include "platform/Assert.h"

namespace oxa::ifc {

namespace {

constexpr std::size_t g_iRow = 512;   // instances that a thread takes at once
constexpr std::size_t g_iRows = 16;   // of a round
constexpr std::size_t g_iRound = g_iRows * g_iRow;
constexpr std::size_t g_iPerThread = 16384;       // instances that pay for a thread
constexpr unsigned g_iMostThreads = 8;            // more wait for memory
constexpr std::size_t g_iPartBytes = 16 * 1024;   // of memory whose targets one thread enters

struct Range {
    std::size_t iFirst;
    std::size_t iLast;   // the one behind
};

// A part of a whole, as even as they can be.
Range share(const Range& whole, unsigned iPart, unsigned iParts) noexcept {
    const std::size_t iCount = whole.iLast - whole.iFirst;
    return {whole.iFirst + iCount * iPart / iParts, whole.iFirst + iCount * (iPart + 1) / iParts};
}

}   // namespace

unsigned iThreadsToSettle(std::size_t iEntities) noexcept {
    const std::size_t iPaid = std::min<std::size_t>(iEntities / g_iPerThread, g_iMostThreads);
    return std::max(std::min(static_cast<unsigned>(iPaid), std::thread::hardware_concurrency()), 1U);
}

class InverseStep::Shared {
public:
    Shared(const std::vector<Entity*>& entities, Pool& pool, unsigned iParts)
        : m_entities(entities),
          m_builders(iParts) {
        for (auto& pBuilder : m_builders) pBuilder = std::make_unique<Builder>(pool);
        for (auto& found : m_found)
            for (auto& row : found.rows) row.resize(iParts);
    }

    [[nodiscard]] bool boRun(util::Team& team, unsigned iPart) {
        if (team.iParts() == 1) {
            m_builders.front()->builder.vAdd(m_entities);
            m_builders.front()->builder.vFlush();
            return true;
        }
        const std::size_t iRounds = (m_entities.size() + g_iRound - 1) / g_iRound;
        for (std::size_t i = 0; i <= iRounds; ++i) {
            if (i > 0) vEnter(i - 1, iPart);
            if (i < iRounds) vFind(i, team.iParts());
            if (!team.boMeet(iPart)) return false;
        }
        return true;
    }

    [[nodiscard]] std::size_t iEntered() const noexcept {
        std::size_t iCount = 0;
        for (const auto& pBuilder : m_builders) iCount += pBuilder->builder.iEntered();
        return iCount;
    }

private:
    using References = std::vector<InverseBuilder::Reference>;
    struct Builder {
        explicit Builder(Pool& pool) : arena(pool), builder(pool, &arena) {}
        PoolArena arena;
        InverseBuilder builder;
    };
    // What was found in a round: of each row, by the thread that enters it.
    struct Found {
        std::array<std::vector<References>, g_iRows> rows;
        std::atomic<std::size_t> iTaken{0};   // rows
    };

    // Of as many instances as there are, from the n-th times iCount on.
    [[nodiscard]] std::span<Entity* const> instances(std::size_t n, std::size_t iCount) const noexcept {
        const std::size_t iFirst = std::min(n * iCount, m_entities.size());
        return std::span(m_entities).subspan(iFirst, std::min(iCount, m_entities.size() - iFirst));
    }

    // Whatever is to be told is told on the caller's thread and in the order of the instances: where a round has anything
    // of that kind in it, that thread does it and the rest alone.
    void vPlainFrom(std::size_t iRound) noexcept {
        std::size_t iFrom = m_iPlainFrom.load(std::memory_order_relaxed);
        while (iRound < iFrom && !m_iPlainFrom.compare_exchange_weak(iFrom, iRound, std::memory_order_relaxed)) {}
    }

    [[nodiscard]] bool boPlain(std::size_t iRound) const noexcept {
        return iRound >= m_iPlainFrom.load(std::memory_order_relaxed);
    }

    void vFind(std::size_t iRound, unsigned iParts) {
        Found& found = m_found[iRound % 2];
        const auto handler = Assert::getRegisteredForCurrentThread().registerHandler(
            [this, iRound](const AssertInfo&) { vPlainFrom(iRound); });
        for (;;) {
            if (boPlain(iRound)) return;
            const std::size_t iRow = found.iTaken.fetch_add(1, std::memory_order_relaxed);
            if (iRow >= g_iRows) return;
            try {
                InverseBuilder::vForEachReference(
                    instances(iRound * g_iRows + iRow, g_iRow), [&](const InverseBuilder::Reference& reference) {
                        const auto iAddress = reinterpret_cast<std::uintptr_t>(reference.pTarget);
                        found.rows[iRow][iAddress / g_iPartBytes % iParts].push_back(reference);
                    });
            } catch (...) {
                vPlainFrom(iRound);
            }
        }
    }

    // Nobody takes rows of this round any more, and none of the next but one yet.
    void vEnter(std::size_t iRound, unsigned iPart) {
        Found& found = m_found[iRound % 2];
        InverseBuilder& builder = m_builders[iPart]->builder;
        const bool boAlone = boPlain(iRound);
        if (iPart == 0) found.iTaken.store(0, std::memory_order_relaxed);
        if (boAlone && iPart == 0) builder.vAdd(instances(iRound, g_iRound));
        for (std::vector<References>& row : found.rows) {
            References& references = row[iPart];
            if (!boAlone)
                for (const InverseBuilder::Reference& reference : references) builder.vEnter(reference);
            references.clear();
        }
        builder.vFlush();
    }

    const std::vector<Entity*>& m_entities;
    std::vector<std::unique_ptr<Builder>> m_builders;   // one a part
    // While one round is entered, the next one is looked through.
    std::array<Found, 2> m_found;
    std::atomic<std::size_t> m_iPlainFrom{std::numeric_limits<std::size_t>::max()};   // rounds of the caller's thread
};

InverseStep::InverseStep(const std::vector<Entity*>& entities, Pool& pool, unsigned iThreads)
    : m_pShared(std::make_unique<Shared>(entities, pool, std::max(iThreads, 1U))) {}

InverseStep::~InverseStep() = default;

bool InverseStep::boRun(util::Team& team, unsigned iPart) { return m_pShared->boRun(team, iPart); }

std::size_t InverseStep::iEntered() const noexcept { return m_pShared->iEntered(); }

// The instances of a type go to one part of the list, in front of them those of all smaller ordinals. Types are few and
// their ordinals 16 bits wide, so they are counted into place: two passes, whatever their order, where comparing would
// follow pointers n log n times. Each thread counts a share of the list, and puts that share where the counts say, once all
// have kept aside what stands in theirs. The room for that is where a read has most in memory, so an address is kept in 32
// bits: the slots of a model mostly lie within 32 GiB.
SortStep::SortStep(std::vector<Entity*>& entities, unsigned iThreads)
    : m_entities(entities),
      m_pTable(memory::zeroedTable(entities.size() * (sizeof *m_pSteps + sizeof *m_pOrdinals))),
      m_pSteps(reinterpret_cast<std::uint32_t*>(m_pTable.get())),
      m_pOrdinals(reinterpret_cast<std::uint16_t*>(m_pSteps + entities.size())),
      m_parts(std::max(iThreads, 1U)) {}

bool SortStep::boRun(util::Team& team, unsigned iPart) {
    const Range range = share({0, m_entities.size()}, iPart, team.iParts());
    Part& part = m_parts[iPart];
    vCount(part, range.iFirst, range.iLast);
    vKeep(part, range.iFirst, range.iLast);
    if (!team.boMeet(iPart)) return false;
    if (iPart == 0) vPlace(team.iParts());
    if (!team.boMeet(iPart)) return false;
    vScatter(part, range.iFirst, range.iLast);
    return true;
}

void SortStep::vCount(Part& part, std::size_t iFirst, std::size_t iLast) {
    for (std::size_t i = iFirst; i < iLast; ++i) {
        const def::schema::Entity* pType = m_entities[i]->pSchemaEntity();
        const std::uint16_t iOrdinal = pType ? pType->iTypeOrdinal : m_entities[i]->schemaEntity().iTypeOrdinal;
        m_pOrdinals[i] = iOrdinal;
        // As many places as there are types up to the last one met: callers of small models sort often.
        if (iOrdinal >= part.places.size()) part.places.resize(std::size_t{iOrdinal} + 1);
        ++part.places[iOrdinal];
    }
}

void SortStep::vKeep(Part& part, std::size_t iFirst, std::size_t iLast) {
    const auto iAddress = [this](std::size_t i) { return reinterpret_cast<std::uintptr_t>(m_entities[i]); };
    std::uintptr_t iHighest = 0;
    part.iLowest = std::numeric_limits<std::uintptr_t>::max();
    for (std::size_t i = iFirst; i < iLast; ++i) {
        part.iLowest = std::min(part.iLowest, iAddress(i));
        iHighest = std::max(iHighest, iAddress(i));
    }
    if (iFirst < iLast && (iHighest - part.iLowest) / alignof(Entity) > std::numeric_limits<std::uint32_t>::max()) {
        part.apart.assign(&m_entities[iFirst], &m_entities[iFirst] + (iLast - iFirst));
        return;
    }
    for (std::size_t i = iFirst; i < iLast; ++i)
        m_pSteps[i] = static_cast<std::uint32_t>((iAddress(i) - part.iLowest) / alignof(Entity));
}

// From counts to places: of one type, the share of each thread stands behind those before it.
void SortStep::vPlace(unsigned iParts) noexcept {
    std::size_t iOrdinals = 0;
    for (const Part& part : m_parts) iOrdinals = std::max(iOrdinals, part.places.size());
    std::size_t iPlace = 0;
    for (std::size_t iOrdinal = 0; iOrdinal < iOrdinals; ++iOrdinal)
        for (unsigned i = 0; i < iParts; ++i)
            if (iOrdinal < m_parts[i].places.size()) iPlace += std::exchange(m_parts[i].places[iOrdinal], iPlace);
}

void SortStep::vScatter(Part& part, std::size_t iFirst, std::size_t iLast) noexcept {
    for (std::size_t i = iFirst; i < iLast; ++i)
        m_entities[part.places[m_pOrdinals[i]]++] =
            part.apart.empty() ? reinterpret_cast<Entity*>(part.iLowest + std::uintptr_t{m_pSteps[i]} * alignof(Entity))
                               : part.apart[i - iFirst];
}

std::size_t iInversesBuild(const std::vector<Entity*>& entities, Pool& pool, unsigned iThreads) {
    InverseStep step(entities, pool, iThreads);
    util::Team::vRun(iThreads, [&](util::Team& team, unsigned iPart) { static_cast<void>(step.boRun(team, iPart)); });
    return step.iEntered();
}

void vTypesSort(std::vector<Entity*>& entities, unsigned iThreads) {
    if (entities.size() < 2) return;
    SortStep step(entities, iThreads);
    util::Team::vRun(iThreads, [&](util::Team& team, unsigned iPart) { static_cast<void>(step.boRun(team, iPart)); });
}

}   // namespace oxa::ifc
