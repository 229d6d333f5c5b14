// The current channel: texts that the DTV service reports, and what the browser reads.
#include "recording_listener.h"
#include "service_fixture.h"

namespace {

constexpr const char* kFile = "browser_dvb_service_channel.cpp";

struct Read {
    const char* text;
    const char* ccid;
    int result;
};

/// Texts that are parsed without a line.
const Read kSilentTexts[] = {
    {"1:1025:28106", "ccid:1:1025:28106", 0},
    {"0:0:0", "ccid:0:0:0", 0},
    {"1:1025", "ccid:-1:-1:-1", -1},
    {"1:2:3:4", "ccid:-1:-1:-1", -1},
    {"1:2:3:", "ccid:-1:-1:-1", -1},
    {"", "ccid:-1:-1:-1", -1},
    {"1::28106", "ccid:1:-1:28106", -1},
    {"::", "ccid:-1:-1:-1", -1},
    {":2:3", "ccid:-1:2:3", -1},
    {"-5:2:3", "ccid:-5:2:3", -1},
    {"1:-5:3", "ccid:1:-5:3", -1},
    {"1:2:-5", "ccid:1:2:-5", -1},
    {"1:2:-2147483648", "ccid:1:2:-2147483648", -1},
    {"+1:007:3", "ccid:1:7:3", 0},
    {"1;2;3", "ccid:-1:-1:-1", -1},
    {"70000:65536:2147483647", "ccid:70000:65536:2147483647", 0},
};

/// Texts with a part that is not a number: the parts before it count.
const Read kBadNumbers[] = {
    {"1:x:3", "ccid:1:-1:-1", -1},         {"x:2:3", "ccid:-1:-1:-1", -1},   {"1:2:3 ", "ccid:1:2:-1", -1},
    {"1:2:2147483648", "ccid:1:2:-1", -1}, {"0x1:2:3", "ccid:-1:-1:-1", -1}, {" 1:2:3", "ccid:-1:-1:-1", -1},
    {"1:2 :3", "ccid:1:-1:-1", -1},        {"1::x", "ccid:1:-1:-1", -1},     {"1:2:3.5", "ccid:1:2:-1", -1},
    {"1:2;9:3", "ccid:1:-1:-1", -1},
};

}  // namespace

TEST_F(AServiceObject, ReadsATripletSilently) {
    for (const Read& read : kSilentTexts) {
        SCOPED_TRACE(read.text);
        service->updateCurrentChannelInfo("9:9:9");
        recording::reset();
        service->updateCurrentChannelInfo(read.text);
        int onid = 77;
        int tsid = 78;
        int sid = 79;
        EXPECT_EQ(service->getCurrentCCID(), read.ccid);
        EXPECT_EQ(service->getCurrentChannelInfo(onid, tsid, sid), read.result);
        if (read.result != 0) {
            EXPECT_EQ(std::vector<int>({onid, tsid, sid}), std::vector<int>({77, 78, 79})) << "left alone";
        }
        EXPECT_TRUE(recording::log().empty());
    }
}

TEST_F(AServiceObject, KeepsThePartsBeforeABadNumber) {
    for (const Read& read : kBadNumbers) {
        SCOPED_TRACE(read.text);
        service->updateCurrentChannelInfo("9:9:9");
        recording::reset();
        service->updateCurrentChannelInfo(read.text);
        EXPECT_EQ(service->getCurrentCCID(), read.ccid);
        EXPECT_THAT(recording::log(), testing::ElementsAre(logged::tagged(
                                          kFailure, kTag, kFile, "updateCurrentChannelInfo",
                                          "Cpmpute Current Channel Info Failed: [" + std::string(read.text) + "]\n")));
    }
}

TEST_F(AServiceObject, GivesTheTripletAsNumbers) {
    service->updateCurrentChannelInfo("1:1025:28106");
    int onid = 0;
    int tsid = 0;
    int sid = 0;
    EXPECT_EQ(service->getCurrentChannelInfo(onid, tsid, sid), 0);
    EXPECT_EQ(onid, 1);
    EXPECT_EQ(tsid, 1025);
    EXPECT_EQ(sid, 28106);
}

