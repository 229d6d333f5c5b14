// Channels, tuning, components and programmes of the browser's room for the broadcast.
#include "broadcast_room_fixture.h"
#include "running_scenario.h"

namespace {

using testing::ElementsAre;

constexpr const char* kRich = R"({
    "originalNetworkId": 1, "transportStreamId": 1025, "networkName": "Velmora", "provider": "Velmora",
    "start": "2026-01-01T09:00:00Z",
    "services": [
        {"id": 1, "name": "First",
         "components": [{"kind": "video", "tag": 1}, {"kind": "audio", "tag": 2, "language": "eng"},
                        {"kind": "audio", "tag": 3, "language": "deu"},
                        {"kind": "teletext", "tag": 4, "pages": [{"number": 150, "type": 2, "language": "eng"},
                                                                 {"number": 151, "type": 5, "language": "deu"}]}],
         "events": [{"id": 11, "name": "Dawn", "text": "Light.", "seconds": 3,
                     "parentalRatings": [{"country": "DEU", "rating": 9}],
                     "descriptors": "540213004e1700656e67001141206669727374206c6f6e6720746578745f04000000289001aa"},
                    {"id": 12, "name": "Noon", "text": "Heat.", "seconds": 3600},
                    {"id": 13, "name": "Dusk", "text": "Shade."}],
         "schedule": true},
        {"id": 2, "type": 2, "name": "Second", "components": [{"kind": "audio", "tag": 2}]}
    ],
    "otherStreams": [{"originalNetworkId": 1, "transportStreamId": 1026, "deliverySystem": "430B0119747501928602200003",
                      "services": [{"id": 77, "type": 25, "name": "Elsewhere"}]}]
})";

constexpr const char* kOther = R"({
    "originalNetworkId": 1, "transportStreamId": 1030, "networkName": "Velmora", "provider": "Velmora",
    "start": "2026-01-01T09:00:00Z", "deliverySystem": "440B03460000FFF2050069000F",
    "services": [{"id": 9, "name": "Ninth", "components": [{"kind": "video", "tag": 1}]}]
})";

json componentsOf(RunningRoom& room, int type) {
    json list = json::array();
    for (const json& component : room.call("components")) {
        if (component["type"] == type) {
            list.push_back(component);
        }
    }
    return list;
}

}  // namespace

TEST_F(TheBroadcastRoom, ListsTheChannelsOfTheSample) {
    const ServiceProcess service;
    EXPECT_THAT(room.channelNames(4),
                ElementsAre("Velmora One HD", "Velmora Zwei Föhn", "Velmora Τρία", "Velmora Radio"));
    EXPECT_TRUE(room.becomes([&] { return room.call("channels")[0]["idType"] == 10; }));
    const json channels = room.call("channels");
    EXPECT_EQ(channels[3], (json{{"onid", 1},
                                 {"tsid", 1025},
                                 {"sid", 28120},
                                 {"nid", 1},
                                 {"name", "Velmora Radio"},
                                 {"type", 1},
                                 {"idType", 10},
                                 {"dsd", "440b03460000fff2050069000f"},
                                 {"majorChannel", 4}}));
    EXPECT_TRUE(room.has("channelsChanged", nullptr));
}

TEST_F(TheBroadcastRoom, KnowsThePresentedServiceWithoutATune) {
    const ServiceProcess service;
    EXPECT_EQ(room.call("presented"), nullptr);
    EXPECT_EQ(room.call("serviceState"), (json{{"connected", false}}));
    EXPECT_TRUE(room.hears("channelChanged", {{"started", true}, {"channel", tripletOf(28106)}}));
    EXPECT_TRUE(room.hears("service", {{"connected", true}}));
    EXPECT_EQ(room.call("serviceState"), (json{{"connected", true}}));
}

TEST_F(TheBroadcastRoom, TunesAndKeepsWhatItHasWhenATuneFails) {
    const ServiceProcess service;
    ASSERT_TRUE(connects());
    ASSERT_TRUE(room.tunesTo(28107));
    EXPECT_TRUE(room.has("channelChanged", {{"started", true}, {"channel", tripletOf(28107)}}));
    json unknown = tripletOf(4711);
    unknown["idType"] = 12;
    EXPECT_EQ(room.call("tune", unknown), true);
    EXPECT_TRUE(room.hears("channelChanged", {{"started", false}, {"channel", tripletOf(28107)}}));
    EXPECT_EQ(room.call("presented"), tripletOf(28107));
}

