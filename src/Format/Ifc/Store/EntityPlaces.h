// SPDX-License-Identifier: Apache-2.0
// EntityPlaces: instances in the order in which they came, each found by its address.
//
// For      EntityIdMap, inside this folder: the instances that no file has numbered.
// Shape    a list of addresses and a hash table of places in it, with open addressing: 16 to 24 bytes an instance, where
//          a table of nodes takes 40 and a call of the heap for each. Nothing is ever taken out.
// Speed    instances that stand beside each other in memory have their places beside each other in the table: eight
//          share half a cache line of it.
// Threads  any number may search; whoever enters is alone.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <utility>
#include <vector>

#include "Format/Ifc/Memory/ZeroedBytes.h"

namespace oxa::ifc {

class Entity;

class EntityPlaces {
public:
    static constexpr std::uint32_t g_iNone = std::numeric_limits<std::uint32_t>::max();

    EntityPlaces() = default;

    // Room for that many. Throws std::bad_alloc, and is then unchanged, as with all below.
    void vReserve(std::size_t iCount) {
        m_entities.reserve(iCount);
        if (iCount > iRoom()) vRehash(iCount);
    }
    // g_iNone for an instance that did not come yet.
    [[nodiscard]] std::uint32_t iFind(const Entity* pEntity) const noexcept {
        return m_iMask ? pSlots()[iSlotOf(pEntity)] - 1 : g_iNone;   // a free slot is 0
    }
    // Its place, and whether it is new.
    std::pair<std::uint32_t, bool> enter(const Entity* pEntity) {
        if (const std::uint32_t iPlace = iFind(pEntity); iPlace != g_iNone) return {iPlace, false};
        if (m_entities.size() >= g_iNone - 1) throw std::length_error("more instances than numbers of 32 bits");
        if (m_entities.size() >= iRoom()) vRehash(std::max<std::size_t>(2 * m_entities.size(), 8));
        m_entities.push_back(pEntity);
        const auto iPlace = static_cast<std::uint32_t>(m_entities.size() - 1);
        pSlots()[iSlotOf(pEntity)] = iPlace + 1;
        return {iPlace, true};
    }
    // There is one at that place.
    [[nodiscard]] const Entity* pAt(std::size_t iPlace) const noexcept { return m_entities[iPlace]; }
    [[nodiscard]] std::size_t size() const noexcept { return m_entities.size(); }

private:
    [[nodiscard]] std::uint32_t* pSlots() const noexcept { return reinterpret_cast<std::uint32_t*>(m_pSlots.get()); }
    // Half of the slots stay free, so that a search ends soon.
    [[nodiscard]] std::size_t iRoom() const noexcept { return m_iMask ? (m_iMask + 1) / 2 : 0; }

    // Where the instance is, or where it would go.
    [[nodiscard]] std::size_t iSlotOf(const Entity* pEntity) const noexcept {
        const auto uAddress = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(pEntity));
        const std::uint64_t uGroup = (uAddress >> 8) * 0x9E3779B97F4A7C15U >> 32;   // by Fibonacci's ratio
        const std::uint32_t* const p = pSlots();
        std::size_t i = (uGroup * 8 + (uAddress >> 5) % 8) & m_iMask;
        while (p[i] && m_entities[p[i] - 1] != pEntity) i = (i + 1) & m_iMask;
        return i;
    }

    void vRehash(std::size_t iCount) {
        const std::size_t iSlots = std::bit_ceil(2 * iCount);
        m_pSlots = memory::zeroedTable(iSlots * sizeof(std::uint32_t));
        m_iMask = iSlots - 1;
        for (std::size_t i = 0; i < m_entities.size(); ++i)
            pSlots()[iSlotOf(m_entities[i])] = static_cast<std::uint32_t>(i + 1);
    }

    std::vector<const Entity*> m_entities;
    memory::ZeroedBytes m_pSlots;   // numbers of 32 bits: a place plus 1, or 0
    std::size_t m_iMask = 0;        // slots minus 1; 0 while there are none
};

}   // namespace oxa::ifc
