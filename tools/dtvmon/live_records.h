// The bytes of the bus as they come from a running service.
// Threads: one. SIGINT and SIGTERM must be blocked, and end the live bytes.
// Blocks:  until there are bytes.
// Fails:   throws dtvctl::NoService if there is no service or it has gone, dtvctl::Refused if it takes no more
//          monitors.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace dtvmon {

/// What is called with bytes that have come, and each second.
struct Following {
    std::function<void(std::string_view bytes)> take;
    std::function<void()> second;
};

/// Returns at a signal, at the end of the time, or when the output goes.
void followService(const std::string& socket, std::optional<std::chrono::seconds> longest, const Following& following);

}  // namespace dtvmon
