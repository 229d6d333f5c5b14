// Reads fields by a layout.
#include "layout.h"

#include <algorithm>

#include "layout_fields.h"

namespace si {

namespace {

std::size_t closing(std::string_view layout, std::size_t open) {
    int depth = 0;
    for (std::size_t at = open; at < layout.size(); ++at) {
        const char character = layout[at];
        depth += character == '(' || character == '{' || character == '[' ? 1 : 0;
        depth -= character == ')' || character == '}' || character == ']' ? 1 : 0;
        if (depth == 0) {
            return at;
        }
    }
    return layout.size();
}

/// Takes the first element off a layout; false at its end.
bool takeElement(std::string_view& layout, Element& element) {
    const std::size_t start = layout.find_first_not_of(' ');
    if (start == std::string_view::npos) {
        return false;
    }
    layout.remove_prefix(start);
    const std::size_t end = std::min(layout.find_first_of(" ({["), layout.size());
    std::string_view head = layout.substr(0, end);
    element.isHidden = head.front() == '.';
    head.remove_prefix(element.isHidden ? 1 : 0);
    const std::size_t colon = std::min(head.find(':'), head.size());
    element.name = head.substr(0, colon);
    element.type = head.substr(std::min(colon + 1, head.size()));
    element.bracket = 0;
    element.body = {};
    std::size_t behind = end;
    if (end < layout.size() && layout[end] != ' ') {
        const std::size_t close = closing(layout, end);
        element.bracket = layout[end];
        element.body = layout.substr(end + 1, close - end - 1);
        behind = std::min(close + 1, layout.size());
    }
    layout.remove_prefix(behind);
    return true;
}

/// The condition of an element "?…".
bool holds(std::string_view condition, const FieldInput& input) {
    if (condition.empty()) {
        return !input.atEnd();
    }
    const std::size_t sign = std::min(condition.find_first_of("=!"), condition.size());
    const std::uint64_t value = input.value(condition.substr(0, sign));
    if (sign == condition.size()) {
        return value != 0;
    }
    const std::uint64_t wanted = sign + 1 == condition.size() ? 0 : numberIn(condition.substr(sign + 1));
    return (value == wanted) == (condition[sign] == '=');
}

void readElements(std::string_view layout, FieldInput& input, Node& node);

/// Shows what did not fit, once.
void report(FieldInput& input, Node& node) {
    if (input.kind == Kind::table && !input.wrong.empty()) {
        addUnreadable(node, input.wrong, input.unread);
        input.wrong.clear();
    }
}

void readEntries(const Element& element, FieldInput& input, Node& node) {
    const bool isSameNode = element.name == "+";
    while (!input.atEnd()) {
        const std::size_t start = input.place();
        Node& entry = isSameNode ? node : node.add(std::string(element.name));
        readElements(element.body, input, entry);
        report(input, entry);
        if (input.place() == start) {
            input.fail(element.name, " is empty", start);
        }
    }
}

/// A length and what is in it. In a descriptor, the first wrong field counts.
void readSized(const Element& element, FieldInput& input, Node& node) {
    const Bytes bytes = input.sized(element.name, numberIn(element.type));
    if (!input.good()) {
        return;
    }
    FieldInput inner(bytes, input.kind, input.scope);
    inner.values = input.values;
    readLayout(element.body, inner, node);
    if (input.wrong.empty()) {
        input.wrong = inner.wrong;
    }
}

void readCount(const Element& element, FieldInput& input, Node& node) {
    std::uint64_t count = input.number(element.name, numberIn(element.type));
    for (; count != 0 && input.good(); --count) {
        readElements(element.body, input, node);
    }
}

void readRepeated(Element element, FieldInput& input, Node& node) {
    element.type.remove_suffix(1);
    while (!input.atEnd()) {
        readField(element, input, node);
    }
}

void readElement(const Element& element, FieldInput& input, Node& node) {
    const char last = element.type.empty() ? '\0' : element.type.back();
    if (element.name.front() == '?') {
        if (holds(element.name.substr(1), input)) {
            readElements(element.body, input, node);
        }
    } else if (element.name == "descriptors") {
        describeDescriptors(input.rest(), input.scope, node);
    } else if (element.bracket == '{') {
        readEntries(element, input, node);
    } else if (element.bracket == '[') {
        Node& child = node.add(std::string(element.name));
        readElements(element.body, input, child);
        report(input, child);
    } else if (element.bracket == '(') {
        last == '#' ? readCount(element, input, node) : readSized(element, input, node);
    } else if (last == '*') {
        readRepeated(element, input, node);
    } else {
        readField(element, input, node);
    }
}

void readElements(std::string_view layout, FieldInput& input, Node& node) {
    Element element;
    while (input.good() && takeElement(layout, element)) {
        readElement(element, input, node);
    }
}

}  // namespace

void readLayout(std::string_view layout, FieldInput& input, Node& node) {
    readElements(layout, input, node);
    report(input, node);
    if (!input.atEnd()) {
        node.bytes("additional_bytes", input.rest());
    }
}

void addUnreadable(Node& node, const std::string& wrong, Bytes bytes) {
    node.add("unreadable").text("wrong", wrong).bytes("bytes", bytes);
}

}  // namespace si
