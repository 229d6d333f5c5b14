// Subscriptions by PID.
#include "section_demux.h"

#include <algorithm>

namespace broadcast {

struct SectionDemux::Subscriber {
    Subscription subscription;
    std::shared_ptr<Handler> handler;  // null after unsubscribe()
};

struct SectionDemux::Pid {
    Pid() : assembler([this](si::Bytes section) { deliver(section); }) {}

    void end(Subscription subscription) {
        const auto found =
            std::lower_bound(subscribers.begin(), subscribers.end(), subscription,
                             [](const Subscriber& each, Subscription wanted) { return each.subscription < wanted; });
        if (found != subscribers.end() && found->subscription == subscription && found->handler) {
            found->handler.reset();
            ++ended;
        }
    }
    bool isUnused() const { return ended == subscribers.size(); }
    /// Removes ended subscribers once they are the majority, so that ending all of many takes time in proportion.
    void sweep() {
        if (2 * ended > subscribers.size()) {
            subscribers.erase(std::remove_if(subscribers.begin(), subscribers.end(),
                                             [](const Subscriber& subscriber) { return !subscriber.handler; }),
                              subscribers.end());
            ended = 0;
        }
    }

    /// Subscribers added during delivery get the next section.
    void deliver(si::Bytes section) {
        const std::size_t count = subscribers.size();
        for (std::size_t index = 0; index < count; ++index) {
            const std::shared_ptr<Handler> handler = subscribers[index].handler;
            if (handler) {
                (*handler)(section);
            }
        }
    }

    SectionAssembler assembler;
    std::vector<Subscriber> subscribers;  // in the order of their numbers
    std::size_t ended = 0;                // subscribers without a handler
    bool feeding = false;
};

SectionDemux::SectionDemux() = default;
SectionDemux::~SectionDemux() = default;

SectionDemux::Subscription SectionDemux::subscribe(std::uint16_t pid, Handler handler) {
    std::unique_ptr<Pid>& entry = pids[pid % kPidCount];
    if (!entry) {
        entry = std::make_unique<Pid>();
    }
    // The low bits hold the PID, so that unsubscribe() finds it.
    const Subscription subscription = ++lastSubscription * kPidCount + pid % kPidCount;
    entry->subscribers.push_back({subscription, std::make_shared<Handler>(std::move(handler))});
    return subscription;
}

void SectionDemux::unsubscribe(Subscription subscription) {
    const auto pid = static_cast<std::uint16_t>(subscription % kPidCount);
    if (!pids[pid]) {
        return;
    }
    pids[pid]->end(subscription);
    if (!pids[pid]->feeding) {
        sweep(pid);
    }
}

void SectionDemux::assemble(Pid& entry, TsPacket packet) {
    entry.feeding = true;
    entry.assembler.feed(packet);
    entry.feeding = false;
    if (entry.ended != 0) {
        sweep(packet.pid());
    }
}

void SectionDemux::inject(std::uint16_t pid, si::Bytes section) {
    if (Pid* const entry = pids[pid % kPidCount].get()) {
        entry->feeding = true;
        entry->deliver(section);
        entry->feeding = false;
        if (entry->ended != 0) {
            sweep(pid % kPidCount);
        }
    }
}

/// Removes the PID's assembler after its last subscription.
void SectionDemux::sweep(std::uint16_t pid) {
    if (pids[pid]->isUnused()) {
        former[pid] = countsOf(pid);
        pids[pid].reset();
    } else {
        pids[pid]->sweep();
    }
}

void SectionDemux::discontinuity() {
    for (const std::unique_ptr<Pid>& pid : pids) {
        if (pid) {
            pid->assembler.discontinuity();
        }
    }
}

SectionCounts SectionDemux::countsOf(std::uint16_t pid) const {
    const auto before = former.find(pid);
    SectionCounts counts = before == former.end() ? SectionCounts() : before->second;
    if (pids[pid]) {
        counts += pids[pid]->assembler.counts();
    }
    return counts;
}

}  // namespace broadcast
