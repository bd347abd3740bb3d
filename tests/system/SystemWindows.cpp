// SPDX-License-Identifier: Apache-2.0
#include "system/System.h"

#include <cstdlib>
#include <stdexcept>

#ifndef NOMINMAX
#define NOMINMAX
#endif
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
// after windows.h, whose types it needs
#include <tlhelp32.h>

#include "platform/Id.h"
#include "platform/Path.h"

namespace oxa::test {

namespace fs = std::filesystem;

fs::path newFolder() {
    const fs::path path = fs::temp_directory_path() / ("oxaifc-" + Guid::generate().toString());
    fs::create_directory(path);
    return path;
}

std::size_t iThreadsNow() {
    const HANDLE handle = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (handle == INVALID_HANDLE_VALUE) return 0;
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    std::size_t iCount = 0;
    for (BOOL boOne = Thread32First(handle, &entry); boOne; boOne = Thread32Next(handle, &entry))
        if (entry.th32OwnerProcessID == GetCurrentProcessId()) ++iCount;
    CloseHandle(handle);
    return iCount;
}

std::size_t iOpenFiles() {
    DWORD iCount = 0;
    return GetProcessHandleCount(GetCurrentProcess(), &iCount) ? iCount : 0;
}

unsigned iProcessors() {
    SYSTEM_INFO info{};
    GetSystemInfo(&info);
    return info.dwNumberOfProcessors;
}

std::string sFullDevice() { return {}; }
std::string sUnreadableFile() { return {}; }

// A right of administrators, and not of each C++ library.
bool boLink(const fs::path&, const fs::path&) { return false; }

// NTFS does so from version 10 on, other disks and Wine do not.
bool boFreesOpenNames() {
    const fs::path folder = newFolder();
    const fs::path path = folder / "a";
    const HANDLE handle = CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_DELETE, nullptr, CREATE_NEW, 0, nullptr);
    DeleteFileW(path.c_str());
    const bool boFreed = fs::is_empty(folder);
    CloseHandle(handle);
    RemoveDirectoryW(folder.c_str());
    return boFreed;
}

bool boHasRights() { return false; }

Variable::Variable(const char* pName, const char* pValue) : m_sName(pName) {
    if (const char* pBefore = std::getenv(pName)) m_sBefore = pBefore;
    _putenv_s(pName, pValue ? pValue : "");
}

Variable::~Variable() { _putenv_s(m_sName.c_str(), m_sBefore.c_str()); }

FileLimit::FileLimit(std::size_t) {}
FileLimit::~FileLimit() = default;

WithoutRights::WithoutRights(unsigned) {}
WithoutRights::~WithoutRights() = default;

bool boWithPipe(const fs::path&, std::string_view, const std::function<void()>&) { return false; }

bool boSilentPipe(const fs::path&) { return false; }

BytesLock::BytesLock(const fs::path& path, unsigned long iFirst, unsigned long iCount)
    : m_pFile(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)),
      m_boHolds(LockFile(m_pFile, iFirst, 0, iCount, 0)) {}

BytesLock::~BytesLock() { CloseHandle(m_pFile); }

bool boCanBe(OutputKind eOutput) { return eOutput == OutputKind::File || eOutput == OutputKind::ClosedPipe; }

