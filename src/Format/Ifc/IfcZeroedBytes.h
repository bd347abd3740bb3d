// ZeroedBytes: zero-filled memory for the blocks of a pool.
//
// For      SimplePool. A large block costs only the pages of it that are touched: instance numbers may lie far apart,
//          and of most chunks of the entity table a sparse file then touches next to nothing.
// Threads  any number at once.
#pragma once

#include <cstddef>
#include <memory>

#include "platform/Export.h"

namespace oxa::memory {

struct OXA_IFC_API ZeroedBytesDeleter {
    std::size_t iMapped = 0;   // bytes that the system mapped; 0 for a block of the heap
    void operator()(void* pBytes) const noexcept;
};
using ZeroedBytes = std::unique_ptr<char[], ZeroedBytesDeleter>;

// Aligned for every basic type. Throws std::bad_alloc.
[[nodiscard]] OXA_IFC_API ZeroedBytes zeroedBytes(std::size_t iBytes);

}   // namespace oxa::memory
