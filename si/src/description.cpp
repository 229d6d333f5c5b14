// Builds trees of names and values.
#include "si/description.h"

#include <cinttypes>
#include <cstdio>

namespace si {

Node& Node::number(const std::string& field, std::uint64_t value) {
    fields.push_back({field, std::to_string(value), value});
    return *this;
}

Node& Node::hex(const std::string& field, std::uint64_t value, int digits) {
    char shown[24];
    std::snprintf(shown, sizeof shown, "0x%0*" PRIX64, digits, value);
    fields.push_back({field, shown, value});
    return *this;
}

Node& Node::text(const std::string& field, std::string value) {
    fields.push_back({field, std::move(value), std::nullopt});
    return *this;
}

Node& Node::bytes(const std::string& field, Bytes value) {
    static const char* const kDigits = "0123456789ABCDEF";
    std::string shown;
    for (std::size_t at = 0; at < value.size; ++at) {
        shown += kDigits[value.data[at] >> 4U];
        shown += kDigits[value.data[at] & 0x0FU];
    }
    return text(field, shown);
}

Node& Node::add(const std::string& node) {
    nodes.emplace_back();
    nodes.back().name = node;
    return nodes.back();
}

}  // namespace si
