// SPDX-License-Identifier: Apache-2.0
// BenchMemory: what a piece of work does to the resident memory of a process of its own.
#pragma once

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

namespace oxa::bench {

// Resident bytes of this process by /proc: "VmRSS:" now or "VmHWM:" at the peak; 0 where there is no /proc.
inline double residentBytes(const char* sField) {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind(sField, 0) == 0) return std::strtod(line.c_str() + std::strlen(sField), nullptr) * 1024;
    return 0;
}

struct Memory {
    double after = 0;   // above what was there before, with the result of the work still there
    double peak = 0;
};

// Runs the work in a child, so that nothing else of this process is counted. It answers an object that holds what
// shall be there at the end.
template <class Work>
Memory memoryOf(Work&& work) {
    int ends[2];
    Memory memory;
    if (pipe(ends) != 0) return memory;
    if (fork() == 0) {
        malloc_trim(0);   // what the parent freed would be taken again, and not be seen
        // The peak so far is the parent's: written back to what is there now.
        if (std::ofstream clear("/proc/self/clear_refs"); clear) clear << '5';
        const double before = residentBytes("VmRSS:");
        const auto result = work();
        malloc_trim(0);
        memory = {residentBytes("VmRSS:") - before, residentBytes("VmHWM:") - before};
        const bool boWritten = write(ends[1], &memory, sizeof memory) == static_cast<ssize_t>(sizeof memory);
        _exit(boWritten ? 0 : 1);
    }
    close(ends[1]);
    if (read(ends[0], &memory, sizeof memory) != static_cast<ssize_t>(sizeof memory)) memory = {};
    close(ends[0]);
    wait(nullptr);
    return memory;
}

}   // namespace oxa::bench
