// SPDX-License-Identifier: Apache-2.0
// What Linux and macOS have in common: POSIX.
#include "platform/SystemUnix.h"

#include <cerrno>
#include <cstdint>
#include <system_error>

#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#if defined(__APPLE__)
#include <sys/random.h>
#endif
#include <unistd.h>

#include "platform/System.h"

namespace oxa::platform {

namespace {

constexpr std::size_t g_iHugePage = std::size_t{2} * 1024 * 1024;   // of most processors

}   // namespace

std::size_t iPageSize() noexcept {
    static const auto iPage = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return iPage;
}

bool boFlushToDisk(std::FILE* pFile) {
    if (std::fflush(pFile) != 0) return false;
#if defined(F_FULLFSYNC)   // macOS, where fsync leaves it to the drive; not every file system knows the other
    if (fcntl(fileno(pFile), F_FULLFSYNC) == 0) return true;
#endif
    return fsync(fileno(pFile)) == 0;
}

std::FILE* pOpen(const std::filesystem::path& path, const char* sMode) { return std::fopen(path.c_str(), sMode); }

std::size_t iReadAt(std::FILE* pFile, std::uint64_t iPlace, char* pTo, std::size_t iWanted) noexcept {
    std::size_t iRead = 0;
    while (iRead < iWanted) {
        const ssize_t iPart = pread(fileno(pFile), pTo + iRead, iWanted - iRead, static_cast<off_t>(iPlace + iRead));
        if (iPart < 0 && errno == EINTR) continue;
        if (iPart <= 0) break;
        iRead += static_cast<std::size_t>(iPart);
    }
    return iRead;
}

bool boTextIsPlain() noexcept { return true; }

bool boMoved(std::FILE* pFile, std::uint64_t iPlace) noexcept {
    return fseeko(pFile, static_cast<off_t>(iPlace), SEEK_SET) == 0;
}

int iReplace(const std::filesystem::path& from, const std::filesystem::path& to) {
    return std::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

void vRandomFill(void* pBytes, std::size_t iCount) {
    if (getentropy(pBytes, iCount) != 0) throw std::system_error(errno, std::generic_category(), "random bytes");
}

std::size_t iThreadStack() noexcept {
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) return 0;
    std::size_t iBytes = 0;
    if (pthread_attr_getstacksize(&attributes, &iBytes) != 0) iBytes = 0;
    pthread_attr_destroy(&attributes);
    return iBytes;
}

void* pMapPages(std::size_t iBytes, bool boAligned, int iFlags) noexcept {
    const auto pMapped = [iFlags](std::size_t iMapped) -> char* {
        void* p = mmap(nullptr, iMapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | iFlags, -1, 0);
        return p == MAP_FAILED ? nullptr : static_cast<char*>(p);
    };
    const auto iBefore = [](char* p) { return -reinterpret_cast<std::uintptr_t>(p) % g_iHugePage; };
    // Systems put one mapping beside the other, so that behind an aligned one the next mostly is, too.
    char* pBytes = pMapped(iBytes);
    if (!pBytes || !boAligned || iBefore(pBytes) == 0) return pBytes;
    munmap(pBytes, iBytes);
    // A mapping that is larger by a huge page holds an address that is a multiple of it, and the rest is unmapped again.
    const std::size_t iWhole = (iBytes + iPageSize() - 1) / iPageSize() * iPageSize();
    pBytes = pMapped(iWhole + g_iHugePage);
    if (!pBytes) return nullptr;
    const std::size_t iFirst = iBefore(pBytes);
    if (iFirst) munmap(pBytes, iFirst);
    munmap(pBytes + iFirst + iWhole, g_iHugePage - iFirst);
    return pBytes + iFirst;
}

std::span<char> wholePages(void* pBytes, std::size_t iBytes) noexcept {
    const std::size_t iPage = iPageSize();
    const std::size_t iBefore = -reinterpret_cast<std::uintptr_t>(pBytes) % iPage;
    if (iBytes < iBefore + iPage) return {};
    return {static_cast<char*>(pBytes) + iBefore, (iBytes - iBefore) / iPage * iPage};
}

void vUnmap(void* pBytes, std::size_t iBytes) noexcept { munmap(pBytes, iBytes); }

bool boRemove(const char* pPath) noexcept { return unlink(pPath) == 0 || rmdir(pPath) == 0; }

}   // namespace oxa::platform
