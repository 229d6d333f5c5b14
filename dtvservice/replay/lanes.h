// Lanes: what a recorded browser did, taken apart into what is independent of each other: a lane for each filter and
// PMT request, and one for the rest. Threads of a browser open filters in another order each time.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <vector>

#include "recording.h"

namespace dtvservice {

struct Lane {
    std::vector<const RecordedStep*> steps;
    bool isOfAFilter = false;  ///< begins with the command that opens it
};

/// The lane of the rest is the first. Commands that no service answers are in none: nothing waits for them. The browser
/// must outlive the lanes.
std::vector<Lane> lanesOf(const RecordedBrowser& browser);

/// Whether no event follows from a command.
bool isUnanswered(const message_fields::Message& command);

}  // namespace dtvservice
