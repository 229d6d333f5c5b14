// A service that replays, without a transport.
#include "replay_service.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "logged.h"
#include "recorded.h"
#include "recording_client.h"

namespace {

using namespace recorded;
using dtvservice::Browser;
using dtvservice::ReplayService;
using nlohmann::json;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class AReplay : public testing::Test {
protected:
    AReplay() { recording::reset(); }

    void replays(const std::vector<bus::Record>& records, std::optional<std::uint32_t> browser = std::nullopt) {
        service.emplace(loop, "bus.pcapng", recordingOf(records),
                        ReplayService::Choice{{true, std::chrono::hours(1)}, browser});
        service->browsers.connect(client);
    }
    void connects(Browser browser) {
        service->commands.browserConnected(peerOf(browser));
        run();
    }
    void leaves(Browser browser) {
        service->commands.browserDisconnected(peerOf(browser));
        run();
    }
    void run() { loop.runUntil(dtvservice::EventLoop::Clock::now()); }
    static frame::TransportInfo peerOf(Browser browser) {
        frame::TransportInfo peer;
        peer.peer = browser;
        return peer;
    }
    static frame::MsgIds from(Browser browser) {
        frame::MsgIds ids;
        ids.peer = browser;
        return ids;
    }
    static bus::Record event(std::uint32_t browser, int number) {
        bus::Record made = message<messages::OnHbbtvEngineStatusChanged>(0, number);
        made.browser = browser;
        return made;
    }
    json ask(const std::string& line) { return json::parse(service->answer(line)()); }

    dtvservice::EventLoop loop;
    RecordingClient client;
    std::optional<ReplayService> service;
};

}  // namespace

TEST_F(AReplay, GivesEachBrowserTheNextRecordedOneAndThenBeginsAgain) {
    replays({event(3, 30), event(8, 80)});
    connects(1);
    connects(2);
    EXPECT_THAT(client.texts(), ElementsAre("onHbbtvEngineStatusChanged(30)", "onHbbtvEngineStatusChanged(80)"));
    EXPECT_THAT(logged::messages(), testing::Not(Contains(HasSubstr("begins again"))));
    connects(3);
    EXPECT_THAT(client.texts(), testing::SizeIs(3));
    EXPECT_EQ(client.texts()[2], "onHbbtvEngineStatusChanged(30)");
    EXPECT_THAT(logged::messages(), Contains("every recorded browser was replayed; the first one begins again\n"));
}

TEST_F(AReplay, KeepsWhatAnotherProcessOfTheBrowserGotBehindACommand) {
    bus::Record tune = message<messages::CmdStartOSDDetection>(0, 3U);
    tune.browser = 3;
    replays({event(3, 30), event(8, 80), tune, event(8, 81), event(3, 31)});
    connects(1);
    connects(2);
    EXPECT_THAT(client.texts(), ElementsAre("onHbbtvEngineStatusChanged(30)", "onHbbtvEngineStatusChanged(80)"));
    frame::MsgIds ids = from(1);
    service->commands.cmdStartOSDDetection(ids, {}, 3);
    run();
    EXPECT_THAT(client.texts(), testing::SizeIs(4));
    EXPECT_THAT(client.texts(), Contains("onHbbtvEngineStatusChanged(81)"));
}

TEST_F(AReplay, DoesNotWaitForAProcessThatHasGone) {
    bus::Record tune = message<messages::CmdStartOSDDetection>(0, 3U);
    tune.browser = 3;
    replays({event(3, 30), event(8, 80), tune, event(8, 81), event(3, 31)});
    connects(1);
    connects(2);
    leaves(1);
    EXPECT_THAT(client.texts(), Contains("onHbbtvEngineStatusChanged(81)"));
}

TEST_F(AReplay, GivesEveryBrowserTheChosenOne) {
    replays({event(3, 30), event(8, 80)}, 8);
    connects(1);
    connects(2);
    EXPECT_THAT(client.texts(), ElementsAre("onHbbtvEngineStatusChanged(80)", "onHbbtvEngineStatusChanged(80)"));
}

