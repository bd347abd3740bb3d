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
#include <utility>

#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/Write/WriteContext.h"
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

// Takes what waits in the list of a walk of one thread, in its order, and calls visit(const Entity*) for each.
template <Entity::Wanted eWanted, class Visit>
void vForEachListed(WriteInfoCommon& info, Visit&& visit) {
    const auto listed = std::exchange(info.m_listed, {});
    for (std::size_t i = 0; i < listed.size(); ++i) {
        vFetchAhead<eWanted>(listed, i);
        visit(static_cast<const Entity*>(listed[i]));
    }
}

// The same with all that waits, and that the visits may queue, null included. The next ones of the queue wait in a ring, of
// which the walk knows nothing any more.
template <Entity::Wanted eWanted, class Visit>
void vForEachQueued(WriteInfoCommon& info, Visit&& visit) {
    vForEachListed<eWanted>(info, visit);
    std::deque<const Entity*>& queue = info.m_queue;
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
