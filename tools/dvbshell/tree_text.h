// The tree of a section as lines of text.
#pragma once

#include <string>
#include <vector>

#include "si/description.h"

namespace dvbshell {

/// The node's fields in one line: "name value, name value".
std::string fieldsText(const si::Node& node);
/// One line for each node, indented by two blanks for each level. A descriptor with all its content is one line.
std::vector<std::string> treeLines(const std::vector<si::Node>& nodes, std::size_t depth = 0);

}  // namespace dvbshell
