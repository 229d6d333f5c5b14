// Tests of subscriptions to the sections of PIDs.
#include "section_demux.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "packets.h"

namespace {

using Subscription = broadcast::SectionDemux::Subscription;

class ASectionDemux : public testing::Test {
protected:
    void feed(const std::vector<Packet>& packets) {
        for (const Packet& packet : packets) {
            demux.feed(broadcast::TsPacket{packet.data()});
        }
    }
    /// Feeds a section of the PID 100.
    void feedOne() { feed(maker.packets({sectionOf(60)})); }
    Subscription subscribe() {
        return demux.subscribe(100, [this](si::Bytes) { ++sections; });
    }

    broadcast::SectionDemux demux;
    PacketMaker maker{100};
    std::size_t sections = 0;
};

}  // namespace

TEST_F(ASectionDemux, GivesAHandlerTheSectionsOfItsPidOnly) {
    std::vector<Bytes> got;
    demux.subscribe(100, [&](si::Bytes section) { got.emplace_back(section.data, section.data + section.size); });
    PacketMaker other(101);
    feed(maker.packets({sectionOf(60, 1)}));
    feed(other.packets({sectionOf(60, 2)}));
    feed(maker.packets({sectionOf(400, 3)}));
    EXPECT_THAT(got, testing::ElementsAre(sectionOf(60, 1), sectionOf(400, 3)));
    EXPECT_EQ(demux.countsOf(100).sections, 2U);
    EXPECT_EQ(demux.countsOf(101).packets, 0U) << "has no subscription";
}

TEST_F(ASectionDemux, LetsAHandlerSubscribeAndUnsubscribe) {
    Subscription first = 0;
    first = demux.subscribe(100, [&](si::Bytes) {
        demux.unsubscribe(first);
        subscribe();
    });
    feedOne();
    EXPECT_EQ(sections, 0U) << "was subscribed during the delivery";
    feedOne();
    EXPECT_EQ(sections, 1U);
    EXPECT_EQ(demux.subscriptions(), 2U);
}

TEST_F(ASectionDemux, ContinuesNothingAcrossADiscontinuity) {
    subscribe();
    std::vector<Packet> packets = maker.packets({sectionOf(300)});
    ASSERT_EQ(packets.size(), 2U);
    feed({packets[0]});
    demux.discontinuity();
    feed({packets[1]});
    EXPECT_EQ(sections, 0U);
    EXPECT_EQ(demux.countsOf(100).continuityErrors, 0U);
}

TEST_F(ASectionDemux, AddsUpTheCountsOfSubscriptionsThatFollowEachOther) {
    for (int round = 0; round < 3; ++round) {
        const Subscription subscription = subscribe();
        feedOne();
        demux.unsubscribe(subscription);
        feedOne();  // for nobody
    }
    EXPECT_EQ(sections, 3U);
    EXPECT_EQ(demux.countsOf(100).packets, 3U);
    EXPECT_EQ(demux.countsOf(100).sections, 3U);
    subscribe();
    feedOne();
    EXPECT_EQ(demux.countsOf(100).sections, 4U);
}

TEST_F(ASectionDemux, EndsAsManySubscriptionsAsThereAre) {
    // With time that grows with the square of their number, this would not end.
    constexpr std::size_t kMany = 400000;
    std::vector<Subscription> subscriptions;
    for (std::size_t number = 0; number < kMany; ++number) {
        subscriptions.push_back(subscribe());
    }
    const Subscription last = subscriptions.back();
    subscriptions.pop_back();
    for (const Subscription subscription : subscriptions) {
        demux.unsubscribe(subscription);
    }
    feedOne();
    EXPECT_EQ(sections, 1U);
    demux.unsubscribe(last);
    EXPECT_EQ(demux.countsOf(100).sections, 1U);
}

TEST_F(ASectionDemux, EndsASubscriptionTwiceWithoutHarm) {
    const Subscription kept = subscribe();
    const Subscription ended = subscribe();
    const Subscription other = subscribe();
    demux.unsubscribe(ended);
    demux.unsubscribe(ended);
    feedOne();
    EXPECT_EQ(sections, 2U);
    demux.unsubscribe(kept);
    demux.unsubscribe(other);
}
