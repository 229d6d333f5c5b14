// How long a thread waits for the lock of a section queue, whose holder may have been stopped or killed. Boost asks
// this header, which therefore comes before each of its own.
#pragma once

#include <cstdint>

namespace velmora::msgqueue {

/// In milliseconds. A holder that is merely not run for a while is back within this time even on a busy machine.
inline constexpr std::int64_t kPatience = 200;

/// Of this thread.
inline thread_local std::int64_t lockPatience = kPatience;

}  // namespace velmora::msgqueue

#define BOOST_INTERPROCESS_ENABLE_TIMEOUT_WHEN_LOCKING
#define BOOST_INTERPROCESS_TIMEOUT_WHEN_LOCKING_DURATION_MS ::velmora::msgqueue::lockPatience
