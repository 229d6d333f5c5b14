// The options that every program answers by itself: --help, --version, and two that only the build uses.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <string>
#include <vector>

#include "command_line/arguments.h"
#include "command_line/program.h"

namespace command_line {

/// allOptions and, unless it is a prompt, the hidden ones.
std::vector<Option> parsedOptions(const Program& program);
/// Whether the command line asks for one of them.
bool isAnsweredByItself(const Arguments& arguments);
/// What the program prints then.
std::string answer(const Program& program, const Arguments& arguments);

}  // namespace command_line
