// The type of a file out of a carousel, as the engine takes it: what the broadcaster says; else by the ending of its
// name.
// Threads: any.
// Blocks:  may read the machine's list of types at the first unusual ending.
// Fails:   never; the type of an unknown ending is application/octet-stream.
#pragma once

#include <string>

namespace tvbrowser {

/// `declared`: the type that the carousel gives; may be empty.
std::string contentTypeOf(const std::string& path, const std::string& declared);

}  // namespace tvbrowser
