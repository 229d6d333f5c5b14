// Tests of the presented service's timelines, packet by packet.
#include "timelines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "packets.h"

namespace {

constexpr std::uint16_t kPid = 100;
constexpr std::uint8_t kTag = 7;
constexpr dtvservice::Timelines::Peer kBrowser = 1;

/// A packet with one time stamp in its adaptation field. It is scrambled, so it has no readable PTS.
Packet stampOf(std::uint8_t timelineId, std::uint8_t timestamp) {
    Packet packet = PacketMaker(kPid).packet({}, true);
    const Bytes field = {0x10, 0x01, 0x0E, 0x0F, 0x04, 0x0B, 0x40, 0x7F,     timelineId,
                         0,    0,    0x03, 0xE8, 0,    0,    0,    timestamp};
    packet[3] = 0xB0;
    std::copy(field.begin(), field.end(), packet.begin() + 4);
    return packet;
}

/// PTS 0x1_2345_6789.
Packet startOfPes() {
    return PacketMaker(kPid).packet({0, 0, 1, 0xE0, 0, 0, 0x80, 0x80, 5, 0x29, 0x8D, 0x15, 0xCF, 0x13}, true);
}

class SomeTimelines : public testing::Test {
protected:
    SomeTimelines() {
        video.type = si::ComponentType::video;
        video.pid = kPid;
        video.tag = kTag;
        timelines.follow(demux, {video}, kPid);
    }
    void feed(const Packet& packet) { demux.feed(broadcast::TsPacket{packet.data()}); }

    si::Component video;
    broadcast::Demux demux;
    std::vector<std::string> told;
    dtvservice::Timelines timelines{
        [](dtvservice::Timelines::Peer, std::uint64_t, std::uint64_t) {},
        [this](dtvservice::Timelines::Peer browser, std::uint8_t tag, const broadcast::TemiTimeline& timeline,
               std::uint64_t pts) {
            told.push_back(std::to_string(browser) + ":" + std::to_string(tag) + ":" + std::to_string(timeline.id) +
                           "=" + std::to_string(timeline.mediaTimestamp) + "@" + std::to_string(pts));
        }};
};

}  // namespace

TEST_F(SomeTimelines, KeepOnlyTheNewestTimeStampUntilAPesPacketStarts) {
    timelines.startTimeline(kBrowser, kTag, 9);
    timelines.startTimeline(kBrowser, kTag, 10);
    feed(stampOf(10, 1));
    for (std::uint8_t timestamp = 1; timestamp < 100; ++timestamp) {
        feed(stampOf(9, timestamp));
    }
    EXPECT_THAT(told, testing::IsEmpty()) << "no PTS has come";
    feed(startOfPes());
    EXPECT_THAT(told, testing::ElementsAre("1:7:10=1@4886718345", "1:7:9=99@4886718345"));
    feed(startOfPes());
    EXPECT_EQ(told.size(), 2U) << "each is told once";
}

TEST_F(SomeTimelines, KeepNothingThatNobodyFollows) {
    timelines.startTimeline(kBrowser, kTag, 9);
    feed(stampOf(10, 1));
    timelines.startTimeline(kBrowser, kTag, 10);
    feed(startOfPes());
    EXPECT_THAT(told, testing::IsEmpty());
}

TEST_F(SomeTimelines, ForgetTimeStampsThatNobodyFollows) {
    constexpr dtvservice::Timelines::Peer kOther = 2;
    timelines.startTimeline(kBrowser, kTag, 9);
    timelines.startTimeline(kOther, kTag, 10);
    feed(stampOf(9, 1));
    feed(stampOf(10, 1));
    timelines.stopTimelines(kBrowser);
    timelines.startTimeline(kBrowser, kTag, 9);
    timelines.forget(kOther);
    timelines.startTimeline(kOther, kTag, 10);
    feed(startOfPes());
    EXPECT_THAT(told, testing::IsEmpty());
    feed(stampOf(9, 2));
    feed(startOfPes());
    EXPECT_THAT(told, testing::ElementsAre("1:7:9=2@4886718345"));
}

TEST_F(SomeTimelines, KeepWaitingTimeStampsAcrossAPmt) {
    timelines.startTimeline(kBrowser, kTag, 9);
    feed(stampOf(9, 1));
    timelines.follow(demux, {video}, kPid);
    feed(startOfPes());
    EXPECT_THAT(told, testing::ElementsAre("1:7:9=1@4886718345"));
    feed(stampOf(9, 2));
    video.tag = kTag + 1;
    timelines.follow(demux, {video}, kPid);
    feed(startOfPes());
    EXPECT_EQ(told.size(), 1U) << "it belonged to another component";
}
