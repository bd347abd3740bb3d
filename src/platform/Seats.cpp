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

void Seats::vTake(std::size_t iThread) noexcept {
    std::optional<unsigned> seat = processorNow();
    bool boMove = false;
    {
        const std::lock_guard lock(m_mutex);
        if (!m_seats[iThread]) ++m_iTaken;
        m_seats[iThread].reset();
        if (seat && boUsed(*seat)) {
            const auto free = std::find_if(m_processors.begin(), m_processors.end(),
                                           [this](unsigned iProcessor) { return !boUsed(iProcessor); });
            boMove = free != m_processors.end();
            if (boMove) seat = *free;
        }
        m_seats[iThread] = seat;
    }
    if (boMove) vMoveTo(*seat);
}

void Seats::vAwait() noexcept {
    for (unsigned i = 0; i < g_iTurns; ++i) {
        {
            const std::lock_guard lock(m_mutex);
            if (m_iTaken == m_seats.size()) return;
        }
        std::this_thread::yield();
    }
}

}   // namespace oxa::platform
