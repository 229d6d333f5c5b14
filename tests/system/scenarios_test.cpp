// The examples of scenarios: what a browser sees of each operator's action and of each fault, and that it recovers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "broadcasts.h"
#include "running_scenario.h"

namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

/// The event of a tune to the second service.
const std::string kChanged = R"("event":"OnChannelChanged","started":true,"onid":1,"tsid":1025,"sid":28107)";

class AShellInAScenario : public testing::Test {
protected:
    /// The service, and a shell that prints what arrives.
    void start(const std::string& file = SAMPLE_FILE) {
        service = std::make_unique<ServiceProcess>(file);
        watching = std::make_unique<ChildProcess>(DVBSHELL, std::vector<std::string>{"--json", "watch"}, "watch");
        ASSERT_TRUE(sees("onPMTSectionUpdated"));
        ASSERT_TRUE(eventually([] { return operate({"channels"}).find("28107") != std::string::npos; }));
    }
    /// Starts an example, and waits until the service has begun it.
    void begins(const std::string& name) { begins(name, RunningScenario::exampleFile(name)); }
    /// The same with faults that last until stops().
    void beginsToLast(const std::string& name) { begins(name, RunningScenario::lastingFile(name)); }
    void begins(const std::string& name, const std::string& file) {
        running = std::make_unique<RunningScenario>(*service, name, file);
    }
    void ends() { running->ends(); }
    void stops() { running->stop(); }
    void runs(const std::string& name) {
        begins(name);
        ends();
    }
    /// Runs a command of another shell; its exit code.
    int asks(std::vector<std::string> command) {
        command.insert(command.begin(), "--json");
        ChildProcess shell(DVBSHELL, std::move(command), "shell");
        const int code = shell.wait();
        answer = shell.output();
        return code;
    }
    /// Runs a command of another shell until its output is as expected.
    bool asksUntil(std::vector<std::string> command, const testing::Matcher<const std::string&>& expected) {
        const std::vector<std::string> options = {"--json", "--seconds", "600"};
        command.insert(command.begin(), options.begin(), options.end());
        ChildProcess shell(DVBSHELL, std::move(command), "shell");
        const bool isAsExpected = eventually([&] {
            answer = shell.output();
            return testing::Matches(expected)(answer);
        });
        shell.end(SIGINT);
        return isAsExpected;
    }
    static std::string operate(const std::vector<std::string>& arguments) {
        ChildProcess console(DTVCTL, arguments, "dtvctl");
        console.wait();
        return console.output();
    }
    bool sees(const std::string& text, std::size_t times = 1) const {
        return eventually([&] { return timesSeen(text) >= times; });
    }
    std::size_t timesSeen(const std::string& text) const { return timesIn(watching->output(), text); }
    static std::size_t timesIn(const std::string& all, const std::string& text) {
        std::size_t count = 0;
        for (std::size_t at = all.find(text); at != std::string::npos; at = all.find(text, at + 1)) {
            ++count;
        }
        return count;
    }
    /// Sections come again.
    bool recovers() {
        return eventually([this] { return asks({"sections", "0", "--count", "2", "--seconds", "20"}) == 0; });
    }
    void TearDown() override {
        if (HasFailure() && watching) {
            GTEST_LOG_(INFO) << "watch:\n"
                             << watching->output() << "\nanswer:\n"
                             << answer << "\nlog:\n"
                             << service->log();
        }
    }

    std::unique_ptr<ServiceProcess> service;
    std::unique_ptr<ChildProcess> watching;
    std::unique_ptr<RunningScenario> running;
    std::string answer;
};

}  // namespace

TEST_F(AShellInAScenario, SeesTheOperatorTune) {
    start();
    runs("tune");
    EXPECT_TRUE(sees(kChanged));
}

TEST_F(AShellInAScenario, SeesALayerComeAndGo) {
    start();
    begins("osd");
    EXPECT_TRUE(
        asksUntil({"osd-start", "3"}, ContainsRegex("\"layer\":3,[^\n]*shown[^\n]*\n.*\"layer\":3,[^\n]*hidden")));
    ends();
}

TEST_F(AShellInAScenario, MeetsACaModule) {
    start();
    begins("ca-module");
    EXPECT_TRUE(asksUntil({"drm-message", "5", "19156", "0", "a/b", "hello"}, HasSubstr("<answer/>")));
    ends();
    EXPECT_TRUE(sees(R"("slot":2,"module_status":"inserted")"));
    EXPECT_TRUE(sees(R"("slot":2,"module_status":"removed")"));
}

