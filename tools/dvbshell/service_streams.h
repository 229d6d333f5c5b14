// The streams of a service that the argument [SID[:TAG]] of a verb names.
// Threads: one.
// Blocks:  findStreams() until the PMT is there, five seconds at most.
// Fails:   with a line that says why there are no streams.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "arguments.h"
#include "session.h"
#include "si/tables.h"

namespace dvbshell {

/// One stream by its component_tag, or all of the given types.
struct StreamChoice {
    std::optional<unsigned int> serviceId;  // without one, the presented service
    std::optional<unsigned int> tag;
    std::vector<std::uint8_t> types;  // stream_type, ISO/IEC 13818-1, table 2-34
    const char* what;
};

/// Reads the argument; without one it is the presented service.
StreamChoice readChoice(ArgumentReader& reader, const std::optional<std::string>& argument,
                        std::vector<std::uint8_t> types, const char* what);

struct ChosenStreams {
    si::Pmt pmt;
    std::vector<unsigned int> pids;  ///< none, if the PMT did not come or has no such stream
};
ChosenStreams findStreams(Session& session, const StreamChoice& choice);

}  // namespace dvbshell
