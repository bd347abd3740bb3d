// SPDX-License-Identifier: Apache-2.0
// StageWatch: what a thread of a read does with its time, lap by lap.
//
// For      the scanner, the pool of line workers and the completion, inside this folder.
// Cost     a test where nobody asks; else a look at the clock a lap.
// Threads  one each.
#pragma once

#include <chrono>
#include <cstdint>

namespace oxa::ifc {

struct StageTime {
    double busy = 0;   // seconds
    double waiting = 0;
    std::uint64_t iBytes = 0;
};

class StageWatch {
public:
    // The first lap begins. Null: nobody asks.
    explicit StageWatch(StageTime* pTime) noexcept : m_pTime(pTime), m_last(now()) {}

    void vWorked(std::uint64_t iBytes = 0) noexcept {
        if (!m_pTime) return;
        m_pTime->busy += lap();
        m_pTime->iBytes += iBytes;
    }
    // Another watch has had the time since the last lap.
    void vRestart() noexcept {
        if (m_pTime) m_last = Clock::now();
    }
    void vWaited() noexcept {
        if (m_pTime) m_pTime->waiting += lap();
    }

private:
    using Clock = std::chrono::steady_clock;

    [[nodiscard]] Clock::time_point now() const noexcept { return m_pTime ? Clock::now() : Clock::time_point(); }
    double lap() noexcept {
        const auto start = m_last;
        m_last = Clock::now();
        return std::chrono::duration<double>(m_last - start).count();
    }

    StageTime* m_pTime;
    Clock::time_point m_last;
};

}   // namespace oxa::ifc
