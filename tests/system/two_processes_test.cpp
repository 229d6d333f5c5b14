// Browser and service as two real processes on a broadcast: this process is the browser, and gets the library as one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>
#include <set>

#include "dvb_section_interface.h"
#include "events.h"
#include "library.h"
#include "service_process.h"
#include "tables.h"

namespace {

const std::string kRunDirectory = OwnRunDirectory::instance().path();
const tsmake::Multiplex kSample = tsmake::sampleMultiplex();

using dvbshell::Event;
using dvbshell::EventKind;

std::string asText(const tsmake::Section& section) {
    return {section.begin(), section.end()};
}

/// Keeps the different sections that it is given.
class CountingSections final : public velmora::dtv::SectionFilterClient {
public:
    void onSectionData(const std::string&, unsigned int, const unsigned char* data, unsigned int length) override {
        const std::lock_guard<std::mutex> lock(mutex);
        sections.emplace(reinterpret_cast<const char*>(data), length);
    }
    std::size_t distinct() const { return all().size(); }
    std::set<std::string> all() const {
        const std::lock_guard<std::mutex> lock(mutex);
        return sections;
    }

private:
    mutable std::mutex mutex;  // guards sections
    std::set<std::string> sections;
};

class ABrowser : public testing::Test {
protected:
    ABrowser() {
        std::string error;
        api = dvbshell::loadDvbApi(LIBRARY_FILE, error);
        EXPECT_NE(api, nullptr) << error;
        api->addListener(listener);
    }
    ~ABrowser() override { api->removeListener(listener); }

    void tune(int sid) { api->tuneToService(12, 1, 1025, sid, 0); }

    /// The next event of a kind that a condition holds for; others are passed over.
    template <typename Condition>
    testing::AssertionResult arrives(EventKind kind, Condition condition) {
        const auto end = dvbshell::Clock::now() + std::chrono::seconds(20);
        while (const std::optional<Event> event = queue.take(end)) {
            if (event->kind == kind && condition(*event)) {
                return testing::AssertionSuccess();
            }
        }
        return testing::AssertionFailure() << "did not arrive";
    }
    testing::AssertionResult sectionArrives(EventKind kind, const tsmake::Section& section) {
        return arrives(kind, [&](const Event& event) { return event.section == asText(section); });
    }
    testing::AssertionResult channelArrives(int sid) {
        return arrives(EventKind::channel, [sid](const Event& event) {
            return event.started && event.onid == 1 && event.tsid == 1025 && event.sid == sid;
        });
    }
    /// Commands reach a service and a channel is known.
    bool connected() {
        return eventually([this] {
            int onid = 0;
            int tsid = 0;
            int sid = 0;
            return api->sendPtsRequest(0) == 0 && api->getCurrentChannelInfo(onid, tsid, sid) == 0;
        });
    }
    /// A reading in the middle of a report may show parts of it, so the channel is looked at until it is whole.
    bool settlesOn(const std::string& ccid) {
        return eventually([&] { return api->getCurrentCCID() == ccid; });
    }
    /// Tunes until the service knows the broadcast so far.
    bool tunesTo(int sid) {
        return eventually([this, sid] {
            tune(sid);
            return api->getCurrentCCID() == "ccid:1:1025:" + std::to_string(sid);
        });
    }

    dvbshell::EventQueue queue;
    std::shared_ptr<velmora::dtv::DVBServiceListener> listener = dvbshell::makeListener(queue);
    velmora::dtv::DvbAPIInterface* api = nullptr;
};

}  // namespace

TEST_F(ABrowser, SeesAServiceWithTheBroadcastsOwnBytes) {
    const ServiceProcess service;
    ASSERT_TRUE(connected());
    ASSERT_TRUE(tunesTo(28107));
    const tsmake::Service& second = kSample.services[1];
    EXPECT_TRUE(channelArrives(28107));
    EXPECT_TRUE(arrives(EventKind::pmt, [&](const Event& event) {
        return event.onid == 1 && event.tsid == 1025 && event.sid == 28107 &&
               event.section == asText(tsmake::pmtSection(second));
    }));
    EXPECT_TRUE(sectionArrives(EventKind::eit, tsmake::eitSection(kSample, second, false)));
    EXPECT_TRUE(sectionArrives(EventKind::eit, tsmake::eitSection(kSample, second, true)));
    EXPECT_TRUE(arrives(EventKind::ait, [&](const Event& event) {
        return event.sid == 28107 && event.section == asText(tsmake::aitSection(second));
    }));
    EXPECT_TRUE(settlesOn("ccid:1:1025:28107"));
}

TEST_F(ABrowser, LearnsTheCurrentChannelWithoutTuning) {
    const ServiceProcess service;
    EXPECT_TRUE(connected());
    EXPECT_TRUE(settlesOn("ccid:1:1025:28106"));
}

TEST_F(ABrowser, WorksWithAServiceThatComesLater) {
    EXPECT_LT(api->sendPtsRequest(0), 0);
    tune(28106);
    const ServiceProcess service;
    ASSERT_TRUE(connected());
    ASSERT_TRUE(tunesTo(28106));
    EXPECT_TRUE(sectionArrives(EventKind::pmt, tsmake::pmtSection(kSample.services[0])));
}

