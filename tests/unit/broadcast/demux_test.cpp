// Tests of counting packets and errors by PID.
#include "demux.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "packets.h"

namespace {

using broadcast::Clock;
using broadcast::PidCounts;

class ADemux : public testing::Test {
protected:
    void feed(const Packet& packet) { demux.feed(broadcast::TsPacket{packet.data()}, now); }
    void feed(PacketMaker& from, int count) {
        for (int index = 0; index < count; ++index) {
            feed(from.packet({}, false));
        }
    }
    std::uint64_t continuityErrors() const { return demux.countsOf(100).continuityErrors; }

    broadcast::Demux demux;
    Clock::time_point now = Clock::now();
    PacketMaker maker{100};
};

}  // namespace

TEST_F(ADemux, CountsPacketsOfEveryPid) {
    PacketMaker other(8190);
    feed(maker, 3);
    now += std::chrono::seconds(2);
    feed(other, 2);
    EXPECT_EQ(demux.countsOf(100).packets, 3U);
    EXPECT_EQ(now - demux.countsOf(100).lastPacket, std::chrono::seconds(2));
    EXPECT_EQ(demux.countsOf(8190).packets, 2U);
    EXPECT_EQ(demux.countsOf(101).packets, 0U);
    EXPECT_EQ(demux.total().packets, 5U);
    EXPECT_EQ(demux.total().lastPacket, now);
}

TEST_F(ADemux, MeasuresTheRateOfEveryPid) {
    demux.measureRates(now += std::chrono::seconds(1));
    PacketMaker other(200);
    feed(maker, 1000);
    feed(other, 500);
    demux.measureRates(now += std::chrono::seconds(2));
    EXPECT_EQ(demux.countsOf(100).bitRate, 752000U);
    EXPECT_EQ(demux.countsOf(200).bitRate, 376000U);
    EXPECT_EQ(demux.total().bitRate, 1128000U);
    demux.measureRates(now);
    EXPECT_EQ(demux.total().bitRate, 1128000U) << "no time has passed";
    demux.measureRates(now += std::chrono::seconds(1));
    EXPECT_EQ(demux.total().bitRate, 0U);
}

TEST_F(ADemux, CountsGaps) {
    feed(maker, 20);
    EXPECT_EQ(continuityErrors(), 0U);
    maker.skipOne();
    feed(maker, 20);
    EXPECT_EQ(continuityErrors(), 1U);
    demux.discontinuity();
    maker.skipOne();
    feed(maker, 1);
    EXPECT_EQ(continuityErrors(), 1U) << "after a discontinuity";
}

TEST_F(ADemux, CountsAPacketThatRepeatsOnlyTheCounter) {
    const Packet packet = maker.packet({}, false);
    Packet other = packet;
    other[100] = 0;
    feed(packet);
    feed(other);
    EXPECT_EQ(continuityErrors(), 1U);
}

TEST_F(ADemux, CountsARepeatedPacketFromTheSecondTimeOn) {
    const Packet packet = maker.packet({}, false);
    feed(packet);
    feed(packet);
    EXPECT_EQ(continuityErrors(), 0U);
    feed(packet);
    EXPECT_EQ(continuityErrors(), 1U);
}

TEST_F(ADemux, CountsNoGapOfPacketsWithoutPayloadNorOfNullPackets) {
    Packet without = maker.packet({}, false);
    without[3] = 0x27;
    without[4] = 183;
    without[5] = 0;
    feed(maker, 1);
    feed(without);
    feed(maker, 1);
    PacketMaker null(broadcast::kNullPid);
    feed(null, 1);
    null.skipOne();
    feed(null, 1);
    EXPECT_EQ(demux.total().continuityErrors, 0U);
}

TEST_F(ADemux, CountsPacketsThatAreScrambledOrInError) {
    Packet scrambled = maker.packet({}, false);
    scrambled[3] |= 0x80;
    Packet damaged = maker.packet({}, false);
    damaged[1] |= 0x80;
    feed(scrambled);
    feed(damaged);
    EXPECT_EQ(demux.countsOf(100).scrambled, 1U);
    EXPECT_EQ(demux.countsOf(100).transportErrors, 1U);
}

TEST_F(ADemux, KeepsTheErrorsOfSectionsThatNobodyReadsAnyMore) {
    const auto subscription = demux.subscribe(100, [](si::Bytes) {});
    Bytes wrong = sectionOf(60);
    wrong.back() ^= 1U;
    for (const Packet& packet : maker.packets({sectionOf(60), wrong})) {
        feed(packet);
    }
    const auto expectCounts = [](const PidCounts& counts) {
        EXPECT_EQ(counts.sections, 1U);
        EXPECT_EQ(counts.crcErrors, 1U);
    };
    expectCounts(demux.countsOf(100));
    demux.unsubscribe(subscription);
    expectCounts(demux.countsOf(100));
    expectCounts(demux.total());
}
