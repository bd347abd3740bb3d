// SPDX-License-Identifier: Apache-2.0
// A process that another one traces, as Linux has it.
#include <csignal>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/Utilities.h"

namespace oxa {
namespace {

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

}   // namespace
}   // namespace oxa
