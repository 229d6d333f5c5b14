// Stream events, selected by identifier or by their name in a carousel's stream event object.
#include "fed_input.h"

namespace {

class AStreamEventListener : public AnInputThatComesByItself {
protected:
    AStreamEventListener() : process("udp://127.0.0.1:" + std::to_string(port)) {
        tsmake::Service& first = multiplex.services[0];
        first.streamEvents.events = {{5, "goal", "one", 1}, {6, "foul", "other", 2}, {5, "goal", "two", 3}};
        first.streamEvents.object = "events/football";
        std::string error;
        EXPECT_TRUE(tsmake::assignPids(multiplex, error)) << error;
        broadcast = fileText(writeBroadcast(multiplex, 4, "stream-events.ts"));
    }

    /// Waits until the service is presented under its complete triplet, and every sent tune is done.
    bool begins() {
        constexpr std::size_t kFirstSecond = 1000 * kPacketSize;
        const lo::browserdvbservice::TuneInfoChannel channel = channelOf(multiplex.services[0]);
        const std::string pmt = shownValue(asText(tsmake::pmtSection(multiplex.services[0])));
        return playsUntil(port, datagramsOf(broadcast.substr(0, kFirstSecond)),
                          [&] {
                              sends(&Commands::cmdTuneToService, channel);
                              return heard("onPmtDataChange(1, 1025, 28106, 0, " + pmt + ")");
                          }) &&
               answersWhatWasAsked();
    }
    template <typename Condition>
    bool playsSecondUntil(std::size_t second, Condition condition) {
        return playsUntil(port, partOf(broadcast, second, 1), condition);
    }
    template <typename Command>
    bool asks(Command command, const std::string& path, const std::string& event, short tag,
              unsigned short tsid = 1025) {
        return sends(command, 9U, static_cast<unsigned short>(1), tsid, static_cast<unsigned short>(28106), tag, path,
                     event);
    }
    static std::string ofListener(const std::string& path, const std::string& event, int tag, int tsid = 1025) {
        return "1, " + std::to_string(tsid) + ", 28106, " + std::to_string(tag) + ", " + shownValue(path) + ", " +
               shownValue(event) + ", ";
    }
    static std::string added(const std::string& path, const std::string& event, int tag, int result, int tsid = 1025) {
        return "onStreamEventListenerAdded(9, " + ofListener(path, event, tag, tsid) + std::to_string(result) + ")";
    }
    static std::string removed(const std::string& path, const std::string& event, int tag, int result) {
        return "onStreamEventListenerRemoved(9, " + ofListener(path, event, tag) + std::to_string(result) + ")";
    }
    static std::string signalled(const std::string& path, const std::string& event, int tag, const std::string& data) {
        return "onStreamEventListenerSignalled(" + ofListener(path, event, tag) + shownValue(data) + ")";
    }

    static constexpr auto kAdd = &Commands::cmdAddStreamEventListener;
    static constexpr auto kRemove = &Commands::cmdRemoveStreamEventListener;
    const std::uint16_t port = freePort();
    tsmake::Multiplex multiplex = kSample;
    std::string broadcast;
    const ServiceProcess process;
};

}  // namespace

TEST_F(AStreamEventListener, IsSignalledEachVersionOnce) {
    ASSERT_TRUE(begins());
    ASSERT_TRUE(asks(kAdd, "", "5", 7));
    ASSERT_TRUE(hears(added("", "5", 7, 0)));
    EXPECT_TRUE(playsSecondUntil(1, [&] { return heard(signalled("", "5", 7, "one")); }));
    // A listener on the other event shows when the second part has arrived.
    ASSERT_TRUE(asks(kAdd, "", "6", 7));
    EXPECT_TRUE(playsSecondUntil(2, [&] { return heard(signalled("", "6", 7, "other")); }));
    EXPECT_TRUE(playsSecondUntil(3, [&] { return heard(signalled("", "5", 7, "two")); }));
    EXPECT_EQ(timesHeard(signalled("", "5", 7, "one")), 1);
    EXPECT_EQ(timesHeard(signalled("", "6", 7, "other")), 1);
    EXPECT_FALSE(heard(signalled("", "5", 7, "other"))) << "event 6 is another listener's";
    ASSERT_TRUE(asks(kRemove, "", "5", 7));
    EXPECT_TRUE(hears(removed("", "5", 7, 0)));
    ASSERT_TRUE(asks(kRemove, "", "5", 7));
    EXPECT_TRUE(hears(removed("", "5", 7, 3))) << "it is gone";
}

