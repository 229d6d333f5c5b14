// Writes lines.
#include "lines.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <nlohmann/json.hpp>

#include "json_value.h"
#include "text/printable.h"

namespace dtvmon {

using bus::Kind;
using Json = nlohmann::ordered_json;

namespace {

constexpr std::uint64_t kNanosecondsOfASecond = 1000000000;
constexpr std::uint64_t kNanosecondsOfAMicrosecond = 1000;

bool hasDirection(const bus::Record& record) {
    return record.kind != Kind::connected && record.kind != Kind::disconnected && record.kind != Kind::lost;
}

bool isSection(const bus::Record& record) {
    return record.kind == Kind::sectionQueued || record.kind == Kind::sectionDropped;
}

std::string timeText(std::uint64_t time) {
    const auto seconds = static_cast<std::time_t>(time / kNanosecondsOfASecond);
    const auto microseconds = static_cast<unsigned int>(time % kNanosecondsOfASecond / kNanosecondsOfAMicrosecond);
    std::tm local{};
    localtime_r(&seconds, &local);
    constexpr std::size_t kLongest = 40;
    std::array<char, kLongest> text{};
    std::snprintf(text.data(), text.size(), "%02d:%02d:%02d.%06u", local.tm_hour, local.tm_min, local.tm_sec,
                  microseconds);
    return text.data();
}

/// To the microsecond, which is as fine as the number can be.
double epochSeconds(std::uint64_t time) {
    constexpr double kMicrosecondsOfASecond = 1e6;
    const std::uint64_t microseconds = time / kNanosecondsOfAMicrosecond;
    return static_cast<double>(microseconds) / kMicrosecondsOfASecond;
}

std::string browserText(const bus::Record& record) {
    return (record.browser == 0 ? "-" : std::to_string(record.browser)) + " " +
           (record.program.empty() ? "?" : record.program) + "[" +
           (record.process == 0 ? "?" : std::to_string(record.process)) + "]";
}

/// "PAT table_id 0x00, transport_stream_id 1025; 4 programs"
std::string sectionText(const si::Node& section) {
    std::string text = section.name;
    const char* separator = " ";
    for (const si::Node::Field& field : section.fields) {
        text += separator + field.name + " " + field.text;
        separator = ", ";
    }
    const std::string loops = loopsOf(section);
    return text + (loops.empty() ? "" : "; " + loops);
}

/// A section is described instead of its bytes.
std::string valuesText(const Seen& seen) {
    std::vector<message_fields::FieldValue> values;
    for (const message_fields::FieldValue& value : seen.values) {
        if (value.field->form->notation != message_fields::Notation::section) {
            values.push_back(value);
        }
    }
    std::string text = message_fields::text(values);
    const auto add = [&text](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
    if (isSection(seen.record)) {
        add("filter_session " + seen.record.text);
    } else if (seen.record.kind == Kind::lost) {
        add(std::to_string(seen.record.count) + " records: " +
            (seen.record.side == bus::Side::service ? "this monitor did not read in time" : "not written in time"));
    } else if (!seen.record.text.empty()) {
        add(seen.record.kind == Kind::refused ? "refused: " + seen.record.text : seen.record.text);
    }
    if (seen.record.result != 0) {
        add("result " + std::to_string(seen.record.result));
    }
    if (seen.section) {
        add(sectionText(*seen.section));
    }
    if (!seen.problem.empty()) {
        add("unreadable: " + seen.problem);
    }
    return text;
}

std::string bytesText(const std::string& bytes) {
    constexpr std::size_t kBytesOfALine = 32;
    std::string lines;
    for (std::size_t at = 0; at < bytes.size(); at += kBytesOfALine) {
        constexpr int kOffsetDigits = 4;
        lines += "\n    " + message_fields::hexadecimalNumber(at, kOffsetDigits) + "  " +
                 message_fields::hexadecimal(std::string_view(bytes).substr(at, kBytesOfALine));
    }
    return lines;
}

Json tableOf(const si::Node& section) {
    Json table = {{"name", section.name}};
    for (const si::Node::Field& field : section.fields) {
        table[field.name] = field.number ? Json(*field.number) : Json(field.text);
    }
    if (const std::string loops = loopsOf(section); !loops.empty()) {
        table["contains"] = loops;
    }
    return table;
}

void addOrigin(const bus::Record& record, Json& object) {
    if (record.kind == Kind::lost) {
        object["count"] = record.count;
        return;
    }
    if (record.browser != 0) {
        object["browser"] = record.browser;
    }
    if (record.process != 0) {
        object["process"] = record.process;
    }
    if (!record.program.empty()) {
        object["program"] = record.program;
    }
    if (hasDirection(record)) {
        object["direction"] = record.direction == bus::Direction::toService ? "to_service" : "to_browser";
    }
}

}  // namespace

std::string lineOf(const Seen& seen, bool withBytes) {
    const bus::Record& record = seen.record;
    std::string line = timeText(record.time) + " ";
    if (record.kind != Kind::lost) {
        line += browserText(record) + " ";
    }
    if (hasDirection(record)) {
        line += record.direction == bus::Direction::toService ? "-> " : "<- ";
    }
    const std::string values = valuesText(seen);
    line += seen.name + (values.empty() ? "" : "  " + values);
    line += record.side == bus::Side::browser ? "  (seen by the browser)" : "";
    return text::printable(line) + (withBytes ? bytesText(record.bytes) : "");
}

Json jsonOf(const Seen& seen, bool withBytes) {
    const bus::Record& record = seen.record;
    Json object = {{"time", epochSeconds(record.time)},
                   {"record", bus::nameOf(record.kind)},
                   {"side", record.side == bus::Side::service ? "service" : "browser"}};
    addOrigin(record, object);
    if (!seen.operation.empty()) {
        object["operation"] = seen.operation;
    }
    if (record.kind == Kind::message) {
        object["values"] = Json::object();
        for (const message_fields::FieldValue& value : seen.values) {
            message_fields::addTo(object["values"], value);
        }
    }
    if (!record.text.empty()) {
        object[isSection(record) ? "filter_session" : "text"] = record.text;
    }
    if (record.result != 0) {
        object["result"] = record.result;
    }
    if (seen.section) {
        object["table"] = tableOf(*seen.section);
    }
    if (!seen.problem.empty()) {
        object["problem"] = seen.problem;
    }
    if (withBytes && !record.bytes.empty()) {
        object["bytes"] = message_fields::hexadecimal(record.bytes);
    }
    return object;
}

void Lines::add(const Seen& seen) {
    const std::string line =
        asJson ? text::printableJson(jsonOf(seen, withBytes).dump(-1, ' ', false, Json::error_handler_t::replace))
               : lineOf(seen, withBytes);
    std::printf("%s\n", line.c_str());
}

void Lines::pause() {
    std::fflush(stdout);
}

}  // namespace dtvmon