TEST_F(AServiceObject, TellsListenersOfAChannelChange) {
    const auto listener = std::make_shared<RecordingListener>();
    velmora::dvbservice::BrowserDvbAPI::getInstance()->addListener(listener);
    injectEvent<messages::OnServiceChanged>("service_started", "1:1025:28106");
    EXPECT_THAT(lines(), testing::ElementsAre(logged::plain(kOrdinary, kFile, "onServiceChanged",
                                                            "called,state:service_started,service:1:1025:28106.\n")));
    std::vector<std::string> expected = tracePair("onServiceChanged", kFile);
    expected.insert(expected.begin() + 1, "[TRACE] browser_dvb_apis_listeners.cpp:OnChannelChanged\n");
    EXPECT_EQ(logged::traces(), expected);
    injectEvent<messages::OnServiceChanged>("service_stopped", "1:1025:28107");
    injectEvent<messages::OnServiceChanged>("Service_started", "1:2");
    injectEvent<messages::OnServiceChanged>("", "65537:65538:-3");
    velmora::dvbservice::BrowserDvbAPI::getInstance()->removeListener(listener);
    EXPECT_THAT(listener->calls(),
                testing::ElementsAre("OnChannelChanged(1, 1, 1025, 28106)", "OnChannelChanged(0, 1, 1025, 28107)",
                                     "OnChannelChanged(0, 65535, 65535, 65535)", "OnChannelChanged(0, 1, 2, 65533)"));
}

TEST_F(AServiceObject, TakesNoOtherStateForAStartedService) {
    const auto listener = std::make_shared<RecordingListener>();
    velmora::dvbservice::BrowserDvbAPI::getInstance()->addListener(listener);
    for (const char* const state : {"service_started_", "service_started ", " service_started", "service_starte",
                                    "SERVICE_STARTED", "not service_started", "service_starting", "1"}) {
        SCOPED_TRACE(state);
        injectEvent<messages::OnServiceChanged>(state, "1:2:3");
        EXPECT_EQ(listener->calls().back(), "OnChannelChanged(0, 1, 2, 3)");
    }
    injectEvent<messages::OnServiceChanged>(std::string("service_started\0", 16), "1:2:3");
    EXPECT_EQ(listener->calls().back(), "OnChannelChanged(0, 1, 2, 3)");
    velmora::dvbservice::BrowserDvbAPI::getInstance()->removeListener(listener);
}

TEST_F(AServiceObject, WritesTheLinesOfAChannelChangeInOrder) {
    injectEvent<messages::OnServiceChanged>("service_started", "1:x:3");
    EXPECT_THAT(
        logged::story(),
        testing::ElementsAre("-> onServiceChanged", "onServiceChanged: called,state:service_started,service:1:x:3.\n",
                             "updateCurrentChannelInfo: Cpmpute Current Channel Info Failed: [1:x:3]\n",
                             "[TRACE] OnChannelChanged", "<- onServiceChanged"));
    recording::reset();
    injectEvent<messages::OnAcquireDtvServiceInfo>("1:x:3");
    EXPECT_THAT(logged::story(),
                testing::ElementsAre("onAcquireDtvServiceInfo: channelInfo:1:x:3.\n",
                                     "updateCurrentChannelInfo: Cpmpute Current Channel Info Failed: [1:x:3]\n",
                                     "onAcquireDtvServiceInfo: channel onid:1, tsid:-1, sid:-1.\n"));
}

TEST_F(AServiceObject, UpdatesTheChannelBeforeListenersAreCalled) {
    const auto listener = std::make_shared<RecordingListener>();
    std::string ccid;
    listener->reaction = [&] { ccid = service->getCurrentCCID(); };
    velmora::dvbservice::BrowserDvbAPI::getInstance()->addListener(listener);
    injectEvent<messages::OnServiceChanged>("service_started", "3:4:5");
    velmora::dvbservice::BrowserDvbAPI::getInstance()->removeListener(listener);
    EXPECT_EQ(ccid, "ccid:3:4:5");
}

TEST_F(AServiceObject, ReportsNoServiceInfoToListeners) {
    const auto listener = std::make_shared<RecordingListener>();
    velmora::dvbservice::BrowserDvbAPI::getInstance()->addListener(listener);
    injectEvent<messages::OnAcquireDtvServiceInfo>("2:3:4");
    velmora::dvbservice::BrowserDvbAPI::getInstance()->removeListener(listener);
    EXPECT_EQ(service->getCurrentCCID(), "ccid:2:3:4");
    EXPECT_TRUE(listener->calls().empty());
    EXPECT_THAT(lines(),
                testing::ElementsAre(
                    logged::plain(kOrdinary, kFile, "onAcquireDtvServiceInfo", "channelInfo:2:3:4.\n"),
                    logged::plain(kOrdinary, kFile, "onAcquireDtvServiceInfo", "channel onid:2, tsid:3, sid:4.\n")));
    EXPECT_TRUE(logged::traces().empty());
}

TEST_F(AServiceObject, ShowsTheStoredDescriptorWhenItIsRead) {
    service->tuneToService("abc", 1, 2);
    recording::reset();
    EXPECT_EQ(service->getCurrentDsd(), "abc");
    EXPECT_THAT(recording::log(),
                testing::ElementsAre(logged::tagged(kOrdinary, kTag, kFile, "getCurrentDsd", "Called,Dsd:[abc]\n")));
}
