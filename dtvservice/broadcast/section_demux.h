// SectionDemux: assembles sections from packets and calls the handlers of their PIDs. A handler may subscribe and
// unsubscribe while it runs.
// Threads: one.
// Blocks:  never.
// Fails:   never; errors are counted.
#pragma once

#include <array>
#include <map>
#include <memory>

#include "section_assembler.h"

namespace broadcast {

class SectionDemux {
public:
    using Handler = SectionAssembler::Handler;
    using Subscription = std::uint64_t;

    SectionDemux();
    ~SectionDemux();
    SectionDemux(const SectionDemux&) = delete;
    SectionDemux& operator=(const SectionDemux&) = delete;

    /// Sections of the PID go to the handler until unsubscribe().
    Subscription subscribe(std::uint16_t pid, Handler handler);
    void unsubscribe(Subscription subscription);
    /// How many there have been.
    std::uint64_t subscriptions() const { return lastSubscription; }

    /// A packet of a PID without subscriptions costs no call.
    void feed(TsPacket packet) {
        if (Pid* const entry = pids[packet.pid()].get()) {
            assemble(*entry, packet);
        }
    }
    /// A section that no packet carries goes to the PID's subscribers. Do not call this from a handler.
    void inject(std::uint16_t pid, si::Bytes section);
    /// The next packets do not continue the previous ones, for example when a file starts again.
    void discontinuity();

    /// What has been counted while the PID had subscriptions.
    SectionCounts countsOf(std::uint16_t pid) const;

private:
    struct Pid;
    struct Subscriber;

    void assemble(Pid& entry, TsPacket packet);
    void sweep(std::uint16_t pid);

    std::array<std::unique_ptr<Pid>, kPidCount> pids;
    std::map<std::uint16_t, SectionCounts> former;  // by PID, of assemblers that are gone
    Subscription lastSubscription = 0;
};

}  // namespace broadcast
