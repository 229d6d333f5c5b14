// Checks what browsers and the operator share through the reference service: OSD layers, CA modules and DRM messages,
// the engine's status, tuning and the reports of both.
#include "raw_browser.h"

namespace {

const tsmake::Service& kFirst = kSample.services[0];

}  // namespace

TEST_F(ARawBrowser, GetsTheStateOfAFollowedLayer) {
    const ServiceProcess process;
    ASSERT_TRUE(sends(&Commands::cmdStartOSDDetection, 3U));
    ASSERT_TRUE(hears("onOSDStateChanged(3, 0)"));
    EXPECT_EQ(operate({"osd", "4", "on"}), "changed      true\n");
    EXPECT_EQ(operate({"osd", "3", "on"}), "changed      true\n");
    EXPECT_TRUE(hears("onOSDStateChanged(3, 1)"));
    EXPECT_EQ(operate({"osd", "3", "on"}), "changed      false\n");
    EXPECT_EQ(operate({"osd", "3", "off"}), "changed      true\n");
    EXPECT_TRUE(eventually([&] { return numbersOf("onOSDStateChanged").size() == 3; }));
    ASSERT_TRUE(sends(&Commands::cmdStopOSDDetection, 3U));
    ASSERT_TRUE(sends(&Commands::cmdStartOSDDetection, 4U));
    ASSERT_TRUE(hears("onOSDStateChanged(4, 1)"));
    operate({"osd", "3", "on"});
    operate({"osd", "4", "off"});
    EXPECT_TRUE(hears("onOSDStateChanged(4, 0)"));
    EXPECT_EQ(numbersOf("onOSDStateChanged").size(), 5U) << "layer 3 is no longer told";
}

TEST_F(ARawBrowser, IsRefusedMoreLayersThanASetHas) {
    const ServiceProcess process;
    constexpr unsigned int kMost = 64;
    for (unsigned int layer = 0; layer <= kMost; ++layer) {
        ASSERT_TRUE(sends(&Commands::cmdStartOSDDetection, layer));
    }
    ASSERT_TRUE(answersWhatWasAsked());
    EXPECT_EQ(numbersOf("onOSDStateChanged").size(), kMost);
    EXPECT_FALSE(heard("onOSDStateChanged(64, 0)"));
    EXPECT_THAT(process.log(), testing::HasSubstr("browser 1: layer 64 refused: it follows 64 others"));
}

TEST_F(ARawBrowser, IsRefusedTooManyWaitingMessages) {
    const ServiceProcess process;
    ASSERT_TRUE(answersWhatWasAsked());
    operate({"ca", "insert", "2"});
    constexpr unsigned long long kMost = 64;
    for (unsigned long long session = 1; session <= kMost + 1; ++session) {
        ASSERT_TRUE(sends(&Commands::cmdSendDrmMessage, session, static_cast<unsigned short>(0x4AD4),
                          static_cast<unsigned short>(0), std::string("application/x"), std::string("hello")));
    }
    EXPECT_TRUE(hears("onDrmResultReply(65, 2, 0:, 2)")) << "cannot process request";
    EXPECT_EQ(numbersOf("onDrmResultReply").size(), 1U);
    EXPECT_EQ(operate({"ca", "reply", "1", "0", "fine"}), "");
    EXPECT_TRUE(hears("onDrmResultReply(1, 0, " + shownValue(std::string("fine")) + ", 2)"));
}

TEST_F(ARawBrowser, HasTheBeginningsOfItsMessagesShown) {
    const ServiceProcess process;
    ASSERT_TRUE(answersWhatWasAsked());
    operate({"ca", "insert", "2"});
    const std::string most(16000, '\x01');  // each byte becomes six characters in an answer
    const std::string accented = std::string(199, 'x') + "\u00f6" + most;
    constexpr unsigned long long kMost = 64;
    for (unsigned long long session = 1; session <= kMost; ++session) {
        ASSERT_TRUE(sends(&Commands::cmdSendDrmMessage, session, static_cast<unsigned short>(0x4AD4),
                          static_cast<unsigned short>(0), std::string("a"), session == 1 ? accented : most));
    }
    ASSERT_TRUE(answersWhatWasAsked());
    const std::string status = operate({"--json", "status"});
    EXPECT_THAT(status, testing::HasSubstr("\"ca_session\":1,\"ca_system_id\":19156,\"length\":16201,\"message\":\"" +
                                           std::string(199, 'x') + "\","))
        << "no character is cut";
    EXPECT_THAT(status, testing::HasSubstr("\"length\":16000,\"message\":\"\\u0001"));
    EXPECT_THAT(status, testing::HasSubstr("\"drm_waiting\":64"));
}

