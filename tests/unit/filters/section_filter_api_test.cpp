// The section filter API: each operation at its position, and what its results become.
#include "section_filter_api.h"

#include "call_slot.h"
#include "handshake_fixture.h"

namespace {

using velmora::dvbservice::BrowserDVBService;
using velmora::dvbservice::SectionFilterAPI;

/// Its service object is the one of the process.
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

TEST_F(TheSectionFilterApi, MakesTruthOfAnOpenFilterAndOfAClosedOne) {
    answerWith(0);
    EXPECT_TRUE(start("a"));
    EXPECT_TRUE(stop("a"));
    EXPECT_FALSE(stop("a")) << "it is closed";
    answerWith(-1);
    EXPECT_FALSE(start("refused"));
    EXPECT_FALSE(stop("refused")) << "the close is refused too";
}

TEST_F(TheSectionFilterApi, LeavesRecordAndClientOfAFilterThatNobodyConfirms) {
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

TEST_F(TheSectionFilterApi, IsNamedAndNotCountedAndGivesSessionNames) {
    callSlot<void>(api, 2);
    callSlot<void>(api, 3);
    EXPECT_EQ(callSlot<std::string>(api, 4), "SectionFilterAPI");
    const auto name = callSlot<std::string>(api, kGenerateSessionName);
    EXPECT_EQ(name.size(), 45U);
    EXPECT_NE(name, callSlot<std::string>(api, kGenerateSessionName));
}
