// The four requests: the complete lines of each in order, the state at the moment of the send, and that the send's
// result and a missing queue do not matter.
#include "handshake_fixture.h"

namespace {

class ARequest : public AHandshake {
protected:
    /// Creates the channel first, so that its lines do not appear in the tests.
    ARequest() {
        service->createIPCChannelForSectionData();
        recording::waitForLog("thread_proc_section_data create Signal 1");
        recording::reset();
    }
    /// Confirms the request before it is made.
    void confirmed(const std::string& session, unsigned int pid = 100) {
        confirmOpen(pid, session, 0);
        recording::reset();
    }
    frame::MsgIds anyIds;
    std::string shown() { return pointerText(&client); }
};

const std::vector<std::string> kChannel = {"-> createIPCChannelForSectionData", "<- createIPCChannelForSectionData"};
const std::vector<std::string> kRegister = {"-> registerClient", "<- registerClient"};
const std::vector<std::string> kUnregister = {"-> unRegisterClient", "<- unRegisterClient"};

std::vector<std::string> joined(std::initializer_list<std::vector<std::string>> parts) {
    std::vector<std::string> all;
    for (const std::vector<std::string>& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

}  // namespace

TEST_F(ARequest, LogsTheOpening) {
    confirmed("a");
    std::vector<std::string> atSend;
    recording::setSendAction([&](const recording::SentMessage&) {
        atSend = logged::story();
        EXPECT_TRUE(recordOf("a"));
        EXPECT_TRUE(service->isRegistered(&client));
        return 0;
    });
    EXPECT_EQ(open("a"), 0);
    const std::vector<std::string> before =
        joined({{"-> startSection"}, kChannel, kRegister, {"startSection: Open Filter: " + shown() + ", 100,  a\n"}});
    EXPECT_EQ(atSend, before);
    EXPECT_EQ(logged::story(), joined({before,
                                       {"-> waitForStartSectionResult", "<- waitForStartSectionResult",
                                        "startSection: startSection no error!\n", "<- startSection"}}));
}

TEST_F(ARequest, LogsAnUnconfirmedOpening) {
    velmora::dvbservice::handshakeClock = &hurryingSeconds;
    EXPECT_EQ(open("a", 0xFFFFFFFF), 1);
    EXPECT_EQ(logged::story(),
              joined({{"-> startSection"},
                      kChannel,
                      kRegister,
                      {"startSection: Open Filter: " + shown() + ", -1,  a\n", "-> waitForStartSectionResult",
                       "waitForStartSectionResult: Wait response timeout for a,  assume failed.\n",
                       "<- waitForStartSectionResult", "<- startSection"}}));
    EXPECT_EQ(hexText(theSent().wire).substr(18, 8), "FFFFFFFF");
}

TEST_F(ARequest, LogsTheClosing) {
    confirmed("a");
    open("a");
    confirmClose("a", 0);
    recording::reset();
    std::vector<std::string> atSend;
    recording::setSendAction([&](const recording::SentMessage&) {
        atSend = logged::story();
        EXPECT_FALSE(recordOf("a"));
        EXPECT_FALSE(service->isRegistered(&client));
        return 0;
    });
    EXPECT_EQ(service->stopSection(&client, "a"), 0);
    EXPECT_EQ(hexText(theSent().wire), hexText("00000001 00000000 61"));
    const std::vector<std::string> before =
        joined({{"-> stopSection", "stopSection:  Closing  Filter: " + shown() + ", a\n"},
                kUnregister,
                {"stopSection: client is still inuse " + shown() + "\n"}});
    EXPECT_EQ(atSend, before);
    EXPECT_EQ(logged::story(), joined({before,
                                       {"-> waitForStopSectionResult", "<- waitForStopSectionResult",
                                        "stopSection: stopSection no error!\n", "<- stopSection"}}));
}

TEST_F(ARequest, LogsARefusedClosing) {
    confirmed("a");
    confirmOpen(100, "b", 0);
    open("a");
    open("b");
    confirmClose("a", -1);
    recording::reset();
    EXPECT_EQ(service->stopSection(&client, "a"), 1);
    EXPECT_EQ(logged::story(),
              joined({{"-> stopSection", "stopSection:  Closing  Filter: " + shown() + ", a\n"},
                      kUnregister,
                      {"-> waitForStopSectionResult", "<- waitForStopSectionResult", "<- stopSection"}}));
}

TEST_F(ARequest, LogsTheClosingOfAnUnknownFilter) {
    EXPECT_EQ(service->stopSection(&client, "a"), -1);
    EXPECT_EQ(logged::story(), joined({{"-> stopSection", "stopSection:  Closing  Filter: " + shown() + ", a\n",
                                        "stopSection: Invalid Filter Session: a for " + shown() + "\n"},
                                       kUnregister,
                                       {"<- stopSection"}}));
    EXPECT_TRUE(recording::sent().empty());
}

TEST_F(ARequest, SavesItsRecordBeforeItRegistersItsClient) {
    std::vector<bool> saved;
    recording::setLogAction([&](const recording::LogLine& line) {
        if (line.text.rfind("[TRACE -> registerClient(IN)]", 0) == 0) {
            saved.push_back(recordOf(saved.empty() ? "a" : "pmt") != nullptr);
        }
    });
    service->onBrowserOpenFilterConf(anyIds, {}, 100, "a", 0);
    open("a");
    service->startPMTRequest(&client, "pmt", 1);
    recording::setLogAction(nullptr);
    EXPECT_THAT(saved, testing::ElementsAre(true, true));
}

TEST_F(ARequest, LogsThePmtRequest) {
    std::vector<std::string> atSend;
    recording::setSendAction([&](const recording::SentMessage&) {
        atSend = logged::story();
        EXPECT_TRUE(recordOf("a"));
        EXPECT_TRUE(service->isRegistered(&client));
        return 0;
    });
    EXPECT_EQ(service->startPMTRequest(&client, "a", 0xFFFFFFFF), 0);
    EXPECT_EQ(recordOf("a")->pid(), 0xFFFFFFFFU) << "of a PMT request the service";
    EXPECT_EQ(hexText(theSent().wire), hexText("00000001 00000000 FFFFFFFF 61"));
    const std::vector<std::string> before =
        joined({{"-> startPMTRequest"},
                kChannel,
                kRegister,
                {"startPMTRequest: Start PMT Filter for " + shown() + " ,sid:-1, session:a \n"}});
    EXPECT_EQ(atSend, before);
    EXPECT_EQ(logged::story(), joined({before, {"<- startPMTRequest"}}));
}

TEST_F(ARequest, LogsThePmtStop) {
    service->startPMTRequest(&client, "a", 1);
    recording::reset();
    std::vector<std::string> atSend;
    recording::setSendAction([&](const recording::SentMessage&) {
        atSend = logged::story();
        EXPECT_FALSE(recordOf("a"));
        return 0;
    });
    EXPECT_EQ(service->stopPMTRequest(&client, "a"), 0);
    EXPECT_EQ(hexText(theSent().wire), hexText("00000001 00000000 61"));
    const std::vector<std::string> before =
        joined({{"-> stopPMTRequest", "stopPMTRequest: Stop PMT Filter: " + shown() + ", a\n"},
                kUnregister,
                {"stopPMTRequest: client is still inuse " + shown() + "\n"}});
    EXPECT_EQ(atSend, before);
    EXPECT_EQ(logged::story(), joined({before, {"<- stopPMTRequest"}}));
}

TEST_F(ARequest, LogsAPmtStopByAnotherClient) {
    service->startPMTRequest(&client, "a", 1);
    service->startPMTRequest(&client, "b", 1);
    recording::reset();
    EXPECT_EQ(service->stopPMTRequest(&client, "a"), 0);
    EXPECT_EQ(logged::story(), joined({{"-> stopPMTRequest", "stopPMTRequest: Stop PMT Filter: " + shown() + ", a\n"},
                                       kUnregister,
                                       {"<- stopPMTRequest"}}));
    EXPECT_TRUE(service->isRegistered(&client));
}

TEST_F(ARequest, LogsARefusedPmtStop) {
    EXPECT_EQ(service->stopPMTRequest(nullptr, ""), -1);
    EXPECT_EQ(service->stopPMTRequest(&client, ""), -1);
    EXPECT_EQ(service->stopPMTRequest(&client, "a"), -1);
    EXPECT_EQ(logged::story(), joined({{"-> stopPMTRequest", "stopPMTRequest: Invalid Client\n", "<- stopPMTRequest",
                                        "-> stopPMTRequest", "stopPMTRequest: Invalid Session\n", "<- stopPMTRequest",
                                        "-> stopPMTRequest", "stopPMTRequest: Stop PMT Filter: " + shown() + ", a\n",
                                        "stopPMTRequest:  Filter For Session Not Found: a for " + shown() + "\n"},
                                       kUnregister,
                                       {"<- stopPMTRequest"}}));
    EXPECT_TRUE(recording::sent().empty());
}

TEST_F(ARequest, RefusesAnEmptySessionName) {
    service->startPMTRequest(&client, "", 1);
    EXPECT_EQ(service->stopPMTRequest(&client, ""), -1);
    EXPECT_TRUE(recordOf("")) << "it was not looked for";
}

TEST_F(ARequest, ToOpenIsSentWithoutClientAndSessionToo) {
    confirmed("", 5);
    EXPECT_EQ(service->startSection(nullptr, "", 5, nullptr, nullptr, -1), 0);
    EXPECT_EQ(hexText(theSent().wire), hexText("00000000 00000000 00000005 00000000 00000000 00000000 00000000"));
    EXPECT_TRUE(service->isRegistered(nullptr));
    EXPECT_EQ(service->startPMTRequest(nullptr, "", 5), 0);
}

TEST_F(ARequest, UnregistersTheCallsClient) {
    KeepingSectionClient other;
    service->registerClient(&other);
    for (const bool pmt : {false, true}) {
        service->startPMTRequest(&client, "a", 1);
        service->registerClient(&other);
        confirmClose("a", 0);
        recording::reset();
        EXPECT_EQ(pmt ? service->stopPMTRequest(&other, "a") : service->stopSection(&other, "a"), 0);
        EXPECT_THAT(messagesOf(pmt ? "stopPMTRequest" : "stopSection"),
                    testing::Contains("client is still inuse " + pointerText(&other) + "\n"));
        EXPECT_TRUE(service->isRegistered(&client));
        EXPECT_FALSE(service->isRegistered(&other));
    }
}

TEST_F(ARequest, IgnoresTheSendResult) {
    for (const int sendResult : {-107, 7}) {
        answerWith(0, sendResult);
        EXPECT_EQ(open("a"), 0);
        EXPECT_EQ(service->startPMTRequest(&client, "b", 1), 0);
        EXPECT_EQ(service->stopPMTRequest(&client, "b"), 0);
        EXPECT_EQ(service->stopSection(&client, "a"), 0);
    }
    for (const recording::LogLine& line : recording::log()) {
        EXPECT_NE(line.level, kFailure) << line.message;
    }
}

TEST_F(ARequest, GoesByTheFirstRecordOfItsSession) {
    confirmed("a", 1);
    confirmOpen(2, "a", 0);
    open("a", 1);
    open("a", 2);
    confirmClose("a", 0);
    EXPECT_EQ(service->stopSection(&client, "a"), 0);
    ASSERT_TRUE(recordOf("a"));
    EXPECT_EQ(recordOf("a")->pid(), 2U) << "the later stays";
    EXPECT_TRUE(service->isRegistered(&client));
}

TEST_F(ARequest, IsSentWithDefaultIds) {
    answerWith(0);
    open("a");
    service->startPMTRequest(&client, "b", 1);
    service->stopPMTRequest(&client, "b");
    service->stopSection(&client, "a");
    const std::vector<recording::SentMessage> sent = recording::sent();
    ASSERT_EQ(sent.size(), 4U);
    for (const recording::SentMessage& message : sent) {
        EXPECT_EQ(message.ids.peer, 0xFFFFFFFFU);
        EXPECT_EQ(message.ids.transaction, 0xFFFFFFFFU);
    }
}

TEST_F(AHandshake, GoesOnWithoutASectionChannel) {
    recording::setQueueCreationFails(true);
    answerWith(0);
    EXPECT_EQ(open("a"), 0);
    EXPECT_TRUE(recordOf("a"));
    EXPECT_EQ(service->startPMTRequest(&client, "b", 1), 0);
    EXPECT_TRUE(recordOf("b"));
    const std::vector<recording::SentMessage> sent = recording::sent();
    ASSERT_EQ(sent.size(), 2U) << "the DTV service is told of no queue";
    EXPECT_EQ(sent[0].header.messageId, 0x28671243U);
    EXPECT_EQ(sent[1].header.messageId, 0x28671247U);
    EXPECT_EQ(messagesOf("createIPCChannelForSectionData").size(), 2U) << "each request tries";
    EXPECT_FALSE(BrowserDVBServiceTestAccess::hasQueue(*service));
}
