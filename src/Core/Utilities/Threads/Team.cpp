// SPDX-License-Identifier: Apache-2.0
// The threads of a team start one by one and wait for the last: only then it is known how many parts there are.
#include "Core/Utilities/Threads/Team.h"

#include <algorithm>
#include <memory>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

#include "platform/Compiler.h"
#include "platform/Seats.h"

namespace oxa::util {

namespace {

constexpr unsigned g_iLooks = 4000;   // for the others, before a sleep: some 0.1 ms

}   // namespace

// By a condition: std::barrier and the waits of atomics sleep for ever now and then where g++'s library has no futex, which
// is so on Windows: they look at the value, and then lock. The others mostly come soon, and to be woken takes longer than
// to look for them a while.
bool Team::boMeet(unsigned iPart) {
    std::unique_lock lock(m_mutex);
    if (++m_iWaiting == m_iAtWork) {
        vMeetingEnd();
        return !m_pFault;
    }
    const auto boEnded = [this, iMeetings = m_iMeetings.load()] { return m_iMeetings.load() != iMeetings; };
    lock.unlock();
    for (unsigned i = 0; i < g_iLooks && !boEnded(); ++i) platform::vRelax();
    lock.lock();
    if (!boEnded()) {
        m_met.wait(lock, boEnded);
        m_seats.vTake(iPart);
    }
    return !m_pFault;
}

// With m_mutex.
void Team::vMeetingEnd() {
    m_iWaiting = 0;
    ++m_iMeetings;
    m_met.notify_all();
}

// Who has thrown comes to no further meeting: the others must not wait for it.
void Team::vPart(const Work& work, unsigned iPart) noexcept {
    std::exception_ptr pFault;
    try {
        work(*this, iPart);
    } catch (...) {
        pFault = std::current_exception();
    }
    const std::lock_guard lock(m_mutex);
    if (!m_pFault) m_pFault = pFault;
    if (--m_iAtWork == m_iWaiting && m_iWaiting > 0) vMeetingEnd();
}

void Team::vRun(unsigned iThreads, const Work& work) {
    platform::Seats seats(std::max(iThreads, 1U));
    std::unique_ptr<Team> pTeam;
    std::mutex mutex;
    std::condition_variable started;
    std::atomic<bool> boReady{false};   // set under the mutex
    std::vector<std::thread> threads;
    threads.reserve(std::max(iThreads, 1U) - 1);
    seats.vTake(0);
    try {
        while (threads.size() + 1 < iThreads)
            threads.emplace_back([&, iPart = static_cast<unsigned>(threads.size()) + 1] {
                seats.vTake(iPart);
                for (unsigned i = 0; i < g_iLooks && !boReady.load(); ++i) platform::vRelax();
                if (!boReady.load()) {
                    std::unique_lock lock(mutex);
                    started.wait(lock, [&boReady] { return boReady.load(); });
                }
                if (pTeam) pTeam->vPart(work, iPart);
            });
    } catch (const std::system_error&) {
        // There are no more threads to be had.
    } catch (const std::bad_alloc&) {
        // Nor memory for one.
    }
    std::exception_ptr pFault;
    try {
        seats.vAwait();
        pTeam.reset(new Team(static_cast<unsigned>(threads.size()) + 1, seats));
    } catch (...) {
        pFault = std::current_exception();
    }
    {
        const std::lock_guard lock(mutex);
        boReady = true;
    }
    started.notify_all();
    if (pTeam) pTeam->vPart(work, 0);
    for (std::thread& thread : threads) thread.join();
    if (pTeam) pFault = pTeam->m_pFault;
    if (pFault) std::rethrow_exception(pFault);
}

}   // namespace oxa::util
