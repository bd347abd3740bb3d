// SPDX-License-Identifier: Apache-2.0
// Verb: the sub-commands of the program.
//
// A verb is a function that declares its options at "command" and gives back what to do once they are parsed.
// What it gives back is called at most once; it writes to "output" and returns the exit code.
// Each is defined as g_verbXxx in a file of its own and named in ../CMakeLists.txt.
// Errors   Failure ends the program with its text and exit code 2.
#pragma once

#include <functional>
#include <span>

#include "oxaifc/io/CommandLine.h"

namespace oxa::tool {

class Output;
using VerbRun = std::function<int(Output& output)>;

struct Verb {
    const char* pName;
    const char* pSummary;
    VerbRun (*pDeclare)(Command command);
    bool boAboutAll = false;   // whether it looks at what the others declare
};

// In the order in which help tells them, which is that of the list in ../CMakeLists.txt.
[[nodiscard]] std::span<const Verb* const> verbs();

}   // namespace oxa::tool
