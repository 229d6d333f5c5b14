// The handler of SIGINT.
#include "interrupt.h"

#include <atomic>
#include <csignal>

namespace dvbshell {

namespace {

std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler uses it");

void noteInterrupt(int signal) {
    if (interrupted.exchange(true)) {
        std::signal(signal, SIG_DFL);
        std::raise(signal);
    }
}

}  // namespace

void catchInterrupts() {
    // Without SA_RESTART, so that the prompt's wait for a key ends.
    struct sigaction action {};
    action.sa_handler = noteInterrupt;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
}

bool isInterrupted() {
    return interrupted.load();
}

void clearInterrupt() {
    interrupted.store(false);
}

}  // namespace dvbshell
