// The inputs in answers to the operator.
// Threads: the loop's.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "event_loop.h"
#include "multiplexes.h"

namespace dtvservice {

/// The state of every input, and the sums of its counts.
nlohmann::json describeInputs(const Multiplexes& multiplexes);
/// The same, and the counts of every PID that has had packets.
nlohmann::json countInputs(const Multiplexes& multiplexes, EventLoop::Clock::time_point now);

}  // namespace dtvservice
