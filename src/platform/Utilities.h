// SPDX-License-Identifier: Apache-2.0
/// @file
/// Utilities: the exception of inside faults, and the debugger's breakpoint.
///
/// Threads  any number at once; no state.
#pragma once

#include <exception>
#include <string>
#include <utility>

#include "platform/Export.h"

namespace oxa {

/// An inside inconsistency. Bad input never raises one.
class OXA_PLATFORM_API exception : public std::exception {
public:
    /// With the text of what().
    explicit exception(std::string sText) : m_sText(std::move(sText)) {}
    ~exception() override;
    /// Says which inside rule was broken; good as long as the exception.
    [[nodiscard]] const char* what() const noexcept override { return m_sText.c_str(); }

private:
    std::string m_sText;
};

/// The debugger that may be attached to the process.
class OXA_PLATFORM_API Debugger {
public:
    /// Stops an attached debugger here; does nothing where none is attached, or where that can't be told.
    static void vBreak() noexcept;
};

}   // namespace oxa
