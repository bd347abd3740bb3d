// SPDX-License-Identifier: Apache-2.0
// Seats: on which processors the threads of one piece of work run, and that it is not the same one.
//
// For      threads that work together for some milliseconds. A system often starts or wakes a thread on the processor of who
//          made or woke it, though others have nothing to do (a guest whose idle processors have halted hides them from its
//          own scheduler), and moves it some ticks later: by then the work is done, one part behind the other.
// Does     a thread that finds another one of its group on its processor moves to a processor that none of them uses. That is
//          all: from there the system may move it as any other, and the processors that it may use stay as they are.
// Threads  each for its own seat; any number at once.
#pragma once

#include <cstddef>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/Export.h"

namespace oxa::platform {

class OXA_PLATFORM_API Seats {
public:
    // For so many threads, numbered from 0, that may run where the calling one may. Throws std::bad_alloc.
    explicit Seats(std::size_t iThreads);
    ~Seats();
    Seats(const Seats&) = delete;
    Seats& operator=(const Seats&) = delete;

    // By the thread itself: when it starts, and when it has slept.
    void vTake(std::size_t iThread) noexcept;
    // Gives way until all have a seat, for a moment at the most: by who would keep another from its first turn.
    void vAwait() noexcept;

private:
    [[nodiscard]] bool boUsed(unsigned iProcessor) const noexcept;
    [[nodiscard]] std::optional<unsigned> freeBehind(unsigned iProcessor) const noexcept;

    std::vector<unsigned> m_processors;   // that may be used, in order
    std::mutex m_mutex;                   // guards what follows
    std::vector<std::optional<unsigned>> m_seats;
    std::size_t m_iTaken = 0;
};

}   // namespace oxa::platform
