// SPDX-License-Identifier: Apache-2.0
// Settle: what a model needs once all its statements are in: inverse lists, and the order of types.
//
// For      the completion of a read; the sort serves later changes, too.
// Threads  as many as the caller allows; the result is the same for any number of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Format/Ifc/Memory/SimplePool.h"

namespace oxa::ifc {

class Entity;

// As many threads as pay for that many instances, where the caller may take several.
[[nodiscard]] unsigned iThreadsToSettle(std::size_t iEntities) noexcept;

// Announces each instance, in their order, to everything that it refers to, and gives the number of entries that this
// makes. Throws and asserts as InverseBuilder does, on this thread.
std::size_t iInversesBuild(const std::vector<Entity*>& entities, Pool& pool, unsigned iThreads);

// Puts the instances in the order of their types; those of one type keep theirs. Throws MissingType for an empty one,
// and is then without effect, as for a lack of memory.
void vTypesSort(std::vector<Entity*>& entities, unsigned iThreads);

}   // namespace oxa::ifc
