// Text of service information as UTF-8 (EN 300 468, Annex A).
// Threads: any.
// Blocks:  never.
// Fails:   never; what cannot be converted becomes U+FFFD.
#pragma once

#include <string>

#include "si/section.h"

namespace si {

/// Converts a text from its announced character table. Removes emphasis marks and replaces line breaks by blanks.
std::string toUtf8(Bytes text);

}  // namespace si
