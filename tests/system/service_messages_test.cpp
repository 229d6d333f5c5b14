// Checks the reference service's answers to each command, and each event, against the content of the broadcast.
#include "raw_browser.h"

namespace {

using lo::browserdvbservice::TuneInfoChannel;
using lo::browserdvbservice::TuneInfoComponent;

const tsmake::Service& kFirst = kSample.services[0];

std::string number(std::uint64_t value) {
    return std::to_string(value);
}

const std::uint16_t kVideoPid = kFirst.components[0].pid;
const std::uint16_t kAudioPid = kFirst.components[1].pid;

/// The triplet of the first service, in the text form of an event's last values.
const std::string kTriplet = "1, 1025, " + number(kFirst.serviceId) + ")";

/// "eng" in three bytes.
constexpr std::uint32_t kEnglish = 0x656E67;

std::string selected(unsigned int index, unsigned int type, unsigned int pid) {
    return "onSelectedComponentChange(" + number(index) + ", " + number(type) + ", " + number(pid) + ", " + kTriplet;
}

}  // namespace

TEST_F(ARawBrowser, GetsThePresentedComponents) {
    const ServiceProcess process;
    ASSERT_TRUE(presents(kFirst));
    EXPECT_TRUE(hears("onComponentInfoChange(0, 0, " + number(kVideoPid) + ", 27, 0, 0, 1, 0, 0, 1)"));
    EXPECT_TRUE(
        hears("onComponentInfoChange(1, 1, " + number(kAudioPid) + ", 3, 0, 0, 2, 0, " + number(kEnglish) + ", 1)"));
    EXPECT_TRUE(hears(selected(0, 0, kVideoPid)));
    EXPECT_TRUE(hears(selected(1, 1, kAudioPid)));
}

TEST_F(ARawBrowser, IsToldOfComponentsAsTheirDescriptorsAre) {
    tsmake::Multiplex multiplex = kSample;
    using Kind = tsmake::Component::Kind;
    std::vector<tsmake::Component>& components = multiplex.services[0].components;
    components[1] = {Kind::audio, std::nullopt, "deu", kAudioPid};
    components.push_back({Kind::subtitle, 4, "fra", 0x110});
    components.push_back({Kind::teletext, 5, "", 0x111, {{"deu", 1, 100}}});
    components.push_back({Kind::teletext, 6, "", 0x112, {{"deu", 1, 100}, {"deu", 2, 150}, {"fra", 5, 899}}});
    const ServiceProcess process(writeBroadcast(multiplex, 2, "untagged.ts"));
    ASSERT_TRUE(presents(multiplex.services[0]));
    constexpr std::uint32_t kGerman = 0x646575;
    constexpr std::uint32_t kFrench = 0x667261;
    constexpr unsigned int kSubtitling = 0x5906;
    EXPECT_TRUE(
        hears("onComponentInfoChange(1, 1, " + number(kAudioPid) + ", 3, 0, 0, 65535, 0, " + number(kGerman) + ", 1)"))
        << "it has no component_tag";
    constexpr unsigned int kTeletext = 0x5606;
    EXPECT_TRUE(
        hears("onComponentInfoChange(2, 2, 272, " + number(kSubtitling) + ", 0, 0, 4, 0, " + number(kFrench) + ", 0)"));
    EXPECT_TRUE(
        hears("onComponentInfoChange(3, 2, 274, " + number(kTeletext) + ", 0, 0, 6, 0, " + number(kGerman) + ", 0)"))
        << "the first subtitle page";
    EXPECT_TRUE(
        hears("onComponentInfoChange(4, 2, 274, " + number(kTeletext) + ", 0, 0, 6, 0, " + number(kFrench) + ", 0)"));
}

TEST_F(ARawBrowser, GetsAnAitWhoseTypeThePmtDoesNotList) {
    tsmake::Multiplex multiplex = kSample;
    multiplex.services[0].ait.emptySignalling = true;
    const ServiceProcess process(writeBroadcast(multiplex, 2, "unlisted.ts"));
    ASSERT_TRUE(presents(multiplex.services[0]));
    EXPECT_TRUE(hears("onAitSectionAvailable(" + shownValue(asText(tsmake::aitSection(multiplex.services[0]))) + ")"));
    EXPECT_TRUE(hears("onAitParsingStateChanged(1)"));
}

