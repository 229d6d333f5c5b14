// Commands: for each operation the sent message, its bytes, the lines in order, and the result.
#include "service_fixture.h"

using lo::browserdvbservice::ApplicationStarted;
using lo::browserdvbservice::ApplicationStartFailed;

namespace {

constexpr const char* kFile = "browser_dvb_service_commands.cpp";

class ACommand : public AServiceObject {
protected:
    void expectSent(std::uint32_t messageId, const std::string& wire) {
        EXPECT_EQ(theSent().header.messageId, messageId);
        EXPECT_EQ(hexText(theSent().wire), hexText(wire));
    }
    static auto tagged(const std::string& function, const std::string& message) {
        return logged::tagged(kOrdinary, kTag, kFile, function, message);
    }
    static auto failed(const std::string& function, const std::string& message) {
        return logged::tagged(kFailure, kTag, kFile, function, message);
    }
    static auto plain(const std::string& function, const std::string& message) {
        return logged::plain(kOrdinary, kFile, function, message);
    }
    void expectTraced(const std::string& function) { EXPECT_EQ(logged::traces(), tracePair(function, kFile)); }
    void failSends() {
        recording::reset();
        recording::setSendResult(-107);
    }
};

}  // namespace

TEST_F(ACommand, TunesByTriplet) {
    service->tuneToService(12, 1, 1025, 28106, -1);
    expectSent(0x28671236, "0000000C 00000000 00000000 00000001 00000401 00006DCA FFFFFFFF");
    EXPECT_THAT(lines(), testing::ElementsAre(tagged("tuneToService", "TunerToService:{12,1:1025:28106}\n")));
    expectTraced("tuneToService");
}

TEST_F(ACommand, SendsUnusedTuneValuesAsZero) {
    service->tuneToService(std::string("\x5A\x00", 2), 28106, 3);
    expectSent(0x28671236, "0000000D 00000002 00000000 00000000 00000000 00006DCA 00000003 5A00");
    EXPECT_THAT(lines(), testing::ElementsAre(tagged("tuneToService", "TunerToService:{ dsd len:2,sid:28106}\n")));
    expectTraced("tuneToService");
}

TEST_F(ACommand, KeepsTheDescriptorAfterAFailedTune) {
    service->tuneToService("dsd", 5, 0);
    failSends();
    service->tuneToService(12, 1, 2, 3, 4);
    EXPECT_THAT(lines(), testing::ElementsAre(tagged("tuneToService", "TunerToService:{12,1:2:3}\n"),
                                              failed("tuneToService", "Failed. -107\n")));
    service->tuneToService("other", 6, 0);
    EXPECT_EQ(service->getCurrentDsd(), "dsd");
}

TEST_F(ACommand, ForgetsTheDescriptorAfterATuneByTriplet) {
    service->tuneToService("dsd", 5, 0);
    service->tuneToService(12, 1, 2, 3, 4);
    EXPECT_EQ(service->getCurrentDsd(), "");
}

TEST_F(ACommand, TunesToAComponent) {
    service->tuneToComponent(1, -2, 3);
    expectSent(0x28671237, "00000001 FFFFFFFE 00000003");
    EXPECT_THAT(lines(), testing::ElementsAre(tagged("tuneToComponent", "Tuner to Component: 1,-2,3\n")));
    expectTraced("tuneToComponent");
    failSends();
    service->tuneToComponent(1, 2, 3);
    EXPECT_THAT(lines(), testing::ElementsAre(tagged("tuneToComponent", "Tuner to Component: 1,2,3\n"),
                                              failed("tuneToComponent", "Failed. -107\n")));
}

TEST_F(ACommand, SelectsAComponentOfAnyType) {
    service->selectComponent(77);
    expectSent(0x28671239, "0000004D");
    EXPECT_TRUE(lines().empty());
    expectTraced("selectComponent");
    failSends();
    service->selectComponent(1);
    EXPECT_THAT(lines(), testing::ElementsAre(failed("selectComponent", "Failed. -107\n")));
}

TEST_F(ACommand, UnselectsAComponent) {
    service->unselectComponent(2);
    expectSent(0x28671238, "00000002");
    expectTraced("unselectComponent");
    failSends();
    service->unselectComponent(1);
    EXPECT_THAT(lines(), testing::ElementsAre(failed("unselectComponent", "Failed. -107\n")));
}

TEST_F(ACommand, SetsTheAudioSource) {
    service->setAudioSource(9, "tv");
    expectSent(0x2867123A, "00000009 00000002 00000000 7476");
    EXPECT_TRUE(lines().empty());
    expectTraced("setAudioSource");
    failSends();
    service->setAudioSource(9, "tv");
    EXPECT_THAT(lines(), testing::ElementsAre(failed("setAudioSource", "Failed. -107\n")));
}

