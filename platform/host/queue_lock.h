// How long a thread waits for the lock of a section queue, whose holder may have been stopped or killed. Boost asks
// this header, which therefore comes before each of its own.
#pragma once

#include <cstdint>

namespace velmora::msgqueue {

inline constexpr std::int64_t kReadersPatience = 200;
/// A reader that is not run while it has the lock is back within this time even on a busy machine.
inline constexpr std::int64_t kWritersPatience = 50;

/// Of this thread, in milliseconds.
inline thread_local std::int64_t lockPatience = kReadersPatience;

}  // namespace velmora::msgqueue

#define BOOST_INTERPROCESS_ENABLE_TIMEOUT_WHEN_LOCKING
#define BOOST_INTERPROCESS_TIMEOUT_WHEN_LOCKING_DURATION_MS ::velmora::msgqueue::lockPatience
