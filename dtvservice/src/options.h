// The options of dtvserviced, read.
// Threads: any.
// Blocks:  never.
// Fails:   a wrong option ends the process with the usage error.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "http_address.h"
#include "input_name.h"
#include "player.h"
#include "rooms.h"
#include "si/ait.h"

namespace dtvservice {

struct Options {
    std::vector<InputName> inputs;
    std::string list;
    Settings settings;
    Playing playing;
    std::optional<si::Ait::Application> application;
    std::optional<HttpAddress> http;
};

Options parseOptions(int argc, char** argv);

}  // namespace dtvservice
