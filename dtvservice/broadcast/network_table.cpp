// Combines NIT (actual) and SDT (other) for each transport stream.
#include "network_table.h"

#include <algorithm>

#include "si/delivery_system.h"

namespace broadcast {

std::optional<si::Nit> NetworkTable::onNitSection(si::Bytes section) {
    constexpr std::uint8_t kActual = 0x40;
    if (!isCurrent(section, kActual) || nit.file(section) == Update::none) {
        return std::nullopt;
    }
    std::string error;
    std::optional<si::Nit> parsed = si::parseNit(section, error);
    if (!parsed) {
        return std::nullopt;
    }
    if (nit.isWhole(section)) {
        renew();
    } else {
        add(*parsed);
    }
    return parsed;
}

void NetworkTable::onSdtSection(si::Bytes section) {
    constexpr std::uint8_t kOther = 0x46;
    constexpr std::size_t kNetworkAt = 8;
    constexpr std::size_t kShortest = 15;
    if (!SdtNames::isSdt(section, kOther) || section.size < kShortest) {
        return;
    }
    if (Stream* const stream = streamOf(wordAt(section, kNetworkAt), si::tableIdExtension(section))) {
        stream->sdt.onSection(section);
    }
}

NetworkTable::Stream* NetworkTable::streamOf(std::uint16_t networkId, std::uint16_t transportStream) {
    const std::pair<std::uint16_t, std::uint16_t> key = {networkId, transportStream};
    const bool isKnown = streams.find(key) != streams.end();
    return isKnown || streams.size() < kMostStreams ? &streams[key] : nullptr;
}

void NetworkTable::add(const si::Nit::TransportStream& stream) {
    Stream* const known = streamOf(stream.originalNetworkId, stream.transportStreamId);
    if (known == nullptr) {
        return;
    }
    known->descriptors = stream.descriptors;
    for (const si::ListedService& service : si::serviceList(stream.descriptors)) {
        if (known->listed.size() < kMostServices) {
            known->listed.insert(service.serviceId);
        }
    }
}

void NetworkTable::add(const si::Nit& part) {
    for (const si::Nit::TransportStream& stream : part.transportStreams) {
        add(stream);
    }
}

/// Reads all transport streams again from the sections of the current NIT version, and drops the data of older
/// versions.
void NetworkTable::renew() {
    for (auto stream = streams.begin(); stream != streams.end();) {
        stream->second.descriptors.clear();
        stream->second.listed.clear();
        stream = stream->second.sdt.isEmpty() ? streams.erase(stream) : std::next(stream);
    }
    for (const auto& entry : nit.sections()) {
        std::string error;
        if (const std::optional<si::Nit> part = si::parseNit(entry.second, error)) {
            add(*part);
        }
    }
}

std::vector<Channel> NetworkTable::otherChannels(std::optional<std::uint16_t> own) const {
    std::vector<Channel> list;
    for (const auto& [key, stream] : streams) {
        if (key.second == own) {
            continue;
        }
        SdtNames::Names named = stream.sdt.names();
        for (const std::uint16_t serviceId : stream.listed) {
            named.try_emplace(serviceId);
        }
        for (const auto& [serviceId, name] : named) {
            list.push_back({key.first, key.second, serviceId, 0, name});
        }
    }
    return list;
}

bool NetworkTable::lists(std::uint32_t networkId, std::uint32_t transportStream, std::uint32_t serviceId) const {
    if (std::max({networkId, transportStream, serviceId}) > 0xFFFF) {
        return false;
    }
    const auto found =
        streams.find({static_cast<std::uint16_t>(networkId), static_cast<std::uint16_t>(transportStream)});
    const auto id = static_cast<std::uint16_t>(serviceId);
    return found != streams.end() && (found->second.listed.count(id) != 0 || found->second.sdt.names().count(id) != 0);
}

bool NetworkTable::hasDeliverySystem(const Channel& channel, const std::string& descriptor) const {
    const auto isIt = [&descriptor](const si::Descriptor& known) {
        std::string bytes = {static_cast<char>(known.tag), static_cast<char>(known.bytes.size())};
        bytes.append(known.bytes.begin(), known.bytes.end());
        return bytes == descriptor;
    };
    return std::any_of(streams.begin(), streams.end(), [&](const auto& stream) {
        const si::Descriptors& all = stream.second.descriptors;
        return stream.first.first == channel.originalNetworkId.value_or(stream.first.first) &&
               stream.first.second == channel.transportStreamId && std::any_of(all.begin(), all.end(), isIt);
    });
}

}  // namespace broadcast
