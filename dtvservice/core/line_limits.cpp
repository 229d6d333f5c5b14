// Counts lines.
#include "line_limits.h"

#include "service_log.h"
#include "text/printable.h"

namespace dtvservice {

bool LineLimits::mayTell(const std::string& subject, const char* function, Clock::time_point now) {
    const auto [entry, isNew] = subjects[subject].try_emplace(function, Period{now, 0});
    Period& period = entry->second;
    if (!isNew && now - period.began >= kPeriod) {
        tellLeftOut(subject, *entry);
        period = {now, 0};
    }
    ++period.lines;
    if (period.lines == kMostLines + 1) {
        BLOG_TAGGED(blog::kUnsupported, "%s: no further line of %s() for %lld s\n", subject.c_str(), function,
                    static_cast<long long>(kPeriod.count()));
    }
    return period.lines <= kMostLines;
}

void LineLimits::forget(const std::string& subject) {
    const auto found = subjects.find(subject);
    if (found != subjects.end()) {
        for (const auto& of : found->second) {
            tellLeftOut(subject, of);
        }
        subjects.erase(found);
    }
}

void LineLimits::tellLeftOut(const std::string& subject, const Periods::value_type& of) {
    const auto& [function, period] = of;
    if (period.lines > kMostLines) {
        BLOG_TAGGED(blog::kUnsupported, "%s: %llu lines of %s() were left out\n", subject.c_str(),
                    static_cast<unsigned long long>(period.lines - kMostLines), function.c_str());
    }
}

std::string shownName(const std::string& name) {
    constexpr std::size_t kLongest = 64;
    return name.size() <= kLongest ? text::printable(name) : text::printable(name.substr(0, kLongest)) + "...";
}

}  // namespace dtvservice
