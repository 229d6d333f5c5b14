// Describes any section as a tree of names and values, for people and programs that inspect broadcasts. Fields of known
// tables and descriptors have their names from the standards; everything else has tag, length and bytes.
//
// A field name stands for the same kind of value in every table: always a number, or always a text. A number that its
// standard writes in hexadecimal has a text with 0x and the width of the field ("0x0010"). organisation_id and
// application_id have both notations ("400 (0x190)"). A value with a name has it behind the number ("0x01
// (AUTOSTART)"). Frequencies are in Hz, symbol rates in symbols a second. Lengths and counts of loops and texts, flags
// that only say whether a field follows, and reserved bits are not shown. A field that is not there is absent.
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

    /// A decimal number.
    Node& number(const std::string& field, std::uint64_t value);
    /// A number that is shown in hexadecimal with at least `digits` digits.
    Node& hex(const std::string& field, std::uint64_t value, int digits);
    Node& text(const std::string& field, std::string value);
    Node& bytes(const std::string& field, Bytes value);
    /// Adds a child node. The reference is valid until the next one is added.
    Node& add(const std::string& node);
};

/// The tree of a section: PAT, CAT, PMT, TSDT, DSM-CC messages and stream descriptors, NIT, SDT, BAT, UNT, INT, EIT,
/// TDT, RST, ST, TOT, AIT, RNT, DIT, SIT. Another table, or one without its header or with a wrong CRC_32, becomes a
/// node "section" with its table_id and bytes. Where a length within the section is wrong, the fields before it are
/// shown, and a node "unreadable" has the wrong field ("wrong") and the bytes from there on. A child node "descriptor"
/// has the name of its descriptor as field "is". An unknown descriptor has its bytes; one whose fields do not fit has
/// the fields before, the wrong one, and all bytes.
Node describeSection(Bytes section);

}  // namespace si
