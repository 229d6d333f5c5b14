// Layouts: the syntax of tables and descriptors as texts, close to the tables of the standards. A layout is a list of
// elements with blanks between them:
//
//   name:12             a number of 12 bits; name:32x10 multiplies it by 10, name:bcd8x100 has eight decimal digits
//   .name:1             a number that is not shown, for conditions and lengths; -:3 bits without a meaning
//   name:TYPE           a text or bytes, see layout_fields.cpp
//   name:16*            the same field until the end
//   name{ layout }      entries until the end, each a child node; +{ layout } adds their fields to the same node
//   name[ layout ]      one child node
//   name:12( layout )   a length of 12 bits in bytes, and what is in them
//   name:8#( layout )   a count of 8 bits, and a layout that often
//   ?name( layout )     only if the number read last by that name is not 0; ?name=3( layout ) if it is 3,
//                       ?name!3( layout ) if it is not; ?( layout ) if anything is left
//   descriptors         descriptors until the end
//
// Lengths and counts are not shown.
#pragma once

#include <string_view>

#include "field_input.h"
#include "si/description.h"

namespace si {

/// Adds the fields to the node. Bytes behind the last field become a field "additional_bytes". In a table, a field that
/// does not fit becomes a child node "unreadable"; in a descriptor, `input` has the reason.
void readLayout(std::string_view layout, FieldInput& input, Node& node);

/// Adds a child node for each descriptor of a loop.
void describeDescriptors(Bytes loop, Scope scope, Node& parent);

/// Adds a child node "unreadable".
void addUnreadable(Node& node, const std::string& wrong, Bytes bytes);

}  // namespace si
