// video/broadcast in pages: its states, tunes and what goes wrong with them.
#include "object_test.h"

namespace browser_tests {

namespace {

class AVideoBroadcast : public AnObject {
protected:
    void run(const std::string& what) { pageEverywhere("video_broadcast.html?" + what); }
};

const std::string kFirst = "ccid:1.1025.28106";
const std::string kSecond = "ccid:1.1025.28107";
const std::string kThird = "ccid:1.1025.28108";
const std::string kFourth = "ccid:1.1025.28120";
const std::string kConnecting = "PlayStateChange 1";
const std::string kPresenting = "PlayStateChange 2";

std::string changedTo(const std::string& channel) {
    return "ChannelChangeSucceeded " + channel;
}

TEST_F(AVideoBroadcast, BindsToThePresentedChannel) {
    run("bind");
    EXPECT_EQ(reported("first"), "[0,null]");
    EXPECT_EQ(reported("state"), "1");
    EXPECT_EQ(reported("bound"), kFirst);
    EXPECT_EQ(events(2), (Events{kConnecting, kPresenting}));
    EXPECT_EQ(reported("channel"), R"([")" + kFirst + R"(","Velmora One HD",0,10,1,1025,28106,1])");
    EXPECT_EQ(reported("dsd"), "[68,11,3,70,0,0,255,242,5,0,105,0,15]");
    EXPECT_EQ(reported("constants"), "[1,10,13]");
    EXPECT_EQ(reported("private"), kFirst);
}

TEST_F(AVideoBroadcast, HasTheChannelList) {
    run("list");
    EXPECT_EQ(reported("names"),
              "[\"Velmora One HD\",\"Velmora Zwei F\u00f6hn\",\"Velmora \u03a4\u03c1\u03af\u03b1\",\"Velmora Radio\"]");
    EXPECT_EQ(reported("types"), "[0,0,0,1]");
    EXPECT_EQ(reported("found"), "[true,true,true]");
    EXPECT_EQ(reported("missing"), "[null,null,null,true]");
}

TEST_F(AVideoBroadcast, TunesToAChannelOfTheList) {
    run("tune");
    EXPECT_EQ(reported("connecting"), "[1,\"" + kSecond + "\"]");
    EXPECT_EQ(events(3), (Events{kConnecting, changedTo(kSecond), kPresenting}));
}

TEST_F(AVideoBroadcast, TellsItsHandlersToo) {
    run("handlers");
    EXPECT_EQ(reported("handler", 1), "state 1");
    EXPECT_EQ(reported("handler", 2), kSecond);
    EXPECT_EQ(reported("handler", 3), "state 2");
}

TEST_F(AVideoBroadcast, IsInTheStateOfWhichAnEventTells) {
    run("states");
    EXPECT_EQ(reported("state", 1), "[1,1]");
    EXPECT_EQ(reported("state", 2), "[2,2]");
    press("CHANNEL_UP");
    EXPECT_EQ(reported("state", 3), "[1,1]");
    EXPECT_EQ(reported("state", 4), "[2,2]");
}

TEST_F(AVideoBroadcast, TunesByTriplet) {
    run("triplet");
    EXPECT_EQ(events(3), (Events{kConnecting, changedTo(kSecond), kPresenting}));
}

TEST_F(AVideoBroadcast, TunesByDeliverySystemDescriptor) {
    run("descriptor");
    EXPECT_EQ(reported("created"), "[13,28108,true,true]");
    EXPECT_EQ(events(3), (Events{kConnecting, changedTo(kThird), kPresenting}));
}

TEST_F(AVideoBroadcast, StaysWhereItIsForWhatIsNoChannel) {
    run("noChannel");
    EXPECT_EQ(reported("created"), "[null,null,null,null]");
    EXPECT_EQ(events(1), (Events{"ChannelChangeError object 5"}));
    EXPECT_EQ(reported("state"), "2");
}

TEST_F(AVideoBroadcast, IsUnrealizedAfterATuneToAnUnknownChannel) {
    run("unknown");
    EXPECT_EQ(events(3), (Events{kConnecting, "ChannelChangeError object 5", "PlayStateChange 0 5"}));
    EXPECT_EQ(reported("channel"), "null");
}

TEST_F(AVideoBroadcast, SaysThatTheTransportStreamDoesNotHaveAChannel) {
    run("notInStream");
    EXPECT_EQ(events(3), (Events{kConnecting, "ChannelChangeError object 12", "PlayStateChange 0 12"}));
}

TEST_F(AVideoBroadcast, SaysThatAChannelOfTheListCannotBeReceived) {
    tsmake::Multiplex broadcast = kSample;
    broadcast.otherStreams = {{1, 1026, broadcast.deliverySystem, {{28200, 1, "Velmora Elsewhere"}}}};
    start(broadcastWithEverywhere("video_broadcast.html?elsewhere", broadcast));
    EXPECT_EQ(reported("name"), "Velmora Elsewhere");
    EXPECT_EQ(events(3), (Events{kConnecting, "ChannelChangeError ccid:1.1026.28200 1", "PlayStateChange 0 1"}));
}

TEST_F(AVideoBroadcast, TellsThatTheChannelListHasChanged) {
    constexpr unsigned int kNit = 0x10;
    constexpr unsigned int kSdt = 0x11;
    startFed(broadcastWithEverywhere("video_broadcast.html?listUpdate"), {kNit, kSdt});
    EXPECT_EQ(reported("list"), R"([["","","",""],true])");
    change();
    EXPECT_TRUE(browser->reports("update",
                                 "[[\"Velmora One HD\",\"Velmora Zwei F\u00f6hn\","
                                 "\"Velmora \u03a4\u03c1\u03af\u03b1\",\"Velmora Radio\"],"
                                 "\"Velmora One HD\"]"));
    EXPECT_EQ(reported("type"), "ChannelListUpdate");
}

TEST_F(AVideoBroadcast, FollowsTheKeysForChannels) {
    run("follow");
    reported("ready");
    press("CHANNEL_UP");
    EXPECT_EQ(events(3), (Events{kConnecting, changedTo(kSecond), kPresenting}));
    press("CHANNEL_DOWN");
    EXPECT_EQ(reported("event", 5), changedTo(kFirst));
    EXPECT_EQ(reported("event", 6), kPresenting);
    press("CHANNEL_DOWN");
    EXPECT_EQ(reported("event", 8), changedTo(kFourth));
}

TEST_F(AVideoBroadcast, GoesThroughTheListRoundItsEnd) {
    run("next");
    EXPECT_EQ(events(9), (Events{kConnecting, changedTo(kSecond), kPresenting, kConnecting, changedTo(kFirst),
                                 kPresenting, kConnecting, changedTo(kFourth), kPresenting}));
}

TEST_F(AVideoBroadcast, HasNoNextChannelWhileItIsUnrealized) {
    run("nextUnrealized");
    EXPECT_EQ(events(2), (Events{"ChannelChangeError null 10", "ChannelChangeError null 10"}));
}

TEST_F(AVideoBroadcast, TellsThatALaterTuneInterruptedOne) {
    run("interrupt");
    EXPECT_EQ(events(4), (Events{kConnecting, "ChannelChangeError " + kSecond + " 6", changedTo(kThird), kPresenting}));
}

TEST_F(AVideoBroadcast, StopsAndGoesOn) {
    run("stop");
    EXPECT_EQ(reported("stopped"), "[3,\"" + kFirst + "\"]");
    EXPECT_EQ(events(3), (Events{"PlayStateChange 3", kConnecting, kPresenting}));
}

TEST_F(AVideoBroadcast, IsReleasedOnce) {
    run("release");
    EXPECT_EQ(reported("released"), "[0,null]");
    EXPECT_EQ(reported("state"), "0");
    EXPECT_EQ(events(1), (Events{"PlayStateChange 0"}));
}

TEST_F(AVideoBroadcast, IsRefusedToAnApplicationThatHasLeftTheBroadcast) {
    run("leave");
    EXPECT_EQ(reported("left"), "[0,null,null,0]");
    EXPECT_EQ(reported("refused"), R"(["SecurityError","SecurityError","SecurityError","SecurityError"])");
    EXPECT_EQ(events(2), (Events{"PlayStateChange 0", "ChannelChangeSucceeded null"}));
}

TEST_F(AVideoBroadcast, MakesAnIndependentApplicationRelatedByATune) {
    const std::string page = "video_broadcast.html?independent";
    tsmake::Multiplex broadcast = broadcastWithoutApplications();
    broadcast.services[1].ait.versions = {{0, 1, {application(page)}}};
    start(broadcast, {"--application", pages.url() + page + ",190.1"});
    EXPECT_EQ(reported("channel"), "[null,null,0]");
    EXPECT_EQ(reported("refused"), "SecurityError");
    EXPECT_EQ(reported("related"), "[\"" + kSecond + "\",\"" + kSecond + "\",2]");
}

TEST_F(AVideoBroadcast, TunesAThousandTimes) {
    run("thousand");
    EXPECT_EQ(browser->reported("tunes", 1, std::chrono::minutes(2)), "1000");
}

TEST_F(AVideoBroadcast, HasSizeFullScreenAndVolume) {
    run("size");
    EXPECT_EQ(reported("size", 1), "[640,360,false]");
    EXPECT_EQ(reported("size", 2), "[320,180,\"320px\"]");
    EXPECT_EQ(reported("size", 3), "[1280,720,true]");
    EXPECT_EQ(events(1), (Events{"FullScreenChange"}));
    EXPECT_EQ(reported("volume"), "[100,true,30,false]");
}

TEST_F(AVideoBroadcast, FollowsTheSetToAnotherChannel) {
    run("follow");
    reported("ready");
    operate({"tune", "1:1025:28107"});
    EXPECT_EQ(events(3), (Events{kConnecting, changedTo(kSecond), kPresenting}));
}

TEST_F(AVideoBroadcast, ComesBackWithTheDtvService) {
    run("follow");
    reported("ready");
    service.reset();
    EXPECT_EQ(events(1), (Events{"PlayStateChange 1 100"}));
    service = std::make_unique<ServiceProcess>(kRunDirectory + "/broadcast.ts");
    EXPECT_EQ(events(2)[1], kPresenting);
}

TEST_F(AVideoBroadcast, BindsToAChannelThatComesBackWithTheDtvService) {
    run("bindWithoutService");
    reported("ready");
    service.reset();
    EXPECT_EQ(reported("rebound"), "1");
    EXPECT_EQ(events(3), (Events{"PlayStateChange 1 100", "PlayStateChange 3", "PlayStateChange 1 100"}));
    service = std::make_unique<ServiceProcess>(kRunDirectory + "/broadcast.ts");
    EXPECT_EQ(events(4)[3], kPresenting);
}

TEST_F(AVideoBroadcast, CannotTuneWithoutTheDtvService) {
    run("tuneWithoutService");
    reported("ready");
    service.reset();
    EXPECT_EQ(events(3),
              (Events{"PlayStateChange 1 100", "ChannelChangeError " + kSecond + " 100", "PlayStateChange 0 100"}));
}

TEST_F(AVideoBroadcast, SaysThatTheDtvServiceWentAwayBeforeItAnswered) {
    run("tuneUnanswered");
    reported("ready");
    kill(service->pid(), SIGSTOP);
    pages.release("stopped");
    reported("sent");
    service.reset();
    EXPECT_EQ(events(3), (Events{kConnecting, "ChannelChangeError " + kSecond + " 100", "PlayStateChange 0 100"}));
}

TEST_F(AVideoBroadcast, IsLockedByAnotherOneUntilThatHasLeftThePage) {
    run("two");
    EXPECT_EQ(events(4),
              (Events{"PlayStateChange 0 2", "ChannelChangeError " + kFirst + " 2", "PlayStateChange 0", kConnecting}));
}

TEST_F(AVideoBroadcast, FollowsTheTuneOfOneThatHasLeftThePage) {
    run("handOver");
    EXPECT_EQ(reported("other"), kSecond);
    EXPECT_TRUE(browser->reports("event", changedTo(kSecond)));
}

TEST_F(AVideoBroadcast, FollowsItsTuneThatTheSetCarriesOutAfterTheViewersChange) {
    run("late");
    reported("ready");
    operate({"tune", "1:1025:28108"});
    pages.release("tuned");
    EXPECT_EQ(events(7), (Events{kConnecting, "ChannelChangeError " + kSecond + " 6", changedTo(kThird), kPresenting,
                                 kConnecting, changedTo(kSecond), kPresenting}));
}

}  // namespace

}  // namespace browser_tests
