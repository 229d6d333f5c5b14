// A DTV service that ends and starts again, so fast that no look for it fails.
#include <algorithm>

#include "broadcast.h"
#include "fake_filters.h"
#include "made_tables.h"
#include "recording_api.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr std::size_t kTables = 4;  // PAT, SDT (actual and other), NIT
constexpr int kFirst = 0;
constexpr int kChanged = 1;

/// The watch looks on its own thread.
class FakeApi final : public RecordingApi {
public:
    FakeApi() { known = false; }
    int stopOSDDetection(std::uint32_t) override { return isThere ? 0 : -1; }

    std::atomic<bool> isThere{true};
};

class NoStoredAit final : public velmora::dtv::DVBAITSectionInterface {
public:
    void AddRef() override {}
    void Release() override {}
    std::string name() override { return "DvbAITAPI"; }
    bool registerClient(velmora::dtv::AITSectionClient*) override { return true; }
    bool unRegisterClient(velmora::dtv::AITSectionClient*) override { return true; }
    bool getCurrentChannelAIT(velmora::dtv::AITSectionClient*, std::uint16_t, std::uint16_t, std::uint16_t) override {
        return false;
    }
};

}  // namespace

class ARestartedService : public testing::Test {
protected:
    void start() {
        tvbrowser::Library library{&api, &filters, &ait, {}};
        library.catcher.updateCurrentChannelInfo = [](auto...) { return 0; };
        room = std::make_unique<tvbrowser::Broadcast>(
            library, tasks.post(),
            [this](const std::string& name, const json& value) { events.push_back(name + value.dump()); });
    }
    bool becomesConnected() {
        return eventually([this] {
            tasks.run();
            return room->isConnected();
        });
    }
    void sendPmt(int update) {
        const Section section = tsmake::pmtSection(kSample.services[0]);
        api.listeners.at(0)->onPMTSectionUpdated(1, 1025, 28106, update, {section.begin(), section.end()});
        tasks.run();
    }
    /// Connects, and is told of the presented service as a newcomer and as one that has asked.
    void startAndLearn() {
        start();
        ASSERT_TRUE(becomesConnected());
        sendPmt(kFirst);
        sendPmt(kFirst);
        ASSERT_TRUE(eventually([this] { return filters.openCount() == kTables; }));
        news();
    }
    bool hasNoneOf(const std::set<std::string>& sessions) {
        const std::set<std::string> now = filters.openSessions();
        return std::none_of(now.begin(), now.end(), [&](const std::string& each) { return sessions.count(each) != 0; });
    }
    std::vector<std::string> news() {
        api.calls.clear();
        return std::exchange(events, {});
    }
    /// Sends the PAT until the channels are as many.
    bool has(std::size_t count, const tsmake::Multiplex& multiplex) {
        return eventually([&] {
            filters.deliver(0, tsmake::patSection(multiplex));
            tasks.run();
            return room->call("channels", nullptr).size() == count;
        });
    }

    Tasks tasks;
    FakeApi api;
    FakeFilters& filters = newFakeFilters();
    NoStoredAit ait;
    std::vector<std::string> events;
    std::unique_ptr<tvbrowser::Broadcast> room;
};

TEST_F(ARestartedService, IsNoticedByAFirstPmtThatNothingExplains) {
    startAndLearn();
    const std::set<std::string> before = filters.openSessions();
    sendPmt(kFirst);
    EXPECT_THAT(api.calls, ElementsAre("notifyMwhbStart()"));
    EXPECT_THAT(news(), ElementsAre(R"(service{"connected":false})", R"(service{"connected":true})"));
    EXPECT_TRUE(room->isConnected());
    EXPECT_TRUE(eventually([&] { return filters.openCount() == kTables && hasNoneOf(before); }))
        << "each filter is opened anew";
    sendPmt(kFirst);
    EXPECT_THAT(news(), IsEmpty());
    sendPmt(kFirst);
    EXPECT_THAT(news(), Contains(R"(service{"connected":false})"));
}

TEST_F(ARestartedService, FailsATuneThatWasUnderWay) {
    startAndLearn();
    room->call("tune", {{"idType", 12}, {"onid", 1}, {"tsid", 1025}, {"sid", 28107}});
    sendPmt(kFirst);
    EXPECT_THAT(news(), ElementsAre(R"(channelChanged{"channel":{"onid":1,"sid":28106,"tsid":1025},"started":false})",
                                    R"(service{"connected":false})", R"(service{"connected":true})"));
    sendPmt(kFirst);
    EXPECT_THAT(news(), IsEmpty());
}

TEST_F(ARestartedService, MayHaveAnotherBroadcast) {
    startAndLearn();
    ASSERT_TRUE(has(4, kSample));
    tsmake::Multiplex other = kSample;
    other.transportStreamId = 1031;
    other.services.resize(2);
    ASSERT_TRUE(has(6, other));
    sendPmt(kFirst);
    other.transportStreamId = 1032;
    EXPECT_TRUE(has(2, other));
}

TEST_F(ARestartedService, IsNoticedWhereTheFirstPmtCameBeforeTheFirstLook) {
    api.isThere = false;
    start();
    sendPmt(kFirst);
    api.isThere = true;
    ASSERT_TRUE(becomesConnected());
    news();
    sendPmt(kFirst);
    EXPECT_THAT(news(), IsEmpty());
    sendPmt(kFirst);
    EXPECT_THAT(news(), ElementsAre(R"(service{"connected":false})", R"(service{"connected":true})"));
}

TEST_F(ARestartedService, IsNotTakenFromATuneOrAChange) {
    startAndLearn();
    api.listeners.at(0)->OnChannelChanged(true, 1, 1025, 28106);
    sendPmt(kFirst);
    sendPmt(kChanged);
    EXPECT_THAT(news(), testing::Not(Contains(R"(service{"connected":false})")));
    sendPmt(kFirst);
    EXPECT_THAT(news(), Contains(R"(service{"connected":false})"));
}
