// The DVB triplet of a service: original_network_id, transport_stream_id, service_id; and its text form.
// Threads: any.
// Blocks:  never.
// Fails:   no value if the text is not a triplet.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace si {

struct Triplet {
    std::uint16_t onid = 0;
    std::uint16_t tsid = 0;
    std::uint16_t sid = 0;

    friend bool operator==(const Triplet& one, const Triplet& other) {
        return one.onid == other.onid && one.tsid == other.tsid && one.sid == other.sid;
    }
};

/// Reads "ONID:TSID:SID", three numbers up to 65535. Each is decimal, or hexadecimal after 0x, and has no sign or
/// blank.
std::optional<Triplet> parseTriplet(const std::string& text);

/// "1:1025:28106"
std::string tripletText(const Triplet& triplet);

}  // namespace si
