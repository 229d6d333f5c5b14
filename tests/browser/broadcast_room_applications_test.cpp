// The applications that the browser's room for the broadcast knows.
#include "broadcast_room_fixture.h"

namespace {

/// Two services with applications: the AIT of the first changes and ends, that of the second has several sections.
constexpr const char* kChanging = R"({
    "originalNetworkId": 1, "transportStreamId": 1025, "networkName": "Velmora", "provider": "Velmora",
    "services": [
        {"id": 1, "name": "First", "components": [{"kind": "video", "tag": 1}],
         "ait": {"end": 6, "versions": [
             {"second": 0, "version": 1, "applications": [
                 {"organisation": 10, "id": 1, "control": "autostart", "name": "One", "urlBase": "http://one.example/",
                  "path": "a.html", "boundaries": ["http://two.example/"]}]},
             {"second": 3, "version": 2, "applications": [
                 {"organisation": 10, "id": 1, "control": "kill", "name": "One", "urlBase": "http://one.example/",
                  "path": "a.html"}]}]}},
        {"id": 2, "name": "Second", "components": [{"kind": "video", "tag": 1}],
         "ait": {"sections": 3, "versions": [{"version": 4, "applications": [
             {"organisation": 10, "id": 1, "control": "autostart", "name": "A", "urlBase": "http://a/", "path": "a"},
             {"organisation": 10, "id": 2, "control": "present", "name": "B", "urlBase": "http://b/", "path": "b"},
             {"organisation": 10, "id": 3, "control": "present", "name": "C", "urlBase": "http://c/", "path": "c"}]}]}},
        {"id": 3, "name": "Third", "components": [{"kind": "video", "tag": 1}]}
    ]
})";

class TheApplications : public TheBroadcastRoom {
protected:
    bool become(const std::function<bool(const json&)>& condition) {
        return room.becomes([&] { return condition(room.call("applications")); });
    }
    static bool isNone(const json& applications) {
        return applications["known"] == true && applications["signalled"] == false && applications["list"].empty();
    }
};

}  // namespace

TEST_F(TheApplications, AreThoseOfTheAit) {
    const ServiceProcess service;
    ASSERT_TRUE(become([](const json& applications) { return applications["complete"] == true; }));
    const json applications = room.call("applications");
    EXPECT_EQ(applications["signalled"], true);
    ASSERT_EQ(applications["list"].size(), 2U);
    EXPECT_EQ(applications["list"][0],
              (json{{"organisation", 400},
                    {"application", 1},
                    {"control", 1},
                    {"name", "Red Button"},
                    {"names", json::parse(R"([{"language": "eng", "text": "Red Button"}])")},
                    {"url", "http://hbbtv.one.example/redbutton/index.html?lang=en"},
                    {"entries", json::array({"http://hbbtv.one.example/redbutton/index.html?lang=en"})},
                    {"protocols", {3}},
                    {"carousel", nullptr},
                    {"priority", 1},
                    {"visibility", 3},
                    {"serviceBound", true},
                    {"profiles", json::parse(R"([{"profile": 0, "major": 1, "minor": 2, "micro": 1}])")},
                    {"boundaries", json::array()},
                    {"usage", nullptr}}));
    EXPECT_TRUE(room.has("applicationsChanged", nullptr));
}

TEST_F(TheApplications, FollowANewVersionAndTheEndOfTheAit) {
    const ServiceProcess service(broadcastOf(kChanging, 9, "changing.ts"));
    ASSERT_TRUE(connects());
    ASSERT_TRUE(become([](const json& now) { return now["list"].size() == 1 && now["list"][0]["control"] == 1; }));
    EXPECT_EQ(room.call("applications")["list"][0]["boundaries"], json{"http://two.example/"});
    EXPECT_TRUE(become([](const json& now) { return now["list"].size() == 1 && now["list"][0]["control"] == 4; }));
    room.events.clear();
    EXPECT_TRUE(become(&isNone));
    EXPECT_TRUE(room.has("applicationsChanged", nullptr));
    // The file begins anew.
    EXPECT_TRUE(become([](const json& now) { return now["list"].size() == 1 && now["list"][0]["control"] == 1; }));
}

TEST_F(TheApplications, AreCompleteWithAllSections) {
    const ServiceProcess service(broadcastOf(kChanging, 9, "changing.ts"));
    ASSERT_TRUE(room.tunesTo(2));
    ASSERT_TRUE(become([](const json& now) { return now["complete"] == true; }));
    std::vector<std::string> names;
    const json applications = room.call("applications");
    for (const json& application : applications["list"]) {
        names.push_back(application["name"]);
    }
    EXPECT_THAT(names, testing::ElementsAre("A", "B", "C"));
}

TEST_F(TheApplications, AreThereAgainAfterAReturn) {
    const ServiceProcess service;
    ASSERT_TRUE(room.tunesTo(28106));
    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(become([](const json& now) { return now["complete"] == true && now["list"].size() == 2; }));
        ASSERT_TRUE(room.tunesTo(28107));
        ASSERT_TRUE(become([](const json& now) { return now["complete"] == true && now["list"].size() == 1; }));
        ASSERT_TRUE(room.tunesTo(28108));
        ASSERT_TRUE(become(&isNone));
        ASSERT_TRUE(room.tunesTo(28106));
    }
}

TEST_F(TheApplications, AreSaidToBeNoneByAServiceWithoutAit) {
    const ServiceProcess service;
    ASSERT_TRUE(room.tunesTo(28106));
    ASSERT_TRUE(become([](const json& now) { return now["complete"] == true; }));
    room.events.clear();
    ASSERT_TRUE(room.tunesTo(28108));
    EXPECT_TRUE(become(&isNone));
    EXPECT_TRUE(room.has("applicationsChanged", nullptr));
}
