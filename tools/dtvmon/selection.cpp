// Matches names.
#include "selection.h"

#include <fnmatch.h>

#include <algorithm>

namespace dtvmon {

namespace {

bool matches(const std::vector<std::string>& patterns, const Seen& seen) {
    return std::any_of(patterns.begin(), patterns.end(), [&seen](const std::string& pattern) {
        const bool isRefused = seen.record.kind == bus::Kind::refused;
        return fnmatch(pattern.c_str(), seen.name.c_str(), 0) == 0 ||
               (isRefused && fnmatch(pattern.c_str(), bus::nameOf(seen.record.kind), 0) == 0);
    });
}

}  // namespace

bool Selection::wants(const Seen& seen) const {
    if (seen.record.kind == bus::Kind::lost) {
        return true;
    }
    return (browsers.empty() || browsers.count(seen.record.browser) != 0) && (only.empty() || matches(only, seen)) &&
           !matches(without, seen);
}

}  // namespace dtvmon
