// Describes any section as a tree of names and values, for people and programs that inspect broadcasts. Fields of known
// tables and descriptors have their names from the standards; everything else has tag, length and bytes.
// Threads: any.
// Blocks:  never.
// Fails:   never; unreadable data is shown in hexadecimal with the reason.
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
        std::optional<std::uint64_t> number;  ///< the value of the text if it is a number
    };
    std::string name;
    std::vector<Field> fields;
    std::vector<Node> nodes;

    Node& number(const char* field, std::uint64_t value);
    /// A number that is shown in hexadecimal with at least `digits` digits.
    Node& hex(const char* field, std::uint64_t value, int digits);
    Node& text(const char* field, std::string value);
    Node& bytes(const char* field, Bytes value);
    /// Adds a child node. The reference is valid until the next one is added.
    Node& add(const char* node);
};

/// The tree of a section: PAT, CAT, PMT, NIT, SDT, EIT, TDT, TOT, AIT, DSM-CC messages and stream descriptors. Bytes at
/// the end of a loop that do not fit become a node "unreadable". Another table, or a malformed one, becomes a node
/// "section" with its table_id and bytes.
Node describeSection(Bytes section);

/// Adds a node for each descriptor of a PSI or SI loop (ISO/IEC 13818-1, clause 2.6; EN 300 468, clause 6). An unknown
/// descriptor, or one whose inner lengths do not fit, is shown by its bytes.
void describeDescriptors(Bytes loop, Node& parent);

}  // namespace si
