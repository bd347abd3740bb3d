// SPDX-License-Identifier: Apache-2.0
// POSIX, as Linux and macOS have it.
#include "platform/System.h"

#include <cerrno>
#include <system_error>

#if defined(__APPLE__)
#include <sys/random.h>
#endif
#include <unistd.h>

namespace oxa::platform {

bool boFlushToDisk(std::FILE* pFile) { return std::fflush(pFile) == 0 && fsync(fileno(pFile)) == 0; }

void vRandomFill(void* pBytes, std::size_t iCount) {
    if (getentropy(pBytes, iCount) != 0) throw std::system_error(errno, std::generic_category(), "random bytes");
}

}   // namespace oxa::platform
