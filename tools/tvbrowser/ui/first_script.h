// The first script of an application's pages: the objects of the broadcast, and what they are told at their start.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "application.h"

namespace tvbrowser {

/// What the television says of itself to applications.
struct SetDescription {
    unsigned int width = 0;
    unsigned int height = 0;
    std::string softwareVersion;
    std::string language = "eng";  ///< preferred for audio and subtitles, ISO 639-2
    std::string country = "GBR";   ///< ISO 3166
    std::string picture = {};      ///< URL of the presented service as a stream; empty: pages show no picture
};

std::string firstScript(const RunningApplication& application, const SetDescription& set);

/// What an event `application` tells the page.
nlohmann::json stateOf(const RunningApplication& application);

}  // namespace tvbrowser