TEST_F(ABrowser, GetsNegativeResultsWhileTheServiceIsKilledAndWorksWithTheNextOne) {
    auto service = std::make_unique<ServiceProcess>();
    ASSERT_TRUE(connected());
    for (int round = 0; round < 3; ++round) {
        service->end(SIGKILL);
        ASSERT_TRUE(eventually([this] { return api->sendPtsRequest(0) < 0; }));
        EXPECT_LT(api->connectCa(1), 0);
        tune(28106);
        service = std::make_unique<ServiceProcess>();
        ASSERT_TRUE(connected());
        ASSERT_TRUE(tunesTo(28107));
        EXPECT_TRUE(channelArrives(28107));
        EXPECT_TRUE(sectionArrives(EventKind::ait, tsmake::aitSection(kSample.services[1])));
    }
}

TEST_F(ABrowser, IsToldOfATuneThatFailsAndKeepsItsChannel) {
    const ServiceProcess service;
    ASSERT_TRUE(connected());
    ASSERT_TRUE(tunesTo(28106));
    tune(4711);
    EXPECT_TRUE(arrives(EventKind::channel, [](const Event& event) { return !event.started && event.sid == 28106; }));
    EXPECT_TRUE(settlesOn("ccid:1:1025:28106"));
    EXPECT_THAT(service.log(), testing::HasSubstr("no service 1:1025:4711 in this multiplex"));
}

TEST_F(ABrowser, GetsPmtAndAitAgainWhenItAsks) {
    const ServiceProcess service;
    ASSERT_TRUE(connected());
    ASSERT_TRUE(tunesTo(28106));
    ASSERT_TRUE(sectionArrives(EventKind::ait, tsmake::aitSection(kSample.services[0])));
    api->notifyMwhbStart();
    EXPECT_TRUE(sectionArrives(EventKind::pmt, tsmake::pmtSection(kSample.services[0])));
    api->triggerAitRestart();
    EXPECT_TRUE(arrives(EventKind::aitChannel, [](const Event&) { return true; }));
    EXPECT_TRUE(sectionArrives(EventKind::ait, tsmake::aitSection(kSample.services[0])));
}

TEST_F(ABrowser, IsToldOfTheEndOfAnAudioSourceChange) {
    const ServiceProcess service;
    ASSERT_TRUE(connected());
    EXPECT_EQ(api->setAudioSource("broadcast"), 0);
    EXPECT_EQ(api->setAudioSource("broadband"), 0);
}

TEST_F(ABrowser, ReceivesTheSectionsOfAFilterFromTheService) {
    const ServiceProcess service;
    ASSERT_TRUE(connected());
    std::string error;
    auto* const filters = static_cast<velmora::dtv::DVBSectionInterface*>(
        dvbshell::loadInterface(LIBRARY_FILE, "SectionFilterAPI", error));
    ASSERT_NE(filters, nullptr) << error;
    // They outlive the test: a section may be on its way to them while it ends.
    static auto& everything = *new CountingSections;
    static auto& following = *new CountingSections;
    const std::string first = filters->generateSessionName();
    const std::string second = filters->generateSessionName();
    // EIT of one service, section_number 1: table_id, service_id, then the byte of version and the section's number.
    const unsigned char match[] = {0x4E, 0x6D, 0xCA, 0x00, 0x01};
    const unsigned char bits[] = {0xFF, 0xFF, 0xFF, 0x00, 0xFF};
    ASSERT_TRUE(filters->startSection(&everything, first, 0x12, nullptr, nullptr, 0));
    ASSERT_TRUE(filters->startSection(&following, second, 0x12, match, bits, sizeof match));
    EXPECT_TRUE(eventually([&] { return everything.distinct() == 8 && following.distinct() == 1; }));
    EXPECT_THAT(following.all(), testing::ElementsAre(asText(tsmake::eitSection(kSample, kSample.services[0], true))));
    EXPECT_TRUE(filters->stopSection(&everything, first));
    EXPECT_TRUE(filters->stopSection(&following, second));
    EXPECT_FALSE(filters->stopSection(&following, second));
    EXPECT_FALSE(filters->startSection(&everything, first, 0x2000, nullptr, nullptr, 0)) << "no such PID";
    filters->stopSection(&everything, first);
}

TEST_F(ABrowser, ReceivesThePmtOfAServiceThatIsNotPresented) {
    const ServiceProcess service;
    ASSERT_TRUE(connected());
    std::string error;
    auto* const filters = static_cast<velmora::dtv::DVBSectionInterface*>(
        dvbshell::loadInterface(LIBRARY_FILE, "SectionFilterAPI", error));
    static auto& client = *new CountingSections;
    const std::string session = filters->generateSessionName();
    EXPECT_EQ(filters->startPMTRequest(&client, session, 28108), 0);
    EXPECT_TRUE(eventually([&] { return client.distinct() == 1; }));
    EXPECT_THAT(client.all(), testing::ElementsAre(asText(tsmake::pmtSection(kSample.services[2]))));
    EXPECT_EQ(filters->stopPMTRequest(&client, session), 0);
}