TEST_F(ACommand, TriggersTheAitAgain) {
    service->triggerAitRestart();
    expectSent(0x2867123B, "00");
    EXPECT_THAT(lines(), testing::ElementsAre(plain("triggerAitRestart", "called.\n")));
    expectTraced("triggerAitRestart");
}

TEST_F(ACommand, TellsThatTheBrowserHasStarted) {
    service->notifyMwhbStart();
    expectSent(0x2867123C, "00");
    EXPECT_THAT(lines(), testing::ElementsAre(plain("notifyMwhbStart", "notify tvmain mwhb is started.\n")));
    expectTraced("notifyMwhbStart");
}

TEST_F(ACommand, ReportsTheApplicationStartAndReturnsZero) {
    EXPECT_EQ(service->sendApplicationStartStatus(ApplicationStartFailed), 0);
    expectSent(0x2867123D, "00000001");
    EXPECT_THAT(lines(), testing::ElementsAre(plain("sendApplicationStartStatus", "application start status 1.\n")));
    expectTraced("sendApplicationStartStatus");
    failSends();
    EXPECT_EQ(service->sendApplicationStartStatus(ApplicationStarted), 0);
    EXPECT_EQ(hexText(theSent().wire), "00000000");
}

TEST_F(ACommand, AsksForTheServiceInfo) {
    service->TriggerServiceInfoAcquire();
    expectSent(0x28671246, "00");
    EXPECT_THAT(lines(), testing::ElementsAre(plain("TriggerServiceInfoAcquire", "called.\n")));
    expectTraced("TriggerServiceInfoAcquire");
}

TEST_F(ACommand, AsksForTheDtvInfo) {
    service->vbStartDtvInfoRequest();
    expectSent(0x28671252, "00");
    EXPECT_THAT(lines(), testing::ElementsAre(plain("vbStartDtvInfoRequest", "called.\n")));
    expectTraced("vbStartDtvInfoRequest");
}

TEST_F(ACommand, MountsACarouselWithoutATrace) {
    EXPECT_EQ(service->mountDsmcc(0xFFFFFFFFU, 1, 2, 65535, -1), 0);
    expectSent(0x2867123E, "FFFFFFFF 00010002 FFFFFFFF");
    EXPECT_THAT(lines(), testing::ElementsAre(plain("mountDsmcc", "called.\n")));
    EXPECT_TRUE(logged::traces().empty());
    failSends();
    EXPECT_EQ(service->mountDsmcc(1, 2, 3, 4, 5), -107);
}

TEST_F(ACommand, AddsAStreamEventListener) {
    EXPECT_TRUE(service->addStreamEventListener(1, 2, 3, 4, -5, "p", "ev"));
    expectSent(0x2867123F, "00000001 00020003 0004FFFB 00000001 00000000 00000002 00000000 706576");
    EXPECT_THAT(lines(), testing::ElementsAre(plain("addStreamEventListener", "called.\n")));
    expectTraced("addStreamEventListener");
    failSends();
    EXPECT_FALSE(service->addStreamEventListener(1, 2, 3, 4, -5, "p", "ev"));
}

TEST_F(ACommand, RemovesAStreamEventListener) {
    EXPECT_TRUE(service->removeStreamEventListener(1, 2, 3, 4, -5, "p", "ev"));
    expectSent(0x28671240, "00000001 00020003 0004FFFB 00000001 00000000 00000002 00000000 706576");
    EXPECT_THAT(lines(), testing::ElementsAre(plain("removeStreamEventListener", "called.\n")));
    expectTraced("removeStreamEventListener");
    recording::setSendResult(1);
    EXPECT_FALSE(service->removeStreamEventListener(1, 2, 3, 4, -5, "p", "ev"));
}

TEST_F(ACommand, RequestsThePts) {
    EXPECT_EQ(service->sendPtsRequest(4), 0);
    expectSent(0x28671249, "00000004");
    EXPECT_THAT(lines(), testing::ElementsAre(tagged("sendPtsRequest", "send pts request res: 0\n")));
    expectTraced("sendPtsRequest");
    failSends();
    EXPECT_EQ(service->sendPtsRequest(4), -107);
    EXPECT_THAT(lines(), testing::ElementsAre(tagged("sendPtsRequest", "send pts request res: -107\n")));
}

