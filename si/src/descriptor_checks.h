// Checks whether the lengths within a descriptor fit its contents. The field library cannot do it: its own checks read
// first, and add up lengths in eight bits.
#pragma once

#include "si/section.h"

namespace si {

/// Always true for tags without inner lengths and for tags that the library does not know.
bool innerLengthsFit(const Descriptor& descriptor);

}  // namespace si
