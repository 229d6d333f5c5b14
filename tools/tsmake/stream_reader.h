// Reads the elementary streams of other transport streams that a description or the command line names.
// Threads: any.
// Blocks:  while it reads files.
// Fails:   no value or false, and `error` says what is wrong, and where in the file.
#pragma once

#include <optional>

#include "multiplex.h"

namespace tsmake {

/// Reads "FILE.ts:PID". The PID is decimal, or hexadecimal after 0x.
std::optional<StreamPlace> parseStreamPlace(const std::string& text, std::string& error);

/// Reads the streams of the components that have a place. Relative files are relative to `base`.
bool readStreams(Multiplex& multiplex, const std::string& base, std::string& error);

/// Reads a stream, and puts it in place of the first component of its kind that has no stream yet.
bool insertStream(Multiplex& multiplex, const StreamPlace& place, std::string& error);

}  // namespace tsmake
