// SPDX-License-Identifier: Apache-2.0
// FileFlush: bytes on the disk. Each operating system has its own way, one source each.
#pragma once

#include <cstdio>

namespace oxa::stream {

// Hands what the process and the system hold back of a file to the disk. False, and errno, when that fails.
[[nodiscard]] bool boFlushToDisk(std::FILE* pFile);

}   // namespace oxa::stream