TEST_F(ARawBrowser, StopsAndPresentsTheComponentsOfAType) {
    const ServiceProcess process;
    ASSERT_TRUE(presents(kFirst));
    ASSERT_TRUE(hears(selected(1, 1, kAudioPid)));
    ASSERT_TRUE(sends(&Commands::cmdUnselectComponent, lo::browserdvbservice::ComponentTypeAudio));
    EXPECT_TRUE(hears(selected(0xFFFFFFFF, 1, 0x1FFF)));
    ASSERT_TRUE(sends(&Commands::cmdSelectComponent, lo::browserdvbservice::ComponentTypeAudio));
    EXPECT_TRUE(eventually([&] { return timesHeard(selected(1, 1, kAudioPid)) >= 2; }));
    ASSERT_TRUE(sends(&Commands::cmdSelectComponent, lo::browserdvbservice::ComponentTypeSubtitle));
    EXPECT_TRUE(eventually(
        [&] { return process.log().find("cmdSelectComponent(): no component of type 2") != std::string::npos; }));
}

TEST_F(ARawBrowser, PresentsAComponentByItsPid) {
    const ServiceProcess process;
    ASSERT_TRUE(presents(kFirst));
    ASSERT_TRUE(sends(&Commands::cmdUnselectComponent, lo::browserdvbservice::ComponentTypeVideo));
    ASSERT_TRUE(hears(selected(0xFFFFFFFF, 0, 0x1FFF)));
    const auto before = numbersOf("onSelectedComponentChange").size();
    ASSERT_TRUE(sends(&Commands::cmdTuneToComponent, TuneInfoComponent{0, kVideoPid, 0}));
    ASSERT_TRUE(eventually([&] { return numbersOf("onSelectedComponentChange").size() > before; }));
    EXPECT_EQ(numbersOf("onSelectedComponentChange").back(),
              (std::vector<std::uint64_t>{0, 0, kVideoPid, 1, 1025, kFirst.serviceId}));
    ASSERT_TRUE(sends(&Commands::cmdTuneToComponent, TuneInfoComponent{1, kVideoPid, 0}));
    EXPECT_TRUE(eventually(
        [&] { return process.log().find("no component of type 1 on PID " + number(kVideoPid)) != std::string::npos; }));
}

TEST_F(ARawBrowser, GetsPtsAndPcr) {
    const ServiceProcess process;
    ASSERT_TRUE(presents(kFirst));
    ASSERT_TRUE(sends(&Commands::cmdSendPtsRequest, 7U));
    ASSERT_TRUE(eventually([&] { return !numbersOf("onPtsNotify").empty(); }));
    const std::vector<std::uint64_t> times = numbersOf("onPtsNotify")[0];
    // PTS are half a second ahead of the PCR; a picture is sent every 20 ms.
    constexpr std::int64_t kDelay = 45000;
    constexpr std::int64_t kPicture = 1800;
    EXPECT_NEAR(static_cast<double>(times[0] - times[1]), kDelay, kPicture);
}

TEST_F(ARawBrowser, IsToldNoTimeOfTheServiceBefore) {
    // PAT and SDT list this service, and nothing else is sent for it.
    tsmake::Multiplex multiplex = kSample;
    tsmake::Service silent;
    silent.serviceId = 28999;
    silent.pmtPid = 0x1E00;
    silent.isSilent = true;
    multiplex.services.push_back(silent);
    const ServiceProcess process(writeBroadcast(multiplex, 3, "silent.ts"));
    ASSERT_TRUE(presents(kFirst));
    ASSERT_TRUE(sends(&Commands::cmdSendPtsRequest, 1U));
    ASSERT_TRUE(eventually([&] { return numbersOf("onPtsNotify").size() == 1; }));
    EXPECT_EQ(operate({"tune", "1:1025:28999"}), "");
    ASSERT_TRUE(sends(&Commands::cmdSendPtsRequest, 2U));
    // The answer to a later command shows that the earlier one had no answer.
    ASSERT_TRUE(answersWhatWasAsked());
    EXPECT_EQ(numbersOf("onPtsNotify").size(), 1U);
    EXPECT_EQ(operate({"tune", "1:1025:28107"}), "");
    EXPECT_TRUE(eventually([&] { return numbersOf("onPtsNotify").size() == 2; })) << "now there is one";
}

TEST_F(ARawBrowser, FollowsATemiTimelineUntilItStops) {
    tsmake::Multiplex multiplex = kSample;
    multiplex.services[0].timelineId = 9;
    multiplex.services[0].timescale = 1000;
    const ServiceProcess process(writeBroadcast(multiplex, 3, "temi.ts"));
    ASSERT_TRUE(presents(kFirst));
    ASSERT_TRUE(sends(&Commands::cmdStartTemiTimelineRequest, 1U, 9U, 0U));
    ASSERT_TRUE(eventually([&] { return numbersOf("onTimelineInfoChange").size() >= 3; }));
    for (const std::vector<std::uint64_t>& values : numbersOf("onTimelineInfoChange")) {
        ASSERT_EQ(values.size(), 6U);
        EXPECT_EQ(values[0], 1U) << "component_tag";
        EXPECT_EQ(values[1], 9U) << "timeline_id";
        EXPECT_EQ(values[2], 0U) << "neither paused nor discontinuous";
        EXPECT_EQ(values[3], 1000U) << "timescale";
        // The time stamp follows the PCR of the packet, and the PTS of its picture is half a second later.
        EXPECT_NEAR(static_cast<double>(values[5]) / 90.0, static_cast<double>(values[4]) + 500.0, 20.0);
    }
    ASSERT_TRUE(sends(&Commands::cmdStopTemiTimelineRequest));
    ASSERT_TRUE(answersWhatWasAsked()) << "the stop among it";
    const auto heardSoFar = numbersOf("onTimelineInfoChange").size();
    ASSERT_TRUE(sends(&Commands::cmdSendPtsRequest, 1U));
    ASSERT_TRUE(eventually([&] { return !numbersOf("onPtsNotify").empty(); }));
    EXPECT_EQ(numbersOf("onTimelineInfoChange").size(), heardSoFar);
}

