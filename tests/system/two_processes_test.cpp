// Browser and service as two real processes on a broadcast. The test process is the browser and loads the library.
#include "browser_fixture.h"

TEST_F(ABrowser, SeesAServiceWithTheBroadcastsOwnBytes) {
    const ServiceProcess service;
    ASSERT_TRUE(connected());
    ASSERT_TRUE(tunesTo(28107));
    const tsmake::Service& second = kSample.services[1];
    EXPECT_TRUE(channelArrives(28107));
    EXPECT_TRUE(arrives(EventKind::pmt, [&](const Event& event) {
        return event.onid == 1 && event.tsid == 1025 && event.sid == 28107 &&
               event.section == asText(tsmake::pmtSection(second));
    }));
    EXPECT_TRUE(sectionArrives(EventKind::eit, tsmake::eitSection(kSample, second, false)));
    EXPECT_TRUE(sectionArrives(EventKind::eit, tsmake::eitSection(kSample, second, true)));
    EXPECT_TRUE(arrives(EventKind::ait, [&](const Event& event) {
        return event.sid == 28107 && event.section == asText(tsmake::aitSection(second));
    }));
    EXPECT_TRUE(settlesOn("ccid:1:1025:28107"));
}

TEST_F(ABrowser, LearnsTheCurrentChannelWithoutTuning) {
    const ServiceProcess service;
    EXPECT_TRUE(connected());
    EXPECT_TRUE(settlesOn("ccid:1:1025:28106"));
}

TEST_F(ABrowser, WorksWithAServiceThatComesLater) {
    EXPECT_LT(api->sendPtsRequest(0), 0);
    tune(28106);
    const ServiceProcess service;
    ASSERT_TRUE(connected());
    ASSERT_TRUE(tunesTo(28106));
    EXPECT_TRUE(sectionArrives(EventKind::pmt, tsmake::pmtSection(kSample.services[0])));
}

TEST_F(ABrowser, WorksAgainAfterTheServiceRestarts) {
    auto service = std::make_unique<ServiceProcess>();
    ASSERT_TRUE(connected());
    for (int round = 0; round < 3; ++round) {
        service->end(SIGKILL);
        ASSERT_TRUE(eventually([this] { return api->sendPtsRequest(0) < 0; }));
        EXPECT_LT(api->connectCa(1), 0);
        tune(28106);
        service = std::make_unique<ServiceProcess>();
        ASSERT_TRUE(connected());
        // The library may still know the channel of the previous service.
        ASSERT_TRUE(tunesTo(28106));
        ASSERT_TRUE(tunesTo(28107));
        EXPECT_TRUE(channelArrives(28107));
        EXPECT_TRUE(sectionArrives(EventKind::ait, tsmake::aitSection(kSample.services[1])));
    }
}

TEST_F(ABrowser, KeepsItsChannelAfterAFailedTune) {
    const ServiceProcess service;
    ASSERT_TRUE(connected());
    ASSERT_TRUE(tunesTo(28106));
    tune(4711);
    EXPECT_TRUE(arrives(EventKind::channel, [](const Event& event) { return !event.started && event.sid == 28106; }));
    EXPECT_TRUE(settlesOn("ccid:1:1025:28106"));
    EXPECT_THAT(service.log(), testing::HasSubstr("no service 1:1025:4711 in the channel list"));
}

TEST_F(ABrowser, GetsPmtAndAitAgainWhenItAsks) {
    const ServiceProcess service;
    ASSERT_TRUE(connected());
    ASSERT_TRUE(tunesTo(28106));
    ASSERT_TRUE(sectionArrives(EventKind::ait, tsmake::aitSection(kSample.services[0])));
    api->notifyMwhbStart();
    EXPECT_TRUE(sectionArrives(EventKind::pmt, tsmake::pmtSection(kSample.services[0])));
    api->triggerAitRestart();
    EXPECT_TRUE(arrives(EventKind::aitChannel, [](const Event&) { return true; }));
    EXPECT_TRUE(sectionArrives(EventKind::ait, tsmake::aitSection(kSample.services[0])));
}