TEST_F(AStreamEventListener, IsRefusedWhereThereIsNoSuchComponent) {
    ASSERT_TRUE(begins());
    ASSERT_TRUE(asks(kAdd, "", "5", 9));
    EXPECT_TRUE(hears(added("", "5", 9, 1)));
    ASSERT_TRUE(asks(kAdd, "", "5", 7, 1026));
    EXPECT_TRUE(hears(added("", "5", 7, 1, 1026))) << "another transport stream's service is not presented";
}

TEST_F(AStreamEventListener, MayNameItsEventAsTheCarouselDoes) {
    ASSERT_TRUE(begins());
    // Select by the component of the events, by the component of the carousel with the object's path, and by neither.
    ASSERT_TRUE(asks(kAdd, "", "goal", 7));
    ASSERT_TRUE(asks(kAdd, "/events/football", "goal", 8));
    ASSERT_TRUE(asks(kAdd, "events/football", "foul", -1));
    EXPECT_TRUE(playsSecondUntil(0, [&] {
        return heard(added("", "goal", 7, 0)) && heard(added("/events/football", "goal", 8, 0)) &&
               heard(added("events/football", "foul", -1, 0));
    })) << testing::PrintToString(client->texts());
    EXPECT_TRUE(playsSecondUntil(1, [&] {
        return heard(signalled("", "goal", 7, "one")) && heard(signalled("/events/football", "goal", 8, "one"));
    }));
    EXPECT_TRUE(playsSecondUntil(2, [&] { return heard(signalled("events/football", "foul", -1, "other")); }));
    EXPECT_TRUE(playsSecondUntil(3, [&] { return heard(signalled("", "goal", 7, "two")); }));
    EXPECT_EQ(timesHeard(signalled("", "goal", 7, "one")), 1);
}

TEST_F(AStreamEventListener, IsRefusedANameThatNoCarouselTells) {
    ASSERT_TRUE(begins());
    ASSERT_TRUE(asks(kAdd, "", "corner", 7));
    ASSERT_TRUE(asks(kAdd, "events/tennis", "goal", 7));
    ASSERT_TRUE(asks(kAdd, "", "goal", 2));
    EXPECT_TRUE(playsSecondUntil(0, [&] {
        return heard(added("", "corner", 7, 2)) && heard(added("events/tennis", "goal", 7, 2)) &&
               heard(added("", "goal", 2, 2));
    })) << testing::PrintToString(client->texts());
}

TEST_F(AStreamEventListener, IsAnsweredWhereTheCarouselNeverComes) {
    broadcast = withoutPids(broadcast, {multiplex.services[0].streamEvents.carouselPid});
    ASSERT_TRUE(begins());
    ASSERT_TRUE(asks(kAdd, "", "goal", 7));
    ASSERT_TRUE(answersWhatWasAsked()) << "before the operator, who does not wait for browsers";
    // Presenting another service ends the requests for this one.
    EXPECT_EQ(operate({"tune", "1:1025:28107"}), "");
    EXPECT_TRUE(hears(added("", "goal", 7, 1)));
    EXPECT_EQ(operate({"tune", "1:1025:28106"}), "");
    ASSERT_TRUE(asks(kAdd, "", "goal", 7));
    EXPECT_TRUE(eventually([&] { return heard(added("", "goal", 7, 2)); })) << "after ten seconds";
}