TEST_F(ARawBrowser, IsRefusedAnInvalidTimeline) {
    const ServiceProcess process;
    ASSERT_TRUE(presents(kFirst));
    ASSERT_TRUE(sends(&Commands::cmdStartTemiTimelineRequest, 256U, 9U, 0U));
    EXPECT_TRUE(eventually([&] {
        return process.log().find("refused: component_tag 256, timeline_id 9: each is 0 to 255") != std::string::npos;
    }));
}

TEST_F(ARawBrowser, TunesByDeliverySystemDescriptor) {
    const ServiceProcess process;
    ASSERT_TRUE(presents(kFirst));
    TuneInfoChannel channel;
    channel.idType = 13;
    channel.dsd = std::string("\x44\x0B\x03\x46\x00\x00\xFF\xF2\x05\x00\x69\x00\x0F", 13);
    channel.sid = kSample.services[2].serviceId;
    const std::string triplet = "1:1025:" + number(channel.sid);
    ASSERT_TRUE(eventually([&] {
        sends(&Commands::cmdTuneToService, channel);
        return heard("onServiceChanged(" + shownValue(std::string("service_started")) + ", " + shownValue(triplet) +
                     ")");
    }));
    channel.dsd.back() = '\x00';
    ASSERT_TRUE(sends(&Commands::cmdTuneToService, channel));
    EXPECT_TRUE(
        hears("onServiceChanged(" + shownValue(std::string("service_failed")) + ", " + shownValue(triplet) + ")"));
    EXPECT_NE(process.log().find("no multiplex with service 28108 has this delivery system descriptor of 13 bytes"),
              std::string::npos);
}

TEST_F(ARawBrowser, TunesByADescriptorOfAnotherMultiplex) {
    tsmake::Multiplex telling = kSample;
    const std::string descriptor("\x44\x0B\x04\x02\x00\x00\xFF\xF2\x05\x00\x69\x00\x0F", 13);
    telling.otherStreams = {{1, 2000, descriptor, {}}};
    tsmake::Multiplex silent = kSample;
    silent.transportStreamId = 2000;
    silent.deliverySystem.clear();
    const ServiceProcess process({writeBroadcast(telling, 3, "telling.ts"), writeBroadcast(silent, 3, "silent.ts")});
    TuneInfoChannel channel;
    channel.idType = 13;
    channel.dsd = descriptor;
    channel.sid = kSample.services[1].serviceId;
    EXPECT_TRUE(eventually([&] {
        sends(&Commands::cmdTuneToService, channel);
        return heard("onServiceChanged(" + shownValue(std::string("service_started")) + ", " +
                     shownValue(std::string("1:2000:28107")) + ")");
    }));
}

TEST_F(ARawBrowser, GetsTheAitChannelBeforeItsSections) {
    constexpr unsigned int kSeconds = 10;
    tsmake::Multiplex multiplex = kSample;
    std::vector<tsmake::AitVersion>& versions = multiplex.services[0].ait.versions;
    for (unsigned int second = 1; second < kSeconds; ++second) {
        versions.push_back({second, static_cast<std::uint8_t>(1 + second), versions[0].applications});
    }
    const ServiceProcess process(writeBroadcast(multiplex, kSeconds, "changing.ts"));
    const auto isSection = [](const std::string& text) { return text.find("onAitSectionAvailable(") == 0; };
    std::vector<std::string> texts;
    ASSERT_TRUE(eventually([&] {
        texts = client->texts();
        return std::any_of(texts.begin(), texts.end(), isSection);
    })) << "though it has not tuned";
    const auto section = std::find_if(texts.begin(), texts.end(), isSection);
    EXPECT_NE(std::find(texts.begin(), section, "onAitChannelInfoUpdated(0, " + kTriplet), section);
}