TEST_F(ABrowser, GetsTheAudioSourceResult) {
    const ServiceProcess service;
    ASSERT_TRUE(connected());
    EXPECT_EQ(api->setAudioSource("broadcast"), 0);
    EXPECT_EQ(api->setAudioSource("broadband"), 0);
}

TEST_F(ABrowser, FindsARefusedCommandInTheServicesLog) {
    const ServiceProcess service;
    ASSERT_TRUE(connected());
    api->tuneToService(13, 1, 1025, 28106, 0);
    EXPECT_TRUE(eventually([&] {
        return service.log().find("no multiplex with service 28106 has this delivery system descriptor of 0 bytes") !=
               std::string::npos;
    }));
}

TEST_F(ABrowser, HearsWhatAnotherBrowserTunesTo) {
    const ServiceProcess service;
    ASSERT_TRUE(connected());
    ASSERT_TRUE(tunesTo(28106));
    ChildProcess other(DVBSHELL, {"--seconds", "5", "tune", "1:1025:28108"}, "other");
    EXPECT_TRUE(channelArrives(28108));
    EXPECT_EQ(other.wait(), 0);
    EXPECT_THAT(other.output(), testing::HasSubstr("ccid:1:1025:28108  started"));
}

TEST_F(ABrowser, GetsThePresentedServiceWhenItConnects) {
    const ServiceProcess service;
    ASSERT_TRUE(connected());
    ASSERT_TRUE(tunesTo(28106));
    ASSERT_TRUE(sectionArrives(EventKind::eit, tsmake::eitSection(kSample, kSample.services[0], true)));
    ASSERT_TRUE(sectionArrives(EventKind::ait, tsmake::aitSection(kSample.services[0])));
    // Events that follow the connection may arrive before the listener is registered.
    ChildProcess other(DVBSHELL, {"--seconds", "60", "start-notify"}, "other");
    EXPECT_TRUE(eventually([&] {
        const std::string heard = other.output();
        return heard.find("Morning on the Lake") != std::string::npos &&
               heard.find("onSelectedComponentChanged") != std::string::npos;
    })) << other.output();
}

TEST_F(ABrowser, IsServedWhileAnotherOneIsKilled) {
    const ServiceProcess service;
    ASSERT_TRUE(connected());
    for (int round = 0; round < 5; ++round) {
        ChildProcess other(DVBSHELL, {"watch"}, "killed");
        ASSERT_TRUE(eventually([&] {
            const std::string log = service.log();
            return log.find("browser " + std::to_string(round + 2) + " connected") != std::string::npos;
        }));
        other.end(SIGKILL);
    }
    EXPECT_TRUE(tunesTo(28108));
    EXPECT_TRUE(channelArrives(28108));
}

TEST(TheReferenceService, EndsInGoodOrderOnATerminationSignal) {
    ServiceProcess service;
    EXPECT_EQ(service.end(SIGTERM), 0);
}

TEST(TheReferenceService, SaysWhatIsWrongWithItsInput) {
    ChildProcess missing(DTVSERVICED, {"--input", "/nonexistent.ts"}, "missing");
    EXPECT_EQ(missing.wait(), 1);
    EXPECT_EQ(missing.output(), "dtvserviced: cannot open /nonexistent.ts: No such file or directory\n");
    ChildProcess unknown(DTVSERVICED, {"--frobnicate"}, "unknown");
    EXPECT_EQ(unknown.wait(), 2);
    EXPECT_THAT(unknown.output(),
                testing::StartsWith("dtvserviced: unknown option --frobnicate\ntry: dtvserviced --help\n"));
}

TEST(TheReferenceService, RefusesToRunTwice) {
    ServiceProcess first;
    ChildProcess second(DTVSERVICED, {"--input", SAMPLE_FILE}, "second");
    EXPECT_EQ(second.wait(), 1);
    EXPECT_THAT(second.log(), testing::HasSubstr("another service runs under this name"));
}
