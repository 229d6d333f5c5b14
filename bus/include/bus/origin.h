// What a record says of its origin.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <cstdint>
#include <string>

namespace bus {

/// Nanoseconds since the epoch.
std::uint64_t timeNow();
/// The name that the system has for the program of a process; empty if it has gone.
std::string programOf(std::uint32_t process);

}  // namespace bus
