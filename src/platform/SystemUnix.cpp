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
    // A mapping of twice the size holds an address that is a multiple of it, and the rest is unmapped again.
    void* pMapped = mmap(nullptr, boAligned ? 2 * iBytes : iBytes, PROT_READ | PROT_WRITE,
                         MAP_PRIVATE | MAP_ANONYMOUS | iFlags, -1, 0);
    if (pMapped == MAP_FAILED) return nullptr;
    if (!boAligned) return pMapped;
    const std::size_t iBefore = -reinterpret_cast<std::uintptr_t>(pMapped) % iBytes;
    char* pBytes = static_cast<char*>(pMapped) + iBefore;
    if (iBefore) munmap(pMapped, iBefore);
    munmap(pBytes + iBytes, iBytes - iBefore);
    return pBytes;
}

std::span<char> wholePages(void* pBytes, std::size_t iBytes) noexcept {
    static const auto iPage = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t iBefore = -reinterpret_cast<std::uintptr_t>(pBytes) % iPage;
    if (iBytes < iBefore + iPage) return {};
    return {static_cast<char*>(pBytes) + iBefore, (iBytes - iBefore) / iPage * iPage};
}

void vUnmap(void* pBytes, std::size_t iBytes) noexcept { munmap(pBytes, iBytes); }

bool boRemove(const char* pPath) noexcept { return unlink(pPath) == 0 || rmdir(pPath) == 0; }

}   // namespace oxa::platform
