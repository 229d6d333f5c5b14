// Stream events, DRM messages, and a DTV service that goes and comes back, in the browser's room for the broadcast.
#include <sys/wait.h>

#include "broadcast_room_fixture.h"

namespace {

constexpr const char* kGoals = R"({
    "originalNetworkId": 1, "transportStreamId": 1025, "networkName": "Velmora", "provider": "Velmora",
    "services": [
        {"id": 1, "name": "First", "components": [{"kind": "video", "tag": 1}],
         "streamEvents": {"object": "events/goals", "events": [
             {"id": 5, "name": "goal", "data": "one", "second": 0},
             {"id": 6, "name": "foul", "dataHex": "00ff", "second": 1},
             {"id": 5, "name": "goal", "data": "two", "second": 2}]}},
        {"id": 2, "name": "Second", "components": [{"kind": "video", "tag": 1}]}
    ]
})";

json trigger(int id, const std::string& name, const std::string& data) {
    return {{"id", id}, {"status", "trigger"}, {"name", name}, {"data", data}};
}

json failure(int id, const std::string& name) {
    return {{"id", id}, {"status", "error"}, {"name", name}, {"data", ""}};
}

class AStreamEvent : public TheBroadcastRoom {
protected:
    json addById(int number, int tag, int eventId) {
        return room.call("addStreamEventListener", {{"id", number}, {"componentTag", tag}, {"eventId", eventId}});
    }
    json addByName(int number, const json& tag, const std::string& object, const std::string& name) {
        return room.call("addStreamEventListener",
                         {{"id", number}, {"componentTag", tag}, {"object", object}, {"name", name}});
    }

    const std::string file = broadcastOf(kGoals, 4, "goals.ts");
};

}  // namespace

TEST_F(AStreamEvent, IsSignalledByItsNumber) {
    const ServiceProcess service(file);
    ASSERT_TRUE(room.tunesTo(1));
    EXPECT_EQ(addById(1, 7, 5), true);
    EXPECT_EQ(addById(2, 7, 6), true);
    EXPECT_TRUE(room.hears("streamEvent", trigger(1, "", "6f6e65")));
    EXPECT_TRUE(room.hears("streamEvent", trigger(2, "", "00ff")));
    EXPECT_TRUE(room.hears("streamEvent", trigger(1, "", "74776f")));
    EXPECT_EQ(room.call("removeStreamEventListener", {{"id", 1}}), true);
    EXPECT_EQ(room.call("removeStreamEventListener", {{"id", 1}}), false);
}

TEST_F(AStreamEvent, IsSignalledByItsNameInACarousel) {
    const ServiceProcess service(file);
    ASSERT_TRUE(room.tunesTo(1));
    EXPECT_EQ(addByName(1, nullptr, "/events/goals", "foul"), true);
    EXPECT_EQ(addByName(2, 8, "events/goals", "goal"), true);
    EXPECT_TRUE(room.hears("streamEvent", trigger(1, "foul", "00ff")));
    EXPECT_TRUE(room.hears("streamEvent", trigger(2, "goal", "74776f")));
}

TEST_F(AStreamEvent, ThatTheBroadcastDoesNotHaveIsAnError) {
    const ServiceProcess service(file);
    ASSERT_TRUE(room.tunesTo(1));
    addById(1, 99, 5);
    addByName(2, nullptr, "/events/goals", "offside");
    addByName(3, nullptr, "/events/other", "goal");
    addByName(4, 99, "/events/goals", "goal");
    EXPECT_TRUE(room.hears("streamEvent", failure(1, "")));
    EXPECT_TRUE(room.hears("streamEvent", failure(2, "offside")));
    EXPECT_TRUE(room.hears("streamEvent", failure(3, "goal")));
    EXPECT_TRUE(room.hears("streamEvent", failure(4, "goal")));
    EXPECT_EQ(room.call("removeStreamEventListener", {{"id", 1}}), false);
}

TEST_F(AStreamEvent, RestsWhileAnotherServiceIsPresented) {
    const ServiceProcess service(file);
    ASSERT_TRUE(room.tunesTo(1));
    addById(1, 7, 5);
    ASSERT_TRUE(room.hears("streamEvent", trigger(1, "", "6f6e65")));
    ASSERT_TRUE(room.tunesTo(2));
    addById(2, 7, 5);
    EXPECT_TRUE(room.hears("streamEvent", failure(2, "")));
    room.events.clear();
    ASSERT_TRUE(room.tunesTo(1));
    EXPECT_TRUE(room.hears("streamEvent", trigger(1, "", "74776f")));
}

