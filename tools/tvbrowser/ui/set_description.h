// SetDescription: what the television says of itself, to applications and to their servers.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tvbrowser {

/// The kind of processor, as this machine names it.
std::string machineName();

struct SetDescription {
    unsigned int width = 0;
    unsigned int height = 0;
    std::string vendorName = "browserdvbapi";
    std::string modelName = "tvbrowser";
    std::string familyName = "tvbrowser";
    std::string softwareVersion = {};
    std::string hardwareVersion = machineName();
    std::string language = "eng";               ///< preferred for audio and subtitles, ISO 639-2
    std::string country = "GBR";                ///< ISO 3166
    std::vector<std::uint16_t> caSystems = {};  ///< CA system ids of its module; empty: whatever a module has
    std::string picture = {};  ///< URL of the presented service as a stream; empty: pages show no picture
};

/// HbbTV's user agent (TS 102 796, clause 7.3.2.4).
std::string userAgent(const SetDescription& set);

}  // namespace tvbrowser
