// The tree of a section as lines for a person.
#pragma once

#include <string>
#include <vector>

#include "si/description.h"

namespace dvbshell {

/// The node's fields in one line: "name value, name value".
std::string fieldsText(const si::Node& node);
/// A line for each node below, two blanks deeper for each level. A descriptor is one line with all that is in it.
std::vector<std::string> treeLines(const std::vector<si::Node>& nodes, std::size_t depth = 0);

}  // namespace dvbshell
