// Timelines: the presented service's time. Answers browsers' requests for PTS and PCR, and sends TEMI timelines to the
// browsers that follow them.
// Threads: the loop's.
// Blocks:  never.
// Fails:   never; a time that is not broadcast is not sent.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "demux.h"
#include "pes_time.h"
#include "si/components.h"

namespace dtvservice {

class Timelines {
public:
    using Peer = std::uint32_t;
    /// Receives the latest PTS and the base of the latest PCR, both in ticks of 90 kHz, 33 bits.
    using PtsSink = std::function<void(Peer browser, std::uint64_t pts, std::uint64_t pcrBase)>;
    using TimelineSink = std::function<void(Peer browser, std::uint8_t componentTag,
                                            const broadcast::TemiTimeline& timeline, std::uint64_t pts)>;

    Timelines(PtsSink newPtsSink, TimelineSink newTimelineSink)
        : ptsSink(std::move(newPtsSink)), timelineSink(std::move(newTimelineSink)) {}
    Timelines(const Timelines&) = delete;
    Timelines& operator=(const Timelines&) = delete;
    ~Timelines() { rest(); }

    /// From now on watches the components' streams and the PCR of the presented service. Drops the times of another
    /// service. The demultiplexer must outlive this object.
    void follow(broadcast::Demux& newDemux, const std::vector<si::Component>& components, std::uint16_t pcrPid);

    /// Stops watching, because the streams of the presented service are unknown.
    void rest();
    bool isFollowing() const { return demux != nullptr; }

    /// Answers at once, or as soon as the service has a PTS and a PCR.
    void requestPts(Peer browser);
    /// Why a request cannot be answered at once; empty if it can. isFollowing() must be true.
    std::string whyNoPts() const;
    /// From now on sends the component's timeline: for each PES packet its newest time stamp.
    void startTimeline(Peer browser, std::uint8_t componentTag, std::uint8_t timelineId);
    void stopTimelines(Peer browser);
    void forget(Peer browser);

private:
    struct Stream {
        std::optional<std::uint8_t> tag;
        // The time stamps for the next PES packet, only the newest of each followed timeline. This limits the memory:
        // if PES headers are scrambled, the start of the next PES packet is never found.
        std::vector<broadcast::TemiTimeline> waiting;
    };

    void unwatch();
    void onPacket(std::uint16_t pid, broadcast::TsPacket packet);
    bool isFollowed(const Stream& stream, std::uint8_t timelineId) const;
    static void keep(Stream& stream, const broadcast::TemiTimeline& timeline);
    void tell(const Stream& stream, std::uint64_t pts);
    void answerPts();

    PtsSink ptsSink;
    TimelineSink timelineSink;
    broadcast::Demux* demux = nullptr;
    std::map<std::uint16_t, Stream> streams;  // by PID
    std::uint16_t pcrPid = 0;
    std::uint16_t ptsPid = 0;  // of the first video, or else the first audio
    bool isScrambled = false;  // whether the latest payload of ptsPid was scrambled
    std::optional<std::uint64_t> pts;
    std::optional<std::uint64_t> pcrBase;
    std::set<Peer> askers;
    std::map<Peer, std::set<std::pair<std::uint8_t, std::uint8_t>>> timelines;  // component_tag and timeline_id
};

}  // namespace dtvservice
