// SPDX-License-Identifier: Apache-2.0
// System: what tests ask of the operating system beyond the standard library. Each system has a source.
//
// For      tests of what the system shows of a process, and of what it can refuse. What a system does not have is told, and
//          the test skips with a message.
// Threads  one, for whatever changes the process.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace oxa::test {

// Makes a folder that nobody has, among those for temporary files.
[[nodiscard]] std::filesystem::path newFolder();

// Of this process; 0 where the system does not tell.
[[nodiscard]] std::size_t iThreadsNow();
[[nodiscard]] std::size_t iOpenFiles();
// Of the machine.
[[nodiscard]] unsigned iProcessors();

// A device that takes nothing, and a file whose bytes can't be read; empty where there is none.
[[nodiscard]] std::string sFullDevice();
[[nodiscard]] std::string sUnreadableFile();

// Makes a symbolic link; false where this user or system makes none.
[[nodiscard]] bool boLink(const std::filesystem::path& target, const std::filesystem::path& link);

// Whether the name of a file that is open can be removed at once, or given to another file.
[[nodiscard]] bool boFreesOpenNames();

// Whether a file can be called so. Names are bytes, or UTF-16 without some characters.
[[nodiscard]] bool boTakesName(std::string_view name);

// Whether a program can be called with this word. Words are bytes, or UTF-16, and not of any length.
[[nodiscard]] bool boTakesWord(std::string_view word);

// Whether /bin/sh and other programs of POSIX run here, and know files by the names that the tests have for them.
[[nodiscard]] bool boHasShells();

// What a name below a file, as if that were a folder, is refused with.
[[nodiscard]] std::string sNoFolderTold();

// Whether a file has rights for its owner, a group and all others.
[[nodiscard]] bool boHasRights();

// An environment variable, for this process and those that it starts; null: none of this name.
class Variable {
public:
    Variable(const char* pName, const char* pValue);
    ~Variable();
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    std::string m_sName;
    std::string m_sBefore;
};

// While it lives, no file may become larger: for programs that this process starts. Not everywhere to be had.
class FileLimit {
public:
    explicit FileLimit(std::size_t iBytes);
    ~FileLimit();
    FileLimit(const FileLimit&) = delete;
    FileLimit& operator=(const FileLimit&) = delete;
    [[nodiscard]] bool boHolds() const noexcept { return m_boHolds; }

private:
    unsigned long long m_iBefore = 0;
    bool m_boHolds = false;
};

// While it lives, new files are without these rights. Only where boHasRights().
class WithoutRights {
public:
    explicit WithoutRights(unsigned iRights);
    ~WithoutRights();
    WithoutRights(const WithoutRights&) = delete;
    WithoutRights& operator=(const WithoutRights&) = delete;

private:
    unsigned m_iBefore = 0;
};

// Makes a pipe with a name, which another thread writes the text to while the function runs. False where a pipe has no
// name among files.
[[nodiscard]] bool boWithPipe(const std::filesystem::path& path, std::string_view text,
                              const std::function<void()>& function);

// Makes a pipe with a name that nobody writes to: who opens it to read waits. False where a pipe has no name among files.
[[nodiscard]] bool boSilentPipe(const std::filesystem::path& path);

// While it lives, no other program gets these bytes of a file for itself.
class BytesLock {
public:
    BytesLock(const std::filesystem::path& path, unsigned long iFirst, unsigned long iCount);
    ~BytesLock();
    BytesLock(const BytesLock&) = delete;
    BytesLock& operator=(const BytesLock&) = delete;
    [[nodiscard]] bool boHolds() const noexcept { return m_boHolds; }

private:
    void* m_pFile = nullptr;   // what the system calls it
    bool m_boHolds = false;
};

// What standard output of a program is.
enum class OutputKind {
    File,         // what it writes is kept
    ClosedPipe,   // nobody reads
    FullDisk,     // takes nothing
    Terminal,     // what it writes is kept
};
[[nodiscard]] bool boCanBe(OutputKind eOutput);

struct ProgramStart {
    std::string sProgram;
    std::vector<std::string> words;
    std::filesystem::path in, out, error;   // files that the three streams are; "out" for OutputKind::File alone
    OutputKind eOutput = OutputKind::File;
};

// Runs it. The exit code, or -1 when it ended otherwise or did not start; in sTerminal what a terminal was given.
[[nodiscard]] int iRun(const ProgramStart& start, std::string& sTerminal);

// How a program can be asked to end.
enum class EndRequest {
    Interrupt,   // Ctrl-C
    Terminate,   // as a system that shuts down asks
};
// Whether that can be asked of one program alone.
[[nodiscard]] bool boCanAsk(EndRequest eRequest);

struct ProgramEnd {
    int iCode = -1;                       // the exit code; -1 where the program did not end by itself
    std::optional<EndRequest> eEndedBy;   // what ended it in that case
};

// Runs it, and asks it as soon as boReady says so, at the latest after ten seconds. Only where boCanAsk().
[[nodiscard]] ProgramEnd endWhen(const ProgramStart& start, const std::function<bool()>& boReady, EndRequest eRequest);

}   // namespace oxa::test
