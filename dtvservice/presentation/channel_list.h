// The channel list as the operator sees it: services of all inputs, and those that are on no input.
// Threads: the loop's.   Blocks: never.   Fails: never.
#pragma once

#include "core.h"

namespace dtvservice {

nlohmann::json channelList(const Core& core);

}  // namespace dtvservice
