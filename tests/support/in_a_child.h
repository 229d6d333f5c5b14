// Runs a part of a test in a process of its own, because it changes what the process cannot change back, or ends it.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <functional>

/// Returns the exit code of the check's process, or -1 if a signal ended it. The process ends without its exit
/// handlers.
inline int inAChild(const std::function<int()>& check) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(check());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
