// The command line of dtvserviced.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include "command_line/program.h"

namespace dtvservice {

const command_line::Program& commandLine();

}  // namespace dtvservice
