// SPDX-License-Identifier: Apache-2.0
// What Linux has beyond POSIX: advice about pages, and /proc.
#include "platform/System.h"

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include <sys/mman.h>
#include <unistd.h>

namespace oxa::platform {

namespace {

// The kernel tells who traces the process: "TracerPid:\t0" means nobody.
bool boTraced() noexcept {
    std::FILE* pFile = std::fopen("/proc/self/status", "r");
    if (!pFile) return false;
    char line[256];
    bool boTracer = false;
    while (std::fgets(line, sizeof line, pFile)) {
        if (std::strncmp(line, "TracerPid:", 10) != 0) continue;
        boTracer = std::strspn(line + 10, " \t0\n") != std::strlen(line + 10);
        break;
    }
    std::fclose(pFile);
    return boTracer;
}

void* pMapAnywhere(std::size_t iBytes) noexcept {
    void* pBytes = mmap(nullptr, iBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return pBytes == MAP_FAILED ? nullptr : pBytes;
}

// A mapping of twice the size holds an address that is a multiple of it, and the rest is unmapped again.
void* pMapAligned(std::size_t iBytes) noexcept {
    auto* pMapped = static_cast<char*>(pMapAnywhere(2 * iBytes));
    if (!pMapped) return nullptr;
    const std::size_t iBefore = -reinterpret_cast<std::uintptr_t>(pMapped) % iBytes;
    char* pBytes = pMapped + iBefore;
    if (iBefore) munmap(pMapped, iBefore);
    munmap(pBytes + iBytes, iBytes - iBefore);
    return pBytes;
}

// For the whole pages of a range; where the system does not know the advice, nothing happens.
void vAdvisePages(void* pBytes, std::size_t iBytes, int iAdvice) noexcept {
    static const auto iPage = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t iBefore = -reinterpret_cast<std::uintptr_t>(pBytes) % iPage;
    if (iBytes < iBefore + iPage) return;
    (void)madvise(static_cast<char*>(pBytes) + iBefore, (iBytes - iBefore) / iPage * iPage, iAdvice);
}

}   // namespace

void vDebugBreak() noexcept {
    if (boTraced()) std::raise(SIGTRAP);
}

void* pMap(std::size_t iBytes, Pages ePages) noexcept {
    const bool boFilled = ePages == Pages::WillBeFilled;
    void* pBytes = boFilled ? pMapAligned(iBytes) : pMapAnywhere(iBytes);
    // Adjacent mappings are merged, so that both kinds have to say what they are.
    if (pBytes) (void)madvise(pBytes, iBytes, boFilled ? MADV_HUGEPAGE : MADV_NOHUGEPAGE);
    return pBytes;
}

void vUnmap(void* pBytes, std::size_t iBytes) noexcept { munmap(pBytes, iBytes); }

void vPopulate([[maybe_unused]] void* pBytes, [[maybe_unused]] std::size_t iBytes) noexcept {
#ifdef MADV_POPULATE_WRITE   // newer than some systems that this is built on
    vAdvisePages(pBytes, iBytes, MADV_POPULATE_WRITE);
#endif
}

void vGiveBack(void* pBytes, std::size_t iBytes) noexcept { vAdvisePages(pBytes, iBytes, MADV_DONTNEED); }

}   // namespace oxa::platform
