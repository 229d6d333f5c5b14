// The examples of scenarios, and what becomes of an application meanwhile: it goes on, and the set recovers.
#include <gmock/gmock.h>

#include "object_test.h"
#include "running_scenario.h"

namespace browser_tests {

namespace {

const std::string kConnecting = "PlayStateChange 1";
const std::string kPresenting = "PlayStateChange 2";

std::string changedTo(const std::string& channel) {
    return "ChannelChangeSucceeded ccid:1.1025." + channel;
}

const std::vector<std::string> kGoneAndBack = {"PlayStateChange 1 100", kPresenting};
/// A tune to the second service.
const std::vector<std::string> kSecond = {kConnecting, changedTo("28107"), kPresenting};

class AnApplicationInAScenario : public AnObject {
protected:
    /// Starts the page, with an object that presents.
    void presents(const std::string& page) {
        pageEverywhere(page);
        reported("ready");
    }
    RunningScenario runs(const std::string& example) const {
        return {*service, example, RunningScenario::exampleFile(example)};
    }
    /// A scenario of the test's own.
    RunningScenario step(const std::string& text) const {
        return {*service, "one", RunningScenario::file("one", R"({"name":"one","steps":[)" + text + "]}")};
    }
    /// The remote control changes the channel, and the page is told.
    void goesOn() {
        const std::size_t before = browser->reports("event").size();
        press("CHANNEL_DOWN");
        EXPECT_TRUE(eventually([&] {
            const std::vector<std::string> all = browser->reports("event");
            return all.size() > before && all.back() == kPresenting;
        }));
        EXPECT_EQ(browser->count("application: load"), 1U) << "it has run all the time";
        EXPECT_EQ(browser->count("the web process has ended"), 0U);
    }
};

TEST_F(AnApplicationInAScenario, IsAnsweredByACaModule) {
    pageEverywhere("drm.html?message");
    EXPECT_EQ(reported("before"), "1");
    RunningScenario scenario = runs("ca-module");
    EXPECT_TRUE(browser->reports("result", R"(["open","<answer/>",0])"));
    scenario.ends();
    EXPECT_EQ(reported("status", 1), "0");
    EXPECT_EQ(reported("status", 2), "1") << "it has been removed";
}

TEST_F(AnApplicationInAScenario, GetsAStreamEventThatTheBroadcastDoesNotHave) {
    tsmake::Multiplex broadcast = kSample;
    broadcast.services[0].streamEvents.events = {{5, "kick-off", "of the broadcast", 0}};
    start(broadcastWithEverywhere("stream_events.html?keys", broadcast));
    reported("ready");
    // The filter upon which the event comes may be one of another table that is opened meanwhile.
    EXPECT_TRUE(eventually([this] {
        press("GREEN");
        RunningScenario scenario = runs("stream-event");
        press("RED");
        scenario.ends();
        return eventually([this] { return !browser->reports("stream").empty(); }, std::chrono::seconds(2));
    }));
    EXPECT_EQ(reported("stream"), R"(["StreamEvent","whistle","313A30","1:0","trigger",true])");
}

TEST_F(AnApplicationInAScenario, GoesOnBesideALayerThatItDoesNotFollow) {
    presents("video_broadcast.html?follow");
    step(R"({"at":0,"osd":{"layer":3,"on":true}})").ends();
    goesOn();
}

TEST_F(AnApplicationInAScenario, IsTunedAlthoughTheAnswerIsWithheld) {
    presents("video_broadcast.html?tuneWhenTold");
    RunningScenario scenario =
        step(R"({"upon":"cmdTuneToService","answer-withheld":{"event":"onServiceChanged","times":1}})");
    pages.release("tune");
    scenario.ends();
    EXPECT_EQ(events(3), kSecond) << "its tables have come";
    goesOn();
}

TEST_F(AnApplicationInAScenario, HasTheChannelListBehindSectionsThatAreDropped) {
    writeBroadcast(broadcastWithEverywhere("video_broadcast.html?list"), 20, "broadcast.ts");
    service = std::make_unique<ServiceProcess>(
        std::vector<std::string>{kFile, "--scenario", RunningScenario::exampleFile("sections-dropped")});
    const auto hasLogged = [this](const std::string& text) {
        return eventually([&] { return service->log().find(text) != std::string::npos; });
    };
    ASSERT_TRUE(hasLogged("scenario sections-dropped: started"));
    browser = std::make_unique<Browser>();
    EXPECT_TRUE(hasLogged("scenario sections-dropped: ended; steps done: 1, failed: 0"));
    EXPECT_EQ(reported("types"), "[0,0,0,1]");
}

TEST_F(AnApplicationInAScenario, IsNotToldOfWhatConcernsTheEngine) {
    presents("video_broadcast.html?follow");
    const auto hasHeard = [this](const std::string& text) {
        return eventually([&] { return browser->log().find(text) != std::string::npos; });
    };
    runs("engine").ends();
    EXPECT_TRUE(hasHeard("called, engine status 4."));
    runs("stop-terminals").ends();
    EXPECT_TRUE(hasHeard("onAllTerminalStoped."));
    goesOn();
    EXPECT_EQ(reported("event", 1), kConnecting) << "nothing before it";
}

/// What the page is told while the example runs.
struct Story {
    const char* example;
    bool tunes;  ///< the page does, to the second service
    std::vector<std::string> events;
};

void PrintTo(const Story& story, std::ostream* output) {
    *output << story.example;
}

class AnApplicationInAnExample : public AnApplicationInAScenario, public testing::WithParamInterface<Story> {};

TEST_P(AnApplicationInAnExample, IsToldWhatHappensAndGoesOn) {
    presents("video_broadcast.html?tuneWhenTold");
    RunningScenario scenario = runs(GetParam().example);
    if (GetParam().tunes) {
        pages.release("tune");
    }
    EXPECT_EQ(events(GetParam().events.size()), GetParam().events);
    scenario.ends();
    const std::size_t connections = GetParam().events == kGoneAndBack ? 2 : 1;
    EXPECT_TRUE(eventually([&] { return browser->count("service: connected") == connections; }))
        << "the remote control tunes by a connection of its own";
    goesOn();
}

INSTANTIATE_TEST_SUITE_P(Of, AnApplicationInAnExample,
                         testing::Values(Story{"tune", false, kSecond}, Story{"signal-lost", false, kSecond},
                                         Story{"packets-lost", true, kSecond}, Story{"packets-damaged", true, kSecond},
                                         Story{"pid-withheld", true, kSecond}, Story{"service-frozen", true, kSecond},
                                         Story{"answer-late", true, kSecond}, Story{"answer-twice", true, kSecond},
                                         Story{"commands-dropped", true, {kConnecting}},
                                         Story{"service-stopped", false, kGoneAndBack},
                                         Story{"browser-disconnected", false, kGoneAndBack}),
                         [](const auto& each) {
                             std::string name = each.param.example;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

}  // namespace

}  // namespace browser_tests