TEST_F(AShellInAScenario, SeesTheEnginesStatusAndTheEndOfTheTerminals) {
    start();
    runs("engine");
    EXPECT_TRUE(sees(R"("event":"onHbbTVEngineStatusChanged","engine_status":4)"));
    runs("stop-terminals");
    EXPECT_TRUE(sees(R"("event":"onAllTerminalStoped")"));
}

TEST_F(AShellInAScenario, GetsAStreamEventThatTheBroadcastDoesNotHave) {
    tsmake::Multiplex multiplex = kSample;
    multiplex.services[0].streamEvents.events = {{5, "other", "two", 0}};
    std::string error;
    ASSERT_TRUE(tsmake::assignPids(multiplex, error)) << error;
    start(writeBroadcast(multiplex, 4, "events.ts"));
    begins("stream-event");
    EXPECT_TRUE(asksUntil({"stream-events", "28106"}, ContainsRegex("\"event_id\":7,[^\n]*\"data\":\"313A30\"")));
    ends();
}

TEST_F(AShellInAScenario, GetsSectionsAgainWhenTheSignalIsBack) {
    start();
    beginsToLast("signal-lost");
    EXPECT_TRUE(
        eventually([] { return operate({"status"}).find("the signal is lost, by a scenario") != std::string::npos; }));
    stops();
    EXPECT_THAT(operate({"status"}), Not(HasSubstr("by a scenario")));
    runs("signal-lost");
    EXPECT_TRUE(sees(kChanged));
    EXPECT_TRUE(recovers());
}

TEST_F(AShellInAScenario, GetsWhatArrivesOfAnInputThatLosesPackets) {
    start();
    begins("packets-lost");
    EXPECT_TRUE(recovers()) << "most sections arrive";
    ends();
    EXPECT_THAT(operate({"--json", "statistics"}), ContainsRegex("\"continuity_errors\":[1-9]"));
}

TEST_F(AShellInAScenario, GetsNoDamagedSection) {
    start();
    begins("packets-damaged");
    EXPECT_EQ(asks({"sections", "0", "--count", "10", "--seconds", "20"}), 0);
    ends();
    EXPECT_THAT(operate({"--json", "statistics"}), ContainsRegex("\"crc_errors\":[1-9]"));
    EXPECT_TRUE(recovers());
}

TEST_F(AShellInAScenario, GetsNoSectionOfAPidThatIsWithheld) {
    start();
    beginsToLast("pid-withheld");
    EXPECT_EQ(asks({"sections", "0", "--count", "1", "--seconds", "1"}), 1);
    stops();
    EXPECT_TRUE(recovers());
}

TEST_F(AShellInAScenario, SeesTheServiceGoAndComeBack) {
    start();
    beginsToLast("service-stopped");
    EXPECT_TRUE(sees("the DTV service has gone"));
    stops();
    EXPECT_TRUE(sees("the DTV service is there again"));
    EXPECT_TRUE(recovers());
}

TEST_F(AShellInAScenario, IsAnsweredLaterByAFrozenService) {
    start();
    begins("service-frozen");
    EXPECT_TRUE(asksUntil({"pts", "0"}, HasSubstr("onPtsNotify")));
    ends();
    EXPECT_EQ(timesSeen("the DTV service has gone"), 0U);
}

TEST_F(AShellInAScenario, WaitsInVainForAnAnswerThatIsWithheld) {
    start();
    begins("answer-withheld");
    asks({"pts", "0", "--seconds", "1"});
    EXPECT_THAT(answer, Not(HasSubstr("onPtsNotify")));
    ends();
    EXPECT_TRUE(asksUntil({"pts", "0"}, HasSubstr("onPtsNotify")));
}

TEST_F(AShellInAScenario, HearsOfAChannelBehindItsTables) {
    start();
    begins("answer-late");
    EXPECT_TRUE(asksUntil({"tune", "1:1025:28107"}, HasSubstr(kChanged)));
    ends();
    EXPECT_LT(answer.find(R"("event":"onPMTSectionUpdated","onid":1,"tsid":1025,"sid":28107)"), answer.find(kChanged));
}

