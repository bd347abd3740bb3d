// SPDX-License-Identifier: Apache-2.0
// Entities that no file has numbered are in a hash table; the others are computed from the address, so after
// a read that keeps its numbers the table stays empty until new entities come.
#include "Format/Ifc/Store/EntityIdMap.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <mutex>

#include "Format/Ifc/Store/EntityPlaces.h"
#include "Format/Ifc/Store/EntityTable.h"
#include "Format/Ifc/Store/SeenNumbers.h"

namespace oxa::ifc {

namespace {

// An Entity of a table is the first member of its slot; of any other only the address is used.
const EntitySlot* pAsSlot(const Entity* pEntity) noexcept { return reinterpret_cast<const EntitySlot*>(pEntity); }

}   // namespace

struct EntityIdMap::Dealt {
    EntityPlaces places;
    std::vector<std::size_t> numbers;   // by place; they rise, since each is above all that were dealt before it

    // Empty for an entity that has none.
    [[nodiscard]] std::optional<Number> find(const Entity* pEntity) const {
        const std::uint32_t iPlace = places.iFind(pEntity);
        if (iPlace == EntityPlaces::g_iNone) return std::nullopt;
        return Number{numbers[iPlace], false, false, iPlace};
    }
};

EntityIdMap::EntityIdMap(std::size_t iExpected) : m_pDealt(std::make_unique<Dealt>()) {
    m_pDealt->places.vReserve(iExpected);
    m_pDealt->numbers.reserve(iExpected);
}

EntityIdMap::~EntityIdMap() = default;

// The chunk that the entity is a defined slot of; null when there is none.
const EntityIdMap::SeededChunk* EntityIdMap::pSeededChunk(const Entity* pEntity) const noexcept {
    static_assert(sizeof(EntitySlot) == g_iSlotBytes);
    const auto behind = m_byAddress.upper_bound(pAsSlot(pEntity));
    if (behind == m_byAddress.begin()) return nullptr;
    const SeededChunk& chunk = std::prev(behind)->second;
    return chunk.iSlotOf(pEntity) < g_iSlots ? &chunk : nullptr;
}

std::optional<std::size_t> EntityIdMap::find(const Entity* pEntity) const {
    if (const SeededChunk* pChunk = pSeededChunk(pEntity)) return pChunk->iFirstId + pChunk->iSlotOf(pEntity);
    const std::shared_lock lock(m_lock);
    const std::optional<Number> dealt = m_pDealt->find(pEntity);
    return dealt ? std::optional(dealt->iId) : std::nullopt;
}

// Where "near" does not help. A chunk is remembered in "near" only when its numbers have 32 bits: that is what its
// short path promises of every number that it returns.
std::optional<EntityIdMap::Number> EntityIdMap::seededFar(const Entity* pEntity, Near& near) const noexcept {
    const SeededChunk* pChunk = pSeededChunk(pEntity);
    if (!pChunk) return std::nullopt;
    const bool boDense = pChunk->iFirstId <= std::numeric_limits<std::uint32_t>::max();
    if (boDense) near.m_pChunk = pChunk;
    return Number{pChunk->iFirstId + pChunk->iSlotOf(pEntity), false, boDense};
}

std::optional<EntityIdMap::Number> EntityIdMap::knownFar(const Entity* pEntity, Near& near) const {
    if (const std::optional<Number> seeded = seededFar(pEntity, near)) return seeded;
    const std::shared_lock lock(m_lock);
    return m_pDealt->find(pEntity);
}

EntityIdMap::Number EntityIdMap::settledFar(const Entity* pEntity, Near& near) {
    if (const std::optional<Number> seeded = seededFar(pEntity, near)) return *seeded;
    const std::optional<Number> dealt = m_pDealt->find(pEntity);
    return dealt ? *dealt : dealtNew(pEntity);
}

EntityIdMap::Number EntityIdMap::numberFar(const Entity* pEntity, Near& near) {
    const std::optional<Number> known = knownFar(pEntity, near);
    return known ? *known : dealtNew(pEntity);
}

// A number for an entity that had none a moment ago.
EntityIdMap::Number EntityIdMap::dealtNew(const Entity* pEntity) {
    const std::unique_lock lock(m_lock);
    std::vector<std::size_t>& numbers = m_pDealt->numbers;
    numbers.push_back(m_iAbove + m_iSeeded + m_pDealt->places.size() + 1);   // memory first: both get it, or none
    std::pair<std::uint32_t, bool> entered{0, false};
    try {
        entered = m_pDealt->places.enter(pEntity);
    } catch (...) {
        numbers.pop_back();
        throw;
    }
    if (!entered.second) numbers.pop_back();   // another thread was faster
    return {numbers[entered.first], entered.second, false, entered.first};
}

std::pair<std::size_t, bool> EntityIdMap::get(const Entity* pEntity) {
    Near near;
    const Number dealt = number(pEntity, near);
    return {dealt.iId, dealt.boNew};
}

const Entity* EntityIdMap::pSeededFromId(std::size_t iId) const {
    const auto found = m_byNumber.find(iId - iId % g_iSlots);
    if (found == m_byNumber.end() || !found->second->defined[iId % g_iSlots]) return nullptr;
    return &found->second->pFirst[iId % g_iSlots].entity;
}

void EntityIdMap::vSeed(const EntitySlot* pFirst, std::size_t iFirstId, const Defined& defined) {
    SeededChunk& chunk = m_byAddress.try_emplace(pFirst, SeededChunk{pFirst, iFirstId, {}}).first->second;
    m_byNumber.try_emplace(iFirstId, &chunk);
    m_iSeeded += (defined & ~chunk.defined).count();
    chunk.defined |= defined;
}

// From the end of each chunk to its last defined slot: no number is kept that every seeding would have to keep up to
// date.
std::size_t EntityIdMap::iHighest() const {
    std::size_t iHighest = 0;
    for (const auto& [pFirst, chunk] : m_byAddress) {
        if (chunk.iFirstId + g_iSlots <= iHighest) continue;
        std::size_t iSlot = g_iSlots;
        while (iSlot > 0 && !chunk.defined[iSlot - 1]) --iSlot;
        if (iSlot > 0) iHighest = std::max(iHighest, chunk.iFirstId + iSlot - 1);
    }
    const std::shared_lock lock(m_lock);
    return m_pDealt->numbers.empty() ? iHighest : std::max(iHighest, m_pDealt->numbers.back());
}

// A dealt number is m_iAbove + count + 1, and count grows by one with each, so that numbers go on without a gap. By
// rule m_iAbove is 0: in a map that was seeded from a file with gaps such a number may be another instance's. From here
// on it is highest - count, so that the next number is highest + 1.
void EntityIdMap::vDealAbove() {
    // Where the only number is 0 this wraps around, and the sum with the count wraps back.
    m_iAbove = iHighest() - size();
}

std::vector<const Entity*> EntityIdMap::seededOf(const SeenNumbers& seen) const {
    std::vector<const Entity*> entities;
    entities.reserve(seen.iCount());
    const SeededChunk* pChunk = nullptr;
    seen.vForEach([&](std::uint32_t iId) {
        if (!pChunk || pChunk->iFirstId != iId - iId % g_iSlots) pChunk = m_byNumber.at(iId - iId % g_iSlots);
        entities.push_back(&pChunk->pFirst[iId % g_iSlots].entity);
    });
    return entities;
}

std::vector<std::pair<std::size_t, const Entity*>> EntityIdMap::dealtOf(const SeenNumbers& seen) const {
    std::vector<std::pair<std::size_t, const Entity*>> entities;
    const std::shared_lock lock(m_lock);
    seen.vForEach(
        [&](std::uint32_t iPlace) { entities.emplace_back(m_pDealt->numbers[iPlace], m_pDealt->places.pAt(iPlace)); });
    return entities;
}

std::size_t EntityIdMap::size() const {
    const std::shared_lock lock(m_lock);
    return m_iSeeded + m_pDealt->places.size();
}

}   // namespace oxa::ifc
