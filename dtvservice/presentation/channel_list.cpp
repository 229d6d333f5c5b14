// Lists services in the order of their triplets.
#include "channel_list.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <tuple>

namespace dtvservice {

using broadcast::Channel;
using nlohmann::json;

namespace {

json described(const Channel& channel) {
    return {{"onid", channel.networkId()},
            {"tsid", channel.transportStreamId},
            {"sid", channel.serviceId},
            {"name", channel.name},
            {"pmt", false},
            {"hbbtv", false},
            {"presented", false}};
}

/// By triplet. Unknown networks come last, because their number is the highest.
bool isBefore(const json& one, const json& other) {
    const auto key = [](const json& channel) {
        return std::make_tuple(channel["onid"].get<unsigned int>(), channel["tsid"].get<unsigned int>(),
                               channel["sid"].get<unsigned int>());
    };
    return key(one) < key(other);
}

}  // namespace

json channelList(const Core& core) {
    json list = json::array();
    std::size_t input = 0;
    for (const Multiplex& multiplex : core.multiplexes) {
        ++input;
        for (const Channel& channel : multiplex.si.channels()) {
            json entry = described(channel);
            entry["input"] = input;
            entry["pmt"] = !multiplex.si.pmt(channel.serviceId).empty();
            entry["hbbtv"] = multiplex.si.signalsHbbTv(channel.serviceId);
            entry["presented"] = core.presented() == &channel;
            list.push_back(std::move(entry));
        }
    }
    for (const Channel& channel : core.multiplexes.channelsWithoutInput()) {
        list.push_back(described(channel));
    }
    std::stable_sort(list.begin(), list.end(), isBefore);
    return {{"channels", list}};
}

}  // namespace dtvservice
