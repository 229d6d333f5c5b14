// Creation, connection and destruction of the service object.
#include <unistd.h>

#include "service_fixture.h"

using velmora::dvbservice::BrowserDVBService;

namespace {

constexpr const char* kFile = "browser_dvb_service.cpp";

std::string creationLine(const char* verb, const BrowserDVBService* service) {
    char text[128];
    std::snprintf(text, sizeof text, "%s BrowserDVBService(%p) in %d\n", verb, static_cast<const void*>(service),
                  getpid());
    return text;
}

}  // namespace

TEST_F(AServiceObject, RegistersTheProxyBeforeItsCreationLine) {
    frame::Process::getInstance().stopAppMembers();
    recording::reset();
    const boost::shared_ptr<BrowserDVBService> other(new BrowserDVBService);
    const std::vector<recording::LogLine> log = recording::log();
    ASSERT_FALSE(log.empty());
    EXPECT_THAT(log.front(), logged::plain(kOrdinary, "adapter.cpp", "Adapter", "called.\n"));
    EXPECT_THAT(log.at(log.size() - 2).function, "performStarting");
    EXPECT_THAT(log.back(),
                logged::tagged(kAlways, kTag, kFile, "BrowserDVBService", creationLine("Creating", other.get())));
}

TEST_F(AServiceObject, WritesALineWhenItIsDestroyed) {
    const BrowserDVBService* const address = service.get();
    frame::Process::getInstance().stopAppMembers();
    recording::reset();
    service.reset();
    EXPECT_THAT(recording::log(),
                testing::ElementsAre(
                    logged::tagged(kAlways, kTag, kFile, "~BrowserDVBService", creationLine("Destroy", address)),
                    logged::plain(kOrdinary, "adapter.cpp", "~Adapter", "called.\n")));
    EXPECT_TRUE(recording::sent().empty());
}

TEST_F(AServiceObject, HasNoChannelRightAfterItsCreation) {
    int onid = 7;
    int tsid = 8;
    int sid = 9;
    EXPECT_EQ(service->getCurrentChannelInfo(onid, tsid, sid), -1);
    EXPECT_EQ(onid, 7);
    EXPECT_EQ(tsid, 8);
    EXPECT_EQ(sid, 9);
    EXPECT_EQ(service->getCurrentCCID(), "ccid:-1:-1:-1");
    EXPECT_EQ(service->getCurrentDsd(), "");
}

TEST_F(AServiceObject, KeepsRunning) {
    for (int count = 0; count < 10; ++count) {
        EXPECT_TRUE(service->keepRunning());
    }
    EXPECT_TRUE(logged::story().empty());
}

TEST_F(AServiceObject, HasNoSectionChannelUntilAFilterIsOpened) {
    EXPECT_FALSE(BrowserDVBServiceTestAccess::hasQueue(*service));
    EXPECT_TRUE(recording::queueNames().empty());
    EXPECT_TRUE(recording::threadsCreated().empty());
    EXPECT_EQ(BrowserDVBServiceTestAccess::queueName(*service).size(), 8U + 45U) << "its session's name is there";
}

TEST_F(AServiceObject, SendsEmptyChannelNamesBeforeAFilter) {
    service->updateIPCChannelNames();
    EXPECT_EQ(theSent().header.messageId, 0x28671242U);
    EXPECT_EQ(hexText(theSent().wire), hexText("00000000 00000000 00000000 00000000 00000000 00000000"));
    EXPECT_EQ(theSent().ids.peer, 0xFFFFFFFFU);
    EXPECT_EQ(theSent().ids.transaction, 0xFFFFFFFFU);
    EXPECT_TRUE(lines().empty());
    EXPECT_TRUE(logged::traces().empty());
}

TEST_F(AServiceObject, UsesTheNullServiceWhenTheProxyCannotStart) {
    frame::Process::getInstance().stopAppMembers();
    recording::setStartResult(-3);
    const boost::shared_ptr<BrowserDVBService> unconnected(new BrowserDVBService);
    EXPECT_EQ(unconnected->start(), -1);
    recording::reset();
    EXPECT_EQ(unconnected->sendPtsRequest(1), -1);
    EXPECT_TRUE(recording::sent().empty());
}
