// AitLink: uses the library's AIT catcher as a browser does. It passes channels and AIT sections from the DVB API to
// the catcher, and turns the sections that the catcher delivers into events.
// Threads: onChannel() and onAit() on the transport thread; replay() on any thread.
//          onCurrentChannelAIT() on the transport thread or on the thread of a replay.
// Blocks:  as long as the catcher does.
// Fails:   load() with a text that names the library and the reason.
#pragma once

#include <optional>

#include "dvb_ait_section_interface.h"
#include "events.h"

namespace velmora::dvbservice {
class BrowserAITCatcher;
}

namespace dvbshell {

/// The catcher's operations. The library exports them by name for the browser.
struct AitCatcher {
    using Update = int (*)(velmora::dvbservice::BrowserAITCatcher*, std::uint16_t, std::uint16_t, std::uint16_t,
                           std::uint16_t);
    using UpdateAit = int (*)(velmora::dvbservice::BrowserAITCatcher*, std::string);

    velmora::dvbservice::BrowserAITCatcher* catcher = nullptr;
    Update updateCurrentChannelInfo = nullptr;
    UpdateAit updateAIT = nullptr;
};

class AitLink : public AitSink, private velmora::dtv::AITSectionClient {
public:
    /// Null, with the reason, when the library lacks an interface or a function. The link lives as long as the process,
    /// because the library may call it at any time.
    static AitLink* load(const std::string& libraryPath, EventQueue& queue, std::string& error);
    AitLink(const AitCatcher& newCatcher, velmora::dtv::DVBAITSectionInterface& newInterface, EventQueue& newQueue);

    void onChannel(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid) override;
    void onAit(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid, const std::string& section) override;
    /// Asks for the stored AIT of a channel, which arrives as events.
    bool replay(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid);

private:
    struct Channel {
        std::uint16_t onid;
        std::uint16_t tsid;
        std::uint16_t sid;
    };
    void onCurrentChannelAIT(std::uint16_t onId, std::uint16_t tsId, std::uint16_t sId,
                             const std::vector<std::uint8_t>& section) override;

    AitCatcher catcher;
    velmora::dtv::DVBAITSectionInterface& ait;
    EventQueue& queue;
    std::optional<Channel> current;  // transport thread only
};

}  // namespace dvbshell
