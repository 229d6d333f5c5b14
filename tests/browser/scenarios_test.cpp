// The examples of scenarios, and what becomes of an application meanwhile: it goes on, and the set recovers.
#include <gmock/gmock.h>

#include "object_test.h"

namespace browser_tests {

namespace {

class AnApplicationInAScenario : public AnObject {
protected:
    static std::vector<std::string> commandOf(const std::string& example) {
        return {"run", std::string(EXAMPLES) + "/" + example + ".json"};
    }
    /// Runs an example while `act` is done.
    template <typename Act>
    void runs(const std::string& example, Act act) {
        ChildProcess console(DTVCTL, commandOf(example), "run");
        ASSERT_TRUE(
            eventually([&] { return service->log().find("scenario " + example + ": started") != std::string::npos; }));
        act();
        EXPECT_EQ(console.wait(), 0) << console.output();
    }
    /// The application gets a key.
    bool goesOn() {
        const std::size_t before = browser->reports("key").size();
        press("RED");
        return eventually([&] { return browser->reports("key").size() > before; });
    }
    /// The remote control tunes to the next channel, again and again until the service does it.
    bool tunes() {
        const std::size_t before = browser->count("channel: 1:1025:");
        return eventually([&] {
            press("CHANNEL_UP");
            return eventually([&] { return browser->count("channel: 1:1025:") > before; }, std::chrono::seconds(1));
        });
    }
};

TEST_F(AnApplicationInAScenario, OutlivesWhatAnOperatorOrAFaultDoes) {
    pageEverywhere("life.html?first");
    reported("running");
    for (const char* const example :
         {"tune", "engine", "stop-terminals", "signal-lost", "packets-lost", "packets-damaged", "pid-withheld",
          "service-frozen", "browser-disconnected", "service-stopped"}) {
        runs(example, [] {});
        EXPECT_TRUE(goesOn()) << example;
        EXPECT_TRUE(tunes()) << example;
    }
    EXPECT_EQ(browser->count("application: load"), 1U) << "it has run all the time";
}

TEST_F(AnApplicationInAScenario, TunesAlthoughAnswersComeLateOrTwiceOrNot) {
    pageEverywhere("life.html?first");
    reported("running");
    for (const char* const example : {"answer-late", "answer-twice", "commands-dropped"}) {
        runs(example, [this] { press("CHANNEL_UP"); });
        EXPECT_TRUE(tunes()) << example;
        EXPECT_TRUE(goesOn()) << example;
    }
    EXPECT_EQ(browser->count("application: load"), 1U);
}

TEST_F(AnApplicationInAScenario, IsAnsweredByACaModule) {
    pageEverywhere("drm.html?message");
    EXPECT_EQ(reported("before"), "1");
    runs("ca-module", [] {});
    EXPECT_TRUE(browser->reports("result", R"(["open","<answer/>",0])"));
}

TEST_F(AnApplicationInAScenario, GetsAStreamEventOfTheOperator) {
    tsmake::Multiplex broadcast = kSample;
    broadcast.services[0].streamEvents.events = {{5, "kick-off", "of the broadcast", 0}};
    start(broadcastWithEverywhere("stream_events.html?description", broadcast));
    EXPECT_TRUE(eventually([&] {
        operate({"stream-event", "6", "1:0"});
        const std::vector<std::string> events = browser->reports("stream");
        return std::find(events.begin(), events.end(), R"(["StreamEvent","goal","313A30","1:0","trigger",true])") !=
               events.end();
    }));
}

}  // namespace

}  // namespace browser_tests
