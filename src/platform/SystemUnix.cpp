// SPDX-License-Identifier: Apache-2.0
// What Linux and macOS have in common: POSIX.
#include "platform/System.h"

#include <cerrno>
#include <system_error>

#if defined(__APPLE__)
#include <sys/random.h>
#endif
#include <unistd.h>

namespace oxa::platform {

bool boFlushToDisk(std::FILE* pFile) { return std::fflush(pFile) == 0 && fsync(fileno(pFile)) == 0; }

std::FILE* pOpen(const std::filesystem::path& path, const char* sMode) { return std::fopen(path.c_str(), sMode); }

int iReplace(const std::filesystem::path& from, const std::filesystem::path& to) {
    return std::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

void vRandomFill(void* pBytes, std::size_t iCount) {
    if (getentropy(pBytes, iCount) != 0) throw std::system_error(errno, std::generic_category(), "random bytes");
}

}   // namespace oxa::platform
