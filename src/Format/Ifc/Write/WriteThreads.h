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

// The same for so many entities: each thread but the first needs ten more.
inline unsigned iExtraWriteThreads(std::size_t iEntities) noexcept {
    return static_cast<unsigned>(std::min<std::size_t>(iExtraWriteThreads(), (iEntities + 9) / 10));
}

}   // namespace oxa::ifc
