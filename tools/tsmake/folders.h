// Reads the folders that a description names for its carousels.
// Threads: any.
// Blocks:  while it reads files.
// Fails:   false, and `error` says why.
#pragma once

#include "multiplex.h"

namespace tsmake {

/// All carousels together have at most this many bytes.
constexpr std::uint64_t kMostFolderBytes = std::uint64_t{512} << 20U;

/// Relative folders are relative to `base`. Takes the regular files of each, also from its folders; no links. A content
/// type must be that of a file.
bool readFolders(Multiplex& multiplex, const std::string& base, std::string& error);

}  // namespace tsmake
