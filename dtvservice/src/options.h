// The options of dtvserviced, read.
// Threads: any.
// Blocks:  never.
// Fails:   a wrong option ends the process with the usage error.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cursor.h"
#include "http_address.h"
#include "input_name.h"
#include "player.h"
#include "rooms.h"
#include "si/ait.h"

namespace dtvservice {

struct ReplayOptions {
    std::string file;  ///< empty for none
    Pace pace;
    std::optional<std::uint32_t> browser;
};

struct Options {
    std::vector<InputName> inputs;
    std::string list;
    Settings settings;
    Playing playing;
    std::optional<si::Ait::Application> application;
    std::optional<HttpAddress> http;
    ReplayOptions replay;
};

Options parseOptions(int argc, char** argv);

}  // namespace dtvservice
