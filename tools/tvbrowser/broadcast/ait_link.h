// AitLink: uses the library's AIT catcher as a browser does. It passes channels and AIT sections to the catcher, and on
// what the catcher delivers.
// Threads: onChannel() and onAit() on the transport thread; onCurrentChannelAIT() there or on the thread of a replay.
// Blocks:  as long as the catcher does.
// Fails:   never.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "library.h"
#include "si/triplet.h"

namespace tvbrowser {

class AitLink final : private velmora::dtv::AITSectionClient {
public:
    /// Called on any thread.
    struct Sink {
        /// The broadcast sends a section of this version; told before its delivery.
        std::function<void(const si::Triplet&, std::uint8_t version)> heard;
        /// A section of the catcher, new or replayed.
        std::function<void(const si::Triplet&, const std::vector<std::uint8_t>& section)> delivered;
    };
    /// The link lives as long as the process, because the library may call it at any time. There is one in use in a
    /// process, the last.
    static AitLink& make(const Library& library, Sink sink);

    /// What the catcher has stored of the channel is delivered.
    void onChannel(const si::Triplet& channel);
    void onAit(const si::Triplet& channel, const std::string& section);

private:
    AitLink(const Library& library, Sink newSink);
    void report(const si::Triplet& channel);
    void replay(const si::Triplet& channel);
    void onCurrentChannelAIT(std::uint16_t onId, std::uint16_t tsId, std::uint16_t sId,
                             const std::vector<std::uint8_t>& section) override;

    const AitCatcher catcher;
    velmora::dtv::DVBAITSectionInterface& ait;
    const Sink sink;
    std::optional<si::Triplet> current;  // the transport thread's
};

}  // namespace tvbrowser
