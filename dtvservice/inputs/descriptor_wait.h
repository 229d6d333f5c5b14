// Waits for a descriptor, or for the request to end.
// Threads: any.
// Blocks:  as long as the caller asks for.
// Fails:   never.
#pragma once

#include <poll.h>

#include <cerrno>
#include <iterator>

namespace dtvservice {

/// Waits until the descriptor is readable, at most `milliseconds` (-1: no limit). False if `wakeUp` has become
/// readable.
inline bool waitFor(int descriptor, int wakeUp, int milliseconds = -1) {
    pollfd waits[] = {{wakeUp, POLLIN, 0}, {descriptor, POLLIN, 0}};
    while (poll(waits, std::size(waits), milliseconds) < 0 && errno == EINTR) {
    }
    return waits[0].revents == 0;
}

}  // namespace dtvservice
