// Adds the service's rooms to the core, in the order in which the core notifies them.
#pragma once

#include <string>

#include "core.h"
#include "programmes_room.h"
#include "scenarios_room.h"

namespace dtvservice {

struct Settings {
    std::string serialNumber;  ///< for video on demand
    Collecting collecting = Collecting::onRequest;
    std::string carouselFolder = {};        ///< for mounted carousels, the service's own; without one none is mounted
    Transport transport = {};               ///< for scenarios that stop the service
    std::optional<Scenario> scenario = {};  ///< starts when the first service is presented
};

void addRooms(Core& core, const Settings& settings);

}  // namespace dtvservice
