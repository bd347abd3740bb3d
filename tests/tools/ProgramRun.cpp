// SPDX-License-Identifier: Apache-2.0
#include "tools/ProgramRun.h"

#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

extern char** environ;

namespace oxa::test {

namespace {

std::string sContent(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// What the three streams of the program are: files of the test's folder, except for standard output.
class Streams {
public:
    Streams(const TestFolder& folder, std::string_view standardInput, OutputKind eOutput)
        : m_eOutput(eOutput),
          m_sIn(folder.sFile("in", standardInput)),
          m_out(folder.path() / "out"),
          m_error(folder.path() / "error") {
        posix_spawn_file_actions_init(&m_actions);
        posix_spawn_file_actions_addopen(&m_actions, 0, m_sIn.c_str(), O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&m_actions, 2, m_error.c_str(), O_WRONLY | O_CREAT, 0600);
        switch (eOutput) {
        case OutputKind::File:
            posix_spawn_file_actions_addopen(&m_actions, 1, m_out.c_str(), O_WRONLY | O_CREAT, 0600);
            break;
        case OutputKind::ClosedPipe: vClosedPipe(); break;
        case OutputKind::FullDisk: posix_spawn_file_actions_addopen(&m_actions, 1, "/dev/full", O_WRONLY, 0); break;
        case OutputKind::Terminal: vTerminal(); break;
        }
    }
    ~Streams() {
        posix_spawn_file_actions_destroy(&m_actions);
        if (m_iTerminal >= 0) close(m_iTerminal);
        if (m_iPipe >= 0) close(m_iPipe);
    }
    Streams(const Streams&) = delete;
    Streams& operator=(const Streams&) = delete;

    [[nodiscard]] const posix_spawn_file_actions_t* pActions() const noexcept { return &m_actions; }
    [[nodiscard]] std::string sError() const { return sContent(m_error); }

    // Blocks until the program has closed a terminal.
    [[nodiscard]] std::string sOut() const {
        if (m_eOutput != OutputKind::Terminal) return sContent(m_out);
        std::string sText;
        char bytes[4096];
        for (ssize_t iCount = 0; (iCount = read(m_iTerminal, bytes, sizeof bytes)) > 0;)
            sText.append(bytes, static_cast<std::size_t>(iCount));
        return sText;
    }

private:
    void vClosedPipe() {
        int ends[2];
        if (pipe(ends) != 0) throw std::runtime_error("no pipe");
        close(ends[0]);
        m_iPipe = ends[1];
        posix_spawn_file_actions_adddup2(&m_actions, m_iPipe, 1);
    }
    void vTerminal() {
        m_iTerminal = posix_openpt(O_RDWR | O_NOCTTY);
        if (m_iTerminal < 0 || grantpt(m_iTerminal) != 0 || unlockpt(m_iTerminal) != 0)
            throw std::runtime_error("no terminal");
        posix_spawn_file_actions_addopen(&m_actions, 1, ptsname(m_iTerminal), O_WRONLY | O_NOCTTY, 0);
    }

    OutputKind m_eOutput;
    std::string m_sIn;
    std::filesystem::path m_out;
    std::filesystem::path m_error;
    posix_spawn_file_actions_t m_actions{};
    int m_iTerminal = -1;
    int m_iPipe = -1;
};

}   // namespace

ProgramRun runProgram(const std::vector<std::string>& words, std::string_view standardInput, OutputKind eOutput) {
    return runProgramAt(OXAIFC_PROGRAM, words, standardInput, eOutput);
}

ProgramRun runProgramAt(const std::string& sProgram, const std::vector<std::string>& words,
                        std::string_view standardInput, OutputKind eOutput) {
    const TestFolder folder;
    const Streams streams(folder, standardInput, eOutput);
    std::vector<std::string> all{sProgram};
    all.insert(all.end(), words.begin(), words.end());
    std::vector<char*> pointers;
    for (std::string& sWord : all) pointers.push_back(sWord.data());
    pointers.push_back(nullptr);

    ProgramRun run;
    pid_t iProcess = 0;
    if (posix_spawn(&iProcess, sProgram.c_str(), streams.pActions(), nullptr, pointers.data(), environ) != 0)
        return run;
    if (eOutput == OutputKind::Terminal) run.sOut = streams.sOut();
    int iStatus = 0;
    if (waitpid(iProcess, &iStatus, 0) == iProcess && WIFEXITED(iStatus)) run.iCode = WEXITSTATUS(iStatus);
    if (eOutput == OutputKind::File) run.sOut = streams.sOut();
    run.sError = streams.sError();
    return run;
}

TestFolder::TestFolder() {
    std::string sPattern = testing::TempDir() + "oxaifc-XXXXXX";
    if (!mkdtemp(sPattern.data())) throw std::runtime_error("no folder for temporary files");
    m_path = sPattern;
}

TestFolder::~TestFolder() {
    std::error_code error;
    std::filesystem::remove_all(m_path, error);
}

std::string TestFolder::sFile(const std::string& sName, std::string_view text) const {
    const std::filesystem::path path = m_path / sName;
    std::ofstream(path, std::ios::binary) << text;
    return path.string();
}

std::string sExchangeFile(std::string_view schema, std::string_view data) {
    return std::string("ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('d'),'2;1');\n"
                       "FILE_NAME('n','2024-05-17T09:30:00',('a'),('o'),'p','s','z');\nFILE_SCHEMA(('")
        .append(schema)
        .append("'));\nENDSEC;\nDATA;\n")
        .append(data)
        .append("ENDSEC;\nEND-ISO-10303-21;\n");
}

std::string sExample(std::string_view name) { return std::string(OXA_SOURCE_DIR "/examples/").append(name); }

}   // namespace oxa::test
