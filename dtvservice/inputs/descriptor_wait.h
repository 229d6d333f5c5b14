// Waiting for a descriptor, or for the word to end.
#pragma once

#include <poll.h>

#include <cerrno>
#include <iterator>

namespace dtvservice {

/// Waits until the descriptor is readable, for so many milliseconds at most (-1: for ever). False when `wakeUp` has
/// become readable.
inline bool waitFor(int descriptor, int wakeUp, int milliseconds = -1) {
    pollfd waits[] = {{wakeUp, POLLIN, 0}, {descriptor, POLLIN, 0}};
    while (poll(waits, std::size(waits), milliseconds) < 0 && errno == EINTR) {
    }
    return waits[0].revents == 0;
}

}  // namespace dtvservice
