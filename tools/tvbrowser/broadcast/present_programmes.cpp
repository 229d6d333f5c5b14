// Reads EIT present/following.
#include "present_programmes.h"

namespace tvbrowser {

void PresentProgrammes::clear(const std::optional<si::Triplet>& newService) {
    *this = PresentProgrammes();
    service = newService;
}

/// As long as the network of the presented service is unknown, any network fits.
bool PresentProgrammes::isOfService(const si::Eit& eit) const {
    const bool fits = !service || service->onid == si::kUnknownNetworkId || service->onid == eit.originalNetworkId;
    return fits && (!service || (service->tsid == eit.transportStreamId && service->sid == eit.serviceId));
}

bool PresentProgrammes::add(si::Bytes section, std::string& error) {
    std::optional<si::Eit> eit = si::parseEit(section, error);
    if (!eit || eit->sectionNumber >= bySection.size() || !isOfService(*eit)) {
        return false;
    }
    bySection[eit->sectionNumber] = std::move(eit);
    json programmes = json::array();
    for (const std::optional<si::Eit>& each : bySection) {
        if (!each || each->events.empty()) {
            continue;
        }
        // While the sections of a new event come one by one, the following event may be the present one too.
        json programme = programmeValue(tripletOf(*each), each->events.front());
        if (programmes.empty() || programmes.back()["eventId"] != programme["eventId"]) {
            programmes.push_back(std::move(programme));
        }
    }
    const bool isOther = programmes != list;
    list = std::move(programmes);
    return isOther;
}

}  // namespace tvbrowser