namespace {

// As the program's own start takes it apart again: quotes around, and backslashes doubled before a quote.
std::wstring sQuoted(const std::string& sWord) {
    const fs::path wide = str::pathOf(sWord);
    std::wstring sResult = L"\"";
    std::size_t iBackslashes = 0;
    for (const wchar_t c : wide.native()) {
        if (c == L'"') sResult.append(iBackslashes + 1, L'\\');
        iBackslashes = c == L'\\' ? iBackslashes + 1 : 0;
        sResult += c;
    }
    return sResult.append(iBackslashes, L'\\') + L"\"";
}

class Handle {
public:
    explicit Handle(HANDLE handle) : m_handle(handle) {
        if (handle == INVALID_HANDLE_VALUE) throw std::runtime_error("no stream for a program");
    }
    ~Handle() { CloseHandle(m_handle); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    [[nodiscard]] HANDLE get() const noexcept { return m_handle; }

private:
    HANDLE m_handle;
};

SECURITY_ATTRIBUTES inherited() {
    SECURITY_ATTRIBUTES attributes{};
    attributes.nLength = sizeof attributes;
    attributes.bInheritHandle = TRUE;
    return attributes;
}

HANDLE opened(const fs::path& path, DWORD iAccess, DWORD iWay) {
    SECURITY_ATTRIBUTES attributes = inherited();
    return CreateFileW(path.c_str(), iAccess, FILE_SHARE_READ | FILE_SHARE_WRITE, &attributes, iWay,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

HANDLE closedPipe() {
    SECURITY_ATTRIBUTES attributes = inherited();
    HANDLE readEnd = nullptr, writeEnd = nullptr;
    if (!CreatePipe(&readEnd, &writeEnd, &attributes, 0)) throw std::runtime_error("no pipe");
    CloseHandle(readEnd);
    return writeEnd;
}

}   // namespace

namespace {

// A program that runs, with files for its streams.
class Running {
public:
    Running(const ProgramStart& start, DWORD iFlags) {
        const Handle in(opened(start.in, GENERIC_READ, OPEN_EXISTING));
        const Handle error(opened(start.error, GENERIC_WRITE, CREATE_ALWAYS));
        const Handle out(start.eOutput == OutputKind::File ? opened(start.out, GENERIC_WRITE, CREATE_ALWAYS)
                                                           : closedPipe());
        STARTUPINFOW info{};
        info.cb = sizeof info;
        info.dwFlags = STARTF_USESTDHANDLES;
        info.hStdInput = in.get();
        info.hStdOutput = out.get();
        info.hStdError = error.get();
        std::wstring sLine = sQuoted(start.sProgram);
        for (const std::string& sWord : start.words) sLine += L' ' + sQuoted(sWord);
        m_boStarted =
            CreateProcessW(nullptr, sLine.data(), nullptr, nullptr, TRUE, iFlags, nullptr, nullptr, &info, &m_process);
    }
    ~Running() {
        if (!m_boStarted) return;
        CloseHandle(m_process.hThread);
        CloseHandle(m_process.hProcess);
    }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

    [[nodiscard]] bool boStarted() const noexcept { return m_boStarted; }
    [[nodiscard]] DWORD iProcess() const noexcept { return m_process.dwProcessId; }
    // Its exit code, once it has ended.
    [[nodiscard]] DWORD iEnd() const {
        DWORD iCode = 0;
        WaitForSingleObject(m_process.hProcess, INFINITE);
        if (!GetExitCodeProcess(m_process.hProcess, &iCode)) throw std::runtime_error("the program is gone");
        return iCode;
    }

private:
    PROCESS_INFORMATION m_process{};
    bool m_boStarted = false;
};

// Codes of exceptions have the highest bit.
int iCodeOf(DWORD iEnd) { return iEnd < 0x80000000 ? static_cast<int>(iEnd) : -1; }

}   // namespace

int iRun(const ProgramStart& start, std::string&) {
    const Running program(start, 0);
    return program.boStarted() ? iCodeOf(program.iEnd()) : -1;
}

// Ctrl-C goes to all programs of a console, this one among them; Ctrl-Break to one alone.
bool boCanAsk(EndRequest eRequest) { return eRequest == EndRequest::Terminate && GetConsoleCP() != 0; }

ProgramEnd endWhen(const ProgramStart& start, const std::function<bool()>& boReady, EndRequest eRequest) {
    const Running program(start, CREATE_NEW_PROCESS_GROUP);
    if (!program.boStarted()) throw std::runtime_error("the program does not start");
    for (const ULONGLONG iEnd = GetTickCount64() + 10'000; !boReady() && GetTickCount64() < iEnd;) Sleep(5);
    if (!GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, program.iProcess()))
        throw std::runtime_error("there is no Ctrl-Break");
    const DWORD iEnd = program.iEnd();
    constexpr DWORD g_iEndedByEvent = 0xC000013A;   // STATUS_CONTROL_C_EXIT, whichever of both it was
    ProgramEnd result{iCodeOf(iEnd), {}};
    if (iEnd == g_iEndedByEvent) result.eEndedBy = eRequest;
    return result;
}

}   // namespace oxa::test
