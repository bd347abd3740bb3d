// SPDX-License-Identifier: Apache-2.0
// CommandFacts: what the program takes, read from its own declarations, as plain rows.
//
// For      what is made from them: the completions of shells (VerbCompletion), the manual page (ManPage).
// Threads  one.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}   // namespace CLI

namespace oxa::tool {

struct OptionFacts {
    std::vector<std::string> shortNames, longNames;   // without strokes; both empty for an argument
    std::string sArgument;                            // the name of an argument, as FILE
    std::string sHelp;
    std::string sValue;                 // what stands behind the option, as OUT; empty for a flag
    std::vector<std::string> choices;   // all that may stand there, where that is known
    bool boFlag = false;
    bool boFile = false;   // what stands there is a file
    bool boRequired = false;
    bool boSeveral = false;
};

struct CommandFacts {
    std::string sName, sSummary, sFooter;
    std::vector<OptionFacts> options, arguments;
};

// Of the program itself, or of one of its verbs.
[[nodiscard]] CommandFacts commandFacts(const CLI::App& command);
// Of all verbs, in the order of help.
[[nodiscard]] std::vector<CommandFacts> verbFacts(const CLI::App& program);

}   // namespace oxa::tool
