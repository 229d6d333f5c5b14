// The run directory: holds the sockets. Only its owner may enter.
// Threads: any.
// Blocks:  never.
// Fails:   with a line that names the directory and the error.
#pragma once

#include <string>

namespace host {

/// Creates the directory with mode 0700 if it does not exist. True when it is a directory, belongs to us and is closed
/// to other users; otherwise it cannot be used.
bool prepareRunDirectory(const std::string& directory);

}  // namespace host
