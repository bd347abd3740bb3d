// SPDX-License-Identifier: Apache-2.0
// FileOpen: a file that a verb is to read as a text; of a packed one what is inside.
//
// For      whoever reads one: Model, SchemaSource, Report, the verb "header".
// Errors   Failure, for what Input can't open and for what is no text here by its first bytes (FirstBytes.h).
#pragma once

#include <memory>
#include <string>

#include "oxaifc/io/CommandLine.h"
#include "oxaifc/io/Input.h"

namespace oxa::tool {

// "-" is standard input. The stream stands at the first byte.
[[nodiscard]] std::unique_ptr<Input> pFileOpen(const std::string& sPath, const UnpackLimits& limits = {});

// The option --unpack-all, which lifts the limits.
struct UnpackOption {
    bool boAll = false;

    void vDeclare(Command command);
    [[nodiscard]] UnpackLimits limits() const noexcept { return boAll ? UnpackLimits::none() : UnpackLimits(); }
};

}   // namespace oxa::tool
