// Handles the commands for stream event listeners.
#include "stream_events_room.h"

#include <algorithm>

#include "request_values.h"
#include "si/section_writer.h"

namespace dtvservice {

using broadcast::Channel;
using broadcast::Section;
using nlohmann::json;

namespace {

/// A section with an event that is fired on its arrival (TS 102 809, clause 8.1).
Section eventSection(std::uint16_t eventId, std::uint8_t version, const std::string& data) {
    constexpr std::uint8_t kStreamEvent = 0x1A;
    constexpr std::uint16_t kLowBits = 0x3FFF;  // the two bits above, left 0, mean "do it now"
    constexpr std::uint32_t kReserved = 0xFFFFFFFE;
    si::SectionWriter writer(si::kStreamDescriptorTableId, eventId & kLowBits, version);
    writer.openDescriptor(kStreamEvent).u16(eventId).u32(kReserved).u32(0).text(data).close();
    return writer.finish();
}

/// The stream with the component_tag, or else the first one for stream descriptors.
std::uint16_t eventPidOf(const si::Pmt& pmt, const json& request) {
    constexpr std::uint8_t kTypeC = 0x0C;
    constexpr std::uint8_t kTypeD = 0x0D;
    std::optional<std::uint8_t> tag;
    if (request.contains("component_tag")) {
        tag = getNumber<std::uint8_t>(request, "component_tag");
    }
    const auto found = std::find_if(pmt.streams.begin(), pmt.streams.end(), [tag](const si::Pmt::Stream& stream) {
        return tag ? si::componentTag(stream) == *tag : stream.streamType == kTypeC || stream.streamType == kTypeD;
    });
    if (found == pmt.streams.end()) {
        throw std::invalid_argument("the presented service has no such stream of stream events");
    }
    return found->pid;
}

}  // namespace

StreamEventsRoom::StreamEventsRoom(Core& newCore)
    : core(newCore), listeners(newCore.loop, [this](auto&&... values) { tellSignalled(values...); }) {
    core.commands.on.cmdAddStreamEventListener = calls(*this, &StreamEventsRoom::cmdAddStreamEventListener);
    core.commands.on.cmdRemoveStreamEventListener = calls(*this, &StreamEventsRoom::cmdRemoveStreamEventListener);
    core.requests.add("stream-event", calls(*this, &StreamEventsRoom::signal));
}

void StreamEventsRoom::cmdAddStreamEventListener(Browser asker, unsigned int request, unsigned short onid,
                                                 unsigned short tsid, unsigned short sid, short componentTag,
                                                 const std::string& objectPath, const std::string& eventName) {
    const StreamEventListeners::Target target = {onid, tsid, sid, componentTag, objectPath, eventName};
    listeners.add(asker, target, [=](StreamEventListeners::Result result) {
        core.browsers.tell({asker}, &Events::onStreamEventListenerAdded, request, onid, tsid, sid, componentTag,
                           objectPath, eventName, static_cast<std::uint32_t>(result));
    });
}

void StreamEventsRoom::cmdRemoveStreamEventListener(Browser asker, unsigned int request, unsigned short onid,
                                                    unsigned short tsid, unsigned short sid, short componentTag,
                                                    const std::string& objectPath, const std::string& eventName) {
    const auto result = listeners.remove(asker, {onid, tsid, sid, componentTag, objectPath, eventName});
    core.browsers.tell({asker}, &Events::onStreamEventListenerRemoved, request, onid, tsid, sid, componentTag,
                       objectPath, eventName, static_cast<std::uint32_t>(result));
}

/// Listeners and section filters get it, as if the broadcast had it.
json StreamEventsRoom::signal(const json& request) {
    constexpr std::size_t kMostData = 245;  // beside the descriptor's other fields
    constexpr std::uint8_t kVersions = 32;
    const auto eventId = getNumber<std::uint16_t>(request, "event_id");
    const std::string data = request.contains("data") ? get<std::string>(request, "data") : std::string();
    if (data.size() > kMostData) {
        throw std::invalid_argument("data has more than " + std::to_string(kMostData) + " bytes");
    }
    const Channel* const channel = core.presented();
    const si::Pmt* const pmt = channel == nullptr ? nullptr : core.received().si.pmtFields(channel->serviceId);
    if (pmt == nullptr) {
        throw std::invalid_argument("no service is presented whose PMT is known");
    }
    const std::uint16_t pid = eventPidOf(*pmt, request);
    signalled = static_cast<std::uint8_t>((signalled + 1) % kVersions);
    const Section section = eventSection(eventId, signalled, data);
    core.received().demux.inject(pid, section);
    return json::object();
}

void StreamEventsRoom::servicePresented(const Channel& channel) {
    follow(channel);
}

void StreamEventsRoom::pmtChanged(const Channel& channel, const Section&, bool) {
    follow(channel);
}

/// The listeners rest while the PMT of a newly presented service has not arrived.
void StreamEventsRoom::follow(const Channel& channel) {
    if (const si::Pmt* const pmt = core.received().si.pmtFields(channel.serviceId)) {
        listeners.follow(core.received().demux, channel, *pmt);
    } else {
        listeners.rest();
    }
}

void StreamEventsRoom::tellSignalled(Browser browser, const StreamEventListeners::Target& target,
                                     const si::StreamEvent& event) {
    const _ovxDeserVectorU8_struct data = {static_cast<std::uint32_t>(event.data.size()),
                                           const_cast<std::uint8_t*>(event.data.data())};
    core.browsers.tell({browser}, &Events::onStreamEventListenerSignalled, target.onid, target.tsid, target.sid,
                       target.componentTag, target.objectPath, target.eventName, data);
}

}  // namespace dtvservice
