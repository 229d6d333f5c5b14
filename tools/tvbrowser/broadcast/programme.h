// A programme: an event of the EIT as JSON.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include "si/tables.h"
#include "values.h"

namespace tvbrowser {

si::Triplet tripletOf(const si::Eit& eit);
json programmeValue(const si::Triplet& channel, const si::Eit::Event& event);

}  // namespace tvbrowser
