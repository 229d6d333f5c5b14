// Tests of judging what an input gives.
#include "input_report.h"

#include <gtest/gtest.h>

#include <array>

namespace {

using broadcast::Clock;

class AnInputsReport : public testing::Test {
protected:
    AnInputsReport() { report.opened(now); }

    void feed(const std::array<std::uint8_t, broadcast::kPacketSize>& packet) {
        demux.feed(broadcast::TsPacket{packet.data()}, now);
    }
    void feedPacket() {
        std::array<std::uint8_t, broadcast::kPacketSize> packet{0x47, 0x00, 0x64, 0x10};
        feed(packet);
    }
    void feedPat() {
        std::array<std::uint8_t, broadcast::kPacketSize> packet{};
        packet.fill(0xFF);
        const std::uint8_t begin[] = {0x47, 0x40, 0x00, 0x10, 0x00, 0x00, 0xB0, 0x0D, 0x00, 0x01, 0xC1,
                                      0x00, 0x00, 0x00, 0x01, 0xE0, 0x20, 0xA2, 0xC3, 0x29, 0x41};
        std::copy(std::begin(begin), std::end(begin), packet.begin());
        packet[3] = static_cast<std::uint8_t>(0x10U | (counter++ & 0x0FU));
        feed(packet);
    }
    /// Looks after another second.
    std::string reasonNow() {
        report.look(demux, now += std::chrono::seconds(1));
        return report.reason();
    }

    dtvservice::InputReport report;
    broadcast::Demux demux;
    const broadcast::Demux::Subscription reader = demux.subscribe(0, [](si::Bytes) {});
    Clock::time_point now = Clock::now();
    unsigned int counter = 0;
};

}  // namespace

TEST_F(AnInputsReport, SaysThatItPlays) {
    EXPECT_EQ(report.reason(), "starting");
    for (int second = 0; second < 20; ++second) {
        feedPat();
        EXPECT_EQ(reasonNow(), "playing") << second;
    }
    EXPECT_STREQ(report.stateName(), "playing");
}

TEST_F(AnInputsReport, SaysForHowLongItIsSilent) {
    EXPECT_EQ(reasonNow(), "starting");
    EXPECT_EQ(reasonNow(), "silent for 2 s");
    EXPECT_EQ(reasonNow(), "silent for 3 s");
    EXPECT_STREQ(report.stateName(), "silent");
    feedPat();
    EXPECT_EQ(reasonNow(), "playing");
    EXPECT_EQ(reasonNow(), "playing");
    EXPECT_EQ(reasonNow(), "silent for 2 s");
}

TEST_F(AnInputsReport, SaysThatBytesHaveNoPackets) {
    for (int second = 0; second < 3; ++second) {
        report.counts.bytes += 1000;
        reasonNow();
    }
    EXPECT_EQ(report.reason(), "bytes without packets for 3 s");
    EXPECT_STREQ(report.stateName(), "no_packets");
}

TEST_F(AnInputsReport, SaysThatThereIsNoPat) {
    feedPacket();
    EXPECT_EQ(reasonNow(), "playing");
    feedPacket();
    EXPECT_EQ(reasonNow(), "playing");
    feedPacket();
    EXPECT_EQ(reasonNow(), "no PAT after 2 s");
    EXPECT_STREQ(report.stateName(), "no_pat");
    feedPat();
    EXPECT_EQ(reasonNow(), "playing");
    for (int second = 0; second < 10; ++second) {
        feedPacket();
        reasonNow();
    }
    EXPECT_EQ(report.reason(), "no PAT for 10 s");
}

TEST_F(AnInputsReport, KeepsWhyItFailedOrEnded) {
    report.failed("cannot open x.ts: No such file or directory");
    EXPECT_EQ(reasonNow(), "cannot open x.ts: No such file or directory");
    EXPECT_STREQ(report.stateName(), "failed");
    report.opened(now);
    EXPECT_EQ(report.reason(), "starting");
    report.ended();
    EXPECT_EQ(reasonNow(), "ended");
    EXPECT_STREQ(report.stateName(), "ended");
}
