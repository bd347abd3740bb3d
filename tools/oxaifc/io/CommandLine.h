// SPDX-License-Identifier: Apache-2.0
// CommandLine: what a verb declares of the words it takes, and where they go.
//
// For      verbs and the options that several of them share. A thin face of the library that parses the words: that one
//          is all templates, which cost each source that includes it six seconds.
// In       handles, cheap to copy; what they stand for lives as long as the program's parser. The variables that words
//          are put into must live until the command line is parsed.
// Errors   a wrong declaration is the program's own fault and throws; a wrong word ends the parse with a sentence.
// Threads  one.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}   // namespace CLI

namespace oxa::tool {

// An option or an argument that is declared; each call refines it.
class CommandOption {
public:
    explicit CommandOption(CLI::Option& option) noexcept : m_pOption(&option) {}

    CommandOption required(bool boRequired = true) const;
    // What help calls the value, as OUT; empty for an argument, which has its own name.
    CommandOption value(const char* pName) const;
    CommandOption oneOf(std::vector<std::string> words) const;
    CommandOption within(double least, double most) const;
    CommandOption excludes(CommandOption other) const;
    // One value behind each mention of the option, which may stand several times.
    CommandOption oneEach() const;
    // The same, and a value with this mark in it is several.
    CommandOption oneEach(char mark) const;
    // Called for each of the values as they are parsed.
    CommandOption each(std::function<void(const std::string&)> called) const;
    // Adds a value, as if it stood on the command line.
    void vGive(const std::string& sValue) const;

private:
    CLI::Option* m_pOption;
};

// A verb's part of the command line.
class Command {
public:
    explicit Command(CLI::App& app) noexcept : m_pApp(&app) {}

    // pNames is "-o,--output" for an option, OUT for an argument.
    CommandOption option(const char* pNames, std::string& sValue, const std::string& sHelp) const;
    CommandOption option(const char* pNames, std::vector<std::string>& values, const std::string& sHelp) const;
    CommandOption option(const char* pNames, double& value, const std::string& sHelp) const;
    CommandOption option(const char* pNames, std::size_t& iValue, const std::string& sHelp) const;
    // Hands the words to a function instead, as soon as they are parsed.
    CommandOption option(const char* pNames, std::function<void(const std::string&)> taken,
                         const std::string& sHelp) const;
    CommandOption severalTo(const char* pNames, std::function<void(const std::vector<std::string>&)> taken,
                            const std::string& sHelp) const;
    CommandOption flag(const char* pName, bool& boValue, const char* pHelp) const;
    // A flag that may have a value behind a "=": "true" without it.
    CommandOption flag(const char* pName, std::string& sValue, const char* pHelp) const;
    // What was declared before under this name.
    [[nodiscard]] CommandOption declared(const char* pName) const;
    // What help says at its end.
    void vFooter(const std::string& sText) const;

    [[nodiscard]] CLI::App& app() const noexcept { return *m_pApp; }

private:
    CLI::App* m_pApp;
};

}   // namespace oxa::tool
