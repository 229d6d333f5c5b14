// The messages of section filters and PMT requests, tested with a browser that reads its own queue.
#include <unistd.h>

#include "raw_browser.h"
#include "si/tables.h"
#include "velmora/msgqueue/ipc_message_queue.h"

namespace {

using lo::browserdvbservice::OpenFilterMatchMask_t;
using velmora::msgqueue::IPCMessageQueue;
using velmora::msgqueue::SectionDataIPCMessage;

const std::string kSession = "a filter's session";

std::string shown(const std::string& text) {
    return shownValue(text);
}

class ABrowserWithAQueue : public ARawBrowser {
protected:
    ABrowserWithAQueue() {
        EXPECT_NE(queue, nullptr);
        message.data = buffer.data();
    }
    ~ABrowserWithAQueue() override { message.data = nullptr; }

    /// Sends the name of the queue, then opens a filter on the second service's EIT.
    void opensFilter() {
        ASSERT_TRUE(sends(&Commands::cmdUpdateIPCChannelNames, name, std::string(), std::string()));
        ASSERT_TRUE(sends(&Commands::cmdFilterOpen, kSession, kEitPid, ofTheFollowingEvent()));
    }
    static OpenFilterMatchMask_t ofTheFollowingEvent() {
        OpenFilterMatchMask_t matchMask;
        // table_id, service_id, the byte with the version, section_number.
        matchMask.mask = {0x4E, 0x6D, 0xCB, 0x00, 0x01};
        matchMask.maskBits = {0xFF, 0xFF, 0xFF, 0x00, 0xFF};
        return matchMask;
    }
    /// The session name and the bytes of the next section in the queue.
    std::pair<std::string, std::string> received() {
        queue->Receive(message);
        return {message.sessionName, std::string(buffer.begin(), buffer.begin() + message.dataLength)};
    }

    static constexpr unsigned int kEitPid = 0x12;
    const std::string name = "SECTION-raw-" + std::to_string(getpid());
    std::vector<std::uint8_t> buffer = std::vector<std::uint8_t>(SectionDataIPCMessage::kBufferSize);
    SectionDataIPCMessage message;
    const std::unique_ptr<IPCMessageQueue> queue{IPCMessageQueue::create(name, 4500, 128)};
};

}  // namespace

TEST_F(ABrowserWithAQueue, GetsSectionsThroughTheQueueOnly) {
    const ServiceProcess process;
    ASSERT_TRUE(presents(kSample.services[0]));
    opensFilter();
    EXPECT_TRUE(hears("onBrowserOpenFilterConf(18, " + shown(kSession) + ", 0)"));
    EXPECT_TRUE(hears("onFilterOpened(" + shown(kSession) + ", " + shown(kSession) + ")"));
    const std::string section = asText(tsmake::eitSection(kSample, kSample.services[1], true));
    for (int count = 0; count < 2; ++count) {
        EXPECT_EQ(received(), std::make_pair(kSession, section));
    }
    ASSERT_TRUE(sends(&Commands::cmdDataReadFinished, kSession, kSession));
    ASSERT_TRUE(sends(&Commands::cmdFilterClose, kSession));
    EXPECT_TRUE(hears("onBrowserOCloseFilterConf(" + shown(kSession) + ", 0)"));
    EXPECT_TRUE(hears("onFilterClosed(" + shown(kSession) + ")"));
    ASSERT_TRUE(sends(&Commands::cmdFilterClose, kSession));
    EXPECT_TRUE(hears("onBrowserOCloseFilterConf(" + shown(kSession) + ", -1)")) << "there is none any more";
    EXPECT_EQ(timesHeard("onFilterClosed(" + shown(kSession) + ")"), 1);
    for (const std::string& text : client->texts()) {
        EXPECT_EQ(text.find("onFilterSectionDataArrived"), std::string::npos);
    }
}

TEST_F(ABrowserWithAQueue, IsRefusedAFilterWithALoggedReason) {
    const ServiceProcess process;
    ASSERT_TRUE(presents(kSample.services[0]));
    ASSERT_TRUE(sends(&Commands::cmdUpdateIPCChannelNames, name, std::string(), std::string()));
    ASSERT_TRUE(sends(&Commands::cmdFilterOpen, kSession, 0x2000U, OpenFilterMatchMask_t()));
    EXPECT_TRUE(hears("onBrowserOpenFilterConf(8192, " + shown(kSession) + ", -1)"));
    EXPECT_TRUE(hears("onFilterOpened(" + shown(kSession) + ", 0:)"));
    EXPECT_THAT(process.log(), testing::HasSubstr("filter " + kSession + " refused: "));
}

