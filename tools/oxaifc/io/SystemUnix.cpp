// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/io/System.h"

#include <csignal>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace oxa::tool {

std::vector<std::string> wordsAtStart(int iCount, char** ppWords) { return {ppWords, ppWords + iCount}; }

bool boShowsColours(std::FILE* pFile) { return boIsTerminal(pFile); }

bool boIsStandardInput(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::equivalent(path, "/dev/stdin", error) && !error;
}

bool boIsTerminal(std::FILE* pFile) { return isatty(fileno(pFile)) == 1; }

std::size_t iTerminalWidth(std::FILE* pFile) {
    winsize size{};
    return ioctl(fileno(pFile), TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

std::uint64_t iPeakMemory() {
    rusage usage{};
    if (getrusage(RUSAGE_SELF, &usage) != 0) return 0;
#ifdef __APPLE__
    constexpr std::uint64_t iUnit = 1;   // bytes there, kibibytes elsewhere
#else
    constexpr std::uint64_t iUnit = 1024;
#endif
    return static_cast<std::uint64_t>(usage.ru_maxrss) * iUnit;
}

void vIgnoreWriteSignals() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

void vOnInterrupt(void (*pFunction)()) {
    static void (*pHandler)() = nullptr;
    pHandler = pFunction;
    struct sigaction action {};
    if (pFunction)
        action.sa_handler = [](int) { pHandler(); };
    else
        action.sa_handler = SIG_DFL;
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
}

}   // namespace oxa::tool
