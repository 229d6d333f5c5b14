// Tests of the programme guide, as values, JSON and XMLTV.
#include "guide.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "made_eit.h"

namespace {

using dtvservice::EitSections;
using dtvservice::GuideChannel;
using dtvservice::guideJson;
using dtvservice::guideOf;
using dtvservice::GuideService;
using dtvservice::guideXmltv;
using nlohmann::json;
using testing::HasSubstr;

EitSections::Kept kept(const MadePlace& place, const std::vector<MadeEvent>& events, std::size_t input = 1) {
    return {input, std::make_shared<const std::vector<std::uint8_t>>(madeEit(place, events))};
}

MadePlace ofTable(std::uint8_t tableId) {
    MadePlace place;
    place.tableId = tableId;
    return place;
}

const std::vector<GuideChannel> kOne = {{1, {1, 1025, 1}, "One"}};

std::vector<std::string> namesOf(const GuideService& service) {
    std::vector<std::string> names;
    for (const si::Eit::Event& event : service.events) {
        names.push_back(event.name);
    }
    return names;
}

/// The XMLTV of one event with this name and these descriptors.
std::string xmltvOf(const std::string& name, const std::string& descriptors = {}) {
    return guideXmltv(guideOf(kOne, {kept({}, {{7, name, 9, descriptors}})}));
}

}  // namespace

TEST(AGuide, ListsTheEventsOfAServiceByStart) {
    const std::vector<GuideService> guide =
        guideOf(kOne, {kept({}, {{3, "Third", 12}, {1, "First", 9}}), kept(ofTable(0x51), {{2, "Second", 10}})});
    ASSERT_EQ(guide.size(), 1U);
    EXPECT_EQ(guide[0].name, "One");
    EXPECT_THAT(namesOf(guide[0]), testing::ElementsAre("First", "Second", "Third"));
}

TEST(AGuide, HasAnEventOnceAsPresentFollowingHasIt) {
    const std::vector<GuideService> guide =
        guideOf(kOne, {kept(ofTable(0x4E), {{1, "New name", 9}}), kept({}, {{1, "Old name", 9}, {2, "Next", 10}})});
    EXPECT_THAT(namesOf(guide.at(0)), testing::ElementsAre("New name", "Next"));
}

TEST(AGuide, HasServicesWithoutEventsAndServicesThatNoListHas) {
    MadePlace other = ofTable(0x60);
    other.serviceId = 9;
    other.transportStreamId = 2000;
    const std::vector<GuideService> guide = guideOf(kOne, {kept(other, {{1, "Elsewhere", 9}})});
    ASSERT_EQ(guide.size(), 2U);
    EXPECT_TRUE(guide[0].events.empty());
    EXPECT_EQ(guide[1].triplet, (si::Triplet{1, 2000, 9}));
    EXPECT_EQ(guide[1].name, "");
    EXPECT_THAT(namesOf(guide[1]), testing::ElementsAre("Elsewhere"));
}

TEST(AGuide, TakesAnActualTableForTheServiceOfItsInput) {
    MadePlace recorded;
    recorded.transportStreamId = 77;
    const std::vector<GuideService> guide =
        guideOf({{1, {1, 1025, 1}, "One"}, {2, {1, 2000, 1}, "Two"}}, {kept(recorded, {{1, "Here", 9}}, 2)});
    ASSERT_EQ(guide.size(), 2U);
    EXPECT_TRUE(guide[0].events.empty());
    EXPECT_THAT(namesOf(guide[1]), testing::ElementsAre("Here"));
}

TEST(AGuide, IsJsonWithAllValues) {
    const std::string rating(
        "\x55\x04"
        "DEU\x09");
    const std::string content("\x54\x02\x23\x00", 4);
    const std::string extended(
        "\x4E\x0B\x00"
        "deu\x00\x05"
        "Long.",
        13);
    const json guide = guideJson(guideOf(kOne, {kept({}, {{7, "Name", 9, rating + content + extended}})}));
    EXPECT_EQ(guide, json::parse(R"([{"onid": 1, "tsid": 1025, "sid": 1, "name": "One", "programmes": [{
        "event_id": 7, "start_time": "2026-01-01T09:30:00Z", "duration_seconds": 4500, "running_status": 4,
        "language": "deu", "event_name": "Name", "text": "text", "extended_text": "Long.",
        "parental_ratings": [{"country_code": "DEU", "rating": 9}], "contents": [35]}]}])"));
}

TEST(AGuide, HasNoTimeForAnEventWithoutOne) {
    const std::vector<GuideService> guide = guideOf(kOne, {kept({}, {{7, "Some day", 0, {}, false}})});
    EXPECT_FALSE(guideJson(guide)[0]["programmes"][0].contains("start_time"));
    EXPECT_THAT(guideXmltv(guide), testing::Not(HasSubstr("Some day")));
}

TEST(AGuidesXmltv, IsADocumentWithChannelsAndProgrammes) {
    EXPECT_EQ(xmltvOf("Name"), R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE tv SYSTEM "xmltv.dtd">
<tv generator-info-name="dtvserviced">
  <channel id="1.1025.1.dvb">
    <display-name>One</display-name>
  </channel>
  <programme start="20260101093000 +0000" stop="20260101104500 +0000" channel="1.1025.1.dvb">
    <title lang="deu">Name</title>
    <desc lang="deu">text</desc>
  </programme>
</tv>
)");
}

TEST(AGuidesXmltv, HasGenresAndAges) {
    const std::string xml = xmltvOf("Name",
                                    "\x55\x04"
                                    "DEU\x09"
                                    "\x54\x02\x23\x01");
    EXPECT_THAT(xml, HasSubstr("    <category lang=\"en\">News / Current affairs</category>\n"
                               "    <rating system=\"DEU\"><value>12</value></rating>\n"));
}

TEST(AGuidesXmltv, EscapesWhatXmlUses) {
    EXPECT_THAT(xmltvOf("a<b>&\"c'"), HasSubstr("<title lang=\"deu\">a&lt;b&gt;&amp;&quot;c'</title>"));
    EXPECT_THAT(guideXmltv({{{1, 2, 3}, "<One> & \"two\"", {}}}),
                HasSubstr("<display-name>&lt;One&gt; &amp; &quot;two&quot;</display-name>"));
    EXPECT_THAT(xmltvOf("Name",
                        "\x55\x04"
                        "\"<&\x09"),
                HasSubstr("<rating system=\"&quot;&lt;&amp;\">"));
}

TEST(AGuidesXmltv, LeavesOutWhatXmlDoesNotAllow) {
    GuideService service = {{1, 2, 3}, std::string("a\0b\x01\x1F\xEF\xBF\xBE\xEF\xBF\xBF\xFF", 12) + "c", {}};
    EXPECT_THAT(guideXmltv({service}), HasSubstr("<display-name>abc</display-name>"));
}

TEST(AGuidesXmltv, HasReferencesForWhatControlsATerminal) {
    const GuideService service = {{1, 2, 3}, "a\x7F\xC2\x9B\xE2\x80\xAE\n", {}};
    EXPECT_THAT(guideXmltv({service}), HasSubstr("<display-name>a&#x7F;&#x9B;&#x202E;&#xA;</display-name>"));
}

TEST(AGuidesXmltv, NamesAServiceWithoutAName) {
    EXPECT_THAT(guideXmltv({{{1, 2, 3}, "", {}}}), HasSubstr("<display-name>1.2.3.dvb</display-name>"));
}
