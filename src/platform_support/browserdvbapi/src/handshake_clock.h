// The clock of the filter handshake. Only tests replace the function, to control time.
// Threads: any; set the function before waits begin.
#pragma once

#include <atomic>

namespace velmora::dvbservice {

/// The monotonic clock in seconds, or -1.0 when it cannot be read.
double monotonicSeconds();

/// The clock that the waits read.
extern std::atomic<double (*)()> handshakeClock;

}  // namespace velmora::dvbservice
