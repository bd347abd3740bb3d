// SPDX-License-Identifier: Apache-2.0
// OnThreads: one piece of work on several threads at once.
//
// For      the tests of what many threads may use together.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

#include "Core/Utilities/Threads/Team.h"

namespace oxa::ifc {

// Calls work(0) to work(iThreads - 1), the first on this thread and each other on one of its own. None begins before all
// threads are there.
template <class Work>
void vOnThreads(std::size_t iThreads, Work&& work) {
    util::Team::vRun(static_cast<unsigned>(iThreads), [&](util::Team& team, unsigned i) {
        if (team.iParts() != iThreads) throw std::runtime_error("the system has not so many threads");
        if (team.boMeet(i)) work(std::size_t{i});
    });
}

// "zeroed" or "dirty".
inline std::string sZeroed(const void* pBytes, std::size_t iBytes) {
    return std::string(static_cast<const char*>(pBytes), iBytes) == std::string(iBytes, '\0') ? "zeroed" : "dirty";
}

}   // namespace oxa::ifc