TEST_F(ARawBrowser, IsAnsweredByAnySessionOf64Bits) {
    const ServiceProcess process;
    ASSERT_TRUE(answersWhatWasAsked());
    operate({"ca", "insert", "2"});
    constexpr unsigned long long kLast = 0xFFFFFFFFFFFFFFFF;
    ASSERT_TRUE(sends(&Commands::cmdSendDrmMessage, kLast, static_cast<unsigned short>(0x4AD4),
                      static_cast<unsigned short>(0), std::string("application/x"), std::string("hello")));
    ASSERT_TRUE(answersWhatWasAsked());
    EXPECT_EQ(operate({"ca", "reply", "-1", "0"}), "dtvctl: ca_session is out of range\n");
    EXPECT_EQ(operate({"ca", "reply", "18446744073709551615", "256"}), "dtvctl: code is out of range\n");
    EXPECT_EQ(operate({"ca", "reply", "18446744073709551615", "0"}), "");
    EXPECT_TRUE(hears("onDrmResultReply(18446744073709551615, 0, 0:, 2)"));
    EXPECT_EQ(operate({"engine", "18446744073709551615"}), "dtvctl: engine_status is out of range\n");
    EXPECT_THAT(operate({"ca", "reply", "18446744073709551616", "0"}),
                testing::HasSubstr("CA_SESSION: \"18446744073709551616\" is not a number"));
}

TEST_F(ARawBrowser, MeetsTheCaModuleThatTheOperatorInserts) {
    const ServiceProcess process;
    ASSERT_TRUE(sends(&Commands::cmdCaDrmRequestConnect, 77ULL));
    EXPECT_TRUE(hears("onCaDrmConnected(77, 65535, 1)")) << "there is none";
    const auto message = [this](unsigned long long session) {
        return sends(&Commands::cmdSendDrmMessage, session, static_cast<unsigned short>(0x4AD4),
                     static_cast<unsigned short>(0), std::string("application/x"), std::string("hello"));
    };
    ASSERT_TRUE(message(78));
    EXPECT_TRUE(hears("onDrmResultReply(78, 5, 0:, 65535)")) << "unknown DRM system";
    operate({"ca", "insert", "2"});
    EXPECT_TRUE(hears("onCaDrmSystemStatusChanged(2, 1)"));
    ASSERT_TRUE(sends(&Commands::cmdCaDrmRequestConnect, 79ULL));
    EXPECT_TRUE(hears("onCaDrmConnected(79, 2, 0)"));
    ASSERT_TRUE(message(79));
    EXPECT_TRUE(eventually([] { return operate({"status"}).find("\"hello\"") != std::string::npos; }));
    EXPECT_EQ(operate({"ca", "reply", "79", "0", "fine"}), "");
    EXPECT_TRUE(hears("onDrmResultReply(79, 0, " + shownValue(std::string("fine")) + ", 2)"));
    EXPECT_EQ(operate({"ca", "reply", "79", "0"}), "dtvctl: no message of session 79 waits for an answer\n");
    ASSERT_TRUE(sends(&Commands::cmdCaDrmRequestDisconnect, static_cast<unsigned short>(2)));
    EXPECT_TRUE(hears("onCaDrmDisonnected(2, 0)"));
    operate({"ca", "remove", "2"});
    EXPECT_TRUE(hears("onCaDrmSystemStatusChanged(2, 0)"));
    ASSERT_TRUE(sends(&Commands::cmdCaDrmRequestDisconnect, static_cast<unsigned short>(2)));
    EXPECT_TRUE(hears("onCaDrmDisonnected(2, 1)"));
}

TEST_F(ARawBrowser, IsToldOfTheEngineAndTheTerminals) {
    const ServiceProcess process;
    ASSERT_TRUE(presents(kFirst));
    EXPECT_EQ(operate({"engine", "4"}), "");
    EXPECT_TRUE(hears("onHbbtvEngineStatusChanged(4)"));
    EXPECT_EQ(operate({"stop-terminals"}), "");
    EXPECT_TRUE(hears("onAllTerminalStoped()"));
}

