// SPDX-License-Identifier: Apache-2.0
// Settle: what a model needs once all its statements are in: inverse lists, and the order of types.
//
// For      the completion of a read, whose steps are done by one team after each other; the sort serves later changes, too.
// Threads  as many as the caller allows; the result is the same for any number of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "Format/Ifc/Memory/SimplePool.h"
#include "Format/Ifc/Memory/ZeroedBytes.h"

namespace oxa::util {
class Team;
}   // namespace oxa::util

namespace oxa::ifc {

class Entity;

// As many threads as pay for that many instances, where the caller may take several.
[[nodiscard]] unsigned iThreadsToSettle(std::size_t iEntities) noexcept;

// Inverse lists: announces each instance, in their order, to everything that it refers to. What stands in the list must
// not change meanwhile.
class InverseStep {
public:
    // For a team of up to iThreads; the list and the pool must outlive it.
    InverseStep(const std::vector<Entity*>& entities, Pool& pool, unsigned iThreads);
    ~InverseStep();
    InverseStep(const InverseStep&) = delete;
    InverseStep& operator=(const InverseStep&) = delete;

    // A thread's part. False when another one has thrown. Throws and asserts as InverseBuilder does, on the first thread.
    [[nodiscard]] bool boRun(util::Team& team, unsigned iPart);
    // The number of entries that this made, once all parts are through.
    [[nodiscard]] std::size_t iEntered() const noexcept;

private:
    class Shared;
    std::unique_ptr<Shared> m_pShared;
};

// Order: puts the instances in the order of their types; those of one type keep theirs.
class SortStep {
public:
    // For a team of up to iThreads; the list must outlive it. Throws std::bad_alloc.
    SortStep(std::vector<Entity*>& entities, unsigned iThreads);

    // A thread's part. False when another one has thrown. Throws MissingType for an empty instance, and std::bad_alloc; the
    // list is then as it was.
    [[nodiscard]] bool boRun(util::Team& team, unsigned iPart);

private:
    // A share of the list.
    struct Part {
        std::uintptr_t iLowest = 0;        // address of its instances
        std::vector<Entity*> apart;        // those of a share that lie too far from each other
        std::vector<std::size_t> places;   // by ordinal: first counts, then the next place
    };

    void vCount(Part& part, std::size_t iFirst, std::size_t iLast);
    void vKeep(Part& part, std::size_t iFirst, std::size_t iLast);
    void vPlace(unsigned iParts) noexcept;
    void vScatter(Part& part, std::size_t iFirst, std::size_t iLast) noexcept;

    std::vector<Entity*>& m_entities;
    memory::ZeroedBytes m_pTable;
    std::uint32_t* m_pSteps;      // of the instances, in their order: from the lowest address of the share
    std::uint16_t* m_pOrdinals;   // of their types
    std::vector<Part> m_parts;
};

///@{
// The same by a team of its own.
std::size_t iInversesBuild(const std::vector<Entity*>& entities, Pool& pool, unsigned iThreads);
void vTypesSort(std::vector<Entity*>& entities, unsigned iThreads);
///@}

}   // namespace oxa::ifc
