// Collects programmes.
#include "programmes_room.h"

#include <nlohmann/json.hpp>

#include "request_values.h"

namespace dtvservice {

using broadcast::Channel;
using nlohmann::json;

namespace {

GuideChannel guideChannel(std::size_t input, const Channel& channel) {
    return {input, {channel.networkId(), channel.transportStreamId, channel.serviceId}, channel.name};
}

}  // namespace

ProgrammesRoom::ProgrammesRoom(Core& newCore, Collecting collecting) : core(newCore) {
    core.requests.addLong("epg", calls(*this, &ProgrammesRoom::epg));
    if (collecting == Collecting::fromTheStart) {
        start();
    }
}

void ProgrammesRoom::channelListChanged(Multiplex& multiplex) {
    if (began) {
        follow(multiplex);
    }
}

void ProgrammesRoom::start() {
    began = EventLoop::Clock::now();
    for (Multiplex& multiplex : core.multiplexes) {
        follow(multiplex);
    }
}

void ProgrammesRoom::follow(Multiplex& multiplex) {
    if (subscriptions.count(&multiplex) != 0) {
        return;
    }
    const std::size_t input = core.multiplexes.numberOf(multiplex);
    subscriptions.try_emplace(&multiplex, multiplex.demux, broadcast::EitTable::kPid,
                              [this, input](si::Bytes section) { onSection(input, section); });
}

void ProgrammesRoom::onSection(std::size_t input, si::Bytes section) {
    if (sections.add(input, section)) {
        return;
    }
    if (const auto line = messages.tell("the programme guide is full: some programmes are left out")) {
        BLOG_TAGGED(blog::kUnsupported, "%s\n", line->c_str());
    }
}

/// In the order of the channel list.
std::vector<GuideChannel> ProgrammesRoom::channels() const {
    std::vector<GuideChannel> list;
    for (const Multiplex& multiplex : core.multiplexes) {
        for (const Channel& channel : multiplex.si.channels()) {
            list.push_back(guideChannel(core.multiplexes.numberOf(multiplex), channel));
        }
    }
    for (const Channel& channel : core.multiplexes.channelsWithoutInput()) {
        list.push_back(guideChannel(0, channel));
    }
    return list;
}

OperatorRequests::Rest ProgrammesRoom::epg(const json& request) {
    const std::string format = request.contains("format") ? get<std::string>(request, "format") : "json";
    if (format != "json" && format != "xmltv") {
        throw std::invalid_argument("format is neither json nor xmltv");
    }
    if (!began) {
        start();
    }
    const std::chrono::duration<double> collected = EventLoop::Clock::now() - *began;
    return [format, seconds = collected.count(), list = channels(), kept = sections.all()] {
        const std::vector<GuideService> guide = guideOf(list, kept);
        json answer = {{"collected_seconds", seconds}};
        if (format == "json") {
            answer["services"] = guideJson(guide);
        } else {
            answer["xmltv"] = guideXmltv(guide);
        }
        return answer;
    };
}

}  // namespace dtvservice
