// SPDX-License-Identifier: Apache-2.0
// System: the few questions that each operating system answers in its own way.
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <functional>
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

// Runs a function whose lines on standard error nobody shall see, while no other thread has any.
void vWithoutStandardError(const std::function<void()>& function);

// From here on a write to a pipe that nobody reads, or beyond a limit of file sizes, is an error of the write, not a
// signal.
void vIgnoreWriteSignals();

// Whether a write to standard output that ended with this error had nobody left who reads.
[[nodiscard]] bool boReaderGone(int iError) noexcept;

// What the program does first when Ctrl-C or another signal of its user ends it: that Ctrl-C did is told in a line. The
// function may do only what the handler of a signal may.
void vOnEnd(void (*pFunction)());

// After so long the program ends with this line on standard error and exit code 2, whatever it does, as after Ctrl-C: for
// what does not look at the clock by itself. 0: never.
void vEndAfter(double seconds, std::string line);

// What the next Ctrl-C does in place of ending the program, which the one behind it does; null: nothing any more. The
// function may do only what the handler of a signal may. A read of the terminal that waits goes on, or fails with
// boReadEnds.
void vOnInterrupt(void (*pFunction)(), bool boReadEnds = false);

}   // namespace oxa::tool
