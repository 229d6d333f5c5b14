// Lists the service's rooms. A new room is a folder and a line here.
#include "rooms.h"

#include "applications_room.h"
#include "ca_room.h"
#include "carousels_room.h"
#include "components_room.h"
#include "device_room.h"
#include "filters_room.h"
#include "osd_room.h"
#include "presentation_room.h"
#include "programmes_room.h"
#include "scenarios_room.h"
#include "stream_events_room.h"
#include "time_room.h"

namespace dtvservice {

/// Browsers must receive a PMT or EIT before the components that it describes, so PresentationRoom comes before
/// ComponentsRoom.
void addRooms(Core& core, const Settings& settings) {
    core.add(std::make_unique<FiltersRoom>(core));
    core.add(std::make_unique<PresentationRoom>(core));
    core.add(std::make_unique<StreamEventsRoom>(core));
    core.add(std::make_unique<ComponentsRoom>(core));
    core.add(std::make_unique<TimeRoom>(core));
    core.add(std::make_unique<ApplicationsRoom>(core));
    core.add(std::make_unique<CarouselsRoom>(core, settings.carouselFolder));
    core.add(std::make_unique<ProgrammesRoom>(core, settings.collecting));
    core.add(std::make_unique<OsdRoom>(core));
    core.add(std::make_unique<CaRoom>(core));
    core.add(std::make_unique<DeviceRoom>(core, settings.serialNumber));
    core.add(std::make_unique<ScenariosRoom>(core, settings.transport, settings.scenario));
}

}  // namespace dtvservice
