// Reads described sections, and makes sections to describe.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "hex_bytes.h"
#include "section_writer.h"
#include "si/description.h"

/// "name=text" of every field, in order.
inline std::vector<std::string> fields(const si::Node& node) {
    std::vector<std::string> all;
    for (const si::Node::Field& field : node.fields) {
        all.push_back(field.name + "=" + field.text);
    }
    return all;
}

/// All fields and child nodes in one line: "is: field=text, field=text {child: field=text}". Leaves out a descriptor's
/// tag and length.
inline std::string line(const si::Node& node) {
    std::string text;
    for (const si::Node::Field& field : node.fields) {
        if (field.name == "is") {
            text += field.text + ":";
        } else if (field.name != "tag" && field.name != "length") {
            text += (text.empty() || text.back() == ':' ? " " : ", ") + field.name + "=" + field.text;
        }
    }
    for (const si::Node& child : node.nodes) {
        text += " {" + child.name + ":" + line(child) + "}";
    }
    return text;
}

inline std::string value(const si::Node& node, const std::string& name) {
    for (const si::Node::Field& field : node.fields) {
        if (field.name == name) {
            return field.text;
        }
    }
    return "(no " + name + ")";
}

inline std::vector<std::uint8_t> bytesOfHex(std::string digits) {
    digits.erase(std::remove(digits.begin(), digits.end(), ' '), digits.end());
    return hexBytes(digits);
}

/// The child descriptor with this name.
inline const si::Node& descriptor(const si::Node& parent, const std::string& is) {
    static const si::Node kNone;
    for (const si::Node& node : parent.nodes) {
        if (value(node, "is") == is) {
            return node;
        }
    }
    ADD_FAILURE() << "no " << is;
    return kNone;
}

inline tsmake::Section longSection(std::uint8_t tableId, std::uint16_t extension, const std::string& hex) {
    tsmake::SectionWriter writer(tableId, extension, 3);
    const std::vector<std::uint8_t> body = bytesOfHex(hex);
    writer.text(std::string(body.begin(), body.end()));
    return writer.finish();
}

inline std::string hexOf(const std::vector<std::uint8_t>& bytes) {
    si::Node node;
    node.bytes("bytes", bytes);
    return node.fields[0].text;
}

/// Describes a NIT with this loop of descriptors. Its memory ends with the section, so that sanitizers detect reads
/// beyond it.
inline si::Node nitWith(const std::vector<std::uint8_t>& loop) {
    tsmake::SectionWriter writer(0x40, 1, 0);
    writer.open12().text(std::string(loop.begin(), loop.end())).close().open12().close();
    tsmake::Section section = writer.finish();
    section.shrink_to_fit();
    return si::describeSection(section);
}
