// SPDX-License-Identifier: Apache-2.0
// Windows, from version 10 on.
#include "platform/System.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <io.h>

#ifndef NOMINMAX
#define NOMINMAX
#endif
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
// after windows.h, whose types it needs
#include <bcrypt.h>

#include "platform/Compiler.h"
#if defined(OXA_CALLED_FIRST)
#include <cxxabi.h>
#endif

namespace oxa::platform {

namespace {

#if defined(OXA_CALLED_FIRST)
// MinGW keeps the thread_local variables of a thread in memory that a key of the thread owns, and calls their destructors
// by another key. At the end of a thread keys go in the order in which they were made, and the first such variable makes
// the first of both: the memory would be gone when the destructors run. So theirs is made before anything else is.
OXA_CALLED_FIRST void vDestructorsFirst() {
    static char here = 0;
    abi::__cxa_thread_atexit([](void*) {}, &here, &here);
}
#endif

int iErrnoOf(DWORD iError) {
    const std::error_condition condition =
        std::error_code(static_cast<int>(iError), std::system_category()).default_error_condition();
    return condition.category() == std::generic_category() ? condition.value() : EIO;
}

// Opened so that the file may be removed, and another take its name, while it is in use, as elsewhere.
std::FILE* pOpenShared(const std::filesystem::path& path, DWORD iAccess, DWORD iWay, const char* sMode) {
    const HANDLE handle = CreateFileW(path.c_str(), iAccess, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, iWay, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        errno = iErrnoOf(GetLastError());
        return nullptr;
    }
    const int iFile = _open_osfhandle(reinterpret_cast<std::intptr_t>(handle), _O_BINARY);
    if (iFile < 0) {
        CloseHandle(handle);
        return nullptr;
    }
    std::FILE* pFile = _fdopen(iFile, sMode);
    if (!pFile) _close(iFile);
    return pFile;
}

}   // namespace

bool boFlushToDisk(std::FILE* pFile) { return std::fflush(pFile) == 0 && _commit(_fileno(pFile)) == 0; }

std::FILE* pOpen(const std::filesystem::path& path, const char* sMode) {
    const std::string_view mode = sMode;
    if (mode == "rb") return pOpenShared(path, GENERIC_READ, OPEN_EXISTING, "rb");
    // Not every C library of this system knows "x": a new file, or none.
    if (mode == "wbx") return pOpenShared(path, GENERIC_WRITE, CREATE_NEW, "wb");
    return _wfopen(path.c_str(), std::wstring(mode.begin(), mode.end()).c_str());
}

std::size_t iReadAt(std::FILE* pFile, std::uint64_t iPlace, char* pTo, std::size_t iWanted) noexcept {
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(pFile)));
    constexpr std::size_t g_iMost = 1 << 30;   // a call takes 32 bits
    std::size_t iRead = 0;
    while (iRead < iWanted) {
        OVERLAPPED at{};
        at.Offset = static_cast<DWORD>(iPlace + iRead);
        at.OffsetHigh = static_cast<DWORD>((iPlace + iRead) >> 32);
        DWORD iPart = 0;
        if (!ReadFile(handle, pTo + iRead, static_cast<DWORD>(std::min(iWanted - iRead, g_iMost)), &iPart, &at)) break;
        if (iPart == 0) break;
        iRead += iPart;
    }
    return iRead;
}

bool boTextIsPlain() noexcept { return false; }

bool boMoved(std::FILE* pFile, std::uint64_t iPlace) noexcept {
    return _fseeki64(pFile, static_cast<std::int64_t>(iPlace), SEEK_SET) == 0;
}

namespace {

// As other systems do it: whoever has the old file open goes on reading that. Not every file system knows how.
bool boRenamed(const std::filesystem::path& from, const std::filesystem::path& to) {
    constexpr DWORD g_iReplaceLikePosix =
        0x3;   // FILE_RENAME_FLAG_REPLACE_IF_EXISTS | FILE_RENAME_FLAG_POSIX_SEMANTICS
    constexpr auto g_eRenameEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);   // FileRenameInfoEx, of newer headers
    const std::wstring sTo = std::filesystem::absolute(to).make_preferred().native();
    std::vector<std::byte> bytes(sizeof(FILE_RENAME_INFO) + sTo.size() * sizeof(wchar_t));
    auto* pInfo = ::new (bytes.data()) FILE_RENAME_INFO{};
    std::memcpy(pInfo, &g_iReplaceLikePosix, sizeof g_iReplaceLikePosix);   // in newer headers a member, "Flags"
    pInfo->FileNameLength = static_cast<DWORD>(sTo.size() * sizeof(wchar_t));
    std::memcpy(pInfo->FileName, sTo.c_str(), (sTo.size() + 1) * sizeof(wchar_t));
    const HANDLE handle = CreateFileW(from.c_str(), DELETE | SYNCHRONIZE, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return false;
    const bool boDone = SetFileInformationByHandle(handle, g_eRenameEx, pInfo, static_cast<DWORD>(bytes.size()));
    CloseHandle(handle);
    return boDone;
}

}   // namespace

int iReplace(const std::filesystem::path& from, const std::filesystem::path& to) {
    if (boRenamed(from, to)) return 0;
    const DWORD iFlags = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
    return MoveFileExW(from.c_str(), to.c_str(), iFlags) ? 0 : iErrnoOf(GetLastError());
}

void vRandomFill(void* pBytes, std::size_t iCount) {
    if (BCryptGenRandom(nullptr, static_cast<PUCHAR>(pBytes), static_cast<ULONG>(iCount),
                        BCRYPT_USE_SYSTEM_PREFERRED_RNG) != 0)
        throw std::system_error(EIO, std::generic_category(), "random bytes");
}

// As the program's file has it, for every thread whose creator names no other size.
std::size_t iThreadStack() noexcept {
    const auto* const pFile = reinterpret_cast<const std::byte*>(GetModuleHandleW(nullptr));
    const auto* const pHead = reinterpret_cast<const IMAGE_DOS_HEADER*>(pFile);
    const auto* const pHeaders = reinterpret_cast<const IMAGE_NT_HEADERS*>(pFile + pHead->e_lfanew);
    return static_cast<std::size_t>(pHeaders->OptionalHeader.SizeOfStackReserve);
}

void vDebugBreak() noexcept {
    if (IsDebuggerPresent()) DebugBreak();
}

// Huge pages need a right that hardly a user has, so both kinds of pages are one, and alignment would serve nothing. The
// system counts all of it against what memory and paging files hold together, the parts that stay empty too.
void* pMap(std::size_t iBytes, Pages) noexcept {
    return VirtualAlloc(nullptr, iBytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
}

void vUnmap(void* pBytes, std::size_t) noexcept { VirtualFree(pBytes, 0, MEM_RELEASE); }

// There is no such advice: pages come singly, and those that nobody touched never came.
void vFillSoon(void*, std::size_t) noexcept {}
void vPopulate(void*, std::size_t) noexcept {}
void vGiveBack(void*, std::size_t) noexcept {}

bool boRemove(const wchar_t* pPath) noexcept { return DeleteFileW(pPath) || RemoveDirectoryW(pPath); }

// Left to the system.
std::vector<unsigned> processors() { return {}; }
std::optional<unsigned> processorNow() noexcept { return std::nullopt; }
void vMoveTo(unsigned) noexcept {}

}   // namespace oxa::platform
