// What the descriptors of an EIT's event say (EN 300 468, clauses 6.2.9, 6.2.15, 6.2.28 and 6.2.31).
// Threads: any.
// Blocks:  never.
// Fails:   never; what does not fit is left out.
#pragma once

#include <string>
#include <vector>

#include "si/section.h"

namespace si {

/// The text of the extended event descriptors of the first language, in the order of descriptor_number: each item as
/// "description: text" in a line of its own, then the text. An item without description continues the one before.
/// UTF-8.
std::string extendedText(const Descriptors& event);

struct ParentalRating {
    std::string country;
    std::uint8_t rating = 0;  ///< as broadcast: 1 to 15 is an age of rating + 3
};
std::vector<ParentalRating> parentalRatings(const Descriptors& event);

/// The genres: content_nibble_level_1 in the upper four bits, content_nibble_level_2 in the lower.
std::vector<std::uint8_t> contentNibbles(const Descriptors& event);

}  // namespace si
