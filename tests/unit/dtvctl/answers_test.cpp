// Tests of answers as text and as JSON.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "print_answers.h"
#include "safe_json.h"
#include "some_answers.h"

using nlohmann::json;

namespace {

bool hasControlBytes(const std::string& text) {
    return std::any_of(text.begin(), text.end(), [](char letter) {
        const auto byte = static_cast<unsigned char>(letter);
        return (byte < 0x20 && letter != '\n') || byte == 0x7F;
    });
}

json aPid(std::uint64_t number) {
    return {{"pid", 8190},
            {"bit_rate", number},
            {"packets", number},
            {"idle_seconds", 0.25},
            {"continuity_errors", 12},
            {"transport_errors", 0},
            {"scrambled_packets", 0},
            {"sections", 3},
            {"incomplete_sections", 1},
            {"crc_errors", 2}};
}

}  // namespace

TEST(TheChannelsText, SaysWhyThereAreNone) {
    json answer = aStatus();
    answer["channels"] = json::array();
    EXPECT_EQ(dtvctl::channelsText(answer), "no services\n  input 1 (udp://:5000): silent for 3 s\n");
}

TEST(TheChannelsText, NamesTheInputOrSaysThatThereIsNone) {
    json carried = aService();
    carried.update({{"pmt", true}, {"hbbtv", true}, {"presented", true}});
    json other = carried;
    other.update({{"sid", 40}, {"presented", false}, {"pmt", false}, {"hbbtv", false}, {"name", "Elsewhere"}});
    other.erase("input");
    EXPECT_EQ(dtvctl::channelsText({{"channels", {carried, other}}}),
              "* 1:1025:28106          input 1  pmt    hbbtv     Velmora One HD\n"
              "  1:1025:40             no input  nopmt  no-hbbtv  Elsewhere\n");
}

TEST(TheStatusText, SaysWhereAReplayIs) {
    json answer = aStatus();
    answer["browsers"] = {4};
    const json browser = {{"browser", 4}, {"recorded_browser", 7}, {"replayed_records", 12}, {"records", 60}};
    answer["replay"] = {{"file", "bus.pcapng"}, {"fast", false}, {"replayed_browsers", {browser}}};
    EXPECT_EQ(dtvctl::statusText(answer),
              "replay of    bus.pcapng\n"
              "  browser 4: 12 of 60 records of recorded browser 7\n"
              "browsers     4\n"
              "queue drops  0\n");
}

TEST(TheStatusText, NamesWhatIsPresentedAndWhoIsConnected) {
    json answer = aStatus();
    answer["presented_service"] = aService();
    answer["browsers"] = {1, 4};
    answer["inputs"][0]["reason"] = "playing";
    answer["inputs"][0]["bit_rate"] = 4981234;
    answer["inputs"][0]["service_count"] = 1;
    EXPECT_EQ(dtvctl::statusText(answer),
              "presented    1:1025:28106 Velmora One HD\n"
              "browsers     1, 4\n"
              "filters      0\n"
              "queue drops  0\n"
              "carousels    0\n"
              "OSD layers   none\n"
              "CA slots     none\n"
              "DRM waiting  0\n"
              "input 1 (udp://:5000): playing, 4.98 Mbit/s, 1 service\n");
}

TEST(TheStatusText, NamesMountedCarousels) {
    json answer = aStatus();
    answer["mounts"] = {
        {{"browser", 1},
         {"sid", 3},
         {"component_tag", 32},
         {"pid", 300},
         {"path", "/run/tree"},
         {"versions", 2},
         {"modules", 7},
         {"modules_arrived", 7}},
        {{"browser", 1},
         {"sid", 3},
         {"component_tag", 33},
         {"pid", 301},
         {"path", "/run/other"},
         {"versions", 1},
         {"modules", 7},
         {"modules_arrived", 4}},
        {{"browser", 4}, {"sid", 3}, {"pid", 302}, {"versions", 0}, {"modules", 3}, {"modules_arrived", 0}},
        {{"browser", 5}, {"sid", 3}, {"versions", 0}}};
    EXPECT_THAT(
        dtvctl::statusText(answer),
        testing::HasSubstr("carousels    4\n"
                           "  browser 1, 3:32, PID 300, version 2 in /run/tree\n"
                           "  browser 1, 3:33, PID 301, version 1 in /run/other, 4 of 7 modules of the next one\n"
                           "  browser 4, 3, PID 302, incomplete, 0 of 3 modules of the first one\n"
                           "  browser 5, 3, incomplete\n"
                           "OSD layers"));
}

TEST(TheStatisticsText, FitsAHundredColumns) {
    json answer = aStatus();
    answer["inputs"][0]["pids"] = {aPid(499999999), aPid(1)};
    const std::string text = dtvctl::statisticsText(answer);
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        EXPECT_LE(line.size(), 100U) << line;
    }
    EXPECT_THAT(text, testing::HasSubstr(
                          "   PID     bit/s     packets   idle s continuity transport  scrambled  sections incomplete"
                          "    CRC\n"
                          "  8190 499999999   499999999      0.2         12         0          0         3          1"
                          "      2\n"));
}

TEST(TheStatisticsText, KeepsLongNumbersApart) {
    json answer = aStatus();
    answer["inputs"][0]["pids"] = json::array({aPid(12345678901234)});
    EXPECT_THAT(dtvctl::statisticsText(answer), testing::HasSubstr(" 12345678901234 12345678901234 "));
}

TEST(AnAnswersText, HasNoControlBytes) {
    const std::string evil = "\x1b]0;evil\x07\x7f\r";
    json answer = aStatus();
    answer["presented_service"] = aService();
    answer["presented_service"]["name"] = evil;
    answer["inputs"][0]["source"] = evil;
    answer["browsers"] = {evil};
    EXPECT_FALSE(hasControlBytes(dtvctl::statusText(answer))) << dtvctl::statusText(answer);
    EXPECT_EQ(dtvctl::valuesText({{evil, evil}}), "\\x1b]0;evil\\x07\\x7f\\x0d\\x1b]0;evil\\x07\\x7f\\x0d\n");
}

TEST(AnAnswersJson, EscapesWhatControlsATerminal) {
    EXPECT_EQ(dtvctl::safeJson({{"k\x1b", "\x1b[31m\x7f\u009b\u0085\u202e\u2066\u2028"}}),
              R"({"k\u001b":"\u001b[31m\u007f\u009b\u0085\u202e\u2066\u2028"})");
}

TEST(AnAnswersJson, KeepsOtherTexts) {
    const std::string text = "Zwei F\u00f6hn \u03a4\u03c1\u03af\u03b1 \u00a0\u2030\U0001F600";
    EXPECT_EQ(dtvctl::safeJson(json(text)), "\"" + text + "\"");
}

TEST(AnAnswersJson, ReplacesBytesThatAreNotUtf8) {
    EXPECT_EQ(dtvctl::safeJson(json("a\x9b\xff z")), "\"a\ufffd\ufffd z\"");
}
