// Descriptions of multiplexes as text: JSON with // comments. docs/tsmake.md has the keys.
// Threads: any.
// Blocks:  never.
// Fails:   no value, and an error that names the place and what is wrong there.
#pragma once

#include <optional>
#include <string>

#include "multiplex.h"

namespace tsmake {

/// A multiplex in which everything has its PID.
std::optional<Multiplex> parseDescription(const std::string& text, std::string& error);

/// The sample's.
const char* sampleDescription();

}  // namespace tsmake
