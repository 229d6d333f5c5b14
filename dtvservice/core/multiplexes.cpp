// Services over all inputs.
#include "multiplexes.h"

#include <algorithm>
#include <map>

namespace dtvservice {

using broadcast::Channel;

std::string textOf(const Triplet& triplet) {
    return std::to_string(triplet.onid) + ":" + std::to_string(triplet.tsid) + ":" + std::to_string(triplet.sid);
}

bool matches(const Channel& channel, const Triplet& wanted) {
    return (!channel.originalNetworkId || *channel.originalNetworkId == wanted.onid) &&
           channel.transportStreamId == wanted.tsid && channel.serviceId == wanted.sid;
}

Multiplex& Multiplexes::of(const broadcast::SiDatabase& si) {
    return *std::find_if(list.begin(), list.end(), [&si](const Multiplex& multiplex) { return &multiplex.si == &si; });
}

std::size_t Multiplexes::numberOf(const Multiplex& multiplex) const {
    const auto found = std::find_if(list.begin(), list.end(),
                                    [&multiplex](const Multiplex& candidate) { return &candidate == &multiplex; });
    return static_cast<std::size_t>(found - list.begin()) + 1;
}

/// Whether an input carries the service.
bool Multiplexes::isReceived(const Channel& channel) const {
    const Triplet wanted = {*channel.originalNetworkId, channel.transportStreamId, channel.serviceId};
    return std::any_of(list.begin(), list.end(), [&](const Multiplex& multiplex) {
        const Channel* const received = multiplex.si.find(channel.serviceId);
        return received != nullptr && matches(*received, wanted);
    });
}

std::vector<Channel> Multiplexes::channelsWithoutInput() const {
    std::map<std::string, Channel> found;  // by triplet
    for (const Multiplex& multiplex : list) {
        for (const Channel& channel : multiplex.si.otherChannels()) {
            Channel& kept = found.try_emplace(channel.triplet(), channel).first->second;
            kept.name = kept.name.empty() ? channel.name : kept.name;
        }
    }
    std::vector<Channel> channels;
    for (const auto& entry : found) {
        if (!isReceived(entry.second)) {
            channels.push_back(entry.second);
        }
    }
    return channels;
}

std::string Multiplexes::whyNotReceived(const Triplet& wanted) const {
    const bool isKnown = std::any_of(list.begin(), list.end(), [&wanted](const Multiplex& multiplex) {
        return multiplex.si.announces(wanted.onid, wanted.tsid, wanted.sid);
    });
    return isKnown ? "service " + textOf(wanted) + " is on no input"
                   : "no service " + textOf(wanted) + " in the channel list";
}

}  // namespace dtvservice
