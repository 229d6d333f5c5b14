// What scenarios do to a running set: events, commands and packets on their way.
#include "eventually.h"
#include "running_set.h"
#include "scenarios_room.h"

namespace {

using dtvservice::Commands;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class ADisturbedSet : public ARunningSet {
protected:
    ADisturbedSet() {
        play(sample);
        join(1);
        join(2);
        heard.take(1);
        heard.take(2);
    }
    std::string ask(const std::string& request) { return core.requests.answer(request); }
    /// Starts a scenario, and does what is due at once.
    void runs(const std::string& text) {
        nlohmann::json request = {{"command", "scenario"}, {"text", text}};
        const std::string answer = ask(request.dump());
        EXPECT_THAT(answer, HasSubstr("\"ok\":true")) << answer;
        settle();
    }
    void settle() { loop.runUntil(dtvservice::EventLoop::Clock::now()); }
    void asksForTheSerialNumber(dtvservice::Browser browser) {
        sends(browser, &Commands::cmdVodGetMaxdomeSecureSerialNumber, std::string());
    }
    std::string progress() { return ask(R"({"command":"scenario-progress","from":0})"); }
};

constexpr const char* kSerialNumber = "onVodMaxdomeSecureSerialNumber";

}  // namespace

TEST_F(ADisturbedSet, WithholdsAnAnswerOfTheBrowserThatAsked) {
    runs(R"({"steps":[{"upon":"cmdVodGetMaxdomeSecureSerialNumber","answer-withheld":
             {"event":"onVodMaxdomeSecureSerialNumber","times":1}}]})");
    asksForTheSerialNumber(1);
    EXPECT_THAT(heard.take(1), IsEmpty());
    asksForTheSerialNumber(1);
    EXPECT_THAT(heard.take(1), hears(kSerialNumber)) << "it was for one";
    EXPECT_THAT(progress(), HasSubstr("\"running\":false"));
}

TEST_F(ADisturbedSet, ShowsAWithheldAnswerToThoseWhoWatchTheBus) {
    const auto monitor = core.tap.join();
    runs(R"({"steps":[{"at":0,"answer-withheld":{"event":"onHbbtvEngineStatusChanged","times":1}}]})");
    ask(R"({"command":"engine","engine_status":1})");
    EXPECT_THAT(core.tap.take(*monitor), HasSubstr("withheld by a scenario"));
}

TEST_F(ADisturbedSet, SendsALateAnswerBehindOthersWithItsValues) {
    runs(R"({"steps":[{"at":0,"answer-late":{"event":"onEitDataChange","by":0.05,"times":2,"browser":1}}]})");
    sends(1, &Commands::cmdSendPMTCache);
    sends(2, &Commands::cmdSendPMTCache);
    Texts expected;
    for (const std::string& text : heard.take(2)) {
        if (text.rfind("onEitDataChange", 0) == 0) {
            expected.push_back(text);
        }
    }
    ASSERT_EQ(expected.size(), 2U);
    loop.runUntil(dtvservice::EventLoop::Clock::now() + std::chrono::milliseconds(60));
    const Texts texts = heard.take(1);
    ASSERT_GT(texts.size(), 2U);
    EXPECT_THAT(Texts(texts.begin(), texts.end() - 2), Not(hears("onEitDataChange")));
    EXPECT_EQ(Texts(texts.end() - 2, texts.end()), expected) << "in their order";
}

TEST_F(ADisturbedSet, ForgetsALateAnswerToABrowserThatHasGone) {
    runs(R"({"steps":[{"at":0,"answer-late":{"event":"onHbbtvEngineStatusChanged","by":0.01,"times":2}}]})");
    ask(R"({"command":"engine","engine_status":1})");
    frame::TransportInfo peer;
    peer.peer = 1;
    core.commands.browserDisconnected(peer);
    loop.runUntil(dtvservice::EventLoop::Clock::now() + std::chrono::milliseconds(20));
    EXPECT_THAT(heard.take(1), IsEmpty());
    EXPECT_THAT(heard.take(2), hears("onHbbtvEngineStatusChanged"));
}

