// The files that the build makes from a description.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <string>

#include "command_line/program.h"

namespace command_line {

/// A manual page of section 1, with the macros of man(7).
std::string manPage(const Program& program);
/// A completion script for bash. It needs no other package.
std::string bashCompletion(const Program& program);

}  // namespace command_line
