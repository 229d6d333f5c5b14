// Counts repetitions.
#include "repeated_messages.h"

#include <algorithm>
#include <numeric>

namespace dtvservice {

namespace {

std::string repeated(const std::string& message, std::uint64_t times) {
    return message + " (repeated " + std::to_string(times) + " times)";
}

}  // namespace

std::optional<std::string> RepeatedMessages::tell(const std::string& subject, const std::string& message,
                                                  std::uint64_t times, Clock::time_point now) {
    auto found = entries.find(subject);
    if (found == entries.end()) {
        const std::uint64_t lost = entries.size() == kMostMessages ? forgetAll() : 0;
        entries[subject] = {now, now, kFirstPause, 0};
        return lost == 0 ? message
                         : message + " (" + std::to_string(lost) + " repetitions of other messages were not told)";
    }
    Entry& entry = found->second;
    // A message that has stayed away for long is news again.
    if (now - entry.last > kLongestPause) {
        const std::uint64_t untold = entry.untold;
        entry = {now, now, kFirstPause, 0};
        return untold == 0 ? message : repeated(message, untold + times);
    }
    entry.last = now;
    entry.untold += times;
    if (now - entry.told < entry.pause) {
        return std::nullopt;
    }
    const std::string line = repeated(message, entry.untold);
    entry = {now, now, std::min<std::chrono::nanoseconds>(2 * entry.pause, kLongestPause), 0};
    return line;
}

/// Returns the number of repetitions that have not been told.
std::uint64_t RepeatedMessages::forgetAll() {
    const std::uint64_t untold =
        std::accumulate(entries.begin(), entries.end(), std::uint64_t{0},
                        [](std::uint64_t sum, const auto& entry) { return sum + entry.second.untold; });
    entries.clear();
    return untold;
}

}  // namespace dtvservice
