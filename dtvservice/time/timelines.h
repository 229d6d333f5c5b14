// Timelines: the presented service's time: PTS and PCR for those that ask, TEMI timelines for those that follow one.
// Threads: the loop's.   Blocks: never.   Fails: never; what does not come is not told.
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
    /// Both in ticks of 90 kHz, 33 bits: the latest PTS, and the latest PCR's base.
    using PtsSink = std::function<void(Peer browser, std::uint64_t pts, std::uint64_t pcrBase)>;
    using TimelineSink = std::function<void(Peer browser, std::uint8_t componentTag,
                                            const broadcast::TemiTimeline& timeline, std::uint64_t pts)>;

    Timelines(PtsSink newPtsSink, TimelineSink newTimelineSink)
        : ptsSink(std::move(newPtsSink)), timelineSink(std::move(newTimelineSink)) {}
    Timelines(const Timelines&) = delete;
    Timelines& operator=(const Timelines&) = delete;
    ~Timelines() { rest(); }

    /// Watches the components' streams and the PCR of the presented service from now on; the demultiplexer must outlive
    /// this. What was heard of another service is forgotten.
    void follow(broadcast::Demux& newDemux, const std::vector<si::Component>& components, std::uint16_t pcrPid);

    /// Nothing is known of the presented service's streams yet.
    void rest();
    bool isFollowing() const { return demux != nullptr; }

    /// Answered at once, or as soon as the service has a PTS and a PCR.
    void requestPts(Peer browser);
    /// Why there is no answer at once; empty where there is one. The streams of a service are followed.
    std::string whyNoPts() const;
    /// Every time stamp of the component's timeline from now on; of several in front of one PES packet the newest.
    void startTimeline(Peer browser, std::uint8_t componentTag, std::uint8_t timelineId);
    void stopTimelines(Peer browser);
    void forget(Peer browser);

private:
    struct Stream {
        std::optional<std::uint8_t> tag;
        // For the PES packet that starts next, one of each timeline that is followed: where PES headers are scrambled,
        // none ever starts.
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
    bool isScrambled = false;  // the latest payload of ptsPid
    std::optional<std::uint64_t> pts;
    std::optional<std::uint64_t> pcrBase;
    std::set<Peer> askers;
    std::map<Peer, std::set<std::pair<std::uint8_t, std::uint8_t>>> timelines;  // component_tag and timeline_id
};

}  // namespace dtvservice
