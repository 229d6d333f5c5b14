// Opening and closing filters.
#include <future>

#include "eventually.h"
#include "handshake_fixture.h"

TEST_F(AHandshake, OpensAFilter) {
    answerWith(0);
    EXPECT_EQ(open("session-1", 0x1FFE), 0);
    const std::vector<recording::SentMessage> sent = recording::sent();
    ASSERT_EQ(sent.size(), 2U);
    EXPECT_EQ(sent[0].header.messageId, 0x28671242U) << "the channel's name first";
    EXPECT_EQ(sent[1].header.messageId, 0x28671243U);
    EXPECT_EQ(hexText(sent[1].wire), hexText("00000009 00000000 00001FFE 00000003 00000000 00000003 00000000"
                                             "73657373 696F6E2D 31 420001 FF00FF"));
    EXPECT_THAT(messagesOf("startSection"),
                testing::ElementsAre("Open Filter: " + pointerText(&client) + ", 8190,  session-1\n",
                                     "startSection no error!\n"));
    EXPECT_TRUE(recordOf("session-1"));
    EXPECT_TRUE(service->isRegistered(&client));
    EXPECT_EQ(BrowserDVBServiceTestAccess::waitingResults(*service), 0U);
}

TEST_F(AHandshake, KeepsTheRecordAfterARefusal) {
    answerWith(-1);
    EXPECT_EQ(open("refused"), 1);
    EXPECT_TRUE(recordOf("refused")) << "only a stop takes it away";
    EXPECT_TRUE(service->isRegistered(&client));
    EXPECT_THAT(messagesOf("startSection"), testing::SizeIs(1));
}

TEST_F(AHandshake, LogsInUseForARemovedClient) {
    answerWith(0);
    open("a");
    recording::setSendAction([this](const recording::SentMessage& message) {
        EXPECT_EQ(message.header.messageId, 0x28671244U);
        EXPECT_FALSE(recordOf("a")) << "the record goes before the close is sent";
        frame::MsgIds ids;
        service->onBrowserOCloseFilterConf(ids, {}, "a", 0);
        return 0;
    });
    recording::sent().clear();
    EXPECT_EQ(service->stopSection(&client, "a"), 0);
    EXPECT_THAT(messagesOf("stopSection"), testing::ElementsAre(" Closing  Filter: " + pointerText(&client) + ", a\n",
                                                                "client is still inuse " + pointerText(&client) + "\n",
                                                                "stopSection no error!\n"));
    EXPECT_FALSE(service->isRegistered(&client));
}

TEST_F(AHandshake, LogsNothingForAClientWithAnotherFilter) {
    answerWith(0);
    open("a");
    open("b");
    EXPECT_EQ(service->stopSection(&client, "a"), 0);
    EXPECT_THAT(messagesOf("stopSection"), testing::SizeIs(2));
    EXPECT_TRUE(service->isRegistered(&client));
}

TEST_F(AHandshake, RefusesToCloseWhatWasNeverOpened) {
    service->registerClient(&client);
    recording::reset();
    EXPECT_EQ(service->stopSection(&client, "unknown"), -1);
    EXPECT_TRUE(recording::sent().empty());
    EXPECT_THAT(messagesOf("stopSection"),
                testing::ElementsAre(" Closing  Filter: " + pointerText(&client) + ", unknown\n",
                                     "Invalid Filter Session: unknown for " + pointerText(&client) + "\n"));
    EXPECT_FALSE(service->isRegistered(&client)) << "the client is still offered";
}

TEST_F(AHandshake, ReportsACloseThatIsRefused) {
    answerWith(0);
    open("a");
    answerWith(5);
    EXPECT_EQ(service->stopSection(&client, "a"), 1);
    EXPECT_FALSE(recordOf("a"));
}

TEST_F(AHandshake, FindsAConfirmationThatCameBeforeTheWait) {
    confirmClose("early", 0);
    EXPECT_THAT(messagesOf("onBrowserOCloseFilterConf"),
                testing::ElementsAre("Filter Close Result :  early, 0, size:1\n"));
    EXPECT_TRUE(service->waitForStopSectionResult("early"));
    confirmOpen(7, "early", 0);
    EXPECT_THAT(messagesOf("onBrowserOpenFilterConf"),
                testing::ElementsAre("Filter Open Result :  early, 0, size:1\n"));
    EXPECT_TRUE(service->waitForStartSectionResult(7, "early"));
}

