// The whole library in a process whose global locale groups digits.
#include <locale>

#include "browser_AIT_catcher.h"
#include "dvbaitsection_apis.h"
#include "section_filter_api.h"
#include "service_fixture.h"
#include "session_name.h"

namespace {

using velmora::dvbservice::BrowserAITCatcher;
using velmora::dvbservice::DvbAITSectionAPI;

/// Separates groups of three digits with a dot, as in 28.106.
class Grouping final : public std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

class AGroupingLocale : public AServiceObject {
protected:
    ~AGroupingLocale() override { std::locale::global(before); }

    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
};

class KeepingIdsClient final : public velmora::dtv::AITSectionClient {
public:
    std::vector<int> ids;
    void onCurrentChannelAIT(std::uint16_t onId, std::uint16_t tsId, std::uint16_t sId,
                             const std::vector<std::uint8_t>&) override {
        ids = {onId, tsId, sId};
    }
};

}  // namespace

TEST_F(AGroupingLocale, LeavesTheAitCatchersKeysAlone) {
    BrowserAITCatcher* const catcher = BrowserAITCatcher::getInstance();
    EXPECT_EQ(catcher->convertToCCId(1, 1025, 28106), "1:1025:28106");
    KeepingIdsClient client;
    DvbAITSectionAPI::getInstance()->registerClient(&client);
    catcher->updateCurrentChannelInfo(0, 1, 1025, 28106);
    catcher->updateAIT(std::string("\x74\xB0\x0D\x00\x10\xC3\x00\x00\x00\x00\x00\x00\x00\x00\x00\x01", 16));
    EXPECT_THAT(client.ids, testing::ElementsAre(1, 1025, 28106));
    DvbAITSectionAPI::getInstance()->unRegisterClient(nullptr);
}

TEST_F(AGroupingLocale, IsReadAndWrittenByTheChannelsTexts) {
    for (const char* const text : {"1:1025:28106", "1:1.025:28.106"}) {
        service->updateCurrentChannelInfo(text);
        int onid = 0;
        int tsid = 0;
        int sid = 0;
        EXPECT_EQ(service->getCurrentChannelInfo(onid, tsid, sid), 0);
        EXPECT_EQ(onid, 1);
        EXPECT_EQ(tsid, 1025);
        EXPECT_EQ(sid, 28106);
        EXPECT_EQ(service->getCurrentCCID(), "ccid:1:1.025:28.106");
    }
}

TEST_F(AGroupingLocale, LeavesNamesAndLinesAlone) {
    EXPECT_THAT(service->generateSessionName(), testing::MatchesRegex("[0-9A-F]{8}(-[0-9A-F]+)+"));
    service->tuneToService(1, 1000, 1025, 28106, 0);
    service->connectCa(1234567);
    EXPECT_THAT(lines(), testing::ElementsAre(
                             testing::Field(&recording::LogLine::message, "TunerToService:{1,1000:1025:28106}\n"),
                             testing::Field(&recording::LogLine::message, "connect CA, session is 1234567\n")));
}
