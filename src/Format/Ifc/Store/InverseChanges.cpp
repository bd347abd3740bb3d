// SPDX-License-Identifier: Apache-2.0
// Changes of inverse lists, counted as far as somebody wants to know.
#include "Format/Ifc/Store/InverseChanges.h"

#include <atomic>

namespace oxa::ifc {

namespace {

// Odd: somebody has this moment, and a change makes it the next one. Even: nobody has it yet. Flag and count are one value,
// so that who finds a change told already also finds the new count.
std::atomic<std::uint64_t> g_iMoment{0};

}   // namespace

// Relaxed, all of them: a caller's read of a model comes before his change of it, and that before his write of it.
std::uint64_t InverseChanges::iMoment() noexcept { return g_iMoment.fetch_or(1, std::memory_order_relaxed) | 1; }

bool InverseChanges::boNoneSince(std::uint64_t iMoment) noexcept {
    return g_iMoment.load(std::memory_order_relaxed) == iMoment;
}

// Where the exchange fails, another thread has told.
void InverseChanges::vTell() noexcept {
    std::uint64_t iNow = g_iMoment.load(std::memory_order_relaxed);
    if (iNow % 2) g_iMoment.compare_exchange_strong(iNow, iNow + 1, std::memory_order_relaxed);
}

}   // namespace oxa::ifc
