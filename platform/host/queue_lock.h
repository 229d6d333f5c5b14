// How long a thread waits for the lock of a section queue. The process that holds the lock may have been stopped or
// killed. Boost's headers use these macros, so include this header before them.
#pragma once

#include <cstdint>

namespace velmora::msgqueue {

/// In milliseconds. A holder that only waits for the processor releases the lock within this time, even on a busy
/// machine.
inline constexpr std::int64_t kPatience = 200;

/// The current thread's limit, in milliseconds.
std::int64_t lockPatience();

}  // namespace velmora::msgqueue

#define BOOST_INTERPROCESS_ENABLE_TIMEOUT_WHEN_LOCKING
#define BOOST_INTERPROCESS_TIMEOUT_WHEN_LOCKING_DURATION_MS ::velmora::msgqueue::lockPatience()
