// StreamEventsRoom: browsers' commands for listeners for stream events of the presented service.
// Threads: the loop's.
// Blocks:  never.
// Fails:   the answer says why a listener could not be added or removed.
#pragma once

#include "core.h"
#include "stream_event_listeners.h"

namespace dtvservice {

class StreamEventsRoom : public Room {
public:
    explicit StreamEventsRoom(Core& newCore);

    void servicePresented(const broadcast::Channel& channel) override;
    void pmtChanged(const broadcast::Channel& channel, const broadcast::Section& section, bool changed) override;
    void browserGone(Browser browser) override { listeners.forget(browser); }

private:
    void cmdAddStreamEventListener(Browser asker, unsigned int request, unsigned short onid, unsigned short tsid,
                                   unsigned short sid, short componentTag, const std::string& objectPath,
                                   const std::string& eventName);
    void cmdRemoveStreamEventListener(Browser asker, unsigned int request, unsigned short onid, unsigned short tsid,
                                      unsigned short sid, short componentTag, const std::string& objectPath,
                                      const std::string& eventName);
    nlohmann::json signal(const nlohmann::json& request);
    void follow(const broadcast::Channel& channel);
    void tellSignalled(Browser browser, const StreamEventListeners::Target& target, const si::StreamEvent& event);

    Core& core;
    StreamEventListeners listeners;
    std::uint8_t signalled = 0;  // events of the operator's, modulo the versions of a section
};

}  // namespace dtvservice
