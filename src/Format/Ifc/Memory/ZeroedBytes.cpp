// SPDX-License-Identifier: Apache-2.0
// Zeroed memory from the heap or from the system.
#include "Format/Ifc/Memory/ZeroedBytes.h"

#include <cstdlib>
#include <new>

#include "platform/System.h"

namespace oxa::memory {

namespace {

// From this size on a block is a mapping of its own. Three kinds of memory follow from it. Small blocks come from
// calloc(), which has mapped memory at hand. Chunks of the entity table may stay mostly empty, and the heap is no place
// for those: once it has freed a large block, calloc() cuts them from its top and clears up to 128 KiB of each. They
// are mapped by themselves, with huge pages turned off, so that one number costs one page of 4 KiB. Segments and tables are
// filled to their end: for those huge pages are asked for, each of which spares 511 entries of the TLB, and takes the
// system a tenth of the time that as many small ones do.
constexpr std::size_t g_iMapFrom = 1024 * 1024;

// A smaller table has too few pages for a system call to pay.
constexpr std::size_t g_iPopulatedFrom = 64 * 1024;

ZeroedBytes mappedBytes(std::size_t iBytes, platform::Pages ePages) {
    void* pBytes = platform::pMap(iBytes, ePages);
    if (!pBytes) throw std::bad_alloc();
    return {static_cast<char*>(pBytes), {iBytes}};
}

}   // namespace

void ZeroedBytesDeleter::operator()(void* pBytes) const noexcept {
    if (iMapped)
        platform::vUnmap(pBytes, iMapped);
    else
        std::free(pBytes);
}

ZeroedBytes zeroedSegment() { return mappedBytes(g_iSegmentBytes, platform::Pages::WillBeFilled); }

ZeroedBytes zeroedBytes(std::size_t iBytes) {
    if (iBytes >= g_iMapFrom) return mappedBytes(iBytes, platform::Pages::MayStayEmpty);
    ZeroedBytes pBytes(static_cast<char*>(std::calloc(iBytes ? iBytes : 1, 1)));
    if (!pBytes) throw std::bad_alloc();
    return pBytes;
}

ZeroedBytes zeroedTable(std::size_t iBytes) {
    ZeroedBytes pBytes =
        iBytes >= g_iSegmentBytes ? mappedBytes(iBytes, platform::Pages::WillBeFilled) : zeroedBytes(iBytes);
    if (iBytes >= g_iPopulatedFrom) vPopulate(pBytes.get(), iBytes);
    return pBytes;
}

void vFillSoon(void* pBytes, std::size_t iBytes) noexcept {
    // Below that, most of a huge page would be somebody else's, or empty.
    constexpr std::size_t g_iFrom = g_iSegmentBytes - 4096;
    if (iBytes >= g_iFrom) platform::vFillSoon(pBytes, iBytes);
}

void vPopulate(void* pBytes, std::size_t iBytes) noexcept { platform::vPopulate(pBytes, iBytes); }

void vGiveBack(void* pBytes, std::size_t iBytes) noexcept { platform::vGiveBack(pBytes, iBytes); }

}   // namespace oxa::memory
