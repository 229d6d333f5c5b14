// The command line of tsmake.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include "command_line/program.h"

namespace tsmake {

const command_line::Program& commandLine();

}  // namespace tsmake
