// TimeRoom: browsers' commands for the presented service's time: PTS, PCR and TEMI timelines.
// Threads: the loop's.
// Blocks:  never.
// Fails:   logs a request for a PTS that is not available yet, and refuses a timeline with invalid numbers in the log.
#pragma once

#include "core.h"
#include "timelines.h"

namespace dtvservice {

class TimeRoom : public Room {
public:
    explicit TimeRoom(Core& newCore);

    void servicePresented(const broadcast::Channel& channel) override;
    void serviceGone() override { timelines.rest(); }
    void pmtChanged(const broadcast::Channel& channel, const broadcast::Section& section, bool changed) override;
    void browserGone(Browser browser) override { timelines.forget(browser); }

private:
    void cmdSendPtsRequest(Browser asker, unsigned int request);
    void cmdStartTemiTimelineRequest(Browser asker, unsigned int componentTag, unsigned int timelineId,
                                     unsigned int third);
    void cmdStopTemiTimelineRequest(Browser asker);
    std::string whyNoPts() const;
    void follow(const broadcast::Channel& channel);
    void tellPts(Browser browser, std::uint64_t pts, std::uint64_t pcrBase);
    void tellTimeline(Browser browser, std::uint8_t componentTag, const broadcast::TemiTimeline& timeline,
                      std::uint64_t pts);

    Core& core;
    Timelines timelines;
};

}  // namespace dtvservice
