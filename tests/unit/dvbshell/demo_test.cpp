// The demonstration with a fake library: the services it tunes to, the events it waits for, what it reports as missing.
#include "demo.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <map>

#include "recorded_session.h"
#include "tables.h"

namespace {

using dvbshell::ListedService;
using testing::HasSubstr;
using testing::Not;

const tsmake::Multiplex kSample = tsmake::sampleMultiplex();
/// A fake library whose answers are queued when a tune returns. A test can leave out answers.
constexpr std::chrono::milliseconds kEnough{500};
constexpr std::uint16_t kOnid = 1;
constexpr std::uint16_t kTsid = 1025;

std::string asText(const tsmake::Section& section) {
    return {section.begin(), section.end()};
}

ListedService listed(const tsmake::Service& service) {
    ListedService result;
    result.triplet = {kOnid, kTsid, service.serviceId};
    result.hasPmt = true;
    result.signalsAit = !service.ait.versions.empty();
    result.name = "Name";
    return result;
}

/// Delivers each section once, and again on request, like the library's AIT catcher.
class PlayedCatcher : public dvbshell::AitSink {
public:
    explicit PlayedCatcher(dvbshell::EventQueue& newQueue) : queue(newQueue) {}

    void onChannel(std::uint16_t, std::uint16_t, std::uint16_t) override {}
    void onAit(std::uint16_t, std::uint16_t, std::uint16_t sid, const std::string& section) override {
        if (stored.emplace(sid, section).second) {
            handOn(sid);
        }
    }
    void handOn(int sid) {
        dvbshell::Event event;
        event.kind = dvbshell::EventKind::application;
        event.onid = kOnid;
        event.tsid = kTsid;
        event.sid = sid;
        event.section = stored.at(sid);
        queue.put(event);
    }

private:
    dvbshell::EventQueue& queue;
    std::map<int, std::string> stored;
};

class ADemonstration : public ARecordedSession {
protected:
    /// Answers every tune with the sample's tables of the service, except those that the test leaves out.
    ADemonstration() {
        api.tuned = [this](int sid) {
            for (const tsmake::Service& service : kSample.services) {
                if (service.serviceId == sid) {
                    answer(service);
                }
            }
        };
    }

    void answer(const tsmake::Service& service) {
        if (answersChannel) {
            listener->OnChannelChanged(true, kOnid, kTsid, service.serviceId);
        }
        if (answersPmt) {
            listener->onPMTSectionUpdated(kOnid, kTsid, service.serviceId, 0, asText(tsmake::pmtSection(service)));
        }
        listener->onEITSectionUpdated(0, asText(tsmake::eitSection(kSample, service, false)));
        if (answersAit && !service.ait.versions.empty()) {
            listener->onAITSectionUpdated(kOnid, kTsid, service.serviceId, asText(tsmake::aitSection(service)));
        }
    }

    int run(const std::vector<ListedService>& services, dvbshell::Clock::duration longest = std::chrono::seconds(60)) {
        dvbshell::DemoPlan plan;
        plan.shown = services;
        return run(plan, longest);
    }
    int run(const dvbshell::DemoPlan& plan, dvbshell::Clock::duration longest = std::chrono::seconds(60)) {
        const auto replay = [this](const dvbshell::Triplet& channel) { catcher.handOn(channel.sid); };
        return dvbshell::runDemo(session, plan, replay, longest);
    }

    PlayedCatcher catcher{queue};
    std::shared_ptr<velmora::dtv::DVBServiceListener> listener = dvbshell::makeListener(queue, &catcher);
    bool answersChannel = true;
    bool answersPmt = true;
    bool answersAit = true;
};

}  // namespace

TEST_F(ADemonstration, SucceedsWhenEverythingArrives) {
    EXPECT_EQ(run({listed(kSample.services[0]), listed(kSample.services[2])}), 0);
    EXPECT_THAT(output.text(), HasSubstr("all arrived"));
    EXPECT_THAT(output.text(), Not(HasSubstr("missing")));
}

TEST_F(ADemonstration, TunesOnceWhenTheChannelChanges) {
    run({listed(kSample.services[2])});
    EXPECT_THAT(api.calls, testing::Contains("tuneToService(12, 1, 1025, 28108, 0)").Times(1));
}

TEST_F(ADemonstration, NamesTheServiceWhosePmtDidNotArrive) {
    answersPmt = false;
    EXPECT_EQ(run({listed(kSample.services[0])}, kEnough), 1);
    EXPECT_THAT(output.text(), HasSubstr("missing: no PMT arrived in 0 s for 1:1025:28106 (Name)\n"));
}

