// The run directory: where the sockets are. Only its owner may enter.
// Threads: any.
// Blocks:  never.
// Fails:   with a line that names the directory and what is wrong with it.
#pragma once

#include <string>

namespace host {

/// Creates the directory with mode 0700 if it is not there, and checks it: a directory, ours, closed to others. False
/// when it cannot be used.
bool prepareRunDirectory(const std::string& directory);

}  // namespace host
