// The clock of the filter handshake. A test moves time by replacing the function; the product never does.
// Threads: any; the function is set before waits begin.
#pragma once

#include <atomic>

namespace velmora::dvbservice {

/// The monotonic clock in seconds, or -1.0 when it cannot be read.
double monotonicSeconds();

/// What the waits read.
extern std::atomic<double (*)()> handshakeClock;

}  // namespace velmora::dvbservice
