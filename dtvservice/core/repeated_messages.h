// RepeatedMessages: keeps a message that comes again and again from filling the log. It is told at once the first time,
// then with the number of its repetitions: after 10 seconds, and after pauses that double up to an hour. Repetitions
// that have not been told when the message is new again, or forgotten, are told then.
// Threads: one.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace dtvservice {

class RepeatedMessages {
public:
    using Clock = std::chrono::steady_clock;

    static constexpr std::chrono::seconds kFirstPause{10};
    static constexpr std::chrono::hours kLongestPause{1};
    /// The most messages that are told apart. One more, and all are forgotten.
    static constexpr std::size_t kMostMessages = 64;

    /// The line to write now; nothing if the message is only counted.
    std::optional<std::string> tell(const std::string& message, Clock::time_point now = Clock::now()) {
        return tell(message, message, 1, now);
    }
    /// The same for a message whose text changes, for example by a number, and that has come several times.
    std::optional<std::string> tell(const std::string& subject, const std::string& message, std::uint64_t times,
                                    Clock::time_point now = Clock::now());

private:
    struct Entry {
        Clock::time_point told;
        Clock::time_point last;
        std::chrono::nanoseconds pause;
        std::uint64_t untold;
    };

    std::uint64_t forgetAll();

    std::map<std::string, Entry> entries;  // by subject
};

}  // namespace dtvservice
