// SPDX-License-Identifier: Apache-2.0
// ProgramRun: one run of the built program oxaifc, and small files for it.
//
// For      the tests of this folder.
// Threads  one.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "system/System.h"

namespace oxa::test {

using Json = nlohmann::ordered_json;

struct ProgramRun {
    int iCode = -1;   // the exit code; -1 when the program ended by a signal or did not start
    std::string sOut;
    std::string sError;

    // Standard output as JSON; a discarded value where it is none.
    [[nodiscard]] Json json() const { return Json::parse(sOut, nullptr, false); }
};

// Runs the program with these words behind its name.
[[nodiscard]] ProgramRun runProgram(const std::vector<std::string>& words, std::string_view standardInput = {},
                                    OutputKind eOutput = OutputKind::File);

// The same for another program, by its path.
[[nodiscard]] ProgramRun runProgramAt(const std::string& sProgram, const std::vector<std::string>& words,
                                      std::string_view standardInput = {}, OutputKind eOutput = OutputKind::File);

// A folder of its own for one test, removed with all that is in it.
class TestFolder {
public:
    TestFolder();
    ~TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    // Writes a file and gives its path back.
    std::string sFile(const std::string& sName, std::string_view text) const;
    [[nodiscard]] const std::filesystem::path& path() const noexcept { return m_path; }

private:
    std::filesystem::path m_path;
};

// An exchange structure with this name of a schema and these statements as its DATA section.
[[nodiscard]] std::string sExchangeFile(std::string_view schema, std::string_view data);

// A sample of the project.
[[nodiscard]] std::string sExample(std::string_view name);

}   // namespace oxa::test
