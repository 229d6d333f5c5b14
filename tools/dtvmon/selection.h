// Which records are wanted.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "seen.h"

namespace dtvmon {

/// Names are those of operations and of kinds of records, with * and ? for any characters.
struct Selection {
    std::vector<std::string> only;     ///< empty: all
    std::vector<std::string> without;  ///< has precedence
    std::set<std::uint32_t> browsers;  ///< empty: all

    /// What was lost is always told: it may have been wanted.
    bool wants(const Seen& seen) const;
};

}  // namespace dtvmon
