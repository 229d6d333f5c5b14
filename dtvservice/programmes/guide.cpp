// Puts the programme guide together.
#include "guide.h"

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <tuple>

#include "si/event.h"

namespace dtvservice {

using nlohmann::json;

namespace {

using ServiceKey = std::tuple<std::uint16_t, std::uint16_t, std::uint16_t>;

ServiceKey keyOf(const si::Triplet& triplet) {
    return {triplet.onid, triplet.tsid, triplet.sid};
}

bool isActual(std::uint8_t tableId) {
    constexpr std::uint8_t kPresentActual = 0x4E;
    constexpr std::uint8_t kFirstSchedule = 0x50;
    constexpr std::uint8_t kFirstOther = 0x60;
    return tableId == kPresentActual || (tableId >= kFirstSchedule && tableId < kFirstOther);
}

/// Collects the events of services.
class Collection {
public:
    explicit Collection(const std::vector<GuideChannel>& channels) {
        for (const GuideChannel& channel : channels) {
            serviceOf(channel.triplet).name = channel.name;
            ofInputs.emplace(std::make_pair(channel.input, channel.triplet.sid), channel.triplet);
        }
    }

    void add(std::size_t input, const si::Eit& eit) {
        si::Triplet triplet = {eit.originalNetworkId, eit.transportStreamId, eit.serviceId};
        const auto own = ofInputs.find({input, eit.serviceId});
        if (isActual(eit.tableId) && own != ofInputs.end()) {
            triplet = own->second;
        }
        for (const si::Eit::Event& event : eit.events) {
            if (known.insert({keyOf(triplet), event.eventId}).second) {
                serviceOf(triplet).events.push_back(event);
            }
        }
    }
    std::vector<GuideService> sorted() {
        for (GuideService& service : services) {
            std::stable_sort(
                service.events.begin(), service.events.end(),
                [](const si::Eit::Event& one, const si::Eit::Event& other) { return one.start < other.start; });
        }
        return std::move(services);
    }

private:
    GuideService& serviceOf(const si::Triplet& triplet) {
        const auto [place, isNew] = places.try_emplace(keyOf(triplet), services.size());
        if (isNew) {
            services.push_back({triplet, {}, {}});
        }
        return services[place->second];
    }

    std::vector<GuideService> services;
    std::map<ServiceKey, std::size_t> places;
    std::map<std::pair<std::size_t, std::uint16_t>, si::Triplet> ofInputs;  // by input and service_id
    std::set<std::pair<ServiceKey, std::uint16_t>> known;
};

json programmeJson(const si::Eit::Event& event) {
    json ratings = json::array();
    for (const si::ParentalRating& each : si::parentalRatings(event.descriptors)) {
        ratings.push_back({{"country_code", each.country}, {"rating", each.rating}});
    }
    json programme = {{"event_id", event.eventId},
                      {"duration_seconds", event.durationSeconds},
                      {"running_status", event.runningStatus},
                      {"language", event.language},
                      {"event_name", event.name},
                      {"text", event.text},
                      {"extended_text", si::extendedText(event.descriptors)},
                      {"parental_ratings", ratings},
                      {"contents", si::contentNibbles(event.descriptors)}};
    if (event.start) {
        programme["start_time"] = si::dateText(*event.start) + "T" + si::clockText(*event.start) + "Z";
    }
    return programme;
}

}  // namespace

std::vector<GuideService> guideOf(const std::vector<GuideChannel>& channels,
                                  const std::vector<EitSections::Kept>& sections) {
    Collection collection(channels);
    for (const EitSections::Kept& kept : sections) {
        std::string error;
        if (const std::optional<si::Eit> eit = si::parseEit(*kept.section, error)) {
            collection.add(kept.input, *eit);
        }
    }
    return collection.sorted();
}

json guideJson(const std::vector<GuideService>& services) {
    json list = json::array();
    for (const GuideService& service : services) {
        json programmes = json::array();
        for (const si::Eit::Event& event : service.events) {
            programmes.push_back(programmeJson(event));
        }
        list.push_back({{"onid", service.triplet.onid},
                        {"tsid", service.triplet.tsid},
                        {"sid", service.triplet.sid},
                        {"name", service.name},
                        {"programmes", std::move(programmes)}});
    }
    return list;
}

}  // namespace dtvservice