TEST_F(ADemonstration, NamesTheServiceWhoseAitDidNotArrive) {
    answersAit = false;
    EXPECT_EQ(run({listed(kSample.services[0])}, kEnough), 1);
    EXPECT_THAT(output.text(),
                HasSubstr("missing: no AIT arrived in 0 s for 1:1025:28106 (Name), whose PMT signals one\n"));
}

TEST_F(ADemonstration, NamesTheServiceWhoseChannelDidNotChange) {
    answersChannel = false;
    EXPECT_EQ(run({listed(kSample.services[0])}, kEnough), 1);
    EXPECT_THAT(output.text(), HasSubstr("missing: no channel change arrived for 1:1025:28106 (Name)\n"));
}

TEST_F(ADemonstration, FailsOnABroadcastWithoutAnAit) {
    EXPECT_EQ(run({listed(kSample.services[2])}), 1);
    EXPECT_THAT(output.text(), HasSubstr("missing: no service of this broadcast signals an HbbTV AIT\n"));
    EXPECT_THAT(output.text(), Not(HasSubstr("no PMT")));
}

TEST_F(ADemonstration, GivesEachServiceItsTime) {
    answersChannel = false;
    EXPECT_EQ(run({listed(kSample.services[0]), listed(kSample.services[1])}, std::chrono::milliseconds(1)), 1);
    EXPECT_THAT(output.text(), HasSubstr("missing: no channel change arrived for 1:1025:28106 (Name)\n"));
    EXPECT_THAT(output.text(), HasSubstr("missing: no channel change arrived for 1:1025:28107 (Name)\n"));
}

TEST_F(ADemonstration, ReturnsToTheFirstServiceAndShowsTheStoredAit) {
    EXPECT_EQ(run({listed(kSample.services[2]), listed(kSample.services[0]), listed(kSample.services[1])}), 0);
    const std::string text = output.text();
    const std::size_t back = text.find("--- back to 1:1025:28106  Name, its AIT from memory");
    ASSERT_NE(back, std::string::npos);
    EXPECT_THAT(text.substr(back),
                HasSubstr("organisation_id 400 (0x190), application_id 1 (0x1)  AUTOSTART  Red Button"));
    std::vector<std::string> tunes;
    std::copy_if(api.calls.begin(), api.calls.end(), std::back_inserter(tunes),
                 [](const std::string& call) { return call.compare(0, 13, "tuneToService") == 0; });
    EXPECT_EQ(tunes.back(), "tuneToService(12, 1, 1025, 28106, 0)");
}

TEST_F(ADemonstration, AsksForAnAitDeliveredBefore) {
    const ListedService service = listed(kSample.services[0]);
    EXPECT_EQ(run({service, listed(kSample.services[1]), service}), 0);
    EXPECT_THAT(output.text(), HasSubstr("all arrived"));
}

TEST_F(ADemonstration, DoesNotReportAsMissingWhatItDidNotTry) {
    api.tuned = [this](int) { api.result = -1; };
    EXPECT_EQ(run({listed(kSample.services[0]), listed(kSample.services[1])}), dvbshell::kNoService);
    EXPECT_THAT(output.text(), HasSubstr("the DTV service has gone\n"));
    EXPECT_THAT(output.text(), testing::ContainsRegex("1:1025:28106 +Name +not tried\n"));
    EXPECT_THAT(output.text(), testing::ContainsRegex("1:1025:28107 +Name +not tried\n"));
    EXPECT_THAT(output.text(), HasSubstr("\nended before everything was tried\n"));
    EXPECT_THAT(output.text(), Not(HasSubstr("missing")));
}

TEST_F(ADemonstration, SaysWhatItLeavesOutAndWhy) {
    dvbshell::DemoPlan plan;
    plan.shown = {listed(kSample.services[0])};
    plan.leftOut = {{listed(kSample.services[1]), "enough others"}};
    EXPECT_EQ(run(plan), 0);
    EXPECT_THAT(output.text(), testing::ContainsRegex("shown +1:1025:28106 +Name"));
    EXPECT_THAT(output.text(), testing::ContainsRegex("left out +1:1025:28107 +Name +enough others\n"));
}

TEST_F(ADemonstration, ExpectsNoAitOfServicesThatTheUserChose) {
    dvbshell::DemoPlan plan;
    plan.shown = {listed(kSample.services[2])};
    plan.anyAitExpected = false;
    EXPECT_EQ(run(plan), 0);
    EXPECT_THAT(output.text(), HasSubstr("all arrived"));
}
