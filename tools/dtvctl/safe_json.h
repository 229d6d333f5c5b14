// JSON for terminals and files: no byte of it controls a terminal.
// Threads: any.
// Blocks:  printJson() while writing.
// Fails:   never; bytes that are not UTF-8 become U+FFFD.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace dtvctl {

/// The value in one line. Control characters, and marks that change the writing direction, are escaped.
std::string safeJson(const nlohmann::json& value);
/// Prints the object in one line, with the time of now, in seconds since the epoch, as "time".
void printJson(nlohmann::json object);

}  // namespace dtvctl
