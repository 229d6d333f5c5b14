// The help texts of a described program.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <string>

#include "command_line/program.h"

namespace command_line {

/// The width of help on the standard output: COLUMNS, or the terminal's width, or 80 if both are unknown. At least 40,
/// at most 100.
std::size_t helpWidth();

/// What --help prints.
std::string helpText(const Program& program, std::size_t width);
/// What --help prints behind a verb: its arguments, text, options and example.
std::string helpText(const Program& program, const Verb& verb, std::size_t width);
/// "NAME VERSION" and a line end.
std::string versionText(const Program& program);

}  // namespace command_line