TEST_F(AShellInAScenario, HearsAnAnswerTwice) {
    start();
    begins("answer-twice");
    EXPECT_TRUE(asksUntil({"tune", "1:1025:28107"},
                          testing::Truly([](const std::string& all) { return timesIn(all, kChanged) == 2; })));
    ends();
}

TEST_F(AShellInAScenario, TunesInVainWhereItsCommandIsDropped) {
    start();
    begins("commands-dropped");
    EXPECT_EQ(asks({"tune", "1:1025:28107", "--seconds", "1"}), 1);
    ends();
    EXPECT_TRUE(asksUntil({"tune", "1:1025:28107"}, HasSubstr(kChanged)));
}

TEST_F(AShellInAScenario, GetsTheSectionsBehindThoseThatAreDropped) {
    start();
    begins("sections-dropped");
    EXPECT_EQ(asks({"sections", "0", "--count", "1", "--seconds", "20"}), 0);
    ends();
    EXPECT_THAT(service->log(), HasSubstr("does not read its sections: 1 dropped so far"));
}

TEST_F(AShellInAScenario, ConnectsAgainWhenItIsCutOff) {
    start();
    const std::size_t before = timesSeen("onPMTSectionUpdated");
    runs("browser-disconnected");
    EXPECT_TRUE(sees("onPMTSectionUpdated", before + 1));
    EXPECT_THAT(service->log(), HasSubstr("browser 1 disconnected"));
    EXPECT_TRUE(recovers());
}

TEST_F(AShellInAScenario, IsInOneFromTheStartOfTheService) {
    service = std::make_unique<ServiceProcess>(
        std::vector<std::string>{SAMPLE_FILE, "--scenario", std::string(EXAMPLES) + "/tune.json"});
    EXPECT_TRUE(eventually(
        [this] { return service->log().find("scenario tune: ended; steps done: 1, failed: 0") != std::string::npos; }));
    EXPECT_THAT(operate({"status"}), HasSubstr("presented    1:1025:28107"));
}

TEST_F(AShellInAScenario, IsSavedByTheEndOfTheOperatorsConsole) {
    start();
    std::ofstream(kRunDirectory + "/long.json")
        << R"({"name":"long","seconds":600,"steps":[{"at":0,"signal-lost":{}}]})";
    ChildProcess console(DTVCTL, {"run", kRunDirectory + "/long.json"}, "run");
    EXPECT_TRUE(eventually([&] { return console.output().find("signal-lost") != std::string::npos; }));
    EXPECT_THAT(operate({"status"}), HasSubstr("scenario     long\n"));
    EXPECT_EQ(console.end(SIGINT), 1);
    EXPECT_THAT(console.output(), HasSubstr("ended: 1 steps done, 0 failed\n"));
    EXPECT_THAT(operate({"status"}), Not(HasSubstr("scenario")));
    EXPECT_TRUE(recovers());
}

TEST_F(AShellInAScenario, IsToldOfAWrongFileByItsPlace) {
    start();
    const std::string path = kRunDirectory + "/wrong.json";
    std::ofstream(path) << R"({"steps":[{"at":0,"tune":{"onid":1,"tsid":2,"sid":70000}}]})";
    EXPECT_EQ(operate({"run", path}),
              "dtvctl: " + path + ": steps[0].tune.sid: 70000 is not a number from 0 to 65535\n");
    EXPECT_EQ(operate({"run", "/nonexistent"}), "dtvctl: /nonexistent: No such file or directory\n");
    ChildProcess wrong(DTVSERVICED, {"--input", SAMPLE_FILE, "--scenario", path}, "wrong");
    EXPECT_EQ(wrong.wait(), 1);
    EXPECT_EQ(wrong.output(), "dtvserviced: " + path + ": steps[0].tune.sid: 70000 is not a number from 0 to 65535\n");
}

TEST_F(AShellInAScenario, LeavesTheServiceItsOrderlyEnd) {
    for (const char* const fault : {"service-stopped", "service-frozen", "signal-lost"}) {
        start();
        std::ofstream(kRunDirectory + "/long.json")
            << R"({"name":"long","steps":[{"at":0,")" << fault << R"(":{"seconds":50}}]})";
        const ChildProcess console(DTVCTL, {"run", kRunDirectory + "/long.json"}, "run");
        ASSERT_TRUE(eventually([&] { return service->log().find("scenario long: started") != std::string::npos; }));
        EXPECT_EQ(service->end(SIGTERM), 0) << fault;
        watching.reset();
    }
}
