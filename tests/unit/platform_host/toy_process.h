// A service of the toy interface in a process of its own.
#pragma once

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "become.h"

inline pid_t startServiceProcess(const std::string& name) {
    const pid_t child = fork();
    if (child == 0) {
        become(TOY_SERVICE, {name});
    }
    return child;
}

inline void killAndReap(pid_t child) {
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}
