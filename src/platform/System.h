// SPDX-License-Identifier: Apache-2.0
// System: what the platform asks of the operating system beyond the standard library. Each system has a source.
//
// Callers  the sources of this folder.
// Threads  any number at once; no state.
#pragma once

#include <cstddef>
#include <cstdio>

namespace oxa::platform {

// Hands what the process and the system hold back of a file to the disk. False, and errno, when that fails.
[[nodiscard]] bool boFlushToDisk(std::FILE* pFile);

// Fills in random bytes that nobody can foretell, 256 at most. Throws std::system_error where the system has none.
void vRandomFill(void* pBytes, std::size_t iCount);

}   // namespace oxa::platform
