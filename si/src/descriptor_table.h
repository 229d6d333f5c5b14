// The known descriptors.
#pragma once

#include "field_input.h"

namespace si {

struct KnownDescriptor {
    Scope scope;
    std::uint8_t tag;
    const char* name;
    const char* layout;           ///< see layout.h
    std::uint32_t specifier = 0;  ///< the private_data_specifier that must precede it; 0 if none
};

/// The descriptor with this tag in a loop of this scope; null if it is unknown. `specifier` is the last
/// private_data_specifier of the loop, or 0.
const KnownDescriptor* knownDescriptor(Scope scope, std::uint8_t tag, std::uint32_t specifier);

}  // namespace si
