// SPDX-License-Identifier: Apache-2.0
// The loop of a background thread, with a wait that a stop interrupts at once.
#include "Core/Utilities/Threads/ThreadedLoop.h"

#include <chrono>
#include <cstdio>
#include <iostream>
#include <utility>

#include "platform/Assert.h"
#include "platform/Utilities.h"

namespace oxa::util {

ThreadedLoop::ThreadedLoop() = default;

ThreadedLoop::~ThreadedLoop() { vStop(); }

void ThreadedLoop::perform(std::function<void()> first, std::function<bool()> function, int iIntervalMs,
                           Options options) {
    if (!function) {
        Assert::vTell("Core/Utilities/Threads/ThreadedLoop", "oxa::util::ThreadedLoop::perform",
                      "Assert: Function is empty");
        return;
    }
    vStop();
    m_pStop = std::make_unique<Stop>();
    m_options = options;
    m_function = std::move(function);
    m_thread = std::thread([this, first = std::move(first), iIntervalMs] { vLoop(first, iIntervalMs); });
}

void ThreadedLoop::vStop() {
    if (m_pStop) {
        const std::lock_guard lock(m_pStop->m_mutex);
        m_pStop->m_boStop = true;
        m_pStop->m_wake.notify_one();
    }
    if (m_thread.joinable()) m_thread.join();
    m_pStop.reset();
}

void ThreadedLoop::debuggerBreak() { Debugger::vBreak(); }

void ThreadedLoop::vLoop(const std::function<void()>& first, int iIntervalMs) {
    const auto boCallAt = [this](int iWhen) {
        return m_options.m_boCallAt && (m_options.m_iCallAt == iWhen || m_options.m_iCallAt == 2);
    };
    vRunningSet(true);
    if (first) first();
    if (boCallAt(0) && !boGuardedCall()) return vRunningSet(false);
    while (!boWaitForStop(iIntervalMs)) {
        if (boGuardedCall()) continue;
        vRunningSet(false);
        // Work may have come in after the function tested its queue and before boRunning() became false.
        if (!boGuardedCall()) return;
        vRunningSet(true);
    }
    vRunningSet(false);
    if (boCallAt(1)) static_cast<void>(boGuardedCall());
}

bool ThreadedLoop::boWaitForStop(int iIntervalMs) {
    std::unique_lock lock(m_pStop->m_mutex);
    return m_pStop->m_wake.wait_for(lock, std::chrono::milliseconds(iIntervalMs > 0 ? iIntervalMs : 0),
                                    [this] { return m_pStop->m_boStop; });
}

void ThreadedLoop::vTell(const char* sType, const char* pText) noexcept {
    // Lines of several threads shall not mix, so a line is one write. It is no longer than this: what has been thrown
    // may be the news that there is no memory.
    char line[2100];
    std::snprintf(line, sizeof line, "Assert in ThreadedLoop(%.1000s)%s%.1000s\n", sType, pText ? ": " : "",
                  pText ? pText : "");
    std::cerr << line << std::flush;
    debuggerBreak();
}

}   // namespace oxa::util
