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
    struct sigaction action {};
    action.sa_handler = noteInterrupt;
    // Output goes on, so that no line is lost. The waits for input use poll(), which a signal ends all the same.
    action.sa_flags = SA_RESTART;
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
