// SPDX-License-Identifier: Apache-2.0
// WriteThreads: how many threads compose beside the caller's.
//
// For      the writes of Data.
#pragma once

#include <algorithm>
#include <cstddef>
#include <thread>

namespace oxa::ifc {

// At most two threads beside the caller's, and none that the machine has no room for; a machine that reports fewer
// than three threads wraps around and gets both.
inline unsigned iExtraWriteThreads() noexcept { return std::min(2U, std::thread::hardware_concurrency() - 3U); }

// Of a write of so many entities in an order, whose threads wait for nobody: one a processor, up to eight in all. Each but
// the first needs ten entities more.
inline unsigned iExtraOrderedThreads(std::size_t iEntities) noexcept {
    constexpr unsigned g_iMost = 7;
    const unsigned iProcessors = std::max(std::thread::hardware_concurrency(), 1U);
    return static_cast<unsigned>(std::min<std::size_t>(std::min(iProcessors - 1, g_iMost), (iEntities + 9) / 10));
}

}   // namespace oxa::ifc