TEST_F(ADisturbedSet, SendsAnAnswerTwice) {
    runs(R"({"steps":[{"at":0,"answer-twice":{"event":"onHbbtvEngineStatusChanged","browser":2,"times":1}}]})");
    ask(R"({"command":"engine","engine_status":1})");
    EXPECT_EQ(heard.take(1).size(), 1U);
    EXPECT_EQ(heard.take(2).size(), 2U);
}

TEST_F(ADisturbedSet, DropsCommands) {
    runs(R"({"steps":[{"at":0,"commands-dropped":{"operation":"cmdVodGetMaxdomeSecureSerialNumber","times":1}}]})");
    sends(1, &Commands::cmdTriggerServiceInfoAcquire);
    EXPECT_THAT(heard.take(1), hears("onAcquireDtvServiceInfo"));
    asksForTheSerialNumber(1);
    EXPECT_THAT(heard.take(1), IsEmpty());
    asksForTheSerialNumber(1);
    EXPECT_THAT(heard.take(1), hears(kSerialNumber));
}

TEST_F(ADisturbedSet, ActsJustBeforeOrBehindACommand) {
    runs(R"({"steps":[{"upon":"cmdVodGetMaxdomeSecureSerialNumber","engine":{"engine_status":1}},
                      {"upon":"cmdVodGetMaxdomeSecureSerialNumber","after":0,"engine":{"engine_status":2}}]})");
    asksForTheSerialNumber(1);
    settle();
    EXPECT_THAT(heard.take(1), ElementsAre("onHbbtvEngineStatusChanged(1)", testing::StartsWith(kSerialNumber),
                                           "onHbbtvEngineStatusChanged(2)"));
}

TEST_F(ADisturbedSet, LosesItsSignalAndGetsItBack) {
    const std::uint64_t before = demux->packets();
    runs(R"({"seconds":100,"steps":[{"at":0,"signal-lost":{"input":1}}]})");
    play(sample);
    EXPECT_EQ(demux->packets(), before);
    EXPECT_THAT(ask(R"({"command":"status"})"), HasSubstr(R"("reason":"the signal is lost, by a scenario")"));
    EXPECT_THAT(ask(R"({"command":"status"})"), HasSubstr(R"("scenario":"scenario")"));
    EXPECT_THAT(ask(R"({"command":"scenario-stop"})"), HasSubstr("\"changed\":true"));
    play(sample);
    EXPECT_GT(demux->packets(), before);
    EXPECT_THAT(ask(R"({"command":"status"})"), Not(HasSubstr("by a scenario")));
}

TEST_F(ADisturbedSet, KeepsASignalLostThatTwoFaultsHaveTaken) {
    runs(R"({"seconds":100,"steps":[{"at":0,"signal-lost":{}},{"at":0,"signal-lost":{"seconds":0}}]})");
    settle();
    EXPECT_THAT(ask(R"({"command":"status"})"), HasSubstr("by a scenario"));
}

TEST_F(ADisturbedSet, LosesAndDamagesPackets) {
    runs(R"({"seconds":100,"steps":[{"at":0,"packets-damaged":{"percent":50,"seed":5}}]})");
    play(sample);
    EXPECT_GT(demux->total().crcErrors, 10U);
    ask(R"({"command":"scenario-stop"})");
    const std::uint64_t errors = demux->total().continuityErrors;
    runs(R"({"seconds":100,"steps":[{"at":0,"packets-lost":{"percent":10}}]})");
    play(sample);
    EXPECT_GT(demux->total().continuityErrors, errors + 10);
}

TEST_F(ADisturbedSet, UndoesOneFaultByItsName) {
    runs(R"({"seconds":100,"steps":[{"at":0,"pid-withheld":{"pid":0}},{"at":0,"pid-withheld":{"pid":17}},
             {"at":0,"answer-withheld":{}},{"at":0,"undo":{"fault":"pid-withheld"}},{"at":0,"undo":{"fault":"pid-withheld"}}]})");
    const std::uint64_t before = demux->countsOf(0).packets;
    play(sample);
    EXPECT_GT(demux->countsOf(0).packets, before);
    ask(R"({"command":"engine","engine_status":1})");
    EXPECT_THAT(heard.take(1), IsEmpty()) << "the other fault stays";
    EXPECT_THAT(progress(), HasSubstr("no such fault lasts"));
    EXPECT_THAT(progress(), HasSubstr("\"steps_failed\":1"));
}

