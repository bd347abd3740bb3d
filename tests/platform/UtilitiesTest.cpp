// SPDX-License-Identifier: Apache-2.0
#include "platform/Utilities.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <string>
#include <type_traits>

#if defined(__linux__)
#include <csignal>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace oxa {
namespace {

static_assert(std::is_base_of_v<std::exception, exception>);

TEST(Exception, KeepsItsText) {
    const std::string sText = "returning nullptr";
    try {
        throw exception(sText);
    } catch (const std::exception& fault) {
        EXPECT_STREQ(fault.what(), "returning nullptr");
        return;
    }
    FAIL() << "not caught as std::exception";
}

TEST(Debugger, BreakIsHarmlessWithoutADebugger) {
    Debugger::vBreak();   // SIGTRAP would end the program here
    SUCCEED();
}

#if defined(__linux__)
std::ptrdiff_t iOpenFiles() {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return std::distance(begin(files), end(files));
}

TEST(Debugger, LeavesNoFileOpen) {
    const std::ptrdiff_t iBefore = iOpenFiles();
    Debugger::vBreak();
    EXPECT_EQ(iOpenFiles(), iBefore);
}

// This process is the debugger of another one, which stops where it breaks.
TEST(Debugger, BreaksUnderADebugger) {
    constexpr int g_iUntraceable = 3;
    const pid_t iChild = fork();
    ASSERT_GE(iChild, 0);
    if (iChild == 0) {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(g_iUntraceable);
        Debugger::vBreak();
        _exit(0);
    }
    int iStatus = 0;
    ASSERT_EQ(waitpid(iChild, &iStatus, 0), iChild);
    if (WIFEXITED(iStatus) && WEXITSTATUS(iStatus) == g_iUntraceable) GTEST_SKIP() << "no process may be traced here";
    ASSERT_TRUE(WIFSTOPPED(iStatus));
    EXPECT_EQ(WSTOPSIG(iStatus), SIGTRAP);
    kill(iChild, SIGKILL);
    EXPECT_EQ(waitpid(iChild, &iStatus, 0), iChild);
}
#endif

}   // namespace
}   // namespace oxa
