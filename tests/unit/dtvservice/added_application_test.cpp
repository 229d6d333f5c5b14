// Tests of what browsers are told of an application that is added to every service.
#include "application_option.h"
#include "running_set.h"
#include "tables.h"

namespace {

using dtvservice::Commands;

constexpr dtvservice::Browser kFirst = 1;
constexpr dtvservice::Browser kSecond = 2;
const std::string kSignalled = "onAitParsingStateChanged(1)";
const std::string kInfo = "onAitInfoAvailable(400, 7, 1, 1, 1, 1, " + shownValue(std::string("http://mine.example/")) +
                          ", " + shownValue(std::string("index.html")) + ", 1)";

std::optional<si::Ait::Application> application() {
    std::string error;
    return dtvservice::parseApplication("http://mine.example/index.html,190.7", error);
}

class ASetWithAnAddedApplication : public ARunningSet {
protected:
    ASetWithAnAddedApplication() : ARunningSet(application()) {}

    static Texts of(const Texts& texts, const std::string& operation) {
        Texts found;
        std::copy_if(texts.begin(), texts.end(), std::back_inserter(found),
                     [&](const std::string& text) { return text.compare(0, operation.size(), operation) == 0; });
        return found;
    }
    /// The event with the service's PMT as it is told.
    std::string pmtEvent(const tsmake::Section& broadcast, bool changed = false) const {
        std::string error;
        const std::optional<si::Pmt> own = si::parsePmt(broadcast, error);
        const broadcast::Section told = core.application->signalledIn(own.value()).value();
        return "onPmtDataChange(1, 1025, " + std::to_string(own->serviceId) + ", " + (changed ? "1" : "0") + ", " +
               shownBytes(told.data(), told.size()) + ")";
    }

    const std::string ait =
        "onAitSectionAvailable(" + shownBytes(core.application->ait().data(), core.application->ait().size()) + ")";
};

}  // namespace

TEST_F(ASetWithAnAddedApplication, TellsItOnceWithTheFirstService) {
    join(kFirst);
    play(sample);
    play(sample);
    const Texts texts = heard.take(kFirst);
    EXPECT_THAT(of(texts, "onPmtDataChange"), testing::ElementsAre(pmtEvent(tsmake::pmtSection(sample.services[0]))));
    EXPECT_THAT(of(texts, "onAitSectionAvailable"), testing::ElementsAre(ait));
    EXPECT_THAT(of(texts, "onAitInfoAvailable"), testing::ElementsAre(kInfo));
    EXPECT_THAT(of(texts, "onAitParsingStateChanged"), testing::Contains(kSignalled));
    EXPECT_THAT(of(texts, "onAitParsingStateChanged"), testing::Not(testing::Contains("onAitParsingStateChanged(0)")));
}

TEST_F(ASetWithAnAddedApplication, TellsItOnAServiceWithAndWithoutAnAit) {
    play(sample);
    join(kFirst);
    ASSERT_TRUE(sample.services[2].ait.versions.empty());
    for (const std::size_t index : {std::size_t{1}, std::size_t{2}}) {
        heard.take(kFirst);
        tune(kFirst, sample.services[index].serviceId);
        const Texts texts = heard.take(kFirst);
        EXPECT_THAT(of(texts, "onPmtDataChange"),
                    testing::ElementsAre(pmtEvent(tsmake::pmtSection(sample.services[index]))));
        EXPECT_THAT(of(texts, "onAitSectionAvailable"), testing::ElementsAre(ait));
        EXPECT_THAT(of(texts, "onAitInfoAvailable"), testing::ElementsAre(kInfo));
        EXPECT_THAT(of(texts, "onAitParsingStateChanged"), testing::ElementsAre(kSignalled));
    }
}

TEST_F(ASetWithAnAddedApplication, TellsItToNewcomersAndToThoseWhoAsk) {
    play(sample);
    join(kFirst);
    EXPECT_THAT(heard.take(kFirst), testing::IsSupersetOf({ait, kInfo, kSignalled}));
    join(kSecond);
    EXPECT_THAT(heard.take(kSecond), testing::IsSupersetOf({ait, kInfo, kSignalled}));
    sends(kFirst, &Commands::cmdTriggerAitReparse);
    EXPECT_THAT(of(heard.take(kFirst), "onAit"), testing::Contains(ait));
    sends(kFirst, &Commands::cmdDtvInfoRequest);
    const std::string pmt = pmtEvent(tsmake::pmtSection(sample.services[0]));
    EXPECT_THAT(heard.take(kFirst), testing::Contains("onDATagsServicePmtDataChange" + pmt.substr(pmt.find('('))));
}

TEST_F(ASetWithAnAddedApplication, GoesOnWhenTheBroadcastsPmtChanges) {
    tsmake::Multiplex changing = sample;
    changing.services[0].ait.end = 1;
    join(kFirst);
    play(changing);
    const Texts texts = heard.take(kFirst);
    EXPECT_THAT(of(texts, "onPmtDataChange"),
                testing::ElementsAre(pmtEvent(tsmake::pmtSection(changing.services[0])),
                                     pmtEvent(tsmake::pmtSection(changing.services[0], true), true)));
    EXPECT_THAT(of(texts, "onAitSectionAvailable"), testing::ElementsAre(ait)) << "it has not changed";
    EXPECT_EQ(of(texts, "onAitParsingStateChanged").back(), kSignalled);
}

TEST_F(ASetWithAnAddedApplication, LeavesAPmtWithoutRoomAndSaysSoOnce) {
    constexpr std::size_t kMany = 123;  // 8 bytes of the PMT each
    constexpr std::uint16_t kFirstPid = 4000;
    tsmake::Multiplex crowded = sample;
    crowded.services[0].ait = {};
    for (std::size_t count = 0; count < kMany; ++count) {
        tsmake::PrivateSections sections;
        sections.pid = static_cast<std::uint16_t>(kFirstPid + count);
        sections.tag = 9;
        sections.perSecond = 1;
        crowded.services[0].privateSections.push_back(sections);
    }
    crowded.bitRate = 10'000'000;
    join(kFirst);
    const tsmake::Section own = tsmake::pmtSection(crowded.services[0]);
    ASSERT_LE(own.size(), 1024U);
    play(crowded);
    play(crowded);
    const Texts texts = heard.take(kFirst);
    EXPECT_THAT(of(texts, "onPmtDataChange"),
                testing::ElementsAre("onPmtDataChange(1, 1025, 28106, 0, " + shownBytes(own.data(), own.size()) + ")"));
    EXPECT_THAT(of(texts, "onAitSectionAvailable"), testing::ElementsAre(ait));
    const std::string line = "the PMT of service 28106 on input 1 has no room for the added application";
    EXPECT_THAT(logged::withoutTraces(),
                testing::Contains(testing::Field(&recording::LogLine::message, testing::HasSubstr(line))).Times(1));
}
