// The fields of layouts: numbers, texts, bytes.
#pragma once

#include <string_view>

#include "field_input.h"
#include "si/description.h"

namespace si {

/// An element of a layout, see layout.h.
struct Element {
    std::string_view name;
    std::string_view type;
    bool isHidden = false;
    char bracket = 0;  ///< the opening bracket of the body, if there is one
    std::string_view body;
};

/// A number of a layout, decimal or hexadecimal; 0 if it is none.
std::size_t numberIn(std::string_view digits);

/// Reads the field of an element without a body, and adds it to the node.
void readField(const Element& element, FieldInput& input, Node& node);

}  // namespace si
