// Counts repetitions.
#include "repeated_messages.h"

#include <algorithm>

namespace dtvservice {

std::optional<std::string> RepeatedMessages::tell(const std::string& subject, const std::string& message,
                                                  std::uint64_t times, Clock::time_point now) {
    auto found = entries.find(subject);
    // A message that has stayed away for long is news again.
    if (found == entries.end() || now - found->second.last > kLongestPause) {
        if (found == entries.end() && entries.size() == kMostMessages) {
            entries.clear();
        }
        entries[subject] = {now, now, kFirstPause, 0};
        return message;
    }
    Entry& entry = found->second;
    entry.last = now;
    entry.untold += times;
    if (now - entry.told < entry.pause) {
        return std::nullopt;
    }
    const std::string line = message + " (repeated " + std::to_string(entry.untold) + " times)";
    entry = {now, now, std::min<std::chrono::nanoseconds>(2 * entry.pause, kLongestPause), 0};
    return line;
}

}  // namespace dtvservice
