// Keeps the process's number, which a forked process forgets.
#include "own_process.h"

#include <pthread.h>
#include <unistd.h>

#include <atomic>

namespace host {

namespace {

std::atomic<pid_t> kept{0};

void forget() {
    kept.store(0, std::memory_order_relaxed);
}

/// Done when the library is loaded: a lock of a later moment could be held for ever in a forked process.
const bool isForgottenByForks = pthread_atfork(nullptr, nullptr, &forget) == 0;

}  // namespace

pid_t ownProcess() {
    pid_t number = kept.load(std::memory_order_relaxed);
    if (number == 0) {
        number = getpid();
        if (isForgottenByForks) {
            kept.store(number, std::memory_order_relaxed);
        }
    }
    return number;
}

}  // namespace host
