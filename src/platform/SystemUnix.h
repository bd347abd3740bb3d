// SPDX-License-Identifier: Apache-2.0
// SystemUnix: mapped memory, as far as Linux and macOS do it alike.
//
// Callers  SystemLinux.cpp, SystemMac.cpp.
// Threads  any number at once; no state.
#pragma once

#include <cstddef>
#include <span>

namespace oxa::platform {

// Bytes of a page, of the small kind.
[[nodiscard]] std::size_t iPageSize() noexcept;

// Pages of zeros, with these flags beside those of a private mapping. With boAligned they begin at a multiple of 2 MiB.
// Null where there is no memory.
[[nodiscard]] void* pMapPages(std::size_t iBytes, bool boAligned, int iFlags) noexcept;

// The whole pages of a range; empty where it has none.
[[nodiscard]] std::span<char> wholePages(void* pBytes, std::size_t iBytes) noexcept;

}   // namespace oxa::platform
