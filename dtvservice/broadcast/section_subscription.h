// SectionSubscription: a handler's subscription to the sections of a PID. It ends with this object.
// Threads: one.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <utility>

#include "section_demux.h"

namespace broadcast {

class SectionSubscription {
public:
    /// The demultiplexer must outlive this.
    SectionSubscription(SectionDemux& newDemux, std::uint16_t pid, SectionDemux::Handler handler)
        : demux(&newDemux), subscription(newDemux.subscribe(pid, std::move(handler))) {}
    SectionSubscription(SectionSubscription&& other) noexcept
        : demux(std::exchange(other.demux, nullptr)), subscription(other.subscription) {}
    SectionSubscription(const SectionSubscription&) = delete;
    SectionSubscription& operator=(const SectionSubscription&) = delete;
    SectionSubscription& operator=(SectionSubscription&&) = delete;
    ~SectionSubscription() {
        if (demux != nullptr) {
            demux->unsubscribe(subscription);
        }
    }

private:
    SectionDemux* demux;
    SectionDemux::Subscription subscription;
};

}  // namespace broadcast
