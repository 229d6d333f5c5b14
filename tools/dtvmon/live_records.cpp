// Receives.
#include "live_records.h"

#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>

#include "service_client.h"

namespace dtvmon {

namespace {

using Clock = std::chrono::steady_clock;

/// Becomes readable at SIGINT or SIGTERM.
class EndingSignals {
public:
    EndingSignals() {
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
    EndingSignals(const EndingSignals&) = delete;
    EndingSignals& operator=(const EndingSignals&) = delete;
    ~EndingSignals() { close(descriptor); }

    int fd() const { return descriptor; }

private:
    int descriptor = -1;
};

/// Milliseconds for poll(); -1 without an end.
int leftUntil(const std::optional<Clock::time_point>& end) {
    if (!end) {
        return -1;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*end - Clock::now());
    return left.count() <= 0 ? 0 : static_cast<int>(left.count());
}

}  // namespace

void followService(const std::string& socket, std::optional<std::chrono::seconds> longest, const Take& take) {
    const EndingSignals signals;
    dtvctl::ServiceClient client(socket);
    client.ask({{"command", "monitor"}});
    control::Connection connection = client.release();
    const std::optional<Clock::time_point> end =
        longest ? std::optional<Clock::time_point>(Clock::now() + *longest) : std::nullopt;
    take(connection.takeBytes());
    while (std::ferror(stdout) == 0) {
        std::array<pollfd, 2> waits = {pollfd{signals.fd(), POLLIN, 0}, pollfd{connection.fd(), POLLIN, 0}};
        const int ready = poll(waits.data(), waits.size(), leftUntil(end));
        if (ready == 0 || waits[0].revents != 0) {
            return;
        }
        if (waits[1].revents != 0) {
            const bool goesOn = connection.fill();
            take(connection.takeBytes());
            if (!goesOn) {
                throw dtvctl::NoService("the service has gone");
            }
        }
    }
}

}  // namespace dtvmon
