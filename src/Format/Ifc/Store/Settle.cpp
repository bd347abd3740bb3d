// SPDX-License-Identifier: Apache-2.0
// On several threads the inverse lists are made in rounds of some thousand instances. In each the instances are shared out
// to look for references, which are put down by the part of the memory that their target stands in; in the next one each
// part is entered by one thread, in the order of the instances. So every list is written by one thread, in the order that
// a single thread would have, and no lock is needed.
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

constexpr std::size_t g_iRound = 16384;           // instances of a round
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

class SharedInverses {
public:
    SharedInverses(const std::vector<Entity*>& entities, Pool& pool, unsigned iParts)
        : m_entities(entities),
          m_builders(iParts),
          m_found(iParts) {
        for (auto& pBuilder : m_builders) pBuilder = std::make_unique<Builder>(pool);
        for (auto& found : m_found)
            for (auto& round : found.rounds) round.resize(iParts);
    }

    void vRun(util::Team& team, unsigned iPart) {
        const std::size_t iRounds = (m_entities.size() + g_iRound - 1) / g_iRound;
        for (std::size_t i = 0; i <= iRounds; ++i) {
            if (i > 0) vEnter(i - 1, iPart, team.iParts());
            if (i < iRounds) vFind(i, iPart, team.iParts());
            if (!team.boMeet(iPart)) return;
        }
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
    // What a thread has found, by the thread that enters it. While one round is entered, the next one is looked through.
    struct Found {
        std::array<std::vector<References>, 2> rounds;
    };

    [[nodiscard]] Range round(std::size_t iRound) const noexcept {
        return {iRound * g_iRound, std::min((iRound + 1) * g_iRound, m_entities.size())};
    }

    [[nodiscard]] std::span<Entity* const> row(const Range& range) const noexcept {
        return std::span(m_entities).subspan(range.iFirst, range.iLast - range.iFirst);
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

    void vFind(std::size_t iRound, unsigned iPart, unsigned iParts) {
        if (boPlain(iRound)) return;
        std::vector<References>& found = m_found[iPart].rounds[iRound % 2];
        const auto handler = Assert::getRegisteredForCurrentThread().registerHandler(
            [this, iRound](const AssertInfo&) { vPlainFrom(iRound); });
        const Range range = share(round(iRound), iPart, iParts);
        try {
            InverseBuilder::vForEachReference(row(range), [&](const InverseBuilder::Reference& reference) {
                const auto iAddress = reinterpret_cast<std::uintptr_t>(reference.pTarget);
                found[iAddress / g_iPartBytes % iParts].push_back(reference);
            });
        } catch (...) {
            vPlainFrom(iRound);
        }
    }

    void vEnter(std::size_t iRound, unsigned iPart, unsigned iParts) {
        InverseBuilder& builder = m_builders[iPart]->builder;
        const bool boAlone = boPlain(iRound);
        if (boAlone && iPart == 0) builder.vAdd(row(round(iRound)));
        for (unsigned iFrom = 0; iFrom < iParts; ++iFrom) {
            References& references = m_found[iFrom].rounds[iRound % 2][iPart];
            if (!boAlone)
                for (const InverseBuilder::Reference& reference : references) builder.vEnter(reference);
            references.clear();
        }
        builder.vFlush();
    }

    const std::vector<Entity*>& m_entities;
    std::vector<std::unique_ptr<Builder>> m_builders;                                 // one a part
    std::vector<Found> m_found;                                                       // by the thread that found it
    std::atomic<std::size_t> m_iPlainFrom{std::numeric_limits<std::size_t>::max()};   // rounds of the caller's thread
};

// The instances of a type go to one part of the list, in front of them those of all smaller ordinals. Types are few and
// their ordinals 16 bits wide, so they are counted into place: two passes, whatever their order, where comparing would
// follow pointers n log n times. Each thread counts a share of the list, and puts that share where the counts say, in a new
// list without the room that the old one had grown by.
class TypeSort {
public:
    TypeSort(std::vector<Entity*>& entities, unsigned iParts)
        : m_entities(entities),
          m_pOrdinals(std::make_unique_for_overwrite<std::uint16_t[]>(entities.size())),
          m_places(iParts) {
        memory::vFillSoon(m_pOrdinals.get(), entities.size() * sizeof m_pOrdinals[0]);
        m_sorted.reserve(entities.size());
        memory::vFillSoon(m_sorted.data(), entities.size() * sizeof(Entity*));
        m_sorted.resize(entities.size());
    }

    void vRun(util::Team& team, unsigned iPart) {
        const Range range = share({0, m_entities.size()}, iPart, team.iParts());
        std::vector<std::size_t>& places = m_places[iPart];
        for (std::size_t i = range.iFirst; i < range.iLast; ++i) {
            const def::schema::Entity* pType = m_entities[i]->pSchemaEntity();
            const std::uint16_t iOrdinal = pType ? pType->iTypeOrdinal : m_entities[i]->schemaEntity().iTypeOrdinal;
            m_pOrdinals[i] = iOrdinal;
            // As many places as there are types up to the last one met: callers of small models sort often.
            if (iOrdinal >= places.size()) places.resize(std::size_t{iOrdinal} + 1);
            ++places[iOrdinal];
        }
        if (!team.boMeet(iPart)) return;
        if (iPart == 0) vPlace(team.iParts());
        if (!team.boMeet(iPart)) return;
        for (std::size_t i = range.iFirst; i < range.iLast; ++i) m_sorted[places[m_pOrdinals[i]]++] = m_entities[i];
    }
    // Once all threads are through.
    void vTake() noexcept { m_entities.swap(m_sorted); }

private:
    // From counts to places: of one type, the share of each thread stands behind those before it.
    void vPlace(unsigned iParts) {
        std::size_t iOrdinals = 0;
        for (const auto& places : m_places) iOrdinals = std::max(iOrdinals, places.size());
        std::size_t iPlace = 0;
        for (std::size_t iOrdinal = 0; iOrdinal < iOrdinals; ++iOrdinal)
            for (unsigned i = 0; i < iParts; ++i)
                if (iOrdinal < m_places[i].size()) iPlace += std::exchange(m_places[i][iOrdinal], iPlace);
    }

    std::vector<Entity*>& m_entities;
    std::unique_ptr<std::uint16_t[]> m_pOrdinals;   // of the instances, in their order
    std::vector<Entity*> m_sorted;
    std::vector<std::vector<std::size_t>> m_places;   // by thread and ordinal: first counts, then the next place
};

}   // namespace

unsigned iThreadsToSettle(std::size_t iEntities) noexcept {
    const std::size_t iPaid = std::min<std::size_t>(iEntities / g_iPerThread, g_iMostThreads);
    return std::max(std::min(static_cast<unsigned>(iPaid), std::thread::hardware_concurrency()), 1U);
}

std::size_t iInversesBuild(const std::vector<Entity*>& entities, Pool& pool, unsigned iThreads) {
    if (iThreads <= 1) {
        PoolArena arena(pool);
        InverseBuilder builder(pool, &arena);
        builder.vAdd(entities);
        builder.vFlush();
        return builder.iEntered();
    }
    SharedInverses inverses(entities, pool, iThreads);
    util::Team::vRun(iThreads, [&](util::Team& team, unsigned iPart) { inverses.vRun(team, iPart); });
    return inverses.iEntered();
}

void vTypesSort(std::vector<Entity*>& entities, unsigned iThreads) {
    if (entities.size() < 2) return;
    TypeSort sort(entities, iThreads);
    util::Team::vRun(iThreads, [&](util::Team& team, unsigned iPart) { sort.vRun(team, iPart); });
    sort.vTake();
}

}   // namespace oxa::ifc
