// LineLimits: how many log lines of a kind a browser or an input may cause. Both choose what they send, so without a
// limit one of them fills the log.
// Threads: the loop's.
// Blocks:  never.
// Fails:   never; lines above the limit are counted, and their number is logged.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <string>

namespace dtvservice {

class LineLimits {
public:
    using Clock = std::chrono::steady_clock;

    /// Limit per subject and function that tells: this many lines, then none until the period is over.
    static constexpr std::uint64_t kMostLines = 50;
    static constexpr std::chrono::seconds kPeriod{10};

    /// Whether the function may write a line about the subject, for example "browser 3", now. Logs that lines are left
    /// out, and later how many were.
    bool mayTell(const std::string& subject, const char* function, Clock::time_point now = Clock::now());
    /// The subject has gone.
    void forget(const std::string& subject);

private:
    struct Period {
        Clock::time_point began;
        std::uint64_t lines = 0;
    };

    using Periods = std::map<std::string, Period>;  // by function

    static void tellLeftOut(const std::string& subject, const Periods::value_type& of);

    std::map<std::string, Periods> subjects;
};

/// A name that a peer has chosen, safe and short enough for a log line.
std::string shownName(const std::string& name);

}  // namespace dtvservice
