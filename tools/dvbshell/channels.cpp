// Reads PAT, SDT and NIT.
#include "channels.h"

namespace dvbshell {

namespace {

constexpr std::uint8_t kPatTable = 0x00;
constexpr std::uint8_t kNitActualTable = 0x40;
constexpr std::uint8_t kSdtActualTable = 0x42;

}  // namespace

void ChannelList::add(const std::string& section) {
    std::string error;
    switch (section.empty() ? 0xFF : static_cast<std::uint8_t>(section[0])) {
        case kPatTable:
            if (const std::optional<si::Pat> table = si::parsePat(section, error)) {
                pat.add(*table);
            }
            break;
        case kSdtActualTable:
            if (const std::optional<si::Sdt> table = si::parseSdt(section, error)) {
                sdt.add(*table);
            }
            break;
        case kNitActualTable:
            if (const std::optional<si::Nit> table = si::parseNit(section, error)) {
                for (const si::Nit::TransportStream& stream : table->transportStreams) {
                    networks[stream.transportStreamId] = stream.originalNetworkId;
                }
            }
            break;
        default:
            break;
    }
}

std::uint16_t ChannelList::network() const {
    if (!sdt.byNumber.empty()) {
        return sdt.byNumber.begin()->second.originalNetworkId;
    }
    const auto found = networks.find(pat.byNumber.begin()->second.transportStreamId);
    return found == networks.end() ? si::kUnknownNetworkId : found->second;
}

std::vector<Channel> ChannelList::channels() const {
    std::vector<Channel> all;
    for (const auto& [patNumber, table] : pat.byNumber) {
        for (const si::Pat::Program& program : table.programs) {
            const Triplet triplet{network(), table.transportStreamId, program.serviceId};
            all.push_back({triplet, nameOf(triplet)});
        }
    }
    return all;
}

std::string ChannelList::nameOf(const Triplet& channel) const {
    for (const auto& [number, table] : sdt.byNumber) {
        for (const si::Sdt::Service& service : table.services) {
            if (service.serviceId == channel.sid && table.transportStreamId == channel.tsid) {
                return service.name;
            }
        }
    }
    return "";
}

ChannelScan::ChannelScan(Session& newSession) : session(newSession) {
    if (const std::optional<Triplet> presented = session.presented()) {
        channels.addNetwork(*presented);
    }
    struct Table {
        unsigned int pid;
        std::uint8_t id;
    };
    for (const Table& table : {Table{0x00, kPatTable}, Table{0x11, kSdtActualTable}, Table{0x10, kNitActualTable}}) {
        filters.push_back(
            std::make_unique<Filter>(session, queue, table.pid, tablePattern(table.id), Filter::Owner::shell));
    }
}

bool ChannelScan::isOpen() const {
    for (const std::unique_ptr<Filter>& filter : filters) {
        if (!filter->isOpen()) {
            return false;
        }
    }
    return true;
}

void ChannelScan::take() {
    while (const std::optional<Event> event = queue.take(Clock::now())) {
        channels.add(event->section);
    }
}

bool ChannelScan::wait(Clock::time_point until) {
    while (!channels.isComplete()) {
        const std::optional<Event> event = session.next(queue, until);
        if (!event) {
            return false;
        }
        channels.add(event->section);
    }
    return true;
}

}  // namespace dvbshell
