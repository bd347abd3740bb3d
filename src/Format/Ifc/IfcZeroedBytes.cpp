#include "Format/Ifc/IfcZeroedBytes.h"

#include <cstdlib>
#include <new>

#if __has_include(<sys/mman.h>)
#include <sys/mman.h>
#endif

namespace oxa::memory {

#if __has_include(<sys/mman.h>)

namespace {

// The heap is no place for large blocks that stay mostly empty, which chunks of an entity table may: once it has freed
// a large one, calloc() cuts them from its top and clears up to 128 KiB of each. Smaller blocks are filled to their end,
// and there memory that the process has already is the faster one.
constexpr std::size_t g_iMapFrom = 1024 * 1024;

ZeroedBytes mappedBytes(std::size_t iBytes) {
    void* pBytes =
        mmap(nullptr, iBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (pBytes == MAP_FAILED) throw std::bad_alloc();
#ifdef MADV_NOHUGEPAGE
    // Neighbours grow together, and a huge page for each byte touched would fill all of them.
    (void)madvise(pBytes, iBytes, MADV_NOHUGEPAGE);
#endif
    return {static_cast<char*>(pBytes), {iBytes}};
}

}   // namespace

void ZeroedBytesDeleter::operator()(void* pBytes) const noexcept {
    if (iMapped)
        munmap(pBytes, iMapped);
    else
        std::free(pBytes);
}

#else

void ZeroedBytesDeleter::operator()(void* pBytes) const noexcept { std::free(pBytes); }

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
