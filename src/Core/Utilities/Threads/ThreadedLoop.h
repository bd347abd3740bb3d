// SPDX-License-Identifier: Apache-2.0
// ThreadedLoop: a function that is called again and again on a thread of its own, until told to stop.
//
// For      background work that looks for something to do from time to time. A thread that can be woken when there is
//          work has no use for the rhythm; it takes boGuarded() alone, as the threads of a read do.
// Owner    perform() and vStop() belong to one thread, the owner's; the function runs on the loop's thread.
// Errors   what the function throws never leaves the loop: it is written to the standard error stream, breaks into
//          an attached debugger, and counts as a return value of false.
#pragma once

#include <atomic>
#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <type_traits>
#include <typeinfo>

#include "platform/Export.h"

namespace oxa::util {

class OXA_PLATFORM_API ThreadedLoop {
public:
    // Calls outside of the timed rhythm.
    struct Options {
        int m_iCallAt = 0;         // 0 once at the start, 1 once at the stop, 2 at both
        bool m_boCallAt = false;   // whether m_iCallAt counts
    };

    ThreadedLoop();
    ~ThreadedLoop();   // stops and joins
    ThreadedLoop(const ThreadedLoop&) = delete;
    ThreadedLoop& operator=(const ThreadedLoop&) = delete;

    // Starts the thread: "first" once when it is not empty, then "function" every iIntervalMs milliseconds for as
    // long as it returns true. After false it is called once more before the loop ends, since work may have come in
    // between. A thread that still runs is stopped and joined first. An empty function raises an assertion and
    // starts nothing. Throws std::system_error when no thread can be had.
    void perform(std::function<void()> first, std::function<bool()> function, int iIntervalMs, Options options);

    // Wakes the thread, lets it make its last call and joins it. Does nothing without a thread.
    void vStop();

    // True while the loop is alive.
    [[nodiscard]] bool boRunning() const noexcept { return m_boRunning.load(std::memory_order_relaxed); }

    // Calls the function as the loop does, on the calling thread: what it throws is told and counts as false. Allocates
    // nothing unless there is something to tell.
    template <class Function>
    static bool boGuarded(const Function& function) noexcept {
        try {
            return function();
        } catch (const std::exception& fault) {
            vTell(sTypeOf(function), fault.what());
        } catch (...) {
            vTell(sTypeOf(function), nullptr);
        }
        return false;
    }

    static void debuggerBreak();

private:
    // Tells the thread to stop, and wakes it from its wait at once.
    struct Stop {
        std::mutex m_mutex;
        std::condition_variable m_wake;
        bool m_boStop = false;   // guarded by m_mutex
    };

    template <class Function>
    [[nodiscard]] static const char* sTypeOf(const Function& function) noexcept {
        if constexpr (std::is_same_v<Function, std::function<bool()>>)
            return function.target_type().name();
        else
            return typeid(function).name();
    }
    // One line for what a function of that type threw; pText null where it has none.
    static void vTell(const char* sType, const char* pText) noexcept;
    void vLoop(const std::function<void()>& first, int iIntervalMs);
    [[nodiscard]] bool boWaitForStop(int iIntervalMs);
    [[nodiscard]] bool boGuardedCall() const noexcept { return boGuarded(m_function); }
    void vRunningSet(bool boRunning) noexcept { m_boRunning.store(boRunning, std::memory_order_relaxed); }

    std::unique_ptr<Stop> m_pStop;
    std::thread m_thread;
    std::atomic<bool> m_boRunning{false};   // written by the loop's thread alone
    Options m_options;
    std::function<bool()> m_function;
};

}   // namespace oxa::util
