// tvbrowser on a recorded session of itself: its two processes are told the same again, and so is the page.
#include <gmock/gmock.h>

#include "object_test.h"
#include "recorded_bus.h"

namespace browser_tests {

namespace {

using testing::ElementsAreArray;
using Lines = std::vector<std::string>;

class AnApplicationOfARecording : public AnObject {
protected:
    /// What a session tells. Its two processes are not in step, so their lines are apart.
    struct Told {
        Lines page;
        Lines set;
    };
    const std::string kRecording = kRunDirectory + "/bus.pcapng";

    Told record() {
        fed = std::make_unique<FedBroadcast>(broadcastOfTheSession());
        service = std::make_unique<ServiceProcess>(fed->input());
        RecordedBus bus(kRecording);
        Told told = session([this] { change(); });
        constexpr std::size_t kProcesses = 2;
        EXPECT_TRUE(bus.hasSeenAllGo(kProcesses)) << bus.text();
        bus.end();
        service.reset();
        return told;
    }
    Told replay() {
        service = std::make_unique<ServiceProcess>(std::vector<std::string>{"--replay", kRecording});
        Told told = session([] {});
        if (HasFailure()) {
            GTEST_LOG_(INFO) << "dtvserviced:\n" << service->log();
        }
        service.reset();
        return told;
    }

private:
    tsmake::Multiplex broadcastOfTheSession() const {
        tsmake::Multiplex broadcast = kSample;
        broadcast.services[0].streamEvents.events = {{6, "goal", "1 : 0", 0},
                                                     {6, "goal", "2 : 0", FedBroadcast::kSecondState}};
        return broadcastWithEverywhere("stream_events.html?session", broadcast);
    }
    /// A run of tvbrowser; `changeBroadcast` when the page waits for it.
    template <typename Change>
    Told session(Change changeBroadcast) {
        browser = std::make_unique<Browser>();
        EXPECT_EQ(reported("turn", 1), "viewer");
        zap();
        EXPECT_EQ(reported("turn", 2), "broadcast");
        changeBroadcast();
        EXPECT_TRUE(browser->reports("event", "goal 3 32203A2030"));
        browser->command("quit");
        EXPECT_EQ(browser->wait(), 0);
        return {browser->reports("event"), linesOfTheSet(browser->output())};
    }
    /// To the next channel, as soon as the set has its list, which it may get later than the page does.
    void zap() {
        const std::string tooEarly = "channel: there is no channel list yet";
        EXPECT_TRUE(eventually([&] {
            const std::size_t before = browser->count(tooEarly);
            press("CHANNEL_UP");
            EXPECT_TRUE(eventually(
                [&] { return browser->count("channel: 1:1025:28107") > 0 || browser->count(tooEarly) > before; }));
            return browser->count(tooEarly) == before;
        }));
    }
    /// Of channels and applications.
    static Lines linesOfTheSet(const std::string& output) {
        Lines lines;
        std::istringstream all(output);
        for (std::string line; std::getline(all, line);) {
            if (line.rfind("channel: 1:", 0) == 0 || line.rfind("application", 0) == 0) {
                lines.push_back(line);
            }
        }
        return lines;
    }
};

TEST_F(AnApplicationOfARecording, IsToldTheSameAgain) {
    const Told first = record();
    EXPECT_THAT(first.page, testing::SizeIs(testing::Gt(9U)));
    EXPECT_THAT(first.set, testing::Contains("channel: 1:1025:28107"));
    const Told again = replay();
    EXPECT_THAT(again.page, ElementsAreArray(first.page));
    EXPECT_THAT(again.set, ElementsAreArray(first.set));
}

}  // namespace

}  // namespace browser_tests
