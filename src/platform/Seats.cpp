// SPDX-License-Identifier: Apache-2.0
#include "platform/Seats.h"

#include <algorithm>
#include <thread>

#include "platform/System.h"

namespace oxa::platform {

namespace {

constexpr unsigned g_iTurns = 100;   // in which the others can come to run

}   // namespace

Seats::Seats(std::size_t iThreads) : m_processors(processors()), m_seats(iThreads) {}

Seats::~Seats() = default;

// Under the lock.
bool Seats::boUsed(unsigned iProcessor) const noexcept {
    return std::find(m_seats.begin(), m_seats.end(), iProcessor) != m_seats.end();
}

// Under the lock. The next one, and not the first of all: groups of several processes would meet there.
std::optional<unsigned> Seats::freeBehind(unsigned iProcessor) const noexcept {
    const auto iBehind = static_cast<std::size_t>(
        std::upper_bound(m_processors.begin(), m_processors.end(), iProcessor) - m_processors.begin());
    for (std::size_t i = 0; i < m_processors.size(); ++i) {
        const unsigned iNext = m_processors[(iBehind + i) % m_processors.size()];
        if (!boUsed(iNext)) return iNext;
    }
    return std::nullopt;
}

void Seats::vTake(std::size_t iThread) noexcept {
    std::optional<unsigned> seat = processorNow();
    bool boMove = false;
    {
        const std::lock_guard lock(m_mutex);
        if (!m_seats[iThread]) ++m_iTaken;   // where the system does not say, each time
        m_seats[iThread].reset();
        if (seat && boUsed(*seat)) {
            const std::optional<unsigned> free = freeBehind(*seat);
            boMove = free.has_value();
            if (boMove) seat = free;
        }
        m_seats[iThread] = seat;
    }
    if (boMove) vMoveTo(*seat);
}

void Seats::vAwait() noexcept {
    for (unsigned i = 0; i < g_iTurns; ++i) {
        {
            const std::lock_guard lock(m_mutex);
            if (m_iTaken >= m_seats.size()) return;
        }
        std::this_thread::yield();
    }
}

}   // namespace oxa::platform
