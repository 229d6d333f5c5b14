// Demux: assembles sections from packets and calls the handlers of their PIDs. A handler may subscribe and unsubscribe
// while it runs. Counts the packets and errors of every PID.
// Threads: one.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "pid_meter.h"
#include "section_assembler.h"

namespace broadcast {

class Demux {
public:
    using Handler = SectionAssembler::Handler;
    using Subscription = std::uint64_t;

    Demux();
    ~Demux();
    Demux(const Demux&) = delete;
    Demux& operator=(const Demux&) = delete;

    /// Sections of the PID go to the handler until unsubscribe().
    Subscription subscribe(std::uint16_t pid, Handler handler);
    void unsubscribe(Subscription subscription);
    /// How many there have been.
    std::uint64_t subscriptions() const { return lastSubscription; }

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
    /// A section that no packet carries goes to the PID's subscribers. Do not call this from a handler.
    void inject(std::uint16_t pid, si::Bytes section);
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
    struct Pid;
    struct Subscriber;

    void show(TsPacket packet, std::uint16_t pid);
    void sweep(std::uint16_t pid);

    std::array<std::unique_ptr<Pid>, kPidCount> pids;
    std::vector<PidMeter> meters = std::vector<PidMeter>(kPidCount);  // by PID
    Clock::time_point measuredAt = Clock::now();
    std::map<std::uint16_t, Watcher> watchers;  // by PID
    Watcher tap_;
    Disturbance disturbance;
    Subscription lastSubscription = 0;
    std::uint64_t packets_ = 0;
};

}  // namespace broadcast
