// Questions of other threads that the loop's thread answers.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "event_loop.h"

namespace dtvservice {

/// Runs the question on the loop's thread, and the rest of the answer, which it returns, on this one.
/// Threads: any but the loop's.
/// Blocks:  until there is an answer, or isEnding().
/// Fails:   no value if isEnding(), which is asked ten times a second: a loop that has stopped answers nothing.
std::optional<std::string> askLoop(EventLoop& loop, std::function<std::function<std::string()>()> question,
                                   const std::function<bool()>& isEnding);

}  // namespace dtvservice
