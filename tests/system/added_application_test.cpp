// An application that the service adds to every service, as a browser in another process sees it.
#include "browser_fixture.h"
#include "si/ait.h"
#include "si/tables.h"

namespace {

const std::string kUrl = "http://mine.example/app/index.html?a=1";

si::Ait aitOf(const Event& event) {
    std::string error;
    const std::optional<si::Ait> ait = si::parseAit(event.section, error);
    EXPECT_TRUE(ait) << error;
    return ait.value_or(si::Ait());
}

si::Pmt pmtOf(const Event& event) {
    std::string error;
    const std::optional<si::Pmt> pmt = si::parsePmt(event.section, error);
    EXPECT_TRUE(pmt) << error;
    return pmt.value_or(si::Pmt());
}

class AnAddedApplication : public ABrowser {
protected:
    static std::vector<std::string> playing(const std::string& file,
                                            const std::string& application = kUrl + ",190.2a") {
        return {file, "--application", application};
    }
    /// An AIT of the service that has the application alone.
    testing::AssertionResult aitArrives(int sid) {
        return arrives(EventKind::ait, [sid](const Event& event) {
            const si::Ait ait = aitOf(event);
            return event.sid == sid && ait.applications.size() == 1 && ait.applications[0].organisationId == 0x190 &&
                   ait.applications[0].applicationId == 0x2A && ait.applications[0].controlCode == 1 &&
                   ait.applications[0].url() == kUrl;
        });
    }
    /// A PMT of the service that signals one AIT, on a PID of its own.
    testing::AssertionResult pmtArrives(int sid, int update) {
        return arrives(EventKind::pmt, [&](const Event& event) {
            const si::Pmt pmt = pmtOf(event);
            return event.sid == sid && event.update == update && si::crcIsRight(event.section) &&
                   si::listsHbbTvAit(pmt) && si::hbbtvAitPids(pmt).size() == 1 && si::hbbtvAitPids(pmt)[0] == 0x1FFE;
        });
    }
};

}  // namespace

TEST_F(AnAddedApplication, ArrivesAfterATuneToAServiceWithAndWithoutAnAit) {
    const ServiceProcess service(playing(SAMPLE_FILE));
    ASSERT_TRUE(connected());
    ASSERT_FALSE(kSample.services[1].ait.versions.empty());
    ASSERT_TRUE(kSample.services[2].ait.versions.empty());
    for (const int sid : {28107, 28108, 28106}) {
        ASSERT_TRUE(tunesTo(sid));
        EXPECT_TRUE(pmtArrives(sid, 0));
        EXPECT_TRUE(aitArrives(sid));
    }
}

TEST_F(AnAddedApplication, ArrivesAgainForABrowserThatHasStartedOrAsks) {
    const ServiceProcess service(playing(SAMPLE_FILE));
    ASSERT_TRUE(connected());
    ASSERT_TRUE(tunesTo(28108));
    ASSERT_TRUE(aitArrives(28108));
    api->notifyMwhbStart();
    EXPECT_TRUE(pmtArrives(28108, 0));
    EXPECT_TRUE(aitArrives(28108));
    api->triggerAitRestart();
    EXPECT_TRUE(arrives(EventKind::aitChannel, [](const Event&) { return true; }));
    EXPECT_TRUE(aitArrives(28108));
    ChildProcess other(DVBSHELL, {"--seconds", "60", "start-notify"}, "other");
    EXPECT_TRUE(eventually([&] { return other.output().find(kUrl) != std::string::npos; })) << other.output();
}

TEST_F(AnAddedApplication, StaysWhenThePmtOfTheBroadcastChanges) {
    tsmake::Multiplex changing = kSample;
    changing.services[0].ait.end = 2;
    const ServiceProcess service(playing(writeBroadcast(changing, 4, "changing.ts")));
    ASSERT_TRUE(connected());
    ASSERT_TRUE(tunesTo(28106));
    for (int time = 0; time < 2; ++time) {
        EXPECT_TRUE(pmtArrives(28106, 1)) << "the broadcast's own AIT ends and begins again";
    }
    while (const std::optional<Event> event = queue.take(dvbshell::Clock::now())) {
        if (event->kind == EventKind::ait) {
            EXPECT_EQ(aitOf(*event).applications.at(0).url(), kUrl);
        }
    }
}

TEST_F(AnAddedApplication, IsListedForEveryServiceWithAPmt) {
    const ServiceProcess service(playing(SAMPLE_FILE));
    EXPECT_TRUE(eventually([] {
        ChildProcess console(DTVCTL, {"channels"}, "dtvctl");
        console.wait();
        const std::string output = console.output();
        std::size_t count = 0;
        for (std::size_t at = output.find(" hbbtv"); at != std::string::npos; at = output.find(" hbbtv", at + 1)) {
            ++count;
        }
        return count == kSample.services.size();
    }));
}

TEST(AnAddedApplicationsUrl, EndsTheServiceIfItIsWrong) {
    ChildProcess service(DTVSERVICED, {"--input", SAMPLE_FILE, "--application", "ftp://mine.example/"}, "service");
    EXPECT_EQ(service.wait(), 2);
    EXPECT_EQ(service.output(),
              "dtvserviced: --application: \"ftp://mine.example/\" is not a URL that begins with http:// or https://\n"
              "try: dtvserviced --help\n");
}
