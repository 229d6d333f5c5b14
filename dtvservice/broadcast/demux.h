// Demux: packets to the section handlers of their PIDs.
// Threads: one.   Blocks: never.   Fails: never. Handlers may subscribe and unsubscribe from inside their calls.
#pragma once

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <vector>

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

    /// Sections of the PID go to the handler until the subscription is ended.
    Subscription subscribe(std::uint16_t pid, Handler handler);
    void unsubscribe(Subscription subscription);

    /// Every packet of the PID goes to the watcher, as it came. One watcher a PID; null ends it. To be called from
    /// outside of the watcher.
    using Watcher = std::function<void(TsPacket packet)>;
    void watch(std::uint16_t pid, Watcher watcher);

    void feed(TsPacket packet);
    /// The packets that follow have nothing to do with those before, as where a file begins again.
    void discontinuity();
    /// What all assemblers of the PIDs followed now have counted.
    SectionCounts counts() const;
    /// Packets fed, of any PID.
    std::uint64_t packets() const { return packets_; }

private:
    struct Pid;
    struct Subscriber;

    void sweep(std::uint16_t pid);

    std::array<std::unique_ptr<Pid>, kPidCount> pids;
    std::map<std::uint16_t, Watcher> watchers;  // a few
    Subscription lastSubscription = 0;
    std::uint64_t packets_ = 0;
};

}  // namespace broadcast
