// SPDX-License-Identifier: Apache-2.0
#include "platform/Utilities.h"

#if defined(__linux__)
#include <csignal>
#include <cstdio>
#include <cstring>
#endif

namespace oxa {

exception::~exception() = default;

#if defined(__linux__)
namespace {

// The kernel tells who traces the process: "TracerPid:\t0" means nobody.
bool boTraced() noexcept {
    std::FILE* pFile = std::fopen("/proc/self/status", "r");
    if (!pFile) return false;
    char line[256];
    bool boTracer = false;
    while (std::fgets(line, sizeof line, pFile)) {
        if (std::strncmp(line, "TracerPid:", 10) != 0) continue;
        boTracer = std::strspn(line + 10, " \t0\n") != std::strlen(line + 10);
        break;
    }
    std::fclose(pFile);
    return boTracer;
}

}   // namespace

void Debugger::vBreak() noexcept {
    if (boTraced()) std::raise(SIGTRAP);
}
#else
void Debugger::vBreak() noexcept {}
#endif

}   // namespace oxa
