// Demux: a SectionDemux that also counts the packets and errors of every PID, and shows packets to who wants them.
// Threads: one.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <functional>
#include <map>
#include <vector>

#include "pid_meter.h"
#include "section_demux.h"

namespace broadcast {

class Demux : public SectionDemux {
public:
    /// Every packet of the PID goes to the watcher unchanged. A PID has one watcher; null removes it. Do not call this
    /// from a watcher.
    using Watcher = std::function<void(TsPacket packet)>;
    void watch(std::uint16_t pid, Watcher watcher);

    /// Every packet of any PID goes to the tap unchanged. There is one; null removes it. Do not call this from the tap.
    void tap(Watcher newTap) { tap_ = std::move(newTap); }

    /// Every packet passes this first, before it is counted: it returns the packet to use, or null to drop it. Null
    /// removes it. Do not call this while packets are fed.
    using Disturbance = std::function<const std::uint8_t*(TsPacket packet)>;
    void disturb(Disturbance newDisturbance) { disturbance = std::move(newDisturbance); }

    void feed(TsPacket packet, Clock::time_point now = Clock::now());
    /// The next packets do not continue the previous ones, for example when a file starts again.
    void discontinuity();
    /// Packets fed, of any PID.
    std::uint64_t packets() const { return packets_; }

    /// All that has been counted for the PID, whether or not it has subscriptions.
    PidCounts countsOf(std::uint16_t pid) const;
    /// The sum over all PIDs.
    PidCounts total() const;
    /// Measures the bit rates since the last call. Call this about once a second.
    void measureRates(Clock::time_point now);

private:
    void show(TsPacket packet, std::uint16_t pid);

    std::vector<PidMeter> meters = std::vector<PidMeter>(kPidCount);  // by PID
    Clock::time_point measuredAt = Clock::now();
    std::map<std::uint16_t, Watcher> watchers;  // by PID
    Watcher tap_;
    Disturbance disturbance;
    std::uint64_t packets_ = 0;
};

}  // namespace broadcast