TEST_F(AHandshake, GivesUpAfterTenSecondsAndKeepsLateConfirmations) {
    testSeconds = 1000;
    velmora::dvbservice::handshakeClock = &readTestSeconds;
    std::future<int> result = std::async(std::launch::async, [this] { return open("late"); });
    ASSERT_TRUE(recording::waitForSent(2));
    // The wait has read the clock at its beginning and checked it once.
    ASSERT_TRUE(eventually([] { return readings >= 2; }));
    // A confirmation for another PID wakes the wait but does not end it. Exactly ten seconds do not end it either.
    testSeconds = 1010;
    const int readingsBefore = readings;
    confirmOpen(101, "late", 0);
    ASSERT_TRUE(eventually([&] { return readings > readingsBefore; }));
    EXPECT_EQ(result.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    testSeconds = 1010.1;
    ASSERT_TRUE(eventually([&] {
        confirmClose("somebody", 0);
        return result.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    }));
    EXPECT_EQ(result.get(), 1);
    EXPECT_THAT(recording::logOf("waitForStartSectionResult"),
                testing::ElementsAre(logged::tagged(kFailure, kTag, kFile, "waitForStartSectionResult",
                                                    "Wait response timeout for late,  assume failed.\n")));
    const std::size_t left = BrowserDVBServiceTestAccess::waitingResults(*service);
    confirmOpen(100, "late", 0);
    EXPECT_EQ(BrowserDVBServiceTestAccess::waitingResults(*service), left + 1);
    EXPECT_TRUE(recordOf("late"));
}

TEST_F(AHandshake, GivesUpACloseAfterTenSecondsToo) {
    answerWith(0);
    open("a");
    recording::setSendAction(nullptr);
    recording::reset();
    testSeconds = 1000;
    readings = 0;
    velmora::dvbservice::handshakeClock = &readTestSeconds;
    std::future<int> result = std::async(std::launch::async, [this] { return service->stopSection(&client, "a"); });
    ASSERT_TRUE(eventually([] { return readings >= 2; }));
    testSeconds = 1010.1;
    ASSERT_TRUE(eventually([&] {
        confirmOpen(100, "somebody", 0);
        return result.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    }));
    EXPECT_EQ(result.get(), 1);
    EXPECT_THAT(messagesOf("waitForStopSectionResult"),
                testing::ElementsAre("Wait response timeout for a,  assume failed.\n"));
    EXPECT_THAT(messagesOf("stopSection"), testing::SizeIs(2)) << "and says nothing of a success";
    EXPECT_FALSE(recordOf("a"));
}

TEST_F(AHandshake, GivesUpAfterTenSecondsOfTheRealClock) {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(open("nobody answers"), 1);
    const auto passed = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(passed, std::chrono::seconds(10));
    EXPECT_LT(passed, std::chrono::seconds(20)) << "nothing woke it in between";
    EXPECT_EQ(messagesOf("waitForStartSectionResult").size(), 1U);
}

TEST_F(AHandshake, WakesTwoWaitsAndSatisfiesOne) {
    std::future<int> first = std::async(std::launch::async, [this] { return open("first"); });
    ASSERT_TRUE(recording::waitForSent(2));
    std::future<int> second = std::async(std::launch::async, [this] { return open("second"); });
    ASSERT_TRUE(recording::waitForSent(3));
    confirmOpen(100, "second", 0);
    EXPECT_EQ(second.get(), 0);
    confirmOpen(100, "first", -1);
    EXPECT_EQ(first.get(), 1);
}

TEST_F(AHandshake, NotesWhatTheServiceReportsOfAFilter) {
    answerWith(0);
    open("a");
    recording::reset();
    injectEvent<messages::OnFilterOpened>("a", "s");
    EXPECT_EQ(FilterParameterTestAccess::dataSlot(*recordOf("a")), "s");
    recording::reset();
    injectEvent<messages::OnFilterOpened>("a", "slot");
    EXPECT_EQ(FilterParameterTestAccess::dataSlot(*recordOf("a")), "slot");
    EXPECT_EQ(FilterParameterTestAccess::state(*recordOf("a")), 0x01U);
    injectEvent<messages::OnFilterOpened>("a", "");
    EXPECT_EQ(FilterParameterTestAccess::state(*recordOf("a")), 0x41U);
    EXPECT_EQ(FilterParameterTestAccess::dataSlot(*recordOf("a")), "slot") << "the earlier report stays";
    injectEvent<messages::OnFilterOpened>("b", "slot");
    EXPECT_THAT(recording::logOf("onFilterOpened"),
                testing::ElementsAre(logged::tagged(kOrdinary, kTag, kFile, "onFilterOpened", "Filter Opened : a\n"),
                                     logged::tagged(kOrdinary, kTag, kFile, "onFilterOpened", "Filter Opened : a\n"),
                                     logged::plain(kFailure, kFile, "onFilterOpened", "Filter Open Failed.\n"),
                                     logged::tagged(kOrdinary, kTag, kFile, "onFilterOpened", "Filter Opened : b\n"),
                                     logged::plain(kFailure, kFile, "onFilterOpened", "Filter Not Found.\n")));
    recording::reset();
    injectEvent<messages::OnFilterClosed>("a");
    EXPECT_EQ(FilterParameterTestAccess::state(*recordOf("a")), 0x20U);
    EXPECT_EQ(FilterParameterTestAccess::dataSlot(*recordOf("a")), "slot");
    injectEvent<messages::OnFilterClosed>("b");
    EXPECT_THAT(messagesOf("onFilterClosed"),
                testing::ElementsAre("Filter Closed: a\n", "Filter Closed: b\n", "Unknown Filter closed: b\n"));
}

TEST_F(AHandshake, SendsAPmtRequestWithoutWaiting) {
    EXPECT_EQ(service->startPMTRequest(&client, "pmt", 28106), 0);
    const recording::SentMessage sent = recording::sent().back();
    EXPECT_EQ(sent.header.messageId, 0x28671247U);
    EXPECT_EQ(hexText(sent.wire), hexText("00000003 00000000 00006DCA 706D74"));
    EXPECT_TRUE(recordOf("pmt")->mask().empty());
    EXPECT_THAT(messagesOf("startPMTRequest"),
                testing::ElementsAre("Start PMT Filter for " + pointerText(&client) + " ,sid:28106, session:pmt \n"));
    recording::reset();
    EXPECT_EQ(service->stopPMTRequest(&client, "pmt"), 0);
    EXPECT_EQ(recording::sent().back().header.messageId, 0x28671248U);
    EXPECT_THAT(messagesOf("stopPMTRequest"),
                testing::ElementsAre("Stop PMT Filter: " + pointerText(&client) + ", pmt\n",
                                     "client is still inuse " + pointerText(&client) + "\n"));
    EXPECT_FALSE(recordOf("pmt"));
}

TEST_F(AHandshake, NeedsClientAndSessionToStopAPmt) {
    EXPECT_EQ(service->stopPMTRequest(nullptr, "pmt"), -1);
    EXPECT_EQ(service->stopPMTRequest(&client, ""), -1);
    service->registerClient(&client);
    EXPECT_EQ(service->stopPMTRequest(&client, "unknown"), -1);
    EXPECT_FALSE(service->isRegistered(&client)) << "the client is still offered";
    EXPECT_TRUE(recording::sent().empty());
    EXPECT_THAT(messagesOf("stopPMTRequest"),
                testing::ElementsAre("Invalid Client\n", "Invalid Session\n",
                                     "Stop PMT Filter: " + pointerText(&client) + ", unknown\n",
                                     " Filter For Session Not Found: unknown for " + pointerText(&client) + "\n"));
}

TEST_F(AHandshake, TracesRequestsHandlersAndWaits) {
    answerWith(0);
    open("a");
    service->stopSection(&client, "a");
    service->startPMTRequest(&client, "b", 1);
    service->stopPMTRequest(&client, "b");
    injectEvent<messages::OnFilterOpened>("a", "");
    injectEvent<messages::OnFilterClosed>("a");
    const std::vector<std::string> traces = logged::traces();
    for (const char* const function :
         {"startSection", "stopSection", "startPMTRequest", "stopPMTRequest", "waitForStartSectionResult",
          "waitForStopSectionResult", "onBrowserOpenFilterConf", "onBrowserOCloseFilterConf", "onFilterOpened",
          "onFilterClosed"}) {
        EXPECT_THAT(traces, testing::IsSupersetOf(tracePair(function, kFile)));
    }
    EXPECT_THAT(traces,
                testing::IsSupersetOf(tracePair("createIPCChannelForSectionData", "browser_dvb_service_sections.cpp")));
    EXPECT_THAT(traces, testing::IsSupersetOf(tracePair("registerClient", "browser_dvb_service_filters.cpp")));
    EXPECT_THAT(traces, testing::IsSupersetOf(tracePair("unRegisterClient", "browser_dvb_service_filters.cpp")));
}
