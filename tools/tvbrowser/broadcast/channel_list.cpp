// Combines the tables.
#include "channel_list.h"

#include <algorithm>

#include "si/delivery_system.h"

namespace tvbrowser {

namespace {

constexpr std::uint8_t kPatTable = 0x00;
constexpr std::uint8_t kNitActualTable = 0x40;
constexpr std::uint8_t kSdtActualTable = 0x42;
constexpr std::uint8_t kSdtOtherTable = 0x46;

/// OIPF's channel types.
enum class ChannelType : unsigned int { television = 0, radio = 1, other = 2 };

/// By service_type (EN 300 468, table 87).
ChannelType channelType(std::uint8_t serviceType) {
    constexpr std::uint8_t kTelevision[] = {0x01, 0x11, 0x16, 0x17, 0x18, 0x19, 0x1A, 0x1B,
                                            0x1C, 0x1D, 0x1E, 0x1F, 0x20, 0x21, 0x22};
    constexpr std::uint8_t kRadio[] = {0x02, 0x07, 0x0A};
    const auto has = [serviceType](const auto& types) {
        return std::find(std::begin(types), std::end(types), serviceType) != std::end(types);
    };
    if (has(kTelevision)) {
        return ChannelType::television;
    }
    return has(kRadio) ? ChannelType::radio : ChannelType::other;
}

/// A stream whose delivery system no table gives counts as terrestrial: a channel object must have some type.
si::IdType idTypeOf(const si::DeliverySystem& system) {
    return system.idType == si::IdType::none ? si::IdType::dvbT : system.idType;
}

/// At the limit, the tables that are there still follow the broadcast.
template <typename Key, typename Table>
void addTo(std::map<Key, TableSections<Table>>& tables, const Key& key, const Table& section) {
    if (tables.size() < ChannelList::kMostTables || tables.count(key) != 0) {
        tables[key].add(section);
    }
}

/// The services in the order of the PAT, else of the SDT, else of the NIT; with the types and names that are known.
std::vector<si::Sdt::Service> servicesOf(const TableSections<si::Pat>* pat, const TableSections<si::Sdt>* sdt,
                                         const std::vector<si::ListedService>& listed) {
    std::vector<si::Sdt::Service> ordered;
    std::map<std::uint16_t, si::Sdt::Service> described;
    for (const si::ListedService& service : listed) {
        described[service.serviceId] = {service.serviceId, service.serviceType, {}, {}};
        ordered.push_back(described[service.serviceId]);
    }
    if (sdt != nullptr) {
        ordered.clear();
        for (const auto& [number, section] : sdt->sections()) {
            for (const si::Sdt::Service& service : section.services) {
                described[service.serviceId] = service;
                ordered.push_back(service);
            }
        }
    }
    if (pat != nullptr) {
        ordered.clear();
        for (const auto& [number, section] : pat->sections()) {
            for (const si::Pat::Program& program : section.programs) {
                ordered.push_back({program.serviceId, 0, {}, {}});
            }
        }
    }
    std::set<std::uint16_t> taken;
    std::vector<si::Sdt::Service> services;
    for (const si::Sdt::Service& service : ordered) {
        if (taken.insert(service.serviceId).second) {
            const auto known = described.find(service.serviceId);
            services.push_back(known == described.end() ? service : known->second);
        }
    }
    return services;
}

}  // namespace

void ChannelList::add(si::Bytes section) {
    switch (section.size == 0 ? UINT8_MAX : section.data[0]) {
        case kPatTable:
            addPat(section);
            break;
        case kNitActualTable:
            addNit(section);
            break;
        case kSdtActualTable:
        case kSdtOtherTable:
            addSdt(section);
            break;
        default:
            break;
    }
}

void ChannelList::addPat(si::Bytes section) {
    std::string error;
    const std::optional<si::Pat> pat = si::parsePat(section, error);
    if (!pat) {
        return;
    }
    if (std::exchange(mayBeAnother, false) && pats.count(pat->transportStreamId) == 0) {
        pats.clear();
        sdts.clear();
        nits.clear();
    }
    addTo(pats, pat->transportStreamId, *pat);
}

void ChannelList::addSdt(si::Bytes section) {
    std::string error;
    const std::optional<si::Sdt> sdt = si::parseSdt(section, error);
    if (sdt) {
        addTo(sdts, {sdt->originalNetworkId, sdt->transportStreamId}, *sdt);
    }
}

void ChannelList::addNit(si::Bytes section) {
    std::string error;
    const std::optional<si::Nit> nit = si::parseNit(section, error);
    if (nit) {
        addTo(nits, nit->networkId, *nit);
    }
}

void ChannelList::addNetwork(std::uint16_t transportStream, std::uint16_t network) {
    if (network != si::kUnknownNetworkId) {
        networks[transportStream] = network;
    }
}

/// Of a transport stream with a PAT.
std::uint16_t ChannelList::networkOf(std::uint16_t transportStream) const {
    const auto told = networks.find(transportStream);
    if (told != networks.end()) {
        return told->second;
    }
    for (const auto& [key, sdt] : sdts) {
        if (key.second == transportStream && sdt.sections().begin()->second.actual) {
            return key.first;
        }
    }
    for (const auto& [network, nit] : nits) {
        for (const auto& [number, section] : nit.sections()) {
            for (const si::Nit::TransportStream& stream : section.transportStreams) {
                if (stream.transportStreamId == transportStream) {
                    return stream.originalNetworkId;
                }
            }
        }
    }
    return si::kUnknownNetworkId;
}

std::map<ChannelList::Key, ChannelList::Stream> ChannelList::streams() {
    std::map<Key, Stream> all;
    std::vector<Key> keys;
    const auto stream = [&all, &keys](const Key& key) -> Stream& {
        keys.push_back(key);
        return all[key];
    };
    for (const auto& [transportStream, pat] : pats) {
        stream({networkOf(transportStream), transportStream}).pat = &pat;
    }
    for (const auto& [network, nit] : nits) {
        for (const auto& [number, section] : nit.sections()) {
            for (const si::Nit::TransportStream& each : section.transportStreams) {
                Stream& listed = stream({each.originalNetworkId, each.transportStreamId});
                listed.inNit = &each;
                listed.networkId = network;
            }
        }
    }
    for (const auto& [key, sdt] : sdts) {
        stream(key).sdt = &sdt;
    }
    order.erase(std::remove_if(order.begin(), order.end(), [&all](const Key& key) { return all.count(key) == 0; }),
                order.end());
    std::set<Key> placed(order.begin(), order.end());
    for (const Key& key : keys) {
        if (placed.insert(key).second) {
            order.push_back(key);
        }
    }
    return all;
}

void ChannelList::appendChannels(const Key& key, const Stream& stream, json& channels) {
    const si::Descriptors descriptors = stream.inNit == nullptr ? si::Descriptors() : stream.inNit->descriptors;
    const si::DeliverySystem system = si::deliverySystem(descriptors);
    for (const si::Sdt::Service& service : servicesOf(stream.pat, stream.sdt, si::serviceList(descriptors))) {
        if (channels.size() == kMostChannels) {
            return;
        }
        channels.push_back({{"onid", key.first},
                            {"tsid", key.second},
                            {"sid", service.serviceId},
                            {"nid", stream.inNit == nullptr ? json() : json(stream.networkId)},
                            {"name", safeText(service.name)},
                            {"type", static_cast<unsigned int>(channelType(service.serviceType))},
                            {"idType", static_cast<unsigned int>(idTypeOf(system))},
                            {"dsd", hexText(system.descriptor)},
                            {"majorChannel", channels.size() + 1}});
    }
}

bool ChannelList::renew() {
    const std::map<Key, Stream> known = streams();
    json channels = json::array();
    for (const Key& key : order) {
        appendChannels(key, known.at(key), channels);
    }
    const bool isOther = channels != list;
    list = std::move(channels);
    return isOther;
}

}  // namespace tvbrowser
