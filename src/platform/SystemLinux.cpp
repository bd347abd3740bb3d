// SPDX-License-Identifier: Apache-2.0
// What Linux has beyond POSIX: advice about pages, and /proc.
#include "platform/System.h"

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include <sched.h>
#include <sys/mman.h>

#include "platform/SystemUnix.h"

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

// For the whole pages of a range; where the system does not know the advice, nothing happens.
void vAdvisePages(void* pBytes, std::size_t iBytes, int iAdvice) noexcept {
    const auto pages = wholePages(pBytes, iBytes);
    if (!pages.empty()) (void)madvise(pages.data(), pages.size(), iAdvice);
}

}   // namespace

void vDebugBreak() noexcept {
    if (boTraced()) std::raise(SIGTRAP);
}

void* pMap(std::size_t iBytes, Pages ePages) noexcept {
    const bool boFilled = ePages == Pages::WillBeFilled;
    void* pBytes = pMapPages(iBytes, boFilled, MAP_NORESERVE);
    // Adjacent mappings are merged, so that both kinds have to say what they are.
    if (pBytes) (void)madvise(pBytes, iBytes, boFilled ? MADV_HUGEPAGE : MADV_NOHUGEPAGE);
    return pBytes;
}

// The pages at its ends are advised, too: what else stands there may as well have a huge page, and a range that ends within
// one would have none in its place.
void vFillSoon(void* pBytes, std::size_t iBytes) noexcept {
    const std::size_t iPage = iPageSize();
    const std::size_t iBefore = reinterpret_cast<std::uintptr_t>(pBytes) % iPage;
    const std::size_t iPages = (iBefore + iBytes + iPage - 1) / iPage;
    if (iBytes > 0) (void)madvise(static_cast<char*>(pBytes) - iBefore, iPages * iPage, MADV_HUGEPAGE);
}

void vPopulate([[maybe_unused]] void* pBytes, [[maybe_unused]] std::size_t iBytes) noexcept {
#ifdef MADV_POPULATE_WRITE   // newer than some systems that this is built on
    vAdvisePages(pBytes, iBytes, MADV_POPULATE_WRITE);
#endif
}

// As many bits as a kernel with a usual configuration has; more need a set of another size, and get no answer.
std::vector<unsigned> processors() {
    cpu_set_t allowed;
    std::vector<unsigned> all;
    if (sched_getaffinity(0, sizeof allowed, &allowed) != 0) return all;
    for (unsigned i = 0; i < CPU_SETSIZE; ++i)
        if (CPU_ISSET(i, &allowed)) all.push_back(i);
    return all;
}

std::optional<unsigned> processorNow() noexcept {
    const int iProcessor = sched_getcpu();
    if (iProcessor < 0) return std::nullopt;
    return static_cast<unsigned>(iProcessor);
}

void vMoveTo(unsigned iProcessor) noexcept {
    cpu_set_t allowed;
    cpu_set_t one;
    if (iProcessor >= CPU_SETSIZE || sched_getaffinity(0, sizeof allowed, &allowed) != 0) return;
    CPU_ZERO(&one);
    CPU_SET(iProcessor, &one);
    if (sched_setaffinity(0, sizeof one, &one) == 0) (void)sched_setaffinity(0, sizeof allowed, &allowed);
}

void vGiveBack(void* pBytes, std::size_t iBytes) noexcept { vAdvisePages(pBytes, iBytes, MADV_DONTNEED); }

}   // namespace oxa::platform