TEST_F(ACommand, StartsATimeline) {
    EXPECT_EQ(service->startTemiTimelineRequest(1, 2, 3), 0);
    expectSent(0x2867124A, "00000001 00000002 00000003");
    EXPECT_THAT(lines(),
                testing::ElementsAre(tagged("startTemiTimelineRequest", "startTemiTimelineRequest request res: 0\n")));
    expectTraced("startTemiTimelineRequest");
}

TEST_F(ACommand, StopsATimeline) {
    failSends();
    EXPECT_EQ(service->stopTemiTimelineRequest(), -107);
    expectSent(0x2867124B, "00");
    EXPECT_THAT(lines(),
                testing::ElementsAre(tagged("stopTemiTimelineRequest", "stopTemiTimelineRequest request res: -107\n")));
    expectTraced("stopTemiTimelineRequest");
}

TEST_F(ACommand, StartsTheDetectionOfALayer) {
    EXPECT_EQ(service->startOSDDetection(6), 0);
    expectSent(0x2867124C, "00000006");
    EXPECT_THAT(lines(), testing::ElementsAre(tagged("startOSDDetection", "start OSD Detection res: 0\n")));
    expectTraced("startOSDDetection");
}

TEST_F(ACommand, LogsStopOsdDetectionAsStart) {
    EXPECT_EQ(service->stopOSDDetection(6), 0);
    expectSent(0x2867124D, "00000006");
    EXPECT_THAT(lines(), testing::ElementsAre(tagged("stopOSDDetection", "start OSD Detection res: 0\n")));
    expectTraced("stopOSDDetection");
}

TEST_F(ACommand, SendsADrmMessage) {
    EXPECT_EQ(service->sendDrmMessage(0xFFFFFFFFFFFFFFFFULL, 0x1811, 2, "a", ""), 0);
    expectSent(0x2867124E, "FFFFFFFF FFFFFFFF 18110002 00000001 00000000 00000000 00000000 61");
    EXPECT_THAT(lines(), testing::ElementsAre(
                             tagged("sendDrmMessage", "session id = 18446744073709551615, ca system id = 6161\n"),
                             tagged("sendDrmMessage", "send Drm message res: 0\n")));
    expectTraced("sendDrmMessage");
}

TEST_F(ACommand, ConnectsACa) {
    failSends();
    EXPECT_EQ(service->connectCa(5), -107);
    expectSent(0x2867124F, "00000000 00000005");
    EXPECT_THAT(lines(), testing::ElementsAre(tagged("connectCa", "connect CA, session is 5\n")));
    expectTraced("connectCa");
}

TEST_F(ACommand, DisconnectsACa) {
    EXPECT_EQ(service->disconnectCa(65535), 0);
    expectSent(0x28671250, "FFFF");
    EXPECT_THAT(lines(), testing::ElementsAre(tagged("disconnectCa", "disconnect CA, slot id is 65535\n")));
    expectTraced("disconnectCa");
}

TEST_F(ACommand, ReportsAnInstallationAsGiven) {
    EXPECT_EQ(service->sendOpAppInstallStatus(1, 0), 0);
    expectSent(0x28671251, "00000001 00000000");
    EXPECT_THAT(lines(), testing::ElementsAre(tagged("sendOpAppInstallStatus", "opappType:1, installStatus:0.\n")));
    expectTraced("sendOpAppInstallStatus");
}

TEST_F(ACommand, SendsAnInvalidInstallationAsZero) {
    EXPECT_EQ(service->sendOpAppInstallStatus(2, 5), 0);
    expectSent(0x28671251, "00000000 00000000");
    EXPECT_THAT(lines(), testing::ElementsAre(tagged("sendOpAppInstallStatus", "opappType:2, installStatus:5.\n"),
                                              failed("toOpappType", "Invalid opapp type:2.\n"),
                                              failed("toOpappInstallStatus", "Invalid install status:5.\n")));
}

TEST_F(ACommand, SendsEveryInvalidInstallationAsZero) {
    struct Installation {
        int type;
        int status;
        const char* wire;
        std::vector<std::string> invalid;
    };
    const Installation installations[] = {
        {0, 0, "00000000 00000000", {}},
        {0, 1, "00000000 00000001", {}},
        {1, 1, "00000001 00000001", {}},
        {-1, 1, "00000000 00000001", {"Invalid opapp type:-1.\n"}},
        {1, -1, "00000001 00000000", {"Invalid install status:-1.\n"}},
        {2, 1, "00000000 00000001", {"Invalid opapp type:2.\n"}},
        {1, 2, "00000001 00000000", {"Invalid install status:2.\n"}},
        {256, 257, "00000000 00000000", {"Invalid opapp type:256.\n", "Invalid install status:257.\n"}},
        {-2147483647,
         2147483647,
         "00000000 00000000",
         {"Invalid opapp type:-2147483647.\n", "Invalid install status:2147483647.\n"}},
    };
    for (const Installation& given : installations) {
        SCOPED_TRACE(given.wire);
        recording::reset();
        recording::setSendResult(5);
        EXPECT_EQ(service->sendOpAppInstallStatus(given.type, given.status), 5);
        expectSent(0x28671251, given.wire);
        std::vector<std::string> invalid;
        for (const recording::LogLine& line : lines()) {
            if (line.level == kFailure) {
                invalid.push_back(line.message);
            }
        }
        EXPECT_EQ(invalid, given.invalid);
    }
}

