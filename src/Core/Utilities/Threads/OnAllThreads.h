// SPDX-License-Identifier: Apache-2.0
// OnAllThreads: one step of work on the caller's thread and on others beside it.
//
// For      what shares its work out by itself: writes, counts, the rules of a check.
// Errors   what a step throws tells the others to end, and is thrown on the caller's thread once all have; of several the
//          first. Where the system has no thread left, or no memory for one, fewer do the same work.
// Threads  those that it starts have ended when it returns.
#pragma once

#include <cstddef>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "platform/Seats.h"

namespace oxa::util {

// Calls step(0) here and step(1) to step(iExtra) each on a thread of its own, as far as there are any. stop() may be
// called on any of them, and while steps run; it throws nothing.
template <class Step, class Stop>
void vOnAllThreads(std::size_t iExtra, const Step& step, const Stop& stop) {
    std::mutex mutex;
    std::exception_ptr pFault;   // guarded by mutex
    const auto vGuarded = [&](std::size_t i) {
        try {
            step(i);
        } catch (...) {
            {
                const std::lock_guard lock(mutex);
                if (!pFault) pFault = std::current_exception();
            }
            stop();
        }
    };
    std::optional<platform::Seats> seats;
    std::vector<std::thread> threads;
    try {
        if (iExtra > 0) seats.emplace(iExtra + 1).vTake(0);
        for (std::size_t i = 1; i <= iExtra; ++i)
            threads.emplace_back([&seats, &vGuarded, i] {
                seats->vTake(i);
                vGuarded(i);
            });
        if (seats) seats->vAwait();
    } catch (const std::exception&) {
        // No thread was to be had, or no memory for one.
    }
    vGuarded(0);
    for (std::thread& thread : threads) thread.join();
    if (pFault) std::rethrow_exception(pFault);
}

}   // namespace oxa::util
