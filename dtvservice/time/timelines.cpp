// Reads the times of the watched packets.
#include "timelines.h"

#include <algorithm>
#include <utility>

namespace dtvservice {

using broadcast::TemiTimeline;
using broadcast::TsPacket;

void Timelines::unwatch() {
    for (const auto& stream : streams) {
        demux->watch(stream.first, nullptr);
    }
    streams.clear();
}

void Timelines::rest() {
    unwatch();
    demux = nullptr;
    pts.reset();
    pcrBase.reset();
}

void Timelines::follow(broadcast::Demux& newDemux, const std::vector<si::Component>& components,
                       std::uint16_t newPcrPid) {
    const std::uint16_t before = ptsPid;
    const bool same = demux == &newDemux && pcrPid == newPcrPid;
    std::map<std::uint16_t, Stream> earlierStreams = same ? streams : std::map<std::uint16_t, Stream>();
    unwatch();
    demux = &newDemux;
    pcrPid = newPcrPid;
    ptsPid = pcrPid;
    streams[pcrPid];
    const auto byType = [](const si::Component& one, const si::Component& other) { return one.type < other.type; };
    const auto reference = std::min_element(components.begin(), components.end(), byType);
    if (reference != components.end() && reference->type != si::ComponentType::subtitle) {
        ptsPid = reference->pid;
    }
    for (const si::Component& component : components) {
        streams[component.pid].tag = component.tag;
    }
    if (!same || ptsPid != before) {
        isScrambled = false;
        pts.reset();
        pcrBase.reset();
    }
    for (auto& stream : streams) {
        // A PMT may arrive between a time stamp and its PES packet, so keep waiting time stamps.
        const auto earlier = earlierStreams.find(stream.first);
        if (earlier != earlierStreams.end() && earlier->second.tag == stream.second.tag) {
            stream.second.waiting = std::move(earlier->second.waiting);
        }
        demux->watch(stream.first, [this, pid = stream.first](TsPacket packet) { onPacket(pid, packet); });
    }
}

void Timelines::onPacket(std::uint16_t pid, TsPacket packet) {
    constexpr std::uint64_t kTicksPerBase = 300;
    if (pid == pcrPid && packet.hasPcr() && !packet.transportError()) {
        pcrBase = packet.pcr() / kTicksPerBase;
    }
    if (pid == ptsPid && packet.hasPayload()) {
        isScrambled = packet.scrambled();
    }
    Stream& stream = streams[pid];
    if (!timelines.empty() && packet.hasAdaptation()) {
        for (const TemiTimeline& timeline : broadcast::temiTimelinesOf(packet)) {
            if (isFollowed(stream, timeline.id)) {
                keep(stream, timeline);
            }
        }
    }
    const std::optional<std::uint64_t> started = broadcast::ptsOf(packet);
    if (!started) {
        return;
    }
    tell(stream, *started);
    stream.waiting.clear();
    if (pid == ptsPid) {
        pts = started;
        answerPts();
    }
}

bool Timelines::isFollowed(const Stream& stream, std::uint8_t timelineId) const {
    return stream.tag && std::any_of(timelines.begin(), timelines.end(), [&](const auto& browser) {
               return browser.second.count({*stream.tag, timelineId}) != 0;
           });
}

void Timelines::keep(Stream& stream, const TemiTimeline& timeline) {
    auto& waiting = stream.waiting;
    waiting.erase(std::remove_if(waiting.begin(), waiting.end(),
                                 [&timeline](const TemiTimeline& older) { return older.id == timeline.id; }),
                  waiting.end());
    waiting.push_back(timeline);
}

void Timelines::tell(const Stream& stream, std::uint64_t ofPts) {
    for (const TemiTimeline& timeline : stream.waiting) {
        for (const auto& browser : timelines) {
            if (stream.tag && browser.second.count({*stream.tag, timeline.id}) != 0) {
                timelineSink(browser.first, *stream.tag, timeline, ofPts);
            }
        }
    }
}

void Timelines::requestPts(Peer browser) {
    askers.insert(browser);
    answerPts();
}

std::string Timelines::whyNoPts() const {
    if (!pts) {
        return isScrambled ? "PID " + std::to_string(ptsPid) + " is scrambled"
                           : "no PTS has come on PID " + std::to_string(ptsPid);
    }
    return pcrBase ? std::string() : "no PCR has come on PID " + std::to_string(pcrPid);
}

void Timelines::answerPts() {
    if (!pts || !pcrBase) {
        return;
    }
    for (const Peer browser : std::exchange(askers, {})) {
        ptsSink(browser, *pts, *pcrBase);
    }
}

void Timelines::startTimeline(Peer browser, std::uint8_t componentTag, std::uint8_t timelineId) {
    timelines[browser].insert({componentTag, timelineId});
}

/// Drops waiting time stamps that no browser follows any more. They would be outdated for a later follower.
void Timelines::stopTimelines(Peer browser) {
    timelines.erase(browser);
    for (auto& [pid, stream] : streams) {
        auto& waiting = stream.waiting;
        waiting.erase(
            std::remove_if(waiting.begin(), waiting.end(),
                           [this, &of = stream](const TemiTimeline& timeline) { return !isFollowed(of, timeline.id); }),
            waiting.end());
    }
}

void Timelines::forget(Peer browser) {
    askers.erase(browser);
    stopTimelines(browser);
}

}  // namespace dtvservice
