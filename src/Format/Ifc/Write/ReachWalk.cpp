// SPDX-License-Identifier: Apache-2.0
#include "Format/Ifc/Write/ReachWalk.h"

#include <algorithm>
#include <deque>
#include <iterator>
#include <mutex>

#include "Format/Ifc/Write/EntityNamed.h"
#include "Format/Ifc/Write/FetchAhead.h"
#include "platform/Compiler.h"

namespace oxa::ifc {

namespace {

constexpr std::size_t g_iTurns = 64;          // instances, between two looks for threads that wait
constexpr std::size_t g_iWorthGiving = 32;    // instances
constexpr std::size_t g_iShareLeast = 64;     // of the queue, where it has as many
constexpr std::size_t g_iShareMost = 8192;    // of the queue: small enough that the last ones end together
constexpr std::size_t g_iSharesAThread = 4;   // of the queue
constexpr unsigned g_iLooks = 4000;           // for work, before a sleep: some 0.1 ms

}   // namespace

void ReachWalk::vWalk(std::size_t iThreads) {
    Entities own;
    WalkNear near;
    while (boTake(own, iThreads)) vVisit(own, near);
}

// What an instance names comes behind it in the same list.
void ReachWalk::vVisit(Entities& own, WalkNear& near) {
    for (std::size_t i = 0; i < own.size(); ++i) {
        vFetchAhead<Entity::Wanted::Named>(own, i);
        own[i]->vForEachNamedEntity([&](const Entity& named) {
            if (!m_info.boNumberedCollect(named, own, near)) m_boAllNumbered.store(false, std::memory_order_relaxed);
        });
        if (i % g_iTurns == 0 && m_boWanted.load(std::memory_order_relaxed)) vGive(own, i + 1);
    }
    own.clear();
}

// The half that was found last.
void ReachWalk::vGive(Entities& own, std::size_t iNext) {
    const std::size_t iLeft = own.size() - iNext;
    if (iLeft < g_iWorthGiving) return;
    const auto half = own.end() - static_cast<std::ptrdiff_t>(iLeft / 2);
    const std::lock_guard lock(m_info.m_mutex);
    m_info.m_queue.insert(m_info.m_queue.end(), half, own.end());
    own.erase(half, own.end());
    m_boWanted.store(false, std::memory_order_relaxed);
    m_changed.notify_all();
}

// False: the walk has ended. It has when nobody has anything: only who walks can find more.
bool ReachWalk::boTake(Entities& own, std::size_t iThreads) {
    std::deque<const Entity*>& queue = m_info.m_queue;
    std::unique_lock lock(m_info.m_mutex);
    while (queue.empty() && !m_boDone) {
        if (++m_iWaiting == iThreads) {
            vEnd();
            return false;
        }
        m_boWanted.store(true, std::memory_order_relaxed);
        lock.unlock();
        for (unsigned i = 0; i < g_iLooks && m_boWanted.load(std::memory_order_relaxed); ++i) platform::vRelax();
        lock.lock();
        m_changed.wait(lock, [&] { return m_boDone || !queue.empty(); });
        --m_iWaiting;
    }
    if (m_boDone) return false;
    const std::size_t iShare =
        std::clamp(queue.size() / (iThreads * g_iSharesAThread), std::min(g_iShareLeast, queue.size()), g_iShareMost);
    const auto end = queue.begin() + static_cast<std::ptrdiff_t>(iShare);
    std::copy_if(queue.begin(), end, std::back_inserter(own), [](const Entity* pEntity) { return pEntity != nullptr; });
    queue.erase(queue.begin(), end);
    if (m_iWaiting > 0) m_boWanted.store(true, std::memory_order_relaxed);
    return true;
}

void ReachWalk::vStop() {
    const std::lock_guard lock(m_info.m_mutex);
    vEnd();
}

// Under the lock.
void ReachWalk::vEnd() {
    m_boDone = true;
    m_boWanted.store(false, std::memory_order_relaxed);
    m_changed.notify_all();
}

}   // namespace oxa::ifc