TEST_F(ADisturbedSet, DoesWhatAnOperatorDoesAndTellsWhyNot) {
    runs(R"({"name":"operated","steps":[{"at":0,"tune":{"onid":1,"tsid":1025,"sid":28107}},
             {"at":0,"tune":{"onid":1,"tsid":1025,"sid":9}},{"at":0,"stop-terminals":{}}]})");
    settle();
    const Texts texts = heard.take(1);
    EXPECT_THAT(texts, hears("onServiceChanged"));
    EXPECT_EQ(texts.back(), "onAllTerminalStoped()");
    EXPECT_THAT(progress(), HasSubstr("\"error\":\"no service 1:1025:9 in the channel list\""));
    EXPECT_THAT(progress(), HasSubstr("\"steps_failed\":1"));
}

TEST_F(ADisturbedSet, RefusesASecondScenarioWhileOneRuns) {
    runs(R"({"name":"first","seconds":100,"steps":[{"at":0,"stop-terminals":{}}]})");
    EXPECT_THAT(ask(R"({"command":"scenario","text":"{}"})"),
                HasSubstr("the scenario first is running; it must end first"));
    ask(R"({"command":"scenario-stop"})");
    EXPECT_THAT(ask(R"({"command":"scenario","text":"{}"})"), HasSubstr("steps: is missing"));
}

TEST_F(ADisturbedSet, CannotStopAServiceOrCutABrowserOffWhereThePlatformCannot) {
    runs(R"({"steps":[{"at":0,"service-stopped":{"seconds":1}},{"at":0,"browser-disconnected":{}}]})");
    EXPECT_THAT(progress(), HasSubstr("this service has no transport to stop"));
    EXPECT_THAT(progress(), HasSubstr("this platform cannot end a connection"));
}

TEST_F(ADisturbedSet, TellsOnceThatBrowsersCannotConnectAgainAndTriesOn) {
    constexpr int kTries = 3;
    int tries = 0;
    dtvservice::ServiceFaults faults(core, {[] {}, [&tries] { return ++tries == kTries; }}, [](dtvservice::FaultId) {});
    std::string error;
    const auto scenario = dtvservice::parseScenario(R"({"steps":[{"at":0,"service-stopped":{"seconds":1}}]})", error);
    ASSERT_TRUE(scenario) << error;
    EXPECT_EQ(faults.begin(scenario->steps[0], 0, 1), "");
    faults.undo(1);
    EXPECT_TRUE(eventually([&] {
        settle();
        return tries == kTries;
    }));
    EXPECT_THAT(logged::messages(), Contains("browsers cannot connect again yet; trying every second\n").Times(1));
    EXPECT_THAT(logged::messages(), Contains("browsers can connect again\n").Times(1));
}

TEST_F(ADisturbedSet, DoesNothingWhileItIsFrozen) {
    const auto before = dtvservice::EventLoop::Clock::now();
    runs(R"({"steps":[{"at":0,"service-frozen":{"seconds":0.05}}]})");
    EXPECT_GE(dtvservice::EventLoop::Clock::now() - before, std::chrono::milliseconds(50));
}

TEST(AScenarioOfTheCommandLine, StartsWithTheFirstPresentedService) {
    recording::reset();
    dtvservice::EventLoop loop;
    HeardByBrowsers heard;
    dtvservice::Core core{loop};
    std::string error;
    dtvservice::Settings settings;
    settings.scenario =
        dtvservice::parseScenario(R"({"steps":[{"at":0,"tune":{"onid":1,"tsid":1025,"sid":28108}}]})", error);
    dtvservice::addRooms(core, settings);
    core.browsers.connect(heard);
    broadcast::Demux& demux = core.addMultiplex().demux;
    loop.runUntil(dtvservice::EventLoop::Clock::now());
    EXPECT_EQ(core.presented(), nullptr);
    tsmake::writeMultiplex(tsmake::sampleMultiplex(), 2,
                           [&](const std::uint8_t* packet) { demux.feed(broadcast::TsPacket{packet}); });
    EXPECT_EQ(core.presented()->serviceId, 28106);
    loop.runUntil(dtvservice::EventLoop::Clock::now());
    EXPECT_EQ(core.presented()->serviceId, 28108);
}