TEST_F(ACommand, KeepsTheDescriptorOfASentTuneOnly) {
    service->tuneToService(std::string("\x5A\0x", 3), 5, 0);
    EXPECT_EQ(service->getCurrentDsd(), std::string("\x5A\0x", 3)) << "to its last byte";
    for (const int result : {7, -107}) {
        recording::setSendResult(result);
        service->tuneToService("other", 6, 0);
        EXPECT_EQ(service->getCurrentDsd().size(), 3U) << "the tune failed";
        service->tuneToService(12, 1, 2, 3, 0);
        EXPECT_EQ(service->getCurrentDsd().size(), 3U) << "the tune failed";
    }
}

TEST_F(ACommand, ForgetsTheDescriptorAfterATuneToTheSameServiceToo) {
    for (const int sid : {3, 3, -1, 0}) {
        service->tuneToService("dsd", 5, 0);
        service->tuneToService(12, 1, 2, sid, 4);
        EXPECT_EQ(service->getCurrentDsd(), "") << sid;
    }
}

TEST_F(ACommand, KeepsTheServiceOfASentTripletTuneOnly) {
    EXPECT_EQ(BrowserDVBServiceTestAccess::pmtServiceId(*service), -1);
    for (const int sid : {0, 28106, 65535, 65536 + 300, 2147483647, -2147483647, -1}) {
        recording::setSendResult(0);
        service->tuneToService(12, 1, 2, sid, 0);
        EXPECT_EQ(BrowserDVBServiceTestAccess::pmtServiceId(*service), sid);
        for (const int result : {7, -107}) {
            recording::setSendResult(result);
            service->tuneToService(12, 1, 2, 77, 0);
            EXPECT_EQ(BrowserDVBServiceTestAccess::pmtServiceId(*service), sid) << "the tune failed";
        }
        recording::setSendResult(0);
        service->tuneToService("dsd", 78, 0);
        EXPECT_EQ(BrowserDVBServiceTestAccess::pmtServiceId(*service), sid) << "a tune by descriptor notes none";
    }
}

TEST_F(ACommand, LogsLinesWithoutResultBeforeTheSend) {
    using Service = velmora::dvbservice::BrowserDVBService;
    const auto linesAtSend = [this](const auto& command) {
        std::size_t count = 99;
        recording::reset();
        recording::setSendAction([&](const recording::SentMessage&) {
            count = lines().size();
            return 0;
        });
        command(*service);
        return count;
    };
    EXPECT_EQ(linesAtSend([](Service& of) { of.tuneToService(12, 1, 2, 3, 0); }), 1U);
    EXPECT_EQ(linesAtSend([](Service& of) { of.tuneToService("dsd", 3, 0); }), 1U);
    EXPECT_EQ(linesAtSend([](Service& of) { of.tuneToComponent(1, 2, 3); }), 1U);
    EXPECT_EQ(linesAtSend([](Service& of) { of.triggerAitRestart(); }), 1U);
    EXPECT_EQ(linesAtSend([](Service& of) { of.notifyMwhbStart(); }), 1U);
    EXPECT_EQ(linesAtSend([](Service& of) { of.sendApplicationStartStatus(ApplicationStarted); }), 1U);
    EXPECT_EQ(linesAtSend([](Service& of) { of.TriggerServiceInfoAcquire(); }), 1U);
    EXPECT_EQ(linesAtSend([](Service& of) { of.vbStartDtvInfoRequest(); }), 1U);
    EXPECT_EQ(linesAtSend([](Service& of) { of.connectCa(1); }), 1U);
    EXPECT_EQ(linesAtSend([](Service& of) { of.disconnectCa(1); }), 1U);
    EXPECT_EQ(linesAtSend([](Service& of) { of.sendOpAppInstallStatus(1, 0); }), 1U);
    EXPECT_EQ(linesAtSend([](Service& of) { of.sendDrmMessage(1, 2, 3, "a", "b"); }), 1U);
    EXPECT_EQ(linesAtSend([](Service& of) { of.sendPtsRequest(1); }), 0U) << "it has none";
}
