// Tests of the packets of one service.
#include "service_stream.h"

#include <gmock/gmock.h>

#include "demux.h"
#include "scheduler.h"
#include "si/section_writer.h"
#include "tables.h"

namespace {

using broadcast::TsPacket;

class AServiceStream : public testing::Test {
protected:
    AServiceStream() {
        for (const tsmake::Service& service : sample.services) {
            std::string error;
            pmts.push_back(si::parsePmt(tsmake::pmtSection(service), error).value());
        }
        demux.subscribe(
            0, [this](si::Bytes section) { lastPat = si::Section(section.data, section.data + section.size); });
    }

    broadcast::Channel channelOf(std::size_t index) const {
        broadcast::Channel channel;
        channel.transportStreamId = 1025;
        channel.serviceId = sample.services[index].serviceId;
        channel.pmtPid = sample.services[index].pmtPid;
        return channel;
    }
    void present(std::size_t index) {
        stream.present(channelOf(index));
        stream.setStreams(pmts[index]);
    }
    void play(unsigned int seconds = 2) {
        tsmake::writeMultiplex(sample, seconds, [this](const std::uint8_t* packet) { stream.feed(TsPacket{packet}); });
    }
    /// The PIDs that have come since the last call.
    std::set<unsigned int> pids() { return std::exchange(seen, {}); }
    std::set<unsigned int> pidsOf(std::size_t index) const {
        std::set<unsigned int> expected = {0, sample.services[index].pmtPid, pmts[index].pcrPid};
        for (const si::Pmt::Stream& each : pmts[index].streams) {
            expected.insert(each.pid);
        }
        return expected;
    }
    si::Pat pat() const {
        std::string error;
        return si::parsePat(lastPat, error).value();
    }

    const tsmake::Multiplex sample = tsmake::sampleMultiplex();
    std::vector<si::Pmt> pmts;
    broadcast::Demux demux;  // receives the stream
    si::Section lastPat;
    std::set<unsigned int> seen;
    std::vector<bool> begins;
    dtvservice::ServiceStream stream{[this](const std::uint8_t* packet, bool isPat) {
        EXPECT_EQ(packet[0], 0x47);
        EXPECT_EQ(isPat, TsPacket{packet}.pid() == 0);
        begins.push_back(isPat);
        seen.insert(TsPacket{packet}.pid());
        demux.feed(TsPacket{packet});
    }};
};

}  // namespace

TEST_F(AServiceStream, HasThePatThePmtAndTheComponentsOfTheServiceAlone) {
    present(0);
    play();
    EXPECT_EQ(pids(), pidsOf(0));
    EXPECT_TRUE(begins.front()) << "the PAT is first";
    EXPECT_EQ(pat().transportStreamId, 1025);
    ASSERT_EQ(pat().programs.size(), 1U);
    EXPECT_EQ(pat().programs[0].serviceId, 28106);
    EXPECT_EQ(pat().programs[0].pmtPid, sample.services[0].pmtPid);
    EXPECT_EQ(demux.total().continuityErrors, 0U);
    EXPECT_EQ(demux.total().crcErrors, 0U);
}

TEST_F(AServiceStream, HasEveryPacketFromTheFirstPatOn) {
    present(0);
    broadcast::Demux whole;
    tsmake::writeMultiplex(sample, 2, [&](const std::uint8_t* packet) {
        stream.feed(TsPacket{packet});
        if (!begins.empty()) {
            whole.feed(TsPacket{packet});
        }
    });
    for (const unsigned int pid : pidsOf(0)) {
        EXPECT_EQ(demux.countsOf(static_cast<std::uint16_t>(pid)).packets,
                  whole.countsOf(static_cast<std::uint16_t>(pid)).packets);
    }
}

TEST_F(AServiceStream, GoesOverToAnotherServiceWithANewPat) {
    present(0);
    play();
    const unsigned int before = pat().version;
    pids();
    present(1);
    play();
    EXPECT_EQ(pids(), pidsOf(1));
    EXPECT_EQ(pat().programs.at(0).serviceId, 28107);
    EXPECT_EQ(pat().version, (before + 1) % 32);
    EXPECT_EQ(demux.countsOf(0).continuityErrors, 0U);
}

TEST_F(AServiceStream, StaysAsItIsWhenTheServiceIsPresentedAgain) {
    present(0);
    play(1);
    const unsigned int before = pat().version;
    stream.present(channelOf(0));
    begins.clear();
    play(1);
    EXPECT_EQ(pat().version, before);
    EXPECT_EQ(pids(), pidsOf(0));
}

TEST_F(AServiceStream, HasNothingBeforeThePat) {
    present(0);
    tsmake::writeMultiplex(sample, 1, [&](const std::uint8_t* packet) {
        if (TsPacket{packet}.pid() != 0) {
            stream.feed(TsPacket{packet});
        }
    });
    EXPECT_TRUE(pids().empty());
}

TEST_F(AServiceStream, HasNothingWithoutAService) {
    play();
    EXPECT_TRUE(pids().empty());
    present(0);
    stream.clear();
    play();
    EXPECT_TRUE(pids().empty());
}

TEST_F(AServiceStream, HasNoNullPackets) {
    si::Pmt withoutPcr = pmts[0];
    withoutPcr.pcrPid = 0x1FFF;
    stream.present(channelOf(0));
    stream.setStreams(withoutPcr);
    play();
    EXPECT_EQ(pids().count(0x1FFF), 0U);
}
