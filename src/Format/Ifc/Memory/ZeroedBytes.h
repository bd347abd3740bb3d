// SPDX-License-Identifier: Apache-2.0
/// @file
/// ZeroedBytes: zero-filled memory for the blocks of a pool.
///
/// For      SimplePool, and the tables of a Data. A large block costs only the pages of it that are touched: instance
///          numbers may lie far apart, and of most chunks of the entity table a sparse file then touches next to nothing.
/// Threads  any number at once.
#pragma once

#include <cstddef>
#include <memory>

#include "platform/Export.h"

namespace oxa::memory {

/// Gives a block back to where it came from.
struct OXA_IFC_API ZeroedBytesDeleter {
    std::size_t iMapped = 0;   ///< bytes that the system mapped; 0 for a block of the heap
    /// To the system when it was mapped, else to the heap.
    void operator()(void* pBytes) const noexcept;
};
/// A block, and its owner.
using ZeroedBytes = std::unique_ptr<char[], ZeroedBytesDeleter>;

/// Aligned for every basic type. Throws std::bad_alloc.
[[nodiscard]] OXA_IFC_API ZeroedBytes zeroedBytes(std::size_t iBytes);

/// A block that will be filled here and there, all over, as a hash table is: its pages are there at once, and huge ones as
/// far as it fills those. Throws std::bad_alloc.
[[nodiscard]] OXA_IFC_API ZeroedBytes zeroedTable(std::size_t iBytes);

///@{
/// A block that will be filled to its end: a huge page where the system has such, so that a walk over a large model has
/// fewer TLB misses. Throws std::bad_alloc.
constexpr std::size_t g_iSegmentBytes = std::size_t{2} * 1024 * 1024;
[[nodiscard]] OXA_IFC_API ZeroedBytes zeroedSegment();
///@}

/// Has the system take huge pages for a large range that nothing was written to yet and that will be filled: one page
/// fault for 2 MiB instead of 512.
OXA_IFC_API void vFillSoon(void* pBytes, std::size_t iBytes) noexcept;

/// Maps the pages of a range that is about to be written in one system call (MADV_POPULATE_WRITE), instead of one page
/// fault each. Where the system does not know it, the faults do it.
OXA_IFC_API void vPopulate(void* pBytes, std::size_t iBytes) noexcept;

/// Returns the whole pages of a range that holds zeros only to the system (MADV_DONTNEED); when accessed again they are
/// zero.
OXA_IFC_API void vGiveBack(void* pBytes, std::size_t iBytes) noexcept;

}   // namespace oxa::memory
