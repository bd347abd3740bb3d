// SPDX-License-Identifier: Apache-2.0
// System: the few questions that each operating system answers in its own way.
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace oxa::tool {

// The words of the command line, in UTF-8, from those that main() got; the program's own name is the first. From here on
// standard input and output are bytes, and a terminal takes them for UTF-8.
[[nodiscard]] std::vector<std::string> wordsAtStart(int iCount, char** ppWords);

// Where that is a terminal: whether it shows colours, once it has been asked to.
[[nodiscard]] bool boShowsColours(std::FILE* pFile);

// Whether standard input comes from this file.
[[nodiscard]] bool boIsStandardInput(const std::filesystem::path& path);

[[nodiscard]] bool boIsTerminal(std::FILE* pFile);

// How many columns a terminal has; 80 where it does not say.
[[nodiscard]] std::size_t iTerminalWidth(std::FILE* pFile);

// The most memory that the process has held so far, in bytes; 0 where the system does not say.
[[nodiscard]] std::uint64_t iPeakMemory();

// From here on a write to a pipe that nobody reads, or beyond a limit of file sizes, is an error of the write, not a
// signal.
void vIgnoreWriteSignals();

// What Ctrl-C does from here on, in place of ending the program; null: that again. The function may do only what the
// handler of a signal may.
void vOnInterrupt(void (*pFunction)());

}   // namespace oxa::tool
