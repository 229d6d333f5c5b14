// The command line of dtvctl.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include "command_line/program.h"

namespace dtvctl {

const command_line::Program& commandLine();

}  // namespace dtvctl
