// tests/support/posix/killed_process.h
// A piece of work in a child process that is killed at a system call of one's choice.
#pragma once

#include <csignal>
#include <gmock/gmock.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

/// Whether this machine lets a process trace another one, without which nothing here works.
inline bool canTrace() {
    const pid_t child = fork();
    if (child == 0) {
        _exit(ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0 ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/// Does the work in a child until its system calls have begun or ended so many times, and kills it there. False when it
/// came to its end before.
template <typename Work>
bool isKilledAfter(int stops, Work work) {
    const pid_t child = fork();
    if (child == 0) {
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        raise(SIGSTOP);
        work();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    for (int i = 0; i < stops; ++i) {
        ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        waitpid(child, &status, 0);
        if (WIFEXITED(status) || WIFSIGNALED(status)) {
            EXPECT_TRUE(WIFEXITED(status)) << "it ended by a signal of its own";
            EXPECT_EQ(WEXITSTATUS(status), 0);
            return false;
        }
    }
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    return true;
}
