// A record of the bus with what the catalogue and the tables' syntax say about it.
// Threads: any.
// Blocks:  never.
// Fails:   never; bytes that are no message have a problem.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "bus/record.h"
#include "message_fields.h"
#include "si/description.h"

namespace dtvmon {

struct Seen {
    bus::Record record;
    std::string name;       ///< the operation of a message that the catalogue knows, else the kind
    std::string operation;  ///< empty if there is none
    std::vector<message_fields::FieldValue> values;
    std::string problem;              ///< why the bytes are no message
    std::optional<si::Node> section;  ///< the fields of the section that it carries, and its kinds of loops
};

Seen see(bus::Record record);

/// "3 streams, 1 descriptor"; empty without any.
std::string loopsOf(const si::Node& section);

}  // namespace dtvmon
