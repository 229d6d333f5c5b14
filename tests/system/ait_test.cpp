// The AIT end to end: from a broadcast through the service, the library and its catcher to a browser's AIT client.
#include "si/ait.h"

#include <set>

#include "ait_link.h"
#include "browser_fixture.h"

namespace {

class ABrowserWithAnAitClient : public testing::Test {
protected:
    ABrowserWithAnAitClient() {
        std::string error;
        link = dvbshell::AitLink::load(LIBRARY_FILE, queue, error);
        EXPECT_NE(link, nullptr) << error;
        api = dvbshell::loadDvbApi(LIBRARY_FILE, error);
        EXPECT_NE(api, nullptr) << error;
        listener = dvbshell::makeListener(queue, link);
        api->addListener(listener);
    }
    ~ABrowserWithAnAitClient() override { api->removeListener(listener); }

    /// The next section that the catcher delivers; none after a timeout.
    std::optional<Event> next(std::chrono::seconds longest = std::chrono::seconds(20)) {
        const auto end = dvbshell::Clock::now() + longest;
        while (std::optional<Event> event = queue.take(end)) {
            if (event->kind == EventKind::application) {
                return event;
            }
        }
        return std::nullopt;
    }
    bool tunesTo(int sid) {
        return eventually([this, sid] {
            api->tuneToService(12, 1, 1025, sid, 0);
            return api->getCurrentCCID() == "ccid:1:1025:" + std::to_string(sid);
        });
    }

    dvbshell::EventQueue& queue = dvbshell::forLife(new dvbshell::EventQueue);
    dvbshell::AitLink* link = nullptr;
    velmora::dtv::DvbAPIInterface* api = nullptr;
    std::shared_ptr<velmora::dtv::DVBServiceListener> listener;
};

}  // namespace

TEST_F(ABrowserWithAnAitClient, GetsEachAitOnceThenTheStoredOne) {
    const ServiceProcess service;
    const std::string first = asText(tsmake::aitSection(kSample.services[0]));
    const std::string second = asText(tsmake::aitSection(kSample.services[1]));
    ASSERT_TRUE(tunesTo(28106));
    std::optional<Event> event = next();
    ASSERT_TRUE(event);
    EXPECT_EQ(event->sid, 28106);
    EXPECT_EQ(event->section, first);
    ASSERT_TRUE(tunesTo(28107));
    event = next();
    ASSERT_TRUE(event);
    EXPECT_EQ(event->sid, 28107);
    EXPECT_EQ(event->section, second);
    ASSERT_TRUE(tunesTo(28106));
    EXPECT_FALSE(next(std::chrono::seconds(1))) << "it has been handed on";
    EXPECT_TRUE(link->replay(1, 1025, 28106));
    event = next();
    ASSERT_TRUE(event);
    EXPECT_EQ(event->section, first);
    EXPECT_TRUE(link->replay(1, 1025, 28107)) << "of a channel that is not the current one";
    event = next();
    ASSERT_TRUE(event);
    EXPECT_EQ(event->section, second);
}

TEST_F(ABrowserWithAnAitClient, GetsEachVersionOnceForAMinute) {
    constexpr unsigned int kSeconds = 60;
    constexpr unsigned int kSections = 3;
    tsmake::Multiplex multiplex = kSample;
    tsmake::Service& changing = multiplex.services[0];
    std::vector<tsmake::Application> applications = changing.ait.versions[0].applications;
    applications.push_back({0x190, 3, 2, "Third", "http://hbbtv.one.example/", "third.html"});
    changing.ait.sections = kSections;
    changing.ait.interval = 100;
    changing.ait.versions.clear();
    for (unsigned int second = 0; second < kSeconds; ++second) {
        constexpr unsigned int kVersions = 32;
        for (tsmake::Application& application : applications) {
            application.initialPath = "index.html?changes=" + std::to_string(second);
        }
        changing.ait.versions.push_back({second, static_cast<std::uint8_t>((1 + second) % kVersions), applications});
    }
    const ServiceProcess service(writeBroadcast(multiplex, kSeconds, "changing.ts"));
    ASSERT_TRUE(tunesTo(28106));

    // Expect every section of the broadcast in order, from the first that arrives to the last of the minute.
    std::vector<std::string> broadcast;
    for (unsigned int change = 0; change < kSeconds; ++change) {
        for (unsigned int number = 0; number < kSections; ++number) {
            broadcast.push_back(asText(tsmake::aitSection(changing, number, change)));
        }
    }
    std::optional<Event> event = next();
    ASSERT_TRUE(event);
    auto begin = std::find(broadcast.begin(), broadcast.end(), event->section);
    ASSERT_LT(begin - broadcast.begin(), std::ptrdiff_t{5} * kSections) << "it came in the first seconds";
    // The service may start to listen in the middle of a version. The sections of that version then arrive in another
    // order, and some may be missing if the version ends before they repeat.
    const auto second = begin + static_cast<std::ptrdiff_t>(kSections) - (begin - broadcast.begin()) % kSections;
    for (std::set<std::string> first; event && event->section != *second; event = next()) {
        ASSERT_TRUE(std::find(second - kSections, second, event->section) != second) << "of no other version";
        ASSERT_TRUE(first.insert(event->section).second) << "twice";
    }
    begin = second;
    for (auto expected = begin; expected != broadcast.end(); ++expected) {
        ASSERT_TRUE(event);
        std::string error;
        const auto ait = si::parseAit(event->section, error);
        ASSERT_TRUE(ait) << error;
        ASSERT_EQ(event->section, *expected)
            << "version " << int{ait->version} << ", section " << int{ait->sectionNumber};
        if (expected + 1 != broadcast.end()) {
            event = next();
        }
    }
}

TEST(TheShell, FollowsTheAitAndReplaysIt) {
    const ServiceProcess service;
    ChildProcess current(DVBSHELL, {"ait"}, "current");
    EXPECT_EQ(current.wait(), 0) << current.output();
    const std::string output = current.output();
    const std::size_t memory = output.find("from memory:");
    ASSERT_NE(memory, std::string::npos) << output;
    EXPECT_THAT(output.substr(0, memory),
                testing::HasSubstr("organisation_id 400 (0x190), application_id 1 (0x1)  AUTOSTART  Red Button"));
    EXPECT_THAT(output.substr(memory),
                testing::HasSubstr("organisation_id 400 (0x190), application_id 1 (0x1)  AUTOSTART  Red Button"));
    ChildProcess other(DVBSHELL, {"ait", "1:1025:28107"}, "other");
    EXPECT_EQ(other.wait(), 0) << other.output();
    EXPECT_THAT(other.output(), testing::HasSubstr("application_id 17 (0x11)  AUTOSTART  Zwei Text"));
    ChildProcess without(DVBSHELL, {"ait", "1:1025:28108", "--seconds", "1"}, "without");
    EXPECT_EQ(without.wait(), 1);
    EXPECT_THAT(without.output(), testing::HasSubstr("no AIT came"));
}
