// SPDX-License-Identifier: Apache-2.0
// Team: one piece of work on several threads at once, the caller's among them, which may wait for each other in between.
//
// For      work that falls into parts of about the same size, as the completion of a read does.
// Threads  they live for one call. Where the system has fewer to give, the team is smaller, down to the caller alone.
// Errors   what the work throws on any thread reaches the caller, once all threads have ended; of several the first.
#pragma once

#include <atomic>
#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>

#include "platform/Export.h"

namespace oxa::platform {
class Seats;
}   // namespace oxa::platform

namespace oxa::util {

class OXA_PLATFORM_API Team {
public:
    // Called on each thread with the part that is its own, from 0 (the caller's) to below iParts().
    using Work = std::function<void(Team& team, unsigned iPart)>;

    // Runs the work on up to that many threads, and returns when it has ended on all of them.
    static void vRun(unsigned iThreads, const Work& work);

    Team(const Team&) = delete;
    Team& operator=(const Team&) = delete;

    [[nodiscard]] unsigned iParts() const noexcept { return m_iParts; }
    // Waits until every thread has come here: what they wrote before is visible to all behind. False when one has thrown:
    // the work cannot be finished, and is to return. All threads have to come as often as each other. iPart is the caller's.
    [[nodiscard]] bool boMeet(unsigned iPart);

private:
    Team(unsigned iParts, platform::Seats& seats) : m_iParts(iParts), m_seats(seats), m_iAtWork(iParts) {}
    void vPart(const Work& work, unsigned iPart) noexcept;
    void vMeetingEnd();

    const unsigned m_iParts;
    platform::Seats& m_seats;
    std::mutex m_mutex;
    std::condition_variable m_met;
    unsigned m_iAtWork;   // parts that have not ended; guarded by m_mutex, as the rest
    unsigned m_iWaiting = 0;
    std::atomic<unsigned> m_iMeetings{0};   // that have ended; looked at without the lock, too
    std::exception_ptr m_pFault;            // the first
};

}   // namespace oxa::util