TEST_F(ARawBrowser, IsToldWhetherAnAitIsSignalled) {
    const ServiceProcess process;
    ASSERT_TRUE(presents(kFirst));
    EXPECT_TRUE(hears("onAitParsingStateChanged(1)"));
    ASSERT_TRUE(presents(kSample.services[2]));
    EXPECT_TRUE(hears("onAitParsingStateChanged(0)"));
}

TEST_F(ARawBrowser, GetsServiceAndPmtAsDtvInfo) {
    const ServiceProcess process;
    ASSERT_TRUE(presents(kFirst));
    ASSERT_TRUE(sends(&Commands::cmdDtvInfoRequest));
    EXPECT_TRUE(hears("onAcquireDtvServiceInfo(" + shownValue("1:1025:" + number(kFirst.serviceId)) + ")"));
    EXPECT_TRUE(hears("onDATagsServicePmtDataChange(1, 1025, " + number(kFirst.serviceId) + ", 0, " +
                      shownValue(asText(tsmake::pmtSection(kFirst))) + ")"));
}

TEST_F(ARawBrowser, GetsServicePmtAndAitAgainOnRequest) {
    const ServiceProcess process;
    ASSERT_TRUE(presents(kFirst));
    const std::string ait = "onAitSectionAvailable(" + shownValue(asText(tsmake::aitSection(kFirst))) + ")";
    ASSERT_TRUE(hears(ait));
    const std::string info = "onAcquireDtvServiceInfo(" + shownValue("1:1025:" + number(kFirst.serviceId)) + ")";
    const std::string pmt =
        "onPmtDataChange(1, 1025, 28106, 0, " + shownValue(asText(tsmake::pmtSection(kFirst))) + ")";
    const auto again = [this](auto command, const std::string& event) {
        const auto before = timesHeard(event);
        return sends(command) && answersWhatWasAsked() && timesHeard(event) == before + 1;
    };
    EXPECT_TRUE(again(&Commands::cmdTriggerServiceInfoAcquire, info));
    EXPECT_TRUE(again(&Commands::cmdSendPMTCache, pmt));
    EXPECT_TRUE(again(&Commands::cmdTriggerAitReparse, "onAitChannelInfoUpdated(0, " + kTriplet));
    EXPECT_TRUE(again(&Commands::cmdTriggerAitReparse, ait));
}

TEST_F(ARawBrowser, GetsThePresentedServiceAgainWhenItStarts) {
    const ServiceProcess process;
    ASSERT_TRUE(presents(kFirst));
    const auto eit = [](bool following) {
        return "onEitDataChange(0, " + shownValue(asText(tsmake::eitSection(kSample, kFirst, following))) + ")";
    };
    const std::vector<std::string> all = {
        "onAcquireDtvServiceInfo(" + shownValue("1:1025:" + number(kFirst.serviceId)) + ")",
        "onComponentInfoChange(0, 0, " + number(kVideoPid) + ", 27, 0, 0, 1, 0, 0, 1)",
        selected(1, 1, kAudioPid),
        eit(false),
        eit(true),
        "onAitChannelInfoUpdated(0, " + kTriplet,
        "onAitSectionAvailable(" + shownValue(asText(tsmake::aitSection(kFirst))) + ")",
        "onAitParsingStateChanged(1)"};
    std::vector<std::ptrdiff_t> before;
    // A browser that connects before the service is presented hears onServiceChanged in the place of the first.
    for (std::size_t index = 1; index < all.size(); ++index) {
        ASSERT_TRUE(hears(all[index])) << all[index];
    }
    ASSERT_TRUE(answersWhatWasAsked());
    std::transform(all.begin(), all.end(), std::back_inserter(before),
                   [this](const auto& it) { return timesHeard(it); });
    ASSERT_TRUE(sends(&Commands::cmdSendPMTCache));
    ASSERT_TRUE(answersWhatWasAsked());
    for (std::size_t index = 0; index < all.size(); ++index) {
        EXPECT_EQ(timesHeard(all[index]), before[index] + 1) << all[index];
    }
}

TEST_F(ARawBrowser, GetsTheAudioSourceResultWithItsSession) {
    const ServiceProcess process;
    ASSERT_TRUE(sends(&Commands::cmdSetAudioSource, 41U, std::string("broadband")));
    EXPECT_TRUE(hears("onSetAudioSourceFinished(41, 0)"));
    EXPECT_THAT(process.log(), testing::HasSubstr("audio source \"broadband\", session 41"));
}

TEST_F(ARawBrowser, GetsTheConfiguredSerialNumber) {
    const ServiceProcess process({SAMPLE_FILE, "--serial-number", "AB-12"});
    ASSERT_TRUE(sends(&Commands::cmdVodGetMaxdomeSecureSerialNumber, std::string("anything")));
    EXPECT_TRUE(hears("onVodMaxdomeSecureSerialNumber(" + shownValue(std::string("AB-12")) + ")"));
}
