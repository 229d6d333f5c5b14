// Tests of requests for the presented service's time that cannot be answered.
#include "packets.h"
#include "running_set.h"

namespace {

constexpr dtvservice::Browser kBrowser = 1;

class APtsRequest : public ARunningSet {
protected:
    /// Plays the sample, with changes to the packets of the first service's video. Its PID also carries the PCR.
    void playVideo(const std::function<void(std::uint8_t* packet)>& change) {
        play(sample, [&](std::uint8_t* packet) {
            if (broadcast::TsPacket{packet}.pid() == sample.services[0].components[0].pid) {
                change(packet);
            }
        });
    }
    /// Sends a request and expects this reason for the missing answer in the log.
    void expectReason(const std::string& reason) {
        recording::reset();
        sends(kBrowser, &dtvservice::Commands::cmdSendPtsRequest, 7U);
        EXPECT_THAT(heard.take(kBrowser), testing::Not(hears("onPtsNotify")));
        EXPECT_THAT(logged::withoutTraces(), testing::ElementsAre(logged::tagged(
                                                 blog::kFailure, "DtvService", "time_room.cpp", "cmdSendPtsRequest",
                                                 "browser 1: no PTS yet: " + reason + "\n")));
    }

    const std::string videoPid = std::to_string(sample.services[0].components[0].pid);
};

}  // namespace

TEST_F(APtsRequest, IsToldThatNoServiceIsPresented) {
    expectReason("no service is presented");
}

TEST_F(APtsRequest, IsToldThatTheServiceHasGone) {
    play(sample);
    constexpr std::uint8_t kNextVersion = 1;
    tsmake::SectionWriter pat(0x00, sample.transportStreamId, kNextVersion);
    for (const Packet& packet : PacketMaker(0).packets({pat.finish()})) {
        demux->feed(broadcast::TsPacket{packet.data()});
    }
    expectReason("no service is presented");
}

TEST_F(APtsRequest, IsToldThatNoPmtHasCome) {
    tsmake::Multiplex multiplex = sample;
    tsmake::Service silent;
    silent.serviceId = 28999;
    silent.pmtPid = 0x1E00;
    silent.isSilent = true;
    multiplex.services.push_back(silent);
    play(multiplex);
    tune(kBrowser, 28999);
    expectReason("no PMT of 1:1025:28999 has come");
}

TEST_F(APtsRequest, IsToldThatTheStreamIsScrambled) {
    playVideo([](std::uint8_t* packet) { packet[3] |= 0x80; });
    expectReason("PID " + videoPid + " is scrambled");
}

TEST_F(APtsRequest, IsToldThatNoPtsHasCome) {
    playVideo([](std::uint8_t* packet) { packet[1] &= 0xBF; });  // no PES packet starts
    expectReason("no PTS has come on PID " + videoPid);
}

TEST_F(APtsRequest, IsToldThatNoPcrHasCome) {
    playVideo([](std::uint8_t* packet) {
        const bool hasAdaptation = (packet[3] & 0x20) != 0 && packet[4] != 0;
        packet[5] &= hasAdaptation ? 0xEF : 0xFF;
    });
    expectReason("no PCR has come on PID " + videoPid);
}

TEST_F(APtsRequest, IsAnsweredOnceThereIsATime) {
    sends(kBrowser, &dtvservice::Commands::cmdSendPtsRequest, 7U);
    play(sample);
    EXPECT_THAT(heard.take(kBrowser), hears("onPtsNotify"));
    recording::reset();
    sends(kBrowser, &dtvservice::Commands::cmdSendPtsRequest, 8U);
    EXPECT_THAT(heard.take(kBrowser), hears("onPtsNotify"));
    EXPECT_THAT(logged::withoutTraces(), testing::IsEmpty());
}
