// Stream events in pages: by an XML description and by an object of the carousel.
#include <gmock/gmock.h>

#include "changed_sections.h"
#include "object_test.h"

namespace browser_tests {

namespace {

class StreamEvents : public AnObject {
protected:
    /// Event 6, "goal", whose data change with the broadcast's second state.
    tsmake::Multiplex broadcastFor(const std::string& what) const {
        tsmake::Multiplex broadcast = kSample;
        tsmake::StreamEvents& events = broadcast.services[0].streamEvents;
        events.events = {{6, "goal", "1 : \xC3\xA4\xFF", 0}, {6, "goal", "2 : 0", FedBroadcast::kSecondState}};
        events.object = "events/goals";
        return broadcastWithEverywhere("stream_events.html?" + what, broadcast);
    }
    void run(const std::string& what) { start(broadcastFor(what)); }
    /// The first state until change().
    void runFed(const std::string& what) { startFed(broadcastFor(what)); }
};

const std::string kFirst = "[\"StreamEvent\",\"goal\",\"31203A20C3A4FF\",\"1 : \u00e4\",\"trigger\",true]";
const std::string kSecond = R"(["StreamEvent","goal","32203A2030","2 : 0","trigger",true])";

TEST_F(StreamEvents, ComeByADescription) {
    runFed("description");
    EXPECT_TRUE(browser->reports("stream", kFirst));
    change();
    EXPECT_TRUE(browser->reports("stream", kSecond));
}

TEST_F(StreamEvents, ComeByAnObjectOfTheCarousel) {
    runFed("object");
    EXPECT_TRUE(browser->reports("stream", kFirst));
    change();
    EXPECT_TRUE(browser->reports("stream", kSecond));
}

TEST_F(StreamEvents, ComeByEachKindOfDvbUrl) {
    tsmake::Multiplex broadcast = broadcastFor("urls");
    tsmake::Ait& ait = broadcast.services[0].ait;
    // An application of its own section, whose transport becomes a carousel on the component with tag 8.
    tsmake::Application other = application("other.html", 2, kPresent);
    other.urlBase = "\x08";
    ait.versions[0].applications.push_back(other);
    ait.sections = 2;
    constexpr std::uint8_t kAit = 0x74;
    startPackets(
        withChangedSections(fileText(writeBroadcast(broadcast, 20, "plain.ts")), kAit, [](std::string& section) {
            replaceIn(section, std::string("\0\3\1\1\x08", 5), std::string("\0\1\1\1\x08", 5));
        }));
    for (const char* const url :
         {"dvb://1..6dca/events/goals", "dvb://1.401.6dca.8/events/goals", "dvb://current.ait/190.2/events/goals"}) {
        EXPECT_TRUE(browser->reports("by", "[\"" + std::string(url) + "\",\"trigger\",\"32203A2030\"]")) << url;
    }
    EXPECT_TRUE(browser->reports("by", R"(["dvb://current.ait/190.1/events/goals","error",""])"))
        << "its files are on a server";
}

TEST_F(StreamEvents, AreNotToldToAListenerThatWasRemoved) {
    runFed("remove");
    EXPECT_TRUE(browser->reports("stream", kFirst));
    change();
    EXPECT_TRUE(browser->reports("stream", kSecond));
    EXPECT_TRUE(browser->reports("removed").empty());
}

TEST_F(StreamEvents, ThatDoNotExistAreErrors) {
    run("errors");
    EXPECT_EQ(reported("error", 1), R"(["events.xml","none","error",""])");
    EXPECT_EQ(reported("error", 2), R"(["missing.xml","goal","error",""])");
    EXPECT_EQ(reported("error", 3), R"(["report.js","goal","error",""])");
    EXPECT_EQ(reported("error", 4), R"(["events.xml","noTag","error",""])");
    EXPECT_EQ(reported("error", 5), R"(["dvb://1.401.6dcb/events/goals","goal","error",""])");
    EXPECT_EQ(reported("error", 6), R"(["http://[","goal","error",""])");
}

TEST_F(StreamEvents, ComeBackWithTheDtvService) {
    run("description");
    reported("stream");
    service.reset();
    ASSERT_TRUE(says("service: gone"));
    const std::size_t before = browser->reports("stream").size();
    service = std::make_unique<ServiceProcess>(kRunDirectory + "/broadcast.ts");
    EXPECT_THAT(reported("stream", before + 1), testing::AnyOf(kFirst, kSecond));
}

TEST_F(StreamEvents, EndWithTheChannel) {
    runFed("change");
    const std::string before = reported("firstsBeforeTheTune");
    EXPECT_EQ(reported("second", 1), "31203A20C3A4FF");
    change();
    EXPECT_EQ(reported("second", 2), "32203A2030");
    EXPECT_EQ(std::to_string(browser->reports("first").size()), before);
}

}  // namespace

}  // namespace browser_tests
