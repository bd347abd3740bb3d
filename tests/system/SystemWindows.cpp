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

bool boTakesName(std::string_view name) {
    return boTakesWord(name) && name.find_first_of("<>:\"/\\|?*") == std::string_view::npos;
}

// Quotes and backslashes may take two, and the line has 32,767 in all.
bool boTakesWord(std::string_view word) {
    const auto iBytes = static_cast<int>(word.size());
    return word.size() < 15'000 &&
           (word.empty() || MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, word.data(), iBytes, nullptr, 0) != 0);
}

bool boHasShells() { return false; }
std::string sNoFolderTold() { return "there is no such folder"; }

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

int iRun(const ProgramStart& start, std::string&) {
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
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, sLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &info, &process)) return -1;
    const Handle thread(process.hThread);
    const Handle child(process.hProcess);
    WaitForSingleObject(child.get(), INFINITE);
    DWORD iCode = 0;                         // none of a program of another system, which Wine starts as well
    constexpr DWORD g_iCrash = 0x80000000;   // codes of exceptions have this bit
    return GetExitCodeProcess(child.get(), &iCode) && iCode < g_iCrash ? static_cast<int>(iCode) : -1;
}

// Ctrl-C and Ctrl-Break go to all programs of a console, or to a group of them, which not every console knows.
bool boCanAsk(EndRequest) { return false; }

ProgramEnd endWhen(const ProgramStart&, const std::function<bool()>&, EndRequest) {
    throw std::logic_error("no program can be asked to end");
}

}   // namespace oxa::test
