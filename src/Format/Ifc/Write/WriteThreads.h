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

// Of a write of so many entities whose threads do not wait for each other: one a processor, up to eight in all. The first two
// beside the caller's pay as those above, a further one where it has a thousand entities to itself.
inline unsigned iExtraOrderedThreads(std::size_t iEntities) noexcept {
    constexpr std::size_t g_iMost = 7;
    const std::size_t iPaid = std::max(std::min<std::size_t>(2, (iEntities + 9) / 10), iEntities / 1000);
    const std::size_t iProcessors = std::max(std::thread::hardware_concurrency(), 1U);
    return static_cast<unsigned>(std::min({iPaid, iProcessors - 1, g_iMost}));
}

}   // namespace oxa::ifc
