// SPDX-License-Identifier: Apache-2.0
// The threads of a team start one by one and wait for the last: only then it is known how many parts there are.
#include "Core/Utilities/Threads/Team.h"

#include <algorithm>
#include <memory>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

namespace oxa::util {

// Who has thrown comes to no further meeting: the others must not wait for it.
void Team::vPart(const Work& work, unsigned iPart) noexcept {
    try {
        work(*this, iPart);
    } catch (...) {
        const std::lock_guard lock(m_mutex);
        if (!m_pFault) m_pFault = std::current_exception();
        m_boFailed.store(true, std::memory_order_relaxed);
    }
    m_barrier.arrive_and_drop();
}

void Team::vRun(unsigned iThreads, const Work& work) {
    std::unique_ptr<Team> pTeam;
    std::atomic<bool> boReady{false};
    std::vector<std::thread> threads;
    threads.reserve(std::max(iThreads, 1U) - 1);
    try {
        while (threads.size() + 1 < iThreads)
            threads.emplace_back([&, iPart = static_cast<unsigned>(threads.size()) + 1] {
                boReady.wait(false);
                if (pTeam) pTeam->vPart(work, iPart);
            });
    } catch (const std::system_error&) {
        // There are no more threads to be had.
    } catch (const std::bad_alloc&) {
        // Nor memory for one.
    }
    std::exception_ptr pFault;
    try {
        pTeam.reset(new Team(static_cast<unsigned>(threads.size()) + 1));
    } catch (...) {
        pFault = std::current_exception();
    }
    boReady = true;
    boReady.notify_all();
    if (pTeam) pTeam->vPart(work, 0);
    for (std::thread& thread : threads) thread.join();
    if (pTeam) pFault = pTeam->m_pFault;
    if (pFault) std::rethrow_exception(pFault);
}

}   // namespace oxa::util
