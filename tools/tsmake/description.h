// Reads the description of a multiplex: JSON with // comments. docs/tsmake.md lists the keys.
// Threads: any.
// Blocks:  never.
// Fails:   no value, and an error that names the place and what is wrong there.
#pragma once

#include <optional>
#include <string>

#include "multiplex.h"

namespace tsmake {

/// The described multiplex, with a PID for each stream.
std::optional<Multiplex> parseDescription(const std::string& text, std::string& error);

/// The sample's description.
const char* sampleDescription();

}  // namespace tsmake
