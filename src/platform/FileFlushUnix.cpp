// SPDX-License-Identifier: Apache-2.0
#include "platform/FileFlush.h"

#include <unistd.h>

namespace oxa::stream {

bool boFlushToDisk(std::FILE* pFile) { return std::fflush(pFile) == 0 && fsync(fileno(pFile)) == 0; }

}   // namespace oxa::stream