TEST_F(ARawBrowser, FollowsTheOperatorToAnotherService) {
    const ServiceProcess process;
    ASSERT_TRUE(presents(kFirst));
    EXPECT_EQ(operate({"tune", "1:1025:28107"}), "");
    EXPECT_TRUE(hears("onServiceChanged(" + shownValue(std::string("service_started")) + ", " +
                      shownValue(std::string("1:1025:28107")) + ")"));
    EXPECT_EQ(operate({"tune", "1:1025:1"}), "dtvctl: no service 1:1025:1 in the channel list\n");
}

TEST_F(ARawBrowser, IsSeenByTheOperator) {
    const ServiceProcess process;
    ASSERT_TRUE(presents(kFirst));
    EXPECT_TRUE(eventually([] {
        return operate({"channels"}) ==
               "* 1:1025:28106          input 1  pmt    hbbtv     Velmora One HD\n"
               "  1:1025:28107          input 1  pmt    hbbtv     Velmora Zwei F\u00f6hn\n"
               "  1:1025:28108          input 1  pmt    no-hbbtv  Velmora \u03a4\u03c1\u03af\u03b1\n"
               "  1:1025:28120          input 1  pmt    no-hbbtv  Velmora Radio\n";
    })) << operate({"channels"});
    EXPECT_THAT(operate({"status"}), testing::HasSubstr("browsers     1\n"));
    EXPECT_THAT(operate({"status"}), testing::HasSubstr("presented    1:1025:28106 Velmora One HD\n"));
    EXPECT_THAT(operate({"--json", "statistics"}), testing::HasSubstr(R"("continuity_errors":0,"crc_errors":0)"));
    EXPECT_THAT(operate({"--json", "channels"}), testing::HasSubstr("\"name\":\"Velmora Zwei F\u00f6hn\",\"onid\":1"));
}

TEST_F(ARawBrowser, HasItsReportsNoted) {
    const ServiceProcess process;
    ASSERT_TRUE(sends(&Commands::cmdHandleHbbtvStatus, 1));
    ASSERT_TRUE(sends(&Commands::cmdSendOpAppInstallStatus, lo::browserdvbservice::OpappType1,
                      lo::browserdvbservice::OpappInstallStatus0));
    EXPECT_TRUE(
        eventually([&] { return process.log().find("browser 1: application start status 1") != std::string::npos; }));
    EXPECT_TRUE(eventually([&] {
        return process.log().find("browser 1: operator application of type 1, install status 0") != std::string::npos;
    }));
}

TEST_F(ARawBrowser, ListsServicesThatNoInputCarries) {
    tsmake::Multiplex first = kSample;
    tsmake::OtherStream received = {1, 2000, {}, {{28106, 25, "Received"}}};
    // A service list in the NIT names service 41; the SDT does not.
    tsmake::OtherStream elsewhere = {2, 3000, std::string("\x41\x03\x00\x29\x19", 5), {{40, 25, "Elsewhere"}}};
    first.otherStreams = {received, elsewhere};
    tsmake::Multiplex second = kSample;
    second.transportStreamId = 2000;
    second.services.resize(1);
    const ServiceProcess process({writeBroadcast(first, 4, "first.ts"), writeBroadcast(second, 4, "second.ts")});
    EXPECT_TRUE(eventually([] {
        return operate({"channels"}) ==
               "* 1:1025:28106          input 1  pmt    hbbtv     Velmora One HD\n"
               "  1:1025:28107          input 1  pmt    hbbtv     Velmora Zwei F\u00f6hn\n"
               "  1:1025:28108          input 1  pmt    no-hbbtv  Velmora \u03a4\u03c1\u03af\u03b1\n"
               "  1:1025:28120          input 1  pmt    no-hbbtv  Velmora Radio\n"
               "  1:2000:28106          input 2  pmt    hbbtv     Velmora One HD\n"
               "  2:3000:40             no input  nopmt  no-hbbtv  Elsewhere\n"
               "  2:3000:41             no input  nopmt  no-hbbtv  \n";
    })) << operate({"channels"});
    EXPECT_THAT(operate({"--json", "channels"}), testing::HasSubstr(R"("hbbtv":false,"name":"Elsewhere")"));
    EXPECT_EQ(operate({"tune", "2:3000:40"}), "dtvctl: service 2:3000:40 is on no input\n");
}
