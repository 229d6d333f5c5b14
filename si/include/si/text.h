// Text of service information as UTF-8 (EN 300 468, Annex A).
// Threads: any.
// Blocks:  never.
// Fails:   never; what cannot be converted becomes U+FFFD.
#pragma once

#include <string>

#include "si/section.h"

namespace si {

/// The text in its announced character table, without emphasis marks, with line breaks as blanks.
std::string toUtf8(Bytes text);

}  // namespace si
