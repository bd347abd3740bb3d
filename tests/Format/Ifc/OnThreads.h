// SPDX-License-Identifier: Apache-2.0
// OnThreads: one piece of work on several threads at once.
//
// For      the tests of what many threads may use together.
#pragma once

#include <barrier>
#include <cstddef>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace oxa::ifc {

// Calls work(0) to work(iThreads - 1), each on a thread of its own that waits for all others first.
template <class Work>
void vOnThreads(std::size_t iThreads, Work&& work) {
    std::barrier start(static_cast<std::ptrdiff_t>(iThreads));
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < iThreads; ++i)
        threads.emplace_back([&work, &start, i] {
            start.arrive_and_wait();
            work(i);
        });
    for (std::thread& thread : threads) thread.join();
}

// "zeroed" or "dirty".
inline std::string sZeroed(const void* pBytes, std::size_t iBytes) {
    return std::string(static_cast<const char*>(pBytes), iBytes) == std::string(iBytes, '\0') ? "zeroed" : "dirty";
}

}   // namespace oxa::ifc
