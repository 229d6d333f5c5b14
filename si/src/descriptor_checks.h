// Whether the lengths within a descriptor fit its contents: what has to be known before the field library reads it,
// whose own checks read first, and add up lengths in eight bits.
#pragma once

#include "si/section.h"

namespace si {

/// Of tags that have no lengths within, or that the library does not know, always.
bool innerLengthsFit(const Descriptor& descriptor);

}  // namespace si