TEST_F(TheBroadcastRoom, IsTunedByAPmtThatComesBeforeTheAnswer) {
    const ServiceProcess service;
    ASSERT_EQ(room.channelNames(4).size(), 4U);
    RunningScenario late(service, "late",
                         RunningScenario::file("late", R"({"name":"late","steps":[{"upon":"cmdTuneToService",
                             "answer-late":{"event":"onServiceChanged","by":0,"times":1}}]})"));
    const auto before = room.count("channelChanged");
    json second = tripletOf(28107);
    second["idType"] = 12;
    room.call("tune", second);
    const json changed = {{"started", true}, {"channel", tripletOf(28107)}};
    EXPECT_TRUE(room.hears("channelChanged", changed));
    late.ends();
    room.call("requestPts", nullptr);
    EXPECT_TRUE(room.becomes([&] { return room.count("pts") == 1; })) << "the answer has come before it";
    EXPECT_EQ(room.count("channelChanged"), before + 1);
    EXPECT_FALSE(room.has("service", {{"connected", false}}));
    EXPECT_FALSE(componentsOf(room, 0).empty());
    EXPECT_EQ(room.call("applications")["known"], true);
}

TEST_F(TheBroadcastRoom, TunesByADeliverySystemDescriptor) {
    const ServiceProcess service;
    ASSERT_EQ(room.channelNames(4).size(), 4U);
    ASSERT_TRUE(room.becomes([&] { return !room.call("channels")[0]["dsd"].get<std::string>().empty(); }));
    const json dsd = room.call("channels")[0]["dsd"];
    EXPECT_EQ(room.call("tuneByDescriptor", {{"dsd", dsd}, {"sid", 28108}}), true);
    EXPECT_TRUE(room.presents(28108));
    EXPECT_THROW(room.call("tuneByDescriptor", {{"dsd", "4x"}, {"sid", 28108}}), tvbrowser::BadCall);
}

TEST_F(TheBroadcastRoom, ListsOtherTransportStreamsWithTheirDeliverySystems) {
    const ServiceProcess service(broadcastOf(kRich, 5, "rich.ts"));
    ASSERT_THAT(room.channelNames(3), ElementsAre("First", "Second", "Elsewhere"));
    ASSERT_TRUE(room.becomes([&] { return room.call("channels")[2]["idType"] == 15; }));
    const json elsewhere = room.call("channels")[2];
    EXPECT_EQ(elsewhere["tsid"], 1026);
    EXPECT_EQ(elsewhere["dsd"], "430b0119747501928602200003");
    EXPECT_EQ(elsewhere["majorChannel"], 3);
}

TEST_F(TheBroadcastRoom, KeepsTheOrderOfChannelsWhenItTunesToAnotherMultiplex) {
    const ServiceProcess service(std::vector<std::string>{SAMPLE_FILE, broadcastOf(kOther, 3, "other.ts")});
    ASSERT_EQ(room.channelNames(4).size(), 4U);
    ASSERT_TRUE(room.tunesTo(9, 1030));
    const std::vector<std::string> names = room.channelNames(5);
    ASSERT_EQ(names.size(), 5U);
    EXPECT_EQ(names.front(), "Velmora One HD");
    EXPECT_EQ(names.back(), "Ninth");
    ASSERT_TRUE(room.tunesTo(28108));
    EXPECT_EQ(room.channelNames(5), names);
}

TEST_F(TheBroadcastRoom, ListsAndSelectsComponents) {
    const ServiceProcess service(broadcastOf(kRich, 5, "rich.ts"));
    ASSERT_TRUE(room.tunesTo(1));
    ASSERT_TRUE(room.hears("componentsChanged", {{"types", {0, 1, 2}}}));
    ASSERT_TRUE(room.becomes([&] { return componentsOf(room, 1)[0]["active"] == true; }));
    const json audio = componentsOf(room, 1);
    ASSERT_EQ(audio.size(), 2U);
    EXPECT_EQ(audio[0]["language"], "eng");
    EXPECT_EQ(audio[1]["language"], "deu");
    EXPECT_EQ(audio[1]["tag"], 3);
    EXPECT_EQ(audio[1]["active"], false);
    const json subtitles = componentsOf(room, 2);
    ASSERT_EQ(subtitles.size(), 2U);
    EXPECT_EQ(subtitles[0]["hearingImpaired"], false);
    EXPECT_EQ(subtitles[1]["hearingImpaired"], true);

    room.events.clear();
    EXPECT_EQ(room.call("selectComponent", {{"type", 1}, {"pid", audio[1]["pid"]}}), true);
    EXPECT_TRUE(room.hears("selectedComponentChanged", {{"type", 1}, {"pid", audio[1]["pid"]}}));
    EXPECT_EQ(componentsOf(room, 1)[0]["active"], false);
    EXPECT_EQ(componentsOf(room, 1)[1]["active"], true);
    EXPECT_EQ(room.call("unselectComponent", {{"type", 1}}), true);
    EXPECT_TRUE(room.hears("selectedComponentChanged", {{"type", 1}, {"pid", nullptr}}));
    EXPECT_EQ(componentsOf(room, 1)[1]["active"], false);
    EXPECT_FALSE(room.has("componentsChanged", {{"types", {1}}}));
}

