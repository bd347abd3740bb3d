// SPDX-License-Identifier: Apache-2.0
// ReachWalk: several threads meet what the queue of a write leads to, without composing it.
//
// For      writes in an order, which have to know all instances before the first statement.
// Shape    each thread walks on from its own part of the queue and keeps what it finds: instances that stand near each
//          other stay with one thread, and there is no lock but where a thread has run out of them. Then another one that
//          has many gives half of its own.
// Threads  as many as call vWalk; which instances are met does not depend on them.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <vector>

#include "Format/Ifc/Write/WriteContext.h"

namespace oxa::ifc {

class ReachWalk {
public:
    // The walk from the queue of "info", which nobody else touches until it has ended.
    explicit ReachWalk(StepWriteInfoCommon& info) noexcept : m_info(info) {}

    // The work of one of so many threads; returns when all of them have nothing left. What it throws, std::bad_alloc, the
    // others do not know of: vStop is due.
    void vWalk(std::size_t iThreads);
    // Ends it where it stands, from any thread.
    void vStop();
    // Whether all that was named has a number. What has none was not met. Once the walk has ended.
    [[nodiscard]] bool boAllNumbered() const noexcept { return m_boAllNumbered.load(std::memory_order_relaxed); }

private:
    using Entities = std::vector<const Entity*>;

    void vVisit(Entities& own, WalkNear& nearby);
    void vGive(Entities& own, std::size_t iNext);
    bool boTake(Entities& own, std::size_t iThreads);
    void vEnd();

    StepWriteInfoCommon& m_info;   // its lock guards its queue and what follows
    std::size_t m_iWaiting = 0;
    bool m_boDone = false;
    std::condition_variable m_changed;     // the queue has grown, or the walk has ended
    std::atomic<bool> m_boWanted{false};   // a thread waits; looked at without the lock, too
    std::atomic<bool> m_boAllNumbered{true};
};

}   // namespace oxa::ifc
