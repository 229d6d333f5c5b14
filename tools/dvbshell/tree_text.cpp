// Formats trees as lines.
#include "tree_text.h"

#include "message_fields.h"

namespace dvbshell {

namespace {

constexpr std::size_t kLongestValue = 160;

std::string shortened(const std::string& text) {
    return text.size() <= kLongestValue
               ? text
               : text.substr(0, kLongestValue) + "... (" + std::to_string(text.size()) + " characters)";
}

/// Numbers of fields that the messages have, too, are written as there.
std::string named(const si::Node::Field& field) {
    const message_fields::Field* const known = message_fields::findField(field.name);
    if (field.number && known != nullptr && known->form->notation == message_fields::Notation::both) {
        return message_fields::namedText(known->name, *field.number);
    }
    return field.name + " " + (field.text.empty() ? "-" : shortened(field.text));
}

void append(std::string& line, const char* separator, const std::string& text) {
    line += (line.empty() ? "" : separator) + text;
}

/// Begins with the descriptor's name. An unknown descriptor appears as tag, length and bytes.
std::string descriptorLine(const si::Node& descriptor) {
    std::string line;
    for (const si::Node::Field& field : descriptor.fields) {
        if (field.name == "is") {
            append(line, "; ", field.text);
        }
    }
    const bool known = !line.empty();
    if (!known) {
        line = "descriptor";
    }
    const char* separator = "  ";
    for (const si::Node::Field& field : descriptor.fields) {
        if (field.name != "is" && !(known && (field.name == "tag" || field.name == "length"))) {
            append(line, separator, named(field));
            separator = ", ";
        }
    }
    for (const si::Node& node : descriptor.nodes) {
        append(line, "  ", "[" + fieldsText(node) + "]");
    }
    return line;
}

}  // namespace

std::string fieldsText(const si::Node& node) {
    std::string line;
    for (const si::Node::Field& field : node.fields) {
        append(line, ", ", named(field));
    }
    return line;
}

std::vector<std::string> treeLines(const std::vector<si::Node>& nodes, std::size_t depth) {
    std::vector<std::string> lines;
    for (const si::Node& node : nodes) {
        const std::string indent(2 * depth, ' ');
        if (node.name == "descriptor") {
            lines.push_back(indent + descriptorLine(node));
            continue;
        }
        lines.push_back(indent + node.name + "  " + fieldsText(node));
        const std::vector<std::string> below = treeLines(node.nodes, depth + 1);
        lines.insert(lines.end(), below.begin(), below.end());
    }
    return lines;
}

}  // namespace dvbshell
