// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/io/System.h"

#include <atomic>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <fcntl.h>
#include <string_view>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>
#include <utility>

#include "oxaifc/io/Failure.h"

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

void vWithoutStandardError(const std::function<void()>& function) {
    struct Restore {
        int iBefore = dup(STDERR_FILENO);
        ~Restore() {
            std::fflush(stderr);
            if (iBefore < 0) return;
            dup2(iBefore, STDERR_FILENO);
            close(iBefore);
        }
    };
    const Restore restore;
    const int iNowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (restore.iBefore >= 0 && iNowhere >= 0) dup2(iNowhere, STDERR_FILENO);
    if (iNowhere >= 0) close(iNowhere);
    function();
}

void vIgnoreWriteSignals() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

bool boReaderGone(int iError) noexcept { return iError == EPIPE; }

namespace {

void (*g_pEnd)() = nullptr;
std::atomic<void (*)()> g_pInterrupt{nullptr};
bool g_boTerminal = false;   // where messages go

// The signal itself ends the program, so that whoever started it learns of it.
void vEnd(int iSignal) {
    const std::string_view text = g_boTerminal ? "\r\x1b[Koxaifc: interrupted\n" : "oxaifc: interrupted\n";
    if (iSignal == SIGINT && write(STDERR_FILENO, text.data(), text.size()) < 0) {}   // nobody is there to tell
    g_pEnd();
    std::signal(iSignal, SIG_DFL);
    raise(iSignal);
}

void vSignal(int iSignal) {
    void (*const pFunction)() = iSignal == SIGINT ? g_pInterrupt.exchange(nullptr) : nullptr;
    pFunction ? pFunction() : vEnd(iSignal);
}

void vCatch(int iSignal, int iFlags) {
    struct sigaction action {};
    // What runs behind nohup, or in the background of a script, is not ended by the terminal.
    if (sigaction(iSignal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) return;
    action.sa_handler = vSignal;
    action.sa_flags = iFlags;
    sigaction(iSignal, &action, nullptr);
}

}   // namespace

void vOnEnd(void (*pFunction)()) {
    g_pEnd = pFunction;
    g_boTerminal = boIsTerminal(stderr);
    for (const int iSignal : {SIGINT, SIGTERM, SIGHUP}) vCatch(iSignal, SA_RESTART);
}

void vEndAfter(double seconds, std::string line) {
    static std::string sLine;
    itimerval timer{};
    setitimer(ITIMER_REAL, &timer, nullptr);   // none while the line changes
    if (seconds <= 0) return;
    sLine = std::move(line) + "\n";
    std::signal(SIGALRM, [](int) {
        if (write(STDERR_FILENO, sLine.data(), sLine.size()) < 0) {}
        g_pEnd();
        _exit(g_iExitFailure);
    });
    timer.it_value.tv_sec = static_cast<time_t>(seconds);
    timer.it_value.tv_usec = static_cast<suseconds_t>((seconds - std::floor(seconds)) * 1e6);
    setitimer(ITIMER_REAL, &timer, nullptr);
}

void vOnInterrupt(void (*pFunction)(), bool boReadEnds) {
    g_pInterrupt = pFunction;
    vCatch(SIGINT, boReadEnds ? 0 : SA_RESTART);
}

}   // namespace oxa::tool