TEST_F(TheBroadcastRoom, PassesOnWhatTheCaSystemAnswers) {
    const ServiceProcess service;
    ASSERT_TRUE(connects());
    EXPECT_EQ(room.call("sendDrmMessage",
                        {{"session", 7}, {"system", 0x1800}, {"messageType", "text/plain"}, {"message", "hello"}}),
              true);
    EXPECT_TRUE(room.hears("drmReply", {{"session", 7}, {"code", 5}, {"message", ""}}));
    EXPECT_EQ(ChildProcess(DTVCTL, {"ca", "insert", "2"}, "insert").wait(), 0);
    EXPECT_TRUE(room.hears("drmSystemStatus", {{"slot", 2}, {"status", 1}}));
    EXPECT_EQ(room.call("connectCa", {{"session", 8}}), true);
    EXPECT_TRUE(room.hears("caConnected", {{"session", 8}, {"slot", 2}, {"result", 0}}));
    room.call("sendDrmMessage", {{"session", 9}, {"system", 1}, {"messageType", "text/plain"}, {"message", "hello"}});
    EXPECT_TRUE(eventually([] {
        return ChildProcess(DTVCTL, {"ca", "reply", "9", "0", "welcome"}, "reply").wait() == 0;
    }));
    EXPECT_TRUE(room.hears("drmReply", {{"session", 9}, {"code", 0}, {"message", "welcome"}}));
    EXPECT_EQ(room.call("disconnectCa", {{"slot", 2}}), true);
    EXPECT_TRUE(room.hears("caDisconnected", {{"slot", 2}, {"result", 0}}));
}

TEST_F(TheBroadcastRoom, TellsTheTimeOfTheBroadcast) {
    const ServiceProcess service;
    ASSERT_TRUE(connects());
    EXPECT_EQ(room.call("requestPts"), true);
    EXPECT_TRUE(room.becomes([&] {
        return std::any_of(room.events.begin(), room.events.end(), [](const RoomEvent& each) {
            return each.name == "pts" && each.value["pts"].is_number() && each.value["pcr"].is_number();
        });
    }));
    EXPECT_EQ(room.call("applicationStarted", {{"ok", true}}), true);
}

TEST_F(TheBroadcastRoom, SaysThatATuneWithoutServiceFails) {
    json argument = tripletOf(28107);
    argument["idType"] = 12;
    EXPECT_EQ(room.call("tune", argument), true);
    EXPECT_TRUE(room.hears("channelChanged", {{"started", false}, {"channel", nullptr}}));
    EXPECT_EQ(room.call("requestPts"), false);
}

TEST_F(AStreamEvent, ComesAgainWithEverythingElseAfterTheServiceWasKilled) {
    auto service = std::make_unique<ServiceProcess>(file);
    ASSERT_TRUE(room.tunesTo(1));
    addById(1, 7, 5);
    addByName(2, nullptr, "/events/goals", "foul");
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(room.hears("streamEvent", trigger(1, "", "6f6e65")));
        ASSERT_TRUE(room.hears("streamEvent", trigger(2, "foul", "00ff")));
        room.events.clear();
        service->end(SIGKILL);
        ASSERT_TRUE(room.hears("service", {{"connected", false}}));
        service = std::make_unique<ServiceProcess>(file);
        ASSERT_TRUE(room.hears("service", {{"connected", true}}));
    }
    EXPECT_TRUE(room.hears("streamEvent", trigger(1, "", "6f6e65")));
    EXPECT_TRUE(room.hears("streamEvent", trigger(2, "foul", "00ff")));
}

TEST_F(TheBroadcastRoom, KnowsAnotherBroadcastAfterTheServiceWasKilled) {
    auto service = std::make_unique<ServiceProcess>();
    ASSERT_EQ(room.channelNames(4).size(), 4U);
    ASSERT_TRUE(room.becomes([&] { return room.call("applications")["complete"] == true; }));
    service->end(SIGKILL);
    ASSERT_TRUE(room.hears("service", {{"connected", false}}));
    EXPECT_EQ(room.call("channels").size(), 4U);
    std::string other = kGoals;
    other.replace(other.find("1025"), 4, "1031");
    service = std::make_unique<ServiceProcess>(broadcastOf(other, 4, "other.ts"));
    EXPECT_TRUE(room.presents(1, 1031));
    EXPECT_THAT(room.channelNames(2), testing::ElementsAre("First", "Second"));
    EXPECT_TRUE(room.becomes(
        [&] { return room.call("applications")["known"] == true && room.call("applications")["signalled"] == false; }));
}

TEST_F(TheBroadcastRoom, EndsWhileTheServiceIsGone) {
    auto service = std::make_unique<ServiceProcess>();
    ASSERT_EQ(room.channelNames(4).size(), 4U);
    service->end(SIGKILL);
    room.room.reset();
    room.loop.run();
}

TEST(TwoBroadcastRooms, InTwoProcessesHearOfEachOthersTunes) {
    const ServiceProcess service;
    const pid_t child = fork();
    if (child == 0) {
        RunningRoom room;
        _exit(room.presents(28108) && room.channelNames(4).size() == 4 ? 0 : 1);
    }
    RunningRoom room;
    EXPECT_TRUE(room.presents(28106));
    EXPECT_EQ(room.channelNames(4).size(), 4U);
    EXPECT_TRUE(eventually([&] { return service.log().find("browser 2 connected") != std::string::npos; }));
    EXPECT_TRUE(room.tunesTo(28108));
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}
