// Tests of the programme guide of a running set.
#include "programmes_room.h"

#include <nlohmann/json.hpp>

#include "running_set.h"

namespace {

using nlohmann::json;

class TheGuideOfTheSet : public ARunningSet {
protected:
    json ask(const std::string& request = R"({"command":"epg"})") const {
        return json::parse(core.requests.answer(request));
    }
    static std::size_t programmesOf(const json& answer) {
        std::size_t count = 0;
        for (const json& service : answer.at("services")) {
            count += service.at("programmes").size();
        }
        return count;
    }
};

}  // namespace

TEST_F(TheGuideOfTheSet, IsReadFromTheFirstRequestOn) {
    play(sample);
    const json first = ask();
    EXPECT_EQ(first.at("services").size(), sample.services.size());
    EXPECT_EQ(programmesOf(first), 0U);
    EXPECT_LT(first.at("collected_seconds"), 1.0);
    play(sample);
    EXPECT_EQ(programmesOf(ask()), 2 * sample.services.size()) << "present and following of each";
    EXPECT_EQ(ask().at("services").at(0).at("name"), "Velmora One HD");
}

TEST_F(TheGuideOfTheSet, CoversTheScheduleOfAllInputs) {
    tsmake::Multiplex scheduled = sample;
    scheduled.services[0].hasSchedule = true;
    for (std::uint16_t id = 1; id <= 20; ++id) {
        scheduled.services[0].events.push_back({id, "Later", "Text"});
    }
    broadcast::Demux& second = core.addMultiplex().demux;
    ask();
    play(scheduled);
    tsmake::Multiplex other = sample;
    other.transportStreamId = 2000;
    tsmake::writeMultiplex(other, 2, [&](const std::uint8_t* packet) { second.feed(broadcast::TsPacket{packet}); });
    const json answer = ask();
    EXPECT_EQ(answer.at("services").size(), 2 * sample.services.size());
    EXPECT_EQ(answer.at("services").at(0).at("programmes").size(), scheduled.services[0].events.size());
    EXPECT_EQ(programmesOf(answer), 20 + 4 * sample.services.size());
}

TEST_F(TheGuideOfTheSet, IsXmltvIfItIsAskedFor) {
    ask();
    play(sample);
    const json answer = ask(R"({"command":"epg","format":"xmltv"})");
    EXPECT_FALSE(answer.contains("services"));
    EXPECT_THAT(answer.at("xmltv").get<std::string>(),
                testing::HasSubstr("<title lang=\"eng\">Morning on the Lake</title>"));
}

TEST_F(TheGuideOfTheSet, RefusesOtherFormats) {
    EXPECT_EQ(ask(R"({"command":"epg","format":"csv"})").at("error"), "format is neither json nor xmltv");
    EXPECT_EQ(ask(R"({"command":"epg","format":1})").at("error"), "format is of the wrong kind");
}
