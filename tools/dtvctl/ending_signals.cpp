// Takes the signals by a descriptor.
#include "ending_signals.h"

#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace dtvctl {

EndingSignals::EndingSignals() {
    sigset_t signals{};
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    descriptor = signalfd(-1, &signals, SFD_CLOEXEC);
    if (descriptor < 0) {
        throw std::runtime_error(std::string("no descriptor for signals: ") + std::strerror(errno));
    }
}

EndingSignals::~EndingSignals() {
    close(descriptor);
}

bool EndingSignals::comeWithin(std::chrono::milliseconds longest) const {
    pollfd waits{descriptor, POLLIN, 0};
    return poll(&waits, 1, static_cast<int>(longest.count())) > 0;
}

}  // namespace dtvctl
