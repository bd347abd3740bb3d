// SPDX-License-Identifier: Apache-2.0
// Zeroed memory from the heap or from the system. Where there is no mmap, everything comes from the heap, and the
// advice to the system does nothing.
#include "Format/Ifc/Memory/ZeroedBytes.h"

#include <cstdint>
#include <cstdlib>
#include <new>

#if __has_include(<sys/mman.h>)
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace oxa::memory {

#if __has_include(<sys/mman.h>)

namespace {

// From this size on a block is a mapping of its own. Three kinds of memory follow from it. Small blocks come from
// calloc(), which has mapped memory at hand. Chunks of the entity table may stay mostly empty, and the heap is no place
// for those: once it has freed a large block, calloc() cuts them from its top and clears up to 128 KiB of each. They
// are mapped by themselves, with huge pages turned off, so that one number costs one page of 4 KiB. Segments are filled
// to their end: for those huge pages are asked for, since each spares 511 entries of the TLB.
constexpr std::size_t g_iMapFrom = 1024 * 1024;

char* pMap(std::size_t iBytes) {
    void* pBytes = mmap(nullptr, iBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (pBytes == MAP_FAILED) throw std::bad_alloc();
    return static_cast<char*>(pBytes);
}

ZeroedBytes mappedBytes(std::size_t iBytes) {
    char* pBytes = pMap(iBytes);
#ifdef MADV_NOHUGEPAGE
    // Adjacent mappings are merged, and a huge page for each byte touched would use 2 MiB where 4 KiB will do.
    (void)madvise(pBytes, iBytes, MADV_NOHUGEPAGE);
#endif
    return {pBytes, {iBytes}};
}

// For the whole pages of a range; where the system does not know the advice, nothing happens.
[[maybe_unused]] void vAdvisePages(void* pBytes, std::size_t iBytes, int iAdvice) noexcept {
    static const auto iPage = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t iBefore = -reinterpret_cast<std::uintptr_t>(pBytes) % iPage;
    if (iBytes < iBefore + iPage) return;
    (void)madvise(static_cast<char*>(pBytes) + iBefore, (iBytes - iBefore) / iPage * iPage, iAdvice);
}

}   // namespace

void ZeroedBytesDeleter::operator()(void* pBytes) const noexcept {
    if (iMapped)
        munmap(pBytes, iMapped);
    else
        std::free(pBytes);
}

ZeroedBytes zeroedSegment() {
    // A huge page has an address that is a multiple of its size. A mapping of twice the size holds one such, and the
    // rest is unmapped again.
    char* pMapped = pMap(2 * g_iSegmentBytes);
    const std::size_t iBefore = -reinterpret_cast<std::uintptr_t>(pMapped) % g_iSegmentBytes;
    char* pBytes = pMapped + iBefore;
    if (iBefore) munmap(pMapped, iBefore);
    munmap(pBytes + g_iSegmentBytes, g_iSegmentBytes - iBefore);
#ifdef MADV_HUGEPAGE
    (void)madvise(pBytes, g_iSegmentBytes, MADV_HUGEPAGE);
#endif
    return {pBytes, {g_iSegmentBytes}};
}

void vPopulate([[maybe_unused]] void* pBytes, [[maybe_unused]] std::size_t iBytes) noexcept {
#ifdef MADV_POPULATE_WRITE
    vAdvisePages(pBytes, iBytes, MADV_POPULATE_WRITE);
#endif
}

void vGiveBack([[maybe_unused]] void* pBytes, [[maybe_unused]] std::size_t iBytes) noexcept {
#ifdef __linux__   // elsewhere the same advice may keep what is in the pages
    vAdvisePages(pBytes, iBytes, MADV_DONTNEED);
#endif
}

#else

void ZeroedBytesDeleter::operator()(void* pBytes) const noexcept { std::free(pBytes); }

ZeroedBytes zeroedSegment() { return zeroedBytes(g_iSegmentBytes); }

void vPopulate(void*, std::size_t) noexcept {}
void vGiveBack(void*, std::size_t) noexcept {}

#endif

ZeroedBytes zeroedBytes(std::size_t iBytes) {
#if __has_include(<sys/mman.h>)
    if (iBytes >= g_iMapFrom) return mappedBytes(iBytes);
#endif
    ZeroedBytes pBytes(static_cast<char*>(std::calloc(iBytes ? iBytes : 1, 1)));
    if (!pBytes) throw std::bad_alloc();
    return pBytes;
}

}   // namespace oxa::memory
