// The service's rooms: which there are, and in which order they are told what happens.
#pragma once

#include <string>

#include "core.h"

namespace dtvservice {

struct Settings {
    std::string serialNumber;  ///< of video on demand
};

void addRooms(Core& core, const Settings& settings);

}  // namespace dtvservice
