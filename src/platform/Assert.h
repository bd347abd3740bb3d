// SPDX-License-Identifier: Apache-2.0
/// @file
/// Assert: the service that hears of a caller's mistake.
///
/// For      telling the developer of the host application; an assertion never stops the program.
/// Usage    Assert::vTell("Format/Ifc/IfcFileEntity", "oxa::ifc::Entity::sanityCheck", "Missing schema entity");
///          then go on harmlessly.
/// Not for  bad input, which is reported to the caller, and inside faults, which are exceptions.
/// Threads  any number at once. A thread's own handler goes before the global one.
#pragma once

#include <atomic>
#include <functional>
#include <string_view>

#include "platform/Export.h"

namespace oxa {

/// Views, good for the length of the handler's call.
struct AssertInfo {
    /// The unit, as in "Format/Ifc/IfcFileEntity".
    std::string_view source;
    /// The function that was called, qualified.
    std::string_view function;
    /// The caller's mistake, in English.
    std::string_view text;
    /// The line of the call in that unit.
    int iLine;
};

/// What a host application does with an assertion.
using AssertHandler = std::function<void(const AssertInfo&)>;

/// A place for one handler. Used by its own thread alone.
class OXA_PLATFORM_API AssertFunctionOne {
public:
    /// Puts the former handler back at the end of its life, which is on the thread that registered. Scopes of
    /// one thread end in the reverse order of their making, as local variables do.
    class OXA_PLATFORM_API Scope {
    public:
        /// For registerHandler(). "owner" must outlive the scope.
        Scope(AssertFunctionOne& owner, AssertHandler former);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        AssertFunctionOne& m_owner;
        AssertHandler m_former;
    };

    /// An empty handler leaves the thread to the global one for the length of the scope.
    [[nodiscard]] Scope registerHandler(AssertHandler handler);
    /// The thread's own handler; empty where it has none.
    [[nodiscard]] const AssertHandler& handler() const noexcept { return m_handler; }

private:
    AssertHandler m_handler;
};

/// Assertions of the process: told here, and switched on and off.
class OXA_PLATFORM_API Assert {
public:
    /// addAssert with the line of the call, if assertions are on. What it costs to find the fault or its text out is
    /// the caller's to spare: "if (Assert::isEnabled() && ...)".
    static void vTell(std::string_view source, std::string_view function, std::string_view text,
                      int iLine = __builtin_LINE()) {
        if (isEnabled()) addAssert(source, function, text, iLine);
    }

    /// On in debug builds, off in others, unless set. Asked by the caller: addAssert does not look at it.
    [[nodiscard]] static bool isEnabled() noexcept { return g_boEnabled.load(std::memory_order_relaxed); }
    /// Switches vTell() on or off, for all threads.
    static void setEnabled(bool boEnabled) noexcept { g_boEnabled.store(boEnabled, std::memory_order_relaxed); }

    /// Hands the assertion to the thread's handler, else to the global one, else writes one line to the
    /// standard error stream. The handler runs on the calling thread, without a lock; what it throws passes through.
    static void addAssert(std::string_view source, std::string_view function, std::string_view text, int iLine);

    /// The global handler, called from any thread; an empty one restores the default. A call that is under way
    /// on another thread ends with the handler that it began with.
    static void setHandler(AssertHandler handler);

    /// The calling thread's place for a handler of its own.
    [[nodiscard]] static AssertFunctionOne& getRegisteredForCurrentThread() noexcept;

private:
    static std::atomic<bool> g_boEnabled;
};

}   // namespace oxa
