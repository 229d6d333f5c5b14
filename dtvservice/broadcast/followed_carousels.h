// FollowedCarousels: the object carousels of a service, read from the demultiplexer from the constructor on. It leads
// them to the streams of other services of the multiplex too.
// Threads: one; trees belong to any.
// Blocks:  never.
// Fails:   the news say what is wrong with a carousel.
#pragma once

#include <functional>
#include <map>
#include <vector>

#include "section_subscription.h"
#include "si/service_carousels.h"

namespace broadcast {

class FollowedCarousels {
public:
    using News = std::vector<si::ServiceCarousels::News>;
    /// Is not called without news, and does not destroy this object.
    using Listener = std::function<void(const News& news)>;
    /// The section with the latest PMT of another service; empty if there is none yet.
    using PmtOf = std::function<std::vector<std::uint8_t>(std::uint16_t serviceId)>;

    /// The demultiplexer must outlive this.
    FollowedCarousels(SectionDemux& newDemux, PmtOf newPmtOf, Listener newListener,
                      std::size_t mostBytes = si::ObjectCarousel::kMostBytes)
        : demux(newDemux), pmtOf(std::move(newPmtOf)), listener(std::move(newListener)), reader(mostBytes) {}

    /// The service's PMT, at first and whenever it changes. A carousel goes on if its PID remains.
    void setPmt(const si::Pmt& pmt);
    /// A PMT of another service, new or changed.
    void setOtherPmt(const si::Pmt& pmt);
    /// By the PID of the stream with the DownloadServerInitiate.
    std::map<std::uint16_t, si::ObjectCarousel>& carousels() { return reader.carousels(); }

private:
    void onSection(std::uint16_t pid, si::Bytes section);
    void follow();
    void tell(const News& news) const;

    SectionDemux& demux;
    const PmtOf pmtOf;
    const Listener listener;
    si::ServiceCarousels reader;
    std::map<std::uint16_t, SectionSubscription> subscriptions;  // by PID
};

}  // namespace broadcast
