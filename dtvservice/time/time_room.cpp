// Handles the commands for PTS and TEMI timelines.
#include "time_room.h"

#include "message_transfer.h"

namespace dtvservice {

using broadcast::Channel;
using broadcast::Section;

TimeRoom::TimeRoom(Core& newCore)
    : core(newCore),
      timelines([this](auto... values) { tellPts(values...); }, [this](auto... values) { tellTimeline(values...); }) {
    core.commands.on.cmdSendPtsRequest = calls(*this, &TimeRoom::cmdSendPtsRequest);
    core.commands.on.cmdStartTemiTimelineRequest = calls(*this, &TimeRoom::cmdStartTemiTimelineRequest);
    core.commands.on.cmdStopTemiTimelineRequest = calls(*this, &TimeRoom::cmdStopTemiTimelineRequest);
}

/// A request that cannot be answered yet is logged and kept.
void TimeRoom::cmdSendPtsRequest(Browser asker, unsigned int) {
    const std::string reason = whyNoPts();
    if (!reason.empty() && core.browsers.mayTell(asker)) {
        BLOG_TAGGED(blog::kFailure, "browser %u: no PTS yet: %s\n", asker, reason.c_str());
    }
    timelines.requestPts(asker);
}

std::string TimeRoom::whyNoPts() const {
    const Channel* const channel = core.presented();
    if (channel == nullptr) {
        return "no service is presented";
    }
    return timelines.isFollowing() ? timelines.whyNoPts() : "no PMT of " + channel->triplet() + " has come";
}

void TimeRoom::cmdStartTemiTimelineRequest(Browser asker, unsigned int componentTag, unsigned int timelineId,
                                           unsigned int) {
    constexpr unsigned int kLargest = 0xFF;
    if (componentTag > kLargest || timelineId > kLargest) {
        core.refuse<lo::browserdvbservice::messages::CmdStartTemiTimelineRequest>(
            asker, "component_tag and timeline_id are 0 to 255");
        if (core.browsers.mayTell(asker)) {
            BLOG_TAGGED(blog::kUnsupported, "refused: component_tag %u, timeline_id %u: each is 0 to 255\n",
                        componentTag, timelineId);
        }
        return;
    }
    timelines.startTimeline(asker, static_cast<std::uint8_t>(componentTag), static_cast<std::uint8_t>(timelineId));
}

void TimeRoom::cmdStopTemiTimelineRequest(Browser asker) {
    timelines.stopTimelines(asker);
}

void TimeRoom::servicePresented(const Channel& channel) {
    timelines.rest();
    follow(channel);
}

void TimeRoom::pmtChanged(const Channel& channel, const Section&, bool) {
    follow(channel);
}

void TimeRoom::follow(const Channel& channel) {
    if (const si::Pmt* const pmt = core.received().si.pmtFields(channel.serviceId)) {
        timelines.follow(core.received().demux, si::components(*pmt, {}), pmt->pcrPid);
    }
}

void TimeRoom::tellPts(Browser browser, std::uint64_t pts, std::uint64_t pcrBase) {
    core.browsers.tell({browser}, &Events::onPtsNotify, pts, pcrBase);
}

void TimeRoom::tellTimeline(Browser browser, std::uint8_t componentTag, const broadcast::TemiTimeline& timeline,
                            std::uint64_t pts) {
    const auto flags = static_cast<unsigned char>((timeline.paused ? 1U : 0U) | (timeline.discontinuity ? 2U : 0U) |
                                                  (timeline.forceReload ? 4U : 0U));
    core.browsers.tell({browser}, &Events::onTimelineInfoChange, componentTag, timeline.id, flags, timeline.timescale,
                       timeline.mediaTimestamp, pts);
}

}  // namespace dtvservice
