// The command line of tvbrowser.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include "command_line/program.h"

namespace tvbrowser {

const command_line::Program& commandLine();

}  // namespace tvbrowser
