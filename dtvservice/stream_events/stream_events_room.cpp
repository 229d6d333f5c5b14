// Handles the commands for stream event listeners.
#include "stream_events_room.h"

namespace dtvservice {

using broadcast::Channel;
using broadcast::Section;

StreamEventsRoom::StreamEventsRoom(Core& newCore)
    : core(newCore), listeners(newCore.loop, [this](auto&&... values) { tellSignalled(values...); }) {
    core.commands.on.cmdAddStreamEventListener = calls(*this, &StreamEventsRoom::cmdAddStreamEventListener);
    core.commands.on.cmdRemoveStreamEventListener = calls(*this, &StreamEventsRoom::cmdRemoveStreamEventListener);
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

void StreamEventsRoom::servicePresented(const Channel& channel) {
    follow(channel);
}

void StreamEventsRoom::pmtChanged(const Channel& channel, const Section&, bool) {
    follow(channel);
}

/// The listeners rest while the PMT of a newly presented service has not arrived.
void StreamEventsRoom::follow(const Channel& channel) {
    std::string error;
    if (const std::optional<si::Pmt> pmt = si::parsePmt(core.received().si.pmt(channel.serviceId), error)) {
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
