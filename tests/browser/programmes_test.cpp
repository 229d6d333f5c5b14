// Programmes in pages: present and following of the presented channel, and searches in the schedule.
#include "object_test.h"

namespace browser_tests {

namespace {

class Programmes : public AnObject {
protected:
    void run(const std::string& what) { pageEverywhere("programmes.html?" + what); }
    /// With a schedule, and a third event on the first service.
    void runWithSchedule(const std::string& what) {
        tsmake::Multiplex broadcast = kSample;
        tsmake::Event late;
        late.eventId = 1003;
        late.name = "Late Film";
        broadcast.services[0].events.push_back(late);
        for (tsmake::Service& each : broadcast.services) {
            each.hasSchedule = true;
        }
        start(broadcastWithEverywhere("programmes.html?" + what, broadcast));
    }
};

TEST_F(Programmes, ArePresentAndFollowingOfTheChannel) {
    run("present");
    EXPECT_EQ(reported("unrealized"), "0");
    EXPECT_EQ(reported("present"), R"(["Morning on the Lake","Mist, rowers and the first ferry.","",1767258000,3600,)"
                                   R"("ccid:1.1025.28106","dvb://1.401.6dca;3e9",1])");
    EXPECT_EQ(reported("following"), R"(["News at Nine","What happened overnight.","",1767261600,3600,)"
                                     R"("ccid:1.1025.28106","dvb://1.401.6dca;3ea",1])");
    EXPECT_EQ(reported("more"), "true");
}

TEST_F(Programmes, HaveRatingsAndDescriptors) {
    tsmake::Multiplex broadcast = kSample;
    tsmake::Event& present = broadcast.services[0].events[0];
    present.ratings = {{"DEU", 9}, {"AUT", 0}, {"XYZ", 15}};
    present.descriptors = std::string("\x7F\x02\x0F\x2A", 4);
    start(broadcastWithEverywhere("programmes.html?ratings", broadcast));
    EXPECT_EQ(reported("ratings"), R"([["12","dvb-si",12,0,"DE"],["18","dvb-si",18,0,null]])");
    EXPECT_EQ(reported("descriptors"), "[[85,12,68,69,85,9,65,85,84,0,88,89,90,15]]");
    EXPECT_EQ(reported("extended"), "[[127,2,15,42]]");
    EXPECT_EQ(reported("none"), "[0,0]");
}

TEST_F(Programmes, AreToldWhenTheirRatingsChange) {
    tsmake::Multiplex broadcast = broadcastWithEverywhere("programmes.html?ratingChanges");
    std::vector<tsmake::Event>& events = broadcast.services[0].events;
    events[0].duration = FedBroadcast::kSecondState;
    events[0].ratings = {{"DEU", 9}, {"AUT", 9}};
    events[1].ratings = {{"DEU", 13}};
    startFed(broadcast);
    EXPECT_EQ(reported("error"), "null");
    EXPECT_EQ(reported("ready"), "true");
    EXPECT_EQ(reported("rating", 1), R"([2,true,["12","12"],null,false])");
    EXPECT_EQ(reported("rating", 2), R"([2,true,["12","12"],null,false])");
    change();
    EXPECT_EQ(reported("rating", 3), R"([2,true,["16"],null,false])");
}

TEST_F(Programmes, ChangeWithTheChannel) {
    run("changes");
    EXPECT_EQ(events(1), (Events{"ProgrammesChanged"}));
    EXPECT_TRUE(browser->reports("names", "[\"Die gro\u00dfe K\u00fcche\",\"Wetter\"]"));
}

TEST_F(Programmes, AreFoundInTheSchedule) {
    runWithSchedule("search");
    EXPECT_EQ(reported("empty"), "[0,0,true]");
    EXPECT_EQ(reported("found"), R"(["Morning on the Lake","News at Nine","Cinema","Night Music"])");
    EXPECT_EQ(reported("part"), "[4,1,9,[\"News at Nine\",\"Late Film\",\"Die gro\u00dfe K\u00fcche\",\"Wetter\"]]");
    EXPECT_EQ(reported("reset"), "[0,0]");
    EXPECT_EQ(reported("later"), R"(["News at Nine","Late Film"])");
}

TEST_F(Programmes, AreFoundFromATimeOn) {
    runWithSchedule("stream");
    EXPECT_EQ(reported("now"), R"(["Morning on the Lake","News at Nine","Late Film"])");
    EXPECT_EQ(reported("then"), R"(["News at Nine","Late Film"])");
}

TEST_F(Programmes, AreNotSearchedByWhatThereIsNot) {
    run("wrong");
    EXPECT_EQ(reported("config"), "true");
    EXPECT_EQ(reported("target"), "null");
    EXPECT_EQ(reported("refused"), R"(["TypeError","TypeError","TypeError","TypeError",false])");
    EXPECT_EQ(reported("aborted"), "[true,3]");
}

}  // namespace

}  // namespace browser_tests