TEST_F(AReplay, GoesOnWithTheBrowsersCommands) {
    replays({event(1, 1), message<messages::CmdStartOSDDetection>(0, 3U), event(1, 2)});
    connects(7);
    EXPECT_THAT(client.texts(), testing::SizeIs(1));
    frame::MsgIds ids = from(7);
    service->commands.cmdStartOSDDetection(ids, {}, 3);
    run();
    EXPECT_THAT(client.texts(), testing::SizeIs(2));
    EXPECT_THAT(logged::messages(), Contains("browser 7: the recording is at its end\n"));
}

TEST_F(AReplay, AnswersWhatABrowserWaitsForAsAServiceThatHasNothing) {
    replays({event(1, 1)});
    connects(7);
    frame::MsgIds ids = from(7);
    service->commands.cmdFilterOpen(ids, {}, "one", 18, {});
    service->commands.cmdFilterClose(ids, {}, "one");
    service->commands.cmdSetAudioSource(ids, {}, 5, "broadcast");
    service->commands.cmdSendPtsRequest(ids, {}, 0);
    run();
    EXPECT_THAT(client.texts(),
                ElementsAre("onHbbtvEngineStatusChanged(1)", "onBrowserOpenFilterConf(18, 3:6F6E65, 0)",
                            "onFilterOpened(3:6F6E65, 3:6F6E65)", "onBrowserOCloseFilterConf(3:6F6E65, 0)",
                            "onFilterClosed(3:6F6E65)", "onSetAudioSourceFinished(5, 0)"));
    EXPECT_THAT(logged::messages(), Contains("browser 7 sends cmdSendPtsRequest, which the recording does not have, at "
                                             "the end of the recording\n"));
}

TEST_F(AReplay, KeepsNothingOfABrowserThatHasGone) {
    replays({event(1, 1), message<messages::CmdStartOSDDetection>(0, 3U), event(1, 2)});
    connects(7);
    leaves(7);
    EXPECT_THAT(ask(R"({"command":"status"})")["browsers"], IsEmpty());
    frame::MsgIds ids = from(7);
    service->commands.cmdStartOSDDetection(ids, {}, 3);
    run();
    EXPECT_THAT(client.texts(), testing::SizeIs(1));
}

TEST_F(AReplay, TellsItsOperatorWhereItIs) {
    replays({event(9, 1), message<messages::CmdStartOSDDetection>(0, 3U)});
    EXPECT_THAT(ask(R"({"command":"status"})")["replay"]["replayed_browsers"], IsEmpty());
    bus::Record command = message<messages::CmdStartOSDDetection>(0, 3U);
    command.browser = 9;
    replays({event(9, 1), command});
    connects(7);
    const json status = ask(R"({"command":"status"})");
    EXPECT_EQ(status["ok"], true);
    EXPECT_EQ(status["browsers"], json::array({7}));
    EXPECT_EQ(status["replay"], json::parse(R"({"file":"bus.pcapng","fast":true,"replayed_browsers":[
        {"browser":7,"recorded_browser":9,"replayed_records":1,"records":2}]})"));
}

TEST_F(AReplay, TakesNoOtherRequestOfItsOperator) {
    replays({event(1, 1)});
    for (const char* const command : {"tune", "osd", "channels", "statistics", "epg", "stop-terminals"}) {
        EXPECT_EQ(ask(json({{"command", command}}).dump()),
                  json({{"ok", false}, {"error", "a replay takes no " + std::string(command)}}));
    }
    EXPECT_EQ(ask("[]")["error"], "a request is a JSON object in one line");
    EXPECT_EQ(ask("{}")["error"], "command is missing");
}

TEST_F(AReplay, ShowsItselfToThoseWhoWatchTheBus) {
    replays({event(1, 1), refusal<messages::CmdFilterOpen>(0, "no queue"), section(0, "one", "bytes")});
    const std::optional<dtvservice::BusTap::Monitor> monitor = service->tap.join();
    ASSERT_TRUE(monitor);
    connects(7);
    bus::PcapngReader reader;
    reader.add(service->tap.take(*monitor));
    bus::Record seen;
    std::string problem;
    std::vector<std::string> kinds;
    while (reader.take(seen, problem)) {
        EXPECT_EQ(seen.browser, 7U);
        kinds.emplace_back(nameOf(seen.kind));
    }
    EXPECT_THAT(kinds, ElementsAre("connected", "message", "refused", "section_dropped"))
        << "this browser has no section queue";
}
