// Receives.
#include "live_records.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cstdio>

#include "ending_signals.h"
#include "service_client.h"

namespace dtvmon {

namespace {

using Clock = std::chrono::steady_clock;

/// Milliseconds for poll().
int leftUntil(Clock::time_point end) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
    return left.count() <= 0 ? 0 : static_cast<int>(left.count());
}

}  // namespace

void followService(const std::string& socket, std::optional<std::chrono::seconds> longest, const Following& following) {
    const dtvctl::EndingSignals signals;
    dtvctl::ServiceClient client(socket);
    client.ask({{"command", "monitor"}});
    control::Connection connection = client.release();
    const Clock::time_point end = longest ? Clock::now() + *longest : Clock::time_point::max();
    Clock::time_point second = Clock::now() + std::chrono::seconds(1);
    following.take(connection.takeBytes());
    while (std::ferror(stdout) == 0) {
        std::array<pollfd, 2> waits = {pollfd{signals.fd(), POLLIN, 0}, pollfd{connection.fd(), POLLIN, 0}};
        poll(waits.data(), waits.size(), leftUntil(std::min(second, end)));
        if (waits[0].revents != 0 || Clock::now() >= end) {
            return;
        }
        if (waits[1].revents != 0) {
            const bool goesOn = connection.fill();
            following.take(connection.takeBytes());
            if (!goesOn) {
                throw dtvctl::NoService("the service has gone");
            }
        }
        if (Clock::now() >= second) {
            following.second();
            second += std::chrono::seconds(1);
        }
    }
}

}  // namespace dtvmon
