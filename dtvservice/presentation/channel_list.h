// The operator's channel list: the services of all inputs, and announced services that no input carries.
// Threads: the loop's.
// Blocks:  never.
// Fails:   never.
#pragma once

#include "core.h"

namespace dtvservice {

nlohmann::json channelList(const Core& core);

}  // namespace dtvservice