TEST_F(TheBroadcastRoom, ForgetsTheComponentsOfTheServiceBefore) {
    const ServiceProcess service(broadcastOf(kRich, 5, "rich.ts"));
    ASSERT_TRUE(room.tunesTo(1));
    ASSERT_TRUE(room.becomes([&] { return room.call("components").size() == 5; }));
    ASSERT_TRUE(room.tunesTo(2));
    EXPECT_TRUE(room.becomes([&] { return room.call("components").size() == 1; }));
    EXPECT_TRUE(room.hears("componentsChanged", {{"types", {1}}}));
}

TEST_F(TheBroadcastRoom, HasThePresentAndTheFollowingProgramme) {
    const ServiceProcess service(broadcastOf(kRich, 10, "rich.ts"));
    ASSERT_TRUE(room.tunesTo(1));
    ASSERT_TRUE(room.becomes([&] {
        const json programmes = room.call("programmes");
        return programmes.size() == 2 && programmes[0]["eventId"] == 11;
    }));
    const json dawn = room.call("programmes")[0];
    EXPECT_EQ(dawn["name"], "Dawn");
    EXPECT_EQ(dawn["text"], "Light.");
    EXPECT_EQ(dawn["longText"], "A first long text");
    EXPECT_EQ(dawn["startTime"], 1767258000);
    EXPECT_EQ(dawn["duration"], 3);
    EXPECT_EQ(dawn["channel"], tripletOf(1));
    EXPECT_EQ(dawn["parentalRatings"], json::parse(R"([{"country": "DEU", "rating": 9}])"));
    EXPECT_EQ(dawn["content"], json::parse("[19]"));
    EXPECT_EQ(dawn["descriptors"].back(),
              (json{{"tag", 0x90}, {"extension", nullptr}, {"privateDataSpecifier", 0x28}, {"bytes", "aa"}}));

    room.events.clear();
    EXPECT_TRUE(room.becomes([&] {
        const json programmes = room.call("programmes");
        return programmes.size() == 2 && programmes[0]["eventId"] == 12 && programmes[1]["eventId"] == 13;
    }));
    EXPECT_TRUE(room.has("programmesChanged", nullptr));
}

TEST_F(TheBroadcastRoom, CollectsTheScheduleWhileItIsOpen) {
    const ServiceProcess service(broadcastOf(kRich, 5, "rich.ts"));
    ASSERT_TRUE(room.tunesTo(1));
    ASSERT_EQ(room.call("openSchedule"), true);
    ASSERT_TRUE(room.hears("scheduleChanged"));
    ASSERT_TRUE(room.becomes([&] { return room.call("schedule", tripletOf(1)).size() == 3; }));
    std::vector<int> ids;
    for (const json& programme : room.call("schedule")) {
        ids.push_back(programme["eventId"]);
    }
    EXPECT_THAT(ids, ElementsAre(11, 12, 13));
    EXPECT_EQ(room.call("schedule", tripletOf(2)), json::array());
    EXPECT_EQ(room.call("closeSchedule"), true);
}

TEST_F(TheBroadcastRoom, RefusesWrongCalls) {
    const auto refusal = [&](const std::string& name, const json& argument) -> std::string {
        try {
            room.call(name, argument);
        } catch (const tvbrowser::BadCall& error) {
            return error.what();
        }
        return "";
    };
    EXPECT_EQ(refusal("fly", nullptr), "there is no call \"fly\"");
    EXPECT_EQ(refusal("tune", nullptr), "tune: the argument is not an object");
    EXPECT_EQ(refusal("tune", {{"idType", 12}, {"onid", 1}}), "tune: tsid is missing");
    EXPECT_EQ(refusal("tune", {{"idType", 12}, {"onid", 70000}}), "tune: onid is not a number from 0 to 65535");
    EXPECT_EQ(refusal("selectComponent", {{"type", 3}}), "selectComponent: type is not a number from 0 to 2");
    EXPECT_EQ(refusal("schedule", {{"onid", "1"}}), "schedule: onid is not a number from 0 to 65535");
}

TEST(ALibrary, ThatIsMissingIsNamed) {
    std::string error;
    EXPECT_FALSE(tvbrowser::loadLibrary("/nonexistent.so", error));
    EXPECT_THAT(error, testing::StartsWith("cannot load /nonexistent.so: "));
}
