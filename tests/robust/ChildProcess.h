// SPDX-License-Identifier: Apache-2.0
// ChildProcess: what a piece of work costs, measured in a process of its own.
//
// For      the budgets: a peak of memory is one of a whole process.
// Systems  POSIX.
#pragma once

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <stdexcept>
#include <type_traits>

namespace oxa::ifc {

struct Cost {
    std::size_t iMegabytes = 0;   // the largest resident set
    double seconds = 0;           // of processor time, so that a busy machine does not matter
    int iStatus = 0;              // as waitpid() gives it; 0 for an ordinary end
};

// Runs "work" in a forked process and hands its answer back. One that takes more than "iSecondsLimit" of processor
// time, or more than ten times that by the clock, is ended, and its answer is Answer{}.
template <class Answer, class Work>
Answer inChildProcess(unsigned iSecondsLimit, Cost& cost, Work&& work) {
    static_assert(std::is_trivially_copyable_v<Answer>);
    int ends[2];
    if (pipe(ends) != 0) throw std::runtime_error("no pipe");
    const pid_t iChild = fork();
    if (iChild < 0) throw std::runtime_error("no process");
    if (iChild == 0) {
        const rlimit limit{iSecondsLimit, iSecondsLimit};
        setrlimit(RLIMIT_CPU, &limit);
        alarm(10 * iSecondsLimit);
        const Answer answer = work();
        const bool boWritten = write(ends[1], &answer, sizeof answer) == sizeof answer;
        _exit(boWritten ? 0 : 1);   // without the destructors and the tests of the parent
    }
    close(ends[1]);
    Answer answer{};
    if (read(ends[0], &answer, sizeof answer) != sizeof answer) answer = Answer{};
    close(ends[0]);
    rusage usage{};
    if (wait4(iChild, &cost.iStatus, 0, &usage) != iChild) throw std::runtime_error("no child");
    cost.iMegabytes = static_cast<std::size_t>(usage.ru_maxrss) / 1024;
    const auto secondsOf = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    cost.seconds = secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime);
    return answer;
}

}   // namespace oxa::ifc
