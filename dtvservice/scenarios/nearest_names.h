// Names that somebody who wrote a wrong one may have meant.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <string>
#include <vector>

namespace dtvservice {

/// Up to three of the names, the nearest first, with commas.
std::string nearestNames(const std::string& wrong, std::vector<std::string> names);

}  // namespace dtvservice
