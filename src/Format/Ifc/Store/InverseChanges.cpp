// SPDX-License-Identifier: Apache-2.0
// Changes of inverse lists, counted as far as somebody wants to know.
#include "Format/Ifc/Store/InverseChanges.h"

#include <atomic>

namespace oxa::ifc {

namespace {

std::atomic<std::uint64_t> g_iMoment{0};
std::atomic<bool> g_boWanted{false};   // somebody has a moment that no change has followed

}   // namespace

// The flag first: a change between the two steps may count without need, and none is missed.
std::uint64_t InverseChanges::iMoment() noexcept {
    g_boWanted.store(true);
    return g_iMoment.load();
}

bool InverseChanges::boNoneSince(std::uint64_t iMoment) noexcept { return g_iMoment.load() == iMoment; }

void InverseChanges::vTell() noexcept {
    if (g_boWanted.load(std::memory_order_relaxed) && g_boWanted.exchange(false)) g_iMoment.fetch_add(1);
}

}   // namespace oxa::ifc
