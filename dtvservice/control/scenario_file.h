// The file of a scenario, as text. Service and operator's console read it in the same way.
// Threads: any.
// Blocks:  while the file is read.
// Fails:   readScenarioFile() gives the reason.
#pragma once

#include <string>

namespace control {

/// The longest text of a scenario, in bytes.
constexpr std::size_t kLongestScenario = std::size_t{256} << 10U;

/// False, with the reason, if the file cannot be read or is too long.
bool readScenarioFile(const std::string& path, std::string& text, std::string& error);

}  // namespace control
