// The command line of dtvmon.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include "command_line/program.h"

namespace dtvmon {

const command_line::Program& commandLine();

}  // namespace dtvmon
