// SPDX-License-Identifier: Apache-2.0
// Verb: the sub-commands of the program.
//
// A verb is a function that declares its options at "command" and gives back what to do once they are parsed.
// What it gives back is called at most once; it writes to "output" and returns the exit code.
// Errors   Failure ends the program with its text and exit code 2.
#pragma once

#include <functional>
#include <span>

namespace CLI {
class App;
}   // namespace CLI

namespace oxa::tool {

class Output;
using VerbRun = std::function<int(Output& output)>;

struct Verb {
    const char* pName;
    const char* pSummary;
    VerbRun (*pDeclare)(CLI::App& command);
};

// In the order in which help tells them.
[[nodiscard]] std::span<const Verb> verbs();

[[nodiscard]] VerbRun verbCheck(CLI::App& command);
[[nodiscard]] VerbRun verbConvert(CLI::App& command);
[[nodiscard]] VerbRun verbDiff(CLI::App& command);
[[nodiscard]] VerbRun verbExtract(CLI::App& command);
[[nodiscard]] VerbRun verbHeader(CLI::App& command);
[[nodiscard]] VerbRun verbInfo(CLI::App& command);
[[nodiscard]] VerbRun verbSchema(CLI::App& command);
[[nodiscard]] VerbRun verbSet(CLI::App& command);
[[nodiscard]] VerbRun verbShow(CLI::App& command);

}   // namespace oxa::tool
