// Scenario: what an operator or a fault does to the service, step by step, at given times or upon browsers' commands.
// It is read from JSON; scenario_keys.h has the keys.
// Threads: any; nothing is shared.
// Blocks:  never.
// Fails:   parseScenario() names each error by its place.
#pragma once

#include <chrono>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "scenario_keys.h"

namespace dtvservice {

struct Step {
    using Duration = std::chrono::duration<double>;

    Duration at{0};                 ///< since the start of the round; of a step without a command
    std::uint32_t upon = 0;         ///< the command; 0 for a step with a time
    std::uint32_t browser = 0;      ///< whose command; 0 for anybody's
    std::uint64_t nth = 1;          ///< which of the commands
    bool every = false;             ///< upon each of them
    std::optional<Duration> after;  ///< upon a command: so long behind it; else before it is handled
    const Action* action = nullptr;
    nlohmann::json values;  ///< of the action, checked
};

struct Scenario {
    std::string name;
    std::vector<Step> steps;
    std::optional<Step::Duration> length;  ///< of a round; without one, a round ends when all its steps are over
    std::uint64_t rounds = 1;
    bool stay = false;  ///< faults without an end stay behind
};

/// Nothing if the text is no scenario; `error` then has all errors, or the first ten.
std::optional<Scenario> parseScenario(const std::string& text, std::string& error);

}  // namespace dtvservice
