// SPDX-License-Identifier: Apache-2.0
// macOS, by what every relative of POSIX has; SystemUnix.cpp has the rest. There are no huge pages to ask for, and who
// debugs a process is not told.
#include "platform/System.h"

#include <sys/mman.h>

#include "platform/SystemUnix.h"

namespace oxa::platform {

void vDebugBreak() noexcept {}

void* pMap(std::size_t iBytes, Pages ePages) noexcept { return pMapPages(iBytes, ePages == Pages::WillBeFilled, 0); }

// The first touch of each page does it.
void vFillSoon(void*, std::size_t) noexcept {}
void vPopulate(void*, std::size_t) noexcept {}

// New pages take the place of the whole ones of the range: the advice that empties them on Linux need not do so here.
void vGiveBack(void* pBytes, std::size_t iBytes) noexcept {
    const auto pages = wholePages(pBytes, iBytes);
    if (pages.empty()) return;
    (void)mmap(pages.data(), pages.size(), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0);
}

// Left to the system.
std::vector<unsigned> processors() { return {}; }
std::optional<unsigned> processorNow() noexcept { return std::nullopt; }
void vMoveTo(unsigned) noexcept {}

}   // namespace oxa::platform