TEST_F(ABrowser, FindsARefusedCommandByNameInTheServicesLog) {
    const ServiceProcess service;
    ASSERT_TRUE(connected());
    EXPECT_EQ(api->startTemiTimelineRequest(1, 2, 3), 0);
    EXPECT_TRUE(eventually([&] {
        return service.log().find("refused: this service does not handle cmdStartTemiTimelineRequest yet") !=
               std::string::npos;
    }));
}

TEST_F(ABrowser, HearsWhatAnotherBrowserTunesTo) {
    const ServiceProcess service;
    ASSERT_TRUE(connected());
    ASSERT_TRUE(tunesTo(28106));
    ChildProcess other(DVBSHELL, {"--seconds", "1", "tune", "1:1025:28108"}, "other");
    EXPECT_TRUE(channelArrives(28108));
    EXPECT_EQ(other.wait(), 0);
    EXPECT_THAT(other.output(), testing::HasSubstr("ccid:1:1025:28108  started"));
}

TEST_F(ABrowser, IsServedWhileAnotherOneIsKilled) {
    const ServiceProcess service;
    ASSERT_TRUE(connected());
    for (int round = 0; round < 5; ++round) {
        ChildProcess other(DVBSHELL, {"watch"}, "killed");
        ASSERT_TRUE(eventually([&] {
            const std::string log = service.log();
            return log.find("browser " + std::to_string(round + 2) + " connected") != std::string::npos;
        }));
        other.end(SIGKILL);
    }
    EXPECT_TRUE(tunesTo(28108));
    EXPECT_TRUE(channelArrives(28108));
}

TEST(TheReferenceService, EndsInGoodOrderOnATerminationSignal) {
    ServiceProcess service;
    EXPECT_EQ(service.end(SIGTERM), 0);
}

TEST(TheReferenceService, SaysWhatIsWrongWithItsInput) {
    ChildProcess missing(DTVSERVICED, {"--input", "/nonexistent.ts"}, "missing");
    EXPECT_EQ(missing.wait(), 1);
    EXPECT_EQ(missing.output(), "dtvserviced: cannot open /nonexistent.ts: No such file or directory\n");
    ChildProcess unknown(DTVSERVICED, {"--frobnicate"}, "unknown");
    EXPECT_EQ(unknown.wait(), 2);
    EXPECT_THAT(unknown.output(), testing::StartsWith("dtvserviced: unknown option --frobnicate\nusage:"));
}

TEST(TheReferenceService, RefusesToRunTwice) {
    ServiceProcess first;
    ChildProcess second(DTVSERVICED, {"--input", SAMPLE_FILE}, "second");
    EXPECT_EQ(second.wait(), 1);
    EXPECT_THAT(second.log(), testing::HasSubstr("another service runs under this name"));
}

TEST(TheShell, SaysWhichLibraryItCannotLoadAndWhy) {
    ChildProcess shell(DVBSHELL, {"--library", "/nonexistent.so", "watch"}, "shell");
    EXPECT_EQ(shell.wait(), 1);
    EXPECT_THAT(shell.output(), testing::StartsWith("dvbshell: cannot load /nonexistent.so: "));
}

TEST(TheShell, NamesAWrongArgumentAndItsRange) {
    ChildProcess shell(DVBSHELL, {"tune", "1:2:70000"}, "shell");
    EXPECT_EQ(shell.wait(), 2);
    EXPECT_THAT(shell.output(), testing::HasSubstr("\"1:2:70000\" is not ONID:TSID:SID, each from 0 to 65535"));
}

TEST(TheDemonstration, SeesEverythingOfTheSample) {
    ChildProcess demo(DEMO_SCRIPT, {BUILD_FOLDER, SAMPLE_FILE}, "demo");
    EXPECT_EQ(demo.wait(), 0) << demo.output();
    const std::string output = demo.output();
    for (const char* const expected :
         {"ccid:1:1025:28106  started", "ccid:1:1025:28107  started", "AIT (HbbTV)", "Morning on the Lake",
          "2026-01-01 09:00-10:00 UTC", "190:1  AUTOSTART  Red Button",
          "http://hbbtv.one.example/redbutton/index.html?lang=en", "Velmora Zwei Föhn", "all arrived"}) {
        EXPECT_THAT(output, testing::HasSubstr(expected));
    }
}

TEST(TheDemonstration, EndsPromptlyOnABroadcastWithoutAPat) {
    const std::string path = kRunDirectory + "/nopat.ts";
    std::ofstream file(path, std::ios::binary);
    std::string packet(188, '\xFF');
    packet[0] = 0x47;
    packet[1] = 0x01;
    packet[2] = 0x00;
    packet[3] = 0x10;
    for (int count = 0; count < 100; ++count) {
        file << packet;
    }
    file.close();
    ChildProcess demo(DEMO_SCRIPT, {BUILD_FOLDER, path}, "demo");
    EXPECT_EQ(demo.wait(), 1);
    EXPECT_THAT(demo.output(), testing::HasSubstr("there is no PAT in the file"));
}
