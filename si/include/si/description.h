// Any section as a tree of names and values, for people and programs that look at broadcasts: known tables and
// descriptors by their fields' names in the standards, everything else by tag, length and bytes.
// Threads: any.
// Blocks:  never.
// Fails:   never; what cannot be read is there in hexadecimal, with the reason.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "si/section.h"

namespace si {

struct Node {
    struct Field {
        std::string name;
        std::string text;
        std::optional<std::uint64_t> number;  ///< what the text shows, where that is a number
    };
    std::string name;
    std::vector<Field> fields;
    std::vector<Node> nodes;

    Node& number(const char* field, std::uint64_t value);
    /// A number that is shown in hexadecimal with at least so many digits.
    Node& hex(const char* field, std::uint64_t value, int digits);
    Node& text(const char* field, std::string value);
    Node& bytes(const char* field, Bytes value);
    /// Another node below, valid until the next one is added.
    Node& add(const char* node);
};

/// The tree of a section: PAT, CAT, PMT, NIT, SDT, EIT, TDT, TOT, AIT, DSM-CC messages and stream
/// descriptors. What does not fit at the end of a loop is "unreadable" there. Of another table, or one that cannot
/// be read at all: "section" with its table_id and bytes.
Node describeSection(Bytes section);

/// Adds a node for each descriptor of a loop of PSI or SI (ISO/IEC 13818-1, clause 2.6; EN 300 468, clause 6):
/// what it is, or its bytes where it is none of the known ones or its inner lengths do not fit.
void describeDescriptors(Bytes loop, Node& parent);

}  // namespace si
