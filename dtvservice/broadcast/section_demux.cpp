// Subscriptions by PID.
#include "demux.h"

#include <algorithm>

namespace broadcast {

struct Demux::Subscriber {
    Subscription subscription;
    std::shared_ptr<Handler> handler;  // null after unsubscribe()
};

struct Demux::Pid {
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

namespace {

/// Adds what an assembler has counted.
void add(const SectionCounts& counted, PidCounts& counts) {
    counts.sections += counted.sections;
    counts.cutSections += counted.cut;
    counts.crcErrors += counted.crcErrors;
}

}  // namespace

Demux::Demux() = default;
Demux::~Demux() = default;

Demux::Subscription Demux::subscribe(std::uint16_t pid, Handler handler) {
    std::unique_ptr<Pid>& entry = pids[pid % kPidCount];
    if (!entry) {
        entry = std::make_unique<Pid>();
    }
    // The low bits hold the PID, so that unsubscribe() finds it.
    const Subscription subscription = ++lastSubscription * kPidCount + pid % kPidCount;
    entry->subscribers.push_back({subscription, std::make_shared<Handler>(std::move(handler))});
    return subscription;
}

void Demux::unsubscribe(Subscription subscription) {
    const auto pid = static_cast<std::uint16_t>(subscription % kPidCount);
    if (!pids[pid]) {
        return;
    }
    pids[pid]->end(subscription);
    if (!pids[pid]->feeding) {
        sweep(pid);
    }
}

void Demux::watch(std::uint16_t pid, Watcher watcher) {
    if (watcher) {
        watchers[pid] = std::move(watcher);
    } else {
        watchers.erase(pid);
    }
}

void Demux::feed(TsPacket packet, Clock::time_point now) {
    if (disturbance) {
        packet.bytes = disturbance(packet);
        if (packet.bytes == nullptr) {
            return;
        }
    }
    const std::uint16_t pid = packet.pid();
    ++packets_;
    meters[pid].count(packet, now);
    if (tap_) {
        tap_(packet);
    }
    if (!watchers.empty()) {
        show(packet, pid);
    }
    Pid* const entry = pids[pid].get();
    if (entry == nullptr) {
        return;
    }
    entry->feeding = true;
    entry->assembler.feed(packet);
    entry->feeding = false;
    if (entry->ended != 0) {
        sweep(pid);
    }
}

void Demux::inject(std::uint16_t pid, si::Bytes section) {
    if (Pid* const entry = pids[pid % kPidCount].get()) {
        entry->feeding = true;
        entry->deliver(section);
        entry->feeding = false;
        if (entry->ended != 0) {
            sweep(pid % kPidCount);
        }
    }
}

void Demux::show(TsPacket packet, std::uint16_t pid) {
    const auto watcher = watchers.find(pid);
    if (watcher != watchers.end()) {
        watcher->second(packet);
    }
}

/// Removes the PID's assembler after its last subscription.
void Demux::sweep(std::uint16_t pid) {
    if (pids[pid]->isUnused()) {
        add(pids[pid]->assembler.counts(), meters[pid].counts());
        pids[pid].reset();
    } else {
        pids[pid]->sweep();
    }
}

void Demux::discontinuity() {
    for (const std::unique_ptr<Pid>& pid : pids) {
        if (pid) {
            pid->assembler.discontinuity();
        }
    }
    for (PidMeter& meter : meters) {
        meter.discontinuity();
    }
}

PidCounts Demux::countsOf(std::uint16_t pid) const {
    PidCounts counts = meters[pid].counts();
    if (pids[pid]) {
        add(pids[pid]->assembler.counts(), counts);
    }
    return counts;
}

PidCounts Demux::total() const {
    PidCounts sum;
    for (std::uint16_t pid = 0; pid < kPidCount; ++pid) {
        if (meters[pid].counts().packets != 0) {
            const PidCounts counts = countsOf(pid);
            sum.packets += counts.packets;
            sum.continuityErrors += counts.continuityErrors;
            sum.transportErrors += counts.transportErrors;
            sum.scrambled += counts.scrambled;
            sum.sections += counts.sections;
            sum.cutSections += counts.cutSections;
            sum.crcErrors += counts.crcErrors;
            sum.bitRate += counts.bitRate;
            sum.lastPacket = std::max(sum.lastPacket, counts.lastPacket);
        }
    }
    return sum;
}

void Demux::measureRates(Clock::time_point now) {
    if (now <= measuredAt) {
        return;
    }
    for (PidMeter& meter : meters) {
        meter.measure(now - measuredAt);
    }
    measuredAt = now;
}

}  // namespace broadcast
