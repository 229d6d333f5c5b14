// The service that replays a recording.
// Threads: the main thread.
// Blocks:  until a signal ends the service.
// Fails:   with a line and an exit status.
#pragma once

#include "options.h"

namespace dtvservice {

int replay(const ReplayOptions& options);

}  // namespace dtvservice
