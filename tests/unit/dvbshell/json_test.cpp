// The JSON of events, results and notes: what the schema says, and nothing else.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <nlohmann/json.hpp>

#include "captured_output.h"
#include "json_printer.h"
#include "tables.h"
#include "valid_json.h"

namespace {

using namespace dvbshell;
using nlohmann::json;

const tsmake::Multiplex kSample = tsmake::sampleMultiplex();

std::string textOf(const tsmake::Section& section) {
    return {section.begin(), section.end()};
}

/// Prints all events of the queue.
std::string printed(EventQueue& queue) {
    const CapturedOutput output;
    JsonPrinter printer(output.file());
    while (const std::optional<Event> event = queue.take(Clock::now())) {
        printer.print(*event, "ccid:1:2:3");
    }
    return output.text();
}

/// Calls every operation of the listener.
void callAll(velmora::dtv::DVBServiceListener& listener) {
    const tsmake::Service& service = kSample.services[1];
    listener.OnChannelChanged(true, 1, 2, 3);
    listener.onAITChannelInfoChanged();
    listener.onSelectedComponentChanged(0xFFFFFFFF, 7, 8191, 65535, 2, 3);
    listener.onComponentInfoChanged(4, 1, 257, 0x1B, 3, 6, 0xFFFF, 1, 0x656E67, 0);
    listener.onAITSectionUpdated(1, 2, 3, textOf(tsmake::aitSection(service)));
    listener.onHbbTVEngineStatusChanged(static_cast<velmora::dtv::HbbTVEngineStatus>(-5));
    listener.onPMTSectionUpdated(1, 2, 3, 0, textOf(tsmake::pmtSection(service)));
    listener.onEITSectionUpdated(1, textOf(tsmake::eitSection(kSample, service, false)));
    listener.onTimelineInfoDataChange(11, 1, 0x45, 1000, 77, 90000);
    listener.onAllTerminalStoped();
    listener.onPtsNotify(~std::uint64_t{0}, 0);
    listener.onOSDStateChanged(7, 1);
    listener.onDrmResultReply(9, 2, "a\xFFtext", 65535);
    listener.onCaDrmConnected(9, 3, 0);
    listener.onCaDrmDisonnected(3, 1);
    listener.onCaDrmSystemStatusChanged(3, 1);
    listener.onDATagsServicePmtSectionUpdated(1, 2, 3, 1, "unreadable");
}

json schema() {
    return json::parse(std::ifstream(SCHEMA_FILE));
}

/// Calls `visit(key, type)` for each property of the schema.
template <typename Visit>
void forEachProperty(const json& node, const Visit& visit) {
    if (!node.is_structured()) {
        return;
    }
    if (node.is_object() && node.contains("properties")) {
        for (const auto& property : node["properties"].items()) {
            visit(property.key(), property.value());
        }
    }
    for (const json& below : node) {
        forEachProperty(below, visit);
    }
}

}  // namespace

