// The section filter API: the slot of each operation, and how it converts results.
#include "section_filter_api.h"

#include "call_slot.h"
#include "handshake_fixture.h"

namespace {

using velmora::dvbservice::BrowserDVBService;
using velmora::dvbservice::SectionFilterAPI;

/// Uses the process's one service object.
class TheSectionFilterApi : public AFilter {
protected:
    TheSectionFilterApi() {
        service = boost::shared_ptr<BrowserDVBService>(BrowserDVBService::getInstance(), [](BrowserDVBService*) {});
        recording::reset();
    }
    bool start(const std::string& session) {
        return callSlot<bool, velmora::dtv::SectionFilterClient*, const std::string&, unsigned int,
                        const unsigned char*, const unsigned char*, int>(api, kStartSection, &client, session, 100,
                                                                         match, bits, 3);
    }
    bool stop(const std::string& session) {
        return callSlot<bool, velmora::dtv::SectionFilterClient*, const std::string&>(api, kStopSection, &client,
                                                                                      session);
    }
    int stopPmt(velmora::dtv::SectionFilterClient* of, const std::string& session) {
        return callSlot<int, velmora::dtv::SectionFilterClient*, const std::string&>(api, kStopPmtRequest, of, session);
    }

    static constexpr int kStartPmtRequest = 5;
    static constexpr int kStopPmtRequest = 6;
    static constexpr int kGenerateSessionName = 7;
    static constexpr int kStartSection = 8;
    static constexpr int kStopSection = 9;
    velmora::dtv::DVBSectionInterface* api = SectionFilterAPI::getInstance();
};

}  // namespace

TEST_F(TheSectionFilterApi, ReturnsTrueForOpenedAndForClosed) {
    answerWith(0);
    EXPECT_TRUE(start("a"));
    EXPECT_TRUE(stop("a"));
    EXPECT_FALSE(stop("a")) << "it is closed";
    answerWith(-1);
    EXPECT_FALSE(start("refused"));
    EXPECT_FALSE(stop("refused")) << "the close is refused too";
}

TEST_F(TheSectionFilterApi, KeepsAnUnconfirmedFilter) {
    velmora::dvbservice::handshakeClock = &hurryingSeconds;
    EXPECT_FALSE(start("late"));
    EXPECT_TRUE(recordOf("late"));
    EXPECT_TRUE(service->isRegistered(&client));
}

TEST_F(TheSectionFilterApi, PassesTheCodesOfPmtRequestsThrough) {
    EXPECT_EQ((callSlot<int, velmora::dtv::SectionFilterClient*, const std::string&, unsigned int>(
                  api, kStartPmtRequest, &client, "pmt", 28106)),
              0);
    EXPECT_EQ(recording::sent().back().header.messageId, 0x28671247U);
    EXPECT_EQ(stopPmt(nullptr, "pmt"), -1);
    EXPECT_EQ(stopPmt(&client, ""), -1);
    EXPECT_EQ(stopPmt(&client, "unknown"), -1);
    EXPECT_EQ(stopPmt(&client, "pmt"), 0);
    EXPECT_EQ(recording::sent().back().header.messageId, 0x28671248U);
}

TEST_F(TheSectionFilterApi, HasANameAndGivesSessionNames) {
    callSlot<void>(api, 2);
    callSlot<void>(api, 3);
    EXPECT_EQ(callSlot<std::string>(api, 4), "SectionFilterAPI");
    const auto name = callSlot<std::string>(api, kGenerateSessionName);
    EXPECT_EQ(name.size(), 45U);
    EXPECT_NE(name, callSlot<std::string>(api, kGenerateSessionName));
}

TEST_F(TheSectionFilterApi, PassesAllValuesUnchanged) {
    frame::MsgIds ids;
    service->onBrowserOpenFilterConf(ids, {}, 0xFFFFFFFE, "a", 0);
    EXPECT_TRUE(api->startSection(&client, "a", 0xFFFFFFFE, bits, match, 2));
    EXPECT_EQ(recordOf("a")->pid(), 0xFFFFFFFEU);
    EXPECT_EQ(recordOf("a")->client(), &client);
    EXPECT_THAT(recordOf("a")->mask(), testing::ElementsAre(0xFF, 0x00));
    EXPECT_THAT(recordOf("a")->mask_bits(), testing::ElementsAre(0x42, 0x00));
    EXPECT_EQ(api->startPMTRequest(&client, "b", 0xFFFFFFFF), 0);
    EXPECT_EQ(recordOf("b")->pid(), 0xFFFFFFFFU);
    EXPECT_EQ(recordOf("b")->client(), &client);
    recording::reset();
    EXPECT_EQ(api->stopPMTRequest(&client, "b"), 0);
    EXPECT_FALSE(api->stopSection(&client, "c"));
    const std::vector<std::string> story = logged::story();
    EXPECT_THAT(story, testing::Contains("stopPMTRequest: Stop PMT Filter: " + pointerText(&client) + ", b\n"));
    EXPECT_THAT(story, testing::Contains("stopSection: Invalid Filter Session: c for " + pointerText(&client) + "\n"));
}

TEST_F(TheSectionFilterApi, AddsNoLineOfItsOwn) {
    answerWith(0);
    start("a");
    stop("a");
    stopPmt(&client, "a");
    api->generateSessionName();
    for (const recording::LogLine& line : recording::log()) {
        EXPECT_EQ(line.text.find("section_filter_api"), std::string::npos) << line.text;
    }
}
