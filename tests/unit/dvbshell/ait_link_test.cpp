// AitLink with a fake AIT catcher.
#include "ait_link.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "captured_output.h"
#include "json_printer.h"
#include "tables.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

const tsmake::Multiplex kSample = tsmake::sampleMultiplex();
std::vector<std::string> calls;

int noteChannel(velmora::dvbservice::BrowserAITCatcher*, std::uint16_t first, std::uint16_t onid, std::uint16_t tsid,
                std::uint16_t sid) {
    calls.push_back("channel " + std::to_string(first) + " " + std::to_string(onid) + ":" + std::to_string(tsid) + ":" +
                    std::to_string(sid));
    return 0;
}

int noteAit(velmora::dvbservice::BrowserAITCatcher*, std::string section) {
    calls.push_back("ait " + section);
    return 0;
}

class PlayedInterface : public velmora::dtv::DVBAITSectionInterface {
public:
    velmora::dtv::AITSectionClient* client = nullptr;

    void AddRef() override {}
    void Release() override {}
    std::string name() override { return "DvbAITAPI"; }
    bool registerClient(velmora::dtv::AITSectionClient* newClient) override {
        client = newClient;
        return true;
    }
    bool unRegisterClient(velmora::dtv::AITSectionClient*) override { return true; }
    bool getCurrentChannelAIT(velmora::dtv::AITSectionClient* asker, std::uint16_t onId, std::uint16_t tsId,
                              std::uint16_t sId) override {
        calls.push_back(std::string("replay ") + (asker == client ? "" : "of another client ") + std::to_string(onId) +
                        ":" + std::to_string(tsId) + ":" + std::to_string(sId));
        return true;
    }
};

class AnAitLink : public testing::Test {
protected:
    AnAitLink() { calls.clear(); }

    PlayedInterface ait;
    dvbshell::EventQueue queue;
    dvbshell::AitLink link{dvbshell::AitCatcher{nullptr, noteChannel, noteAit}, ait, queue};
    std::shared_ptr<velmora::dtv::DVBServiceListener> listener = dvbshell::makeListener(queue, &link);
};

}  // namespace

TEST_F(AnAitLink, PassesChannelsAndSectionsToTheCatcher) {
    listener->OnChannelChanged(true, 1, 2, 3);
    listener->onAITSectionUpdated(1, 2, 3, "one");
    listener->onAITSectionUpdated(1, 2, 3, "two");
    listener->OnChannelChanged(false, 1, 2, 3);
    EXPECT_THAT(calls, ElementsAre("channel 0 1:2:3", "ait one", "ait two"));
}

TEST_F(AnAitLink, NamesTheChannelOfAnUnannouncedAit) {
    listener->onAITSectionUpdated(1, 2, 3, "found on the air");
    listener->onAITSectionUpdated(1, 2, 4, "of another");
    listener->onAITSectionUpdated(1, 2, 4, "its second");
    EXPECT_THAT(calls, ElementsAre("channel 0 1:2:3", "ait found on the air", "channel 0 1:2:4", "ait of another",
                                   "ait its second"));
}

TEST_F(AnAitLink, LeavesOutASectionThatCameBeforeItsChannel) {
    listener->onAITSectionUpdated(0, 0, 0, "too early");
    listener->onAITSectionUpdated(1, 2, 3, "behind its channel");
    EXPECT_THAT(calls, ElementsAre("channel 0 1:2:3", "ait behind its channel"));
}

TEST_F(AnAitLink, MakesEventsOfWhatTheCatcherHandsOn) {
    const tsmake::Section section = tsmake::aitSection(kSample.services[0]);
    ait.client->onCurrentChannelAIT(1, 1025, 28106, section);
    ait.client->onCurrentChannelAIT(1, 1025, 28106, {});
    CapturedOutput output;
    dvbshell::Printer printer(output.file());
    printer.print(*queue.take(dvbshell::Clock::now()), "");
    printer.print(*queue.take(dvbshell::Clock::now()), "");
    EXPECT_THAT(
        output.text(),
        HasSubstr("apps     1:1025:28106  application_type 0x0010, version 1, section 0/0\n"
                  "                    organisation_id 400 (0x190), application_id 1 (0x1)  AUTOSTART  Red Button\n"));
    EXPECT_THAT(output.text(),
                HasSubstr("[application_profile 0x0000, version.major 1, version.minor 2, version.micro 1]"));
    EXPECT_THAT(output.text(), HasSubstr("[ISO_639_language_code eng, application_name Media Library]"));
    EXPECT_THAT(output.text(), HasSubstr("apps     1:1025:28106  this section has not come\n"));
}

TEST_F(AnAitLink, GivesJsonTheWholeTree) {
    ait.client->onCurrentChannelAIT(1, 1025, 28107, tsmake::aitSection(kSample.services[1]));
    CapturedOutput output;
    dvbshell::JsonPrinter printer(output.file());
    printer.print(*queue.take(dvbshell::Clock::now()), "");
    for (const char* const expected :
         {R"("event":"onCurrentChannelAIT")", R"("sid":28107)", R"("application_control_code":1)",
          R"("URLs":[{"URL_base":"https://zwei.example/hbbtv/"}])", R"("initial_path":"start.html")"}) {
        EXPECT_THAT(output.text(), HasSubstr(expected));
    }
}

TEST_F(AnAitLink, ReplaysToItself) {
    EXPECT_TRUE(link.replay(1, 2, 3));
    EXPECT_THAT(calls, ElementsAre("replay 1:2:3"));
}