TEST(TheJsonOfEvents, ControlsNoTerminal) {
    EventQueue queue;
    makeListener(queue)->onDrmResultReply(9, 2, "\x1B[2J\x7F\xC2\x9B\xE2\x80\xAE\xE2\x81\xA6", 1);
    const std::string line = printed(queue);
    EXPECT_THAT(line, testing::HasSubstr(R"("\u001b[2J\u007f\u009b\u202e\u2066")"));
    EXPECT_EQ(json::parse(line)["message"], "\x1B[2J\x7F\xC2\x9B\xE2\x80\xAE\xE2\x81\xA6");
}

TEST(TheJsonOfEvents, IsWhatTheSchemaSays) {
    EventQueue queue;
    callAll(*makeListener(queue));
    const std::string lines = printed(queue);
    EXPECT_TRUE(isValidJson(lines));
    std::set<std::string> came;
    std::istringstream all(lines);
    for (std::string line; std::getline(all, line);) {
        came.insert(json::parse(line)["event"]);
    }
    for (const message_fields::Operation& operation : message_fields::operations()) {
        const std::string name = operation.name;
        if (operation.kind == message_fields::Operation::Kind::event && name != "onCurrentChannelAIT" &&
            name != "onSectionData") {
            EXPECT_EQ(came.count(name), 1U) << name << " is not printed";
        }
    }
}

TEST(TheJsonOfEvents, HasNumbersFlagsAndNames) {
    EventQueue queue;
    callAll(*makeListener(queue));
    std::istringstream all(printed(queue));
    for (std::string line; std::getline(all, line);) {
        const json object = json::parse(line);
        if (object["event"] == "onComponentInfoChanged") {
            EXPECT_EQ(object["component_type"], "audio");
            EXPECT_EQ(object["pid"], 257);
            EXPECT_EQ(object["scrambled"], true);
            EXPECT_EQ(object["language"], "eng");
        } else if (object["event"] == "onTimelineInfoDataChange") {
            EXPECT_EQ(object["timeline_flags"], json({"paused", "force_reload", "64"}));
            EXPECT_EQ(object["media_timestamp"], 77);
        } else if (object["event"] == "onSelectedComponentChanged") {
            EXPECT_EQ(object["component_type"], "7");
        }
        EXPECT_GT(object["time"].get<double>(), 1.6e9) << "seconds since the epoch";
    }
}

TEST(TheJsonOfSections, IsWhatTheSchemaSays) {
    EventQueue queue;
    Event event;
    event.kind = EventKind::filtered;
    event.name = "onSectionData";
    event.values = {namedValue("pid", 18U)};
    for (const tsmake::Section& section :
         {tsmake::patSection(kSample), tsmake::sdtSection(kSample),
          tsmake::eitSection(kSample, kSample.services[0], true), tsmake::pmtSection(kSample.services[2]),
          tsmake::aitSection(kSample.services[0])}) {
        event.section = textOf(section);
        queue.put(event);
    }
    event.values = {namedValue("sid", 28106U)};
    queue.put(event);
    event.kind = EventKind::application;
    event.name = "onCurrentChannelAIT";
    event.values.clear();
    event.onid = event.tsid = event.sid = 1;
    queue.put(event);
    event.section.clear();
    queue.put(event);
    EXPECT_TRUE(isValidJson(printed(queue)));
}

TEST(TheJsonOfResults, IsWhatTheSchemaSays) {
    const CapturedOutput output;
    JsonPrinter printer(output.file());
    for (const Operation& operation : operations()) {
        printer.result(operation, {-1, {}, "not sent"});
    }
    printer.result(*findOperation("current"),
                   {0, {namedValue("onid", 1), namedValue("tsid", 2), namedValue("sid", 3)}, {}});
    printer.result(*findOperation("ccid"), {std::nullopt, {namedValue("ccid", "ccid:-1:2:3")}, {}});
    printer.result(*findOperation("dsd"), {std::nullopt, {namedValue("dsd", std::string("\x5A\0", 2))}, {}});
    printer.note("not tuned");
    EXPECT_TRUE(isValidJson(output.text()));
}

TEST(TheJsonOfReports, IsWhatTheSchemaSays) {
    EventQueue queue;
    for (const message_fields::Operation& operation : message_fields::operations()) {
        if (operation.kind == message_fields::Operation::Kind::report) {
            Event event;
            event.name = operation.name;
            for (const message_fields::Field* const field : fieldsOf(operation, operation.parameters)) {
                const bool isText = field->form->json == message_fields::JsonType::text;
                event.values.push_back(isText ? namedValue(field->name, "text") : namedValue(field->name, 1U));
            }
            queue.put(event);
        }
    }
    EXPECT_TRUE(isValidJson(printed(queue)));
}

TEST(TheJsonOfTheOperator, IsWhatTheSchemaSays) {
    EXPECT_TRUE(isValidJson(R"({"time":1.5,"ok":true,"changed":false})"));
    EXPECT_TRUE(isValidJson(R"({"time":1.5,"ok":true,"channels":[{"onid":1,"tsid":2,"sid":3,"name":"A",)"
                            R"("pmt":true,"hbbtv":false,"presented":true}],"inputs":[]})"));
    EXPECT_TRUE(
        isValidJson(R"({"time":1.5,"ok":true,"presented_service":{"onid":1,"tsid":2,"sid":3,"name":"A","input":1},)"
                    R"("browsers":[1],"ca_slots":[0],"osd_layers":[3],"mounts":[],"filters":0,)"
                    R"("queue_drops":0,"drm_waiting":1,"drm_messages":[{"browser":1,"ca_session":5,"ca_system_id":6,)"
                    R"("message_type":"t","message":"m","length":1}]})"));
    EXPECT_TRUE(isValidJson(R"({"time":1.5,"event":"browser_connected","browser":1})"));
    EXPECT_TRUE(isValidJson(R"({"time":1.5,"event":"errors","input":1,"crc_errors":2})"));
    EXPECT_FALSE(isValidJson(R"({"ok":true})")) << "without time";
    EXPECT_FALSE(isValidJson(R"({"time":1.5,"ok":true,"channels":[{"onid":"1"}]})"));
}

TEST(AValidation, TellsWhatIsWrong) {
    EXPECT_FALSE(isValidJson("no object"));
    EXPECT_FALSE(isValidJson(R"({"event":"onAllTerminalStoped"})")) << "without time";
    EXPECT_FALSE(isValidJson(R"({"time":1.5,"event":"onAllTerminalStoped","more":1})"));
    EXPECT_FALSE(isValidJson(R"({"time":1.5,"event":"onCaDrmDisonnected","slot":"1","result":0})"));
    EXPECT_THAT(isValidJson(R"({"time":1.5,"event":"unheardOf"})").message(), testing::HasSubstr("unheardOf"));
    EXPECT_TRUE(isValidJson(R"({"time":1.5,"event":"onCaDrmDisonnected","slot":1,"result":0})"));
}

TEST(AValidation, KeepsTheKeysOfSectionsApart) {
    const std::string section = R"({"time":1,"event":"onSectionData","pid":17,"section":"00",)"
                                R"("table":{"name":"n","table_id":1,"component_type":1,"bytes":"00"}})";
    const std::string event =
        R"({"time":1,"event":"onSelectedComponentChanged","component_index":0,"component_type":"video","pid":257,)"
        R"("onid":1,"tsid":2,"sid":3})";
    EXPECT_TRUE(isValidJson(section));
    EXPECT_TRUE(isValidJson(event));
}

TEST(TheSchema, GivesAKeyOneTypeAndUnit) {
    const json whole = schema();
    std::map<std::string, json> types;
    forEachProperty(whole, [&](const std::string& key, json type) {
        type.erase("const");
        type.erase("enum");
        if (key == "values") {
            EXPECT_EQ(type["type"], "object") << "which members it has depends on the message";
            return;
        }
        const json& known = types.emplace(key, type).first->second;
        EXPECT_EQ(known, type) << key;
        if (type.contains("$ref")) {
            EXPECT_EQ(type["$ref"], "#/definitions/values/" + key);
        }
    });
    EXPECT_GT(types.size(), 30U);
}

TEST(TheSchema, NamesKeysInSmallLetters) {
    forEachProperty(schema(), [](const std::string& key, const json&) {
        EXPECT_EQ(key.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789_"), std::string::npos) << key;
    });
}
