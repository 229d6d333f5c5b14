// Stores the names of services.
#include "sdt_table.h"

namespace broadcast {

bool SdtNames::isSdt(si::Bytes section, std::uint8_t tableId) {
    return isCurrent(section, tableId) && si::sectionNumber(section) < kMostSections;
}

/// Adds the section's names. Old names stay until the new version is complete, because an old name is better than none.
std::optional<si::Sdt> SdtNames::onSection(si::Bytes section) {
    if (table.file(section) == Update::none) {
        return std::nullopt;
    }
    std::string error;
    std::optional<si::Sdt> parsed = si::parseSdt(section, error);
    if (!parsed) {
        return std::nullopt;
    }
    if (!table.isWhole(section)) {
        add(*parsed);
        return parsed;
    }
    names_.clear();
    for (const auto& entry : table.sections()) {
        if (const std::optional<si::Sdt> part = si::parseSdt(entry.second, error)) {
            add(*part);
        }
    }
    return parsed;
}

void SdtNames::add(const si::Sdt& part) {
    for (const si::Sdt::Service& service : part.services) {
        if (names_.size() < kMostServices || names_.find(service.serviceId) != names_.end()) {
            names_[service.serviceId] = service.name;
        }
    }
}

bool SdtTable::onSection(si::Bytes section, std::optional<std::uint16_t> own) {
    constexpr std::uint8_t kActual = 0x42;
    if (!SdtNames::isSdt(section, kActual)) {
        return false;
    }
    Stream* const stream = streamOf(si::tableIdExtension(section), own);
    const std::optional<si::Sdt> parsed = stream == nullptr ? std::nullopt : stream->names.onSection(section);
    if (!parsed) {
        return false;
    }
    stream->originalNetworkId = parsed->originalNetworkId;
    return true;
}

bool SdtTable::learnNetwork(std::uint16_t transportStream, std::uint16_t networkId, std::optional<std::uint16_t> own) {
    Stream* const stream = streamOf(transportStream, own);
    if (stream == nullptr || stream->originalNetworkId) {
        return false;
    }
    stream->originalNetworkId = networkId;
    return true;
}

void SdtTable::describe(Channel& channel) const {
    channel.originalNetworkId.reset();
    channel.name.clear();
    const auto stream = streams.find(channel.transportStreamId);
    if (stream == streams.end()) {
        return;
    }
    channel.originalNetworkId = stream->second.originalNetworkId;
    const SdtNames::Names& names = stream->second.names.names();
    const auto name = names.find(channel.serviceId);
    if (name != names.end()) {
        channel.name = name->second;
    }
}

/// Null if there are too many streams. Only the multiplex's own stream may then replace another one.
SdtTable::Stream* SdtTable::streamOf(std::uint16_t transportStream, std::optional<std::uint16_t> own) {
    if (streams.size() >= kMostStreams && streams.find(transportStream) == streams.end()) {
        if (transportStream != own) {
            return nullptr;
        }
        streams.erase(streams.begin());
    }
    return &streams[transportStream];
}

}  // namespace broadcast
