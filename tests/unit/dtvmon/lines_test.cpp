// Records as lines.
#include "lines.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <nlohmann/json.hpp>

#include "hex_bytes.h"
#include "some_seen.h"

namespace {

/// The PAT of transport stream 1025 with four programs.
std::string pat() {
    const std::vector<std::uint8_t> bytes =
        hexBytes("00B01D0401C100000000E0106DCAE1006DCBE2006DCCE3006DD8E400EA08A069");
    return {bytes.begin(), bytes.end()};
}

class ALine : public testing::Test {
protected:
    ALine() {
        setenv("TZ", "UTC", 1);
        tzset();
    }
    static std::string of(const dtvmon::Seen& seen, bool withBytes = false) { return dtvmon::lineOf(seen, withBytes); }
    static std::string json(const dtvmon::Seen& seen, bool withBytes = false) {
        return dtvmon::jsonOf(seen, withBytes).dump();
    }
};

}  // namespace

TEST_F(ALine, HasTimeBrowserDirectionNameAndValues) {
    EXPECT_EQ(of(aMessage()), "00:00:00.123456 2 dvbshell[4711] -> cmdSendPtsRequest  pts_request 7");
    bus::Record event = aRecord(bus::Kind::message, 0x28671254, std::string("\0\x01", 2));
    event.direction = bus::Direction::toBrowser;
    event.process = 0;
    event.program = "";
    EXPECT_EQ(of(dtvmon::see(event)), "00:00:00.123456 2 ?[?] <- onAitParsingStateChanged  ait_state signalled");
}

TEST_F(ALine, HasAJsonObject) {
    EXPECT_EQ(json(aMessage(), true),
              R"({"time":1767225600.123456,"record":"message","side":"service","browser":2,"process":4711,)"
              R"("program":"dvbshell","direction":"to_service","operation":"cmdSendPtsRequest",)"
              R"("values":{"pts_request":7},"bytes":"00000007"})");
    EXPECT_EQ(json(dtvmon::see(aRecord(bus::Kind::connected))),
              R"({"time":1767225600.123456,"record":"connected","side":"service","browser":2,"process":4711,)"
              R"("program":"dvbshell"})");
}

TEST_F(ALine, ShowsBytesIfTheyAreWanted) {
    const std::string image = std::string("\0\0\0\x1E\0\0\0\0", 8) + std::string(30, 'a');
    const std::string line = of(aMessage(kFilterClose, image), true);
    EXPECT_EQ(line.substr(line.find('\n')),
              "\n    0x0000  0000001E00000000616161616161616161616161616161616161616161616161"
              "\n    0x0020  616161616161");
}

TEST_F(ALine, DescribesTheSectionOfAFilter) {
    bus::Record section = aRecord(bus::Kind::sectionQueued, 0, pat());
    section.direction = bus::Direction::toBrowser;
    section.text = "my filter";
    EXPECT_EQ(of(dtvmon::see(section)),
              "00:00:00.123456 2 dvbshell[4711] <- section_queued  filter_session my filter, PAT table_id 0x00, "
              "transport_stream_id 1025, version_number 0, current_next_indicator 1, section_number 0, "
              "last_section_number 0; 1 network, 4 programs");
    const nlohmann::json object = nlohmann::json::parse(json(dtvmon::see(section)));
    EXPECT_EQ(object["filter_session"], "my filter");
    EXPECT_EQ(object["record"], "section_queued");
    EXPECT_EQ(object["table"]["name"], "PAT");
    EXPECT_EQ(object["table"]["transport_stream_id"], 1025);
}

TEST_F(ALine, TellsWhyAMessageWasRefused) {
    bus::Record refused = aRecord(bus::Kind::refused, kPtsRequest);
    refused.text = "not sent";
    refused.result = -107;
    refused.side = bus::Side::browser;
    EXPECT_EQ(of(dtvmon::see(refused)),
              "00:00:00.123456 2 dvbshell[4711] -> cmdSendPtsRequest  refused: not sent, result -107  "
              "(seen by the browser)");
    const nlohmann::json object = nlohmann::json::parse(json(dtvmon::see(refused)));
    EXPECT_EQ(object["result"], -107);
    EXPECT_EQ(object["text"], "not sent");
    EXPECT_EQ(object["side"], "browser");
    EXPECT_EQ(object["operation"], "cmdSendPtsRequest");
}

TEST_F(ALine, TellsHowMuchIsLost) {
    bus::Record lost = aRecord(bus::Kind::lost);
    lost.count = 12;
    EXPECT_EQ(of(dtvmon::see(lost)), "00:00:00.123456 lost  12 records: this monitor did not read in time");
    EXPECT_EQ(json(dtvmon::see(lost)), R"({"time":1767225600.123456,"record":"lost","side":"service","count":12})");
}

TEST_F(ALine, ShowsWhatIsNoMessageWithTheReason) {
    EXPECT_EQ(of(aMessage(kPtsRequest, "abc")),
              "00:00:00.123456 2 dvbshell[4711] -> cmdSendPtsRequest  unreadable: message of 3 bytes, 4 expected");
    EXPECT_EQ(of(aMessage(5, "abc")),
              "00:00:00.123456 2 dvbshell[4711] -> message  unreadable: no message has the identifier 0x5");
}

TEST_F(ALine, LeavesTheTerminalAlone) {
    bus::Record record = aRecord(bus::Kind::connected);
    record.program = "\x1B[31m";
    EXPECT_EQ(of(dtvmon::see(record)).find('\x1B'), std::string::npos);
}

TEST_F(ALine, OfABrowsersFileHasNoNumber) {
    bus::Record record = aRecord(bus::Kind::refused, kPtsRequest);
    record.side = bus::Side::browser;
    record.browser = 0;
    record.text = "not sent";
    record.result = -107;
    EXPECT_EQ(of(dtvmon::see(record)),
              "00:00:00.123456 - dvbshell[4711] -> cmdSendPtsRequest  refused: not sent, result -107  "
              "(seen by the browser)");
    EXPECT_EQ(json(dtvmon::see(record)),
              R"({"time":1767225600.123456,"record":"refused","side":"browser","process":4711,"program":"dvbshell",)"
              R"("direction":"to_service","operation":"cmdSendPtsRequest","text":"not sent","result":-107})");
    record.message = 0;
    record.text = "no service is in /run/dtv";
    record.result = 0;
    EXPECT_EQ(of(dtvmon::see(record)),
              "00:00:00.123456 - dvbshell[4711] -> refused  refused: no service is in /run/dtv  (seen by the browser)");
    bus::Record lost = aRecord(bus::Kind::lost);
    lost.side = bus::Side::browser;
    lost.count = 3;
    EXPECT_EQ(of(dtvmon::see(lost)), "00:00:00.123456 lost  3 records: not written in time  (seen by the browser)");
}
