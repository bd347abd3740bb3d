// SPDX-License-Identifier: Apache-2.0
// FetchAhead: has the processor fetch what the instances behind the one in hand are read from.
//
// For      the walks, whose instances lie anywhere in memory: without it each of them waits for its slot, then for its
//          values.
// Shape    the instance some places ahead has its slot fetched, one that is nearer, whose slot has come by then, its
//          values, and one that is nearer still what these lead to.
#pragma once

#include <array>
#include <cstddef>
#include <deque>

#include "Format/Ifc/IfcFileEntity.h"
#include "platform/Compiler.h"

namespace oxa::ifc {

inline constexpr std::size_t g_iFetchSlot = 20;
inline constexpr std::size_t g_iFetchValues = 12;
inline constexpr std::size_t g_iFetchOutside = 5;

// Of a list, beside the instance at that place. None is null.
template <Entity::Wanted eWanted, class Entities>
inline void vFetchAhead(const Entities& entities, std::size_t iPlace) {
    if (entities.size() - iPlace <= g_iFetchSlot) return;
    platform::vFetchToRead(entities[iPlace + g_iFetchSlot]);
    entities[iPlace + g_iFetchValues]->vFetchValues();
    entities[iPlace + g_iFetchOutside]->vFetchOutside(eWanted);
}

// Takes all from a queue, in its order, and calls visit(const Entity*) for each, null included; that may put more at its
// end. The next ones wait in a ring, of which the queue knows nothing any more.
template <Entity::Wanted eWanted, class Visit>
void vForEachQueued(std::deque<const Entity*>& queue, Visit&& visit) {
    std::array<const Entity*, 32> ring;
    static_assert(g_iFetchSlot <= ring.size());
    std::size_t iNext = 0;     // the one in hand, counted from the first
    std::size_t iBehind = 0;   // behind the last one in the ring
    for (;;) {
        for (; iBehind - iNext < g_iFetchSlot && !queue.empty(); ++iBehind) {
            const Entity* pEntity = queue.front();
            queue.pop_front();
            platform::vFetchToRead(pEntity);
            ring[iBehind % ring.size()] = pEntity;
        }
        if (iNext == iBehind) return;
        const auto ahead = [&](std::size_t i) {
            return iBehind - iNext > i ? ring[(iNext + i) % ring.size()] : nullptr;
        };
        if (const Entity* pEntity = ahead(g_iFetchValues)) pEntity->vFetchValues();
        if (const Entity* pEntity = ahead(g_iFetchOutside)) pEntity->vFetchOutside(eWanted);
        visit(ring[iNext++ % ring.size()]);
    }
}

}   // namespace oxa::ifc