TEST_F(ABrowserWithAQueue, NeedNotTellItsNameToANewService) {
    for (int round = 0; round < 2; ++round) {
        const ServiceProcess process;
        ASSERT_TRUE(presents(kSample.services[2]));
        ASSERT_TRUE(sends(&Commands::cmdFilterOpen, kSession, kEitPid, ofTheFollowingEvent()));
        EXPECT_TRUE(hears("onBrowserOpenFilterConf(18, " + shown(kSession) + ", 0)"));
        EXPECT_EQ(received().first, kSession);
        ASSERT_TRUE(sends(&Commands::cmdFilterClose, kSession));
        ASSERT_TRUE(sends(&Commands::cmdStartPMTRequest, "a PMT request", 28108U));
        while (received().first != "a PMT request") {
        }
    }
}

TEST_F(ABrowserWithAQueue, IsRefusedEverythingAfterItClosedTheQueue) {
    const ServiceProcess process;
    ASSERT_TRUE(presents(kSample.services[2]));
    ASSERT_TRUE(sends(&Commands::cmdUpdateIPCChannelNames, std::string(), std::string(), std::string()));
    ASSERT_TRUE(sends(&Commands::cmdFilterOpen, kSession, kEitPid, ofTheFollowingEvent()));
    EXPECT_TRUE(hears("onBrowserOpenFilterConf(18, " + shown(kSession) + ", -1)"));
    ASSERT_TRUE(sends(&Commands::cmdStartPMTRequest, "a PMT request", 28108U));
    EXPECT_TRUE(eventually([&] {
        return process.log().find("PMT request a PMT request refused: the browser has no section queue") !=
               std::string::npos;
    }));
}

TEST_F(ABrowserWithAQueue, GetsALogLineForAMissingQueue) {
    const ServiceProcess process;
    const std::string missing = "SECTION-missing-" + std::to_string(getpid());
    ASSERT_TRUE(sends(&Commands::cmdUpdateIPCChannelNames, missing, std::string(), std::string()));
    EXPECT_TRUE(
        eventually([&] { return process.log().find("browser 1: there is no queue " + missing) != std::string::npos; }));
}

TEST_F(ABrowserWithAQueue, GetsARequestedPmtUntilItStops) {
    const ServiceProcess process;
    ASSERT_TRUE(presents(kSample.services[2]));
    ASSERT_TRUE(sends(&Commands::cmdUpdateIPCChannelNames, name, std::string(), std::string()));
    ASSERT_TRUE(sends(&Commands::cmdStartPMTRequest, kSession, 28108U));
    EXPECT_EQ(received(), std::make_pair(kSession, asText(tsmake::pmtSection(kSample.services[2]))));
    ASSERT_TRUE(sends(&Commands::cmdStopPMTRequest, kSession));
    ASSERT_TRUE(sends(&Commands::cmdFilterClose, kSession));
    EXPECT_TRUE(hears("onBrowserOCloseFilterConf(" + shown(kSession) + ", -1)")) << "it was the session's last";
}

TEST_F(ABrowserWithAQueue, GetsARequestedPmtWithTheAddedApplication) {
    const ServiceProcess process({SAMPLE_FILE, "--application", "http://mine.example/"});
    const std::string started = "onServiceChanged(" + shown("service_started") + ", " + shown("1:1025:28108") + ")";
    ASSERT_TRUE(eventually([&] {
        sends(&Commands::cmdTuneToService, channelOf(kSample.services[2]));
        return heard(started);
    }));
    ASSERT_TRUE(sends(&Commands::cmdUpdateIPCChannelNames, name, std::string(), std::string()));
    ASSERT_TRUE(sends(&Commands::cmdStartPMTRequest, kSession, 28108U));
    const std::string section = received().second;
    EXPECT_NE(section, asText(tsmake::pmtSection(kSample.services[2])));
    std::string error;
    const std::optional<si::Pmt> pmt = si::parsePmt(section, error);
    ASSERT_TRUE(pmt) << error;
    EXPECT_TRUE(si::listsHbbTvAit(*pmt));
}

TEST_F(ABrowserWithAQueue, IsToldWhenATuneEndsItsFilter) {
    tsmake::Multiplex other = kSample;
    other.transportStreamId = 2000;
    const ServiceProcess process({SAMPLE_FILE, writeBroadcast(other, 3, "other.ts")});
    ASSERT_TRUE(presents(kSample.services[0]));
    opensFilter();
    ASSERT_TRUE(hears("onFilterOpened(" + shown(kSession) + ", " + shown(kSession) + ")"));
    ASSERT_TRUE(presents(kSample.services[2])) << "a service of the same multiplex";
    EXPECT_FALSE(heard("onFilterClosed(" + shown(kSession) + ")"));
    EXPECT_TRUE(eventually([] { return operate({"tune", "1:2000:28106"}).empty(); }));
    EXPECT_TRUE(hears("onFilterClosed(" + shown(kSession) + ")"));
}
