// Writing JSON.
#include "json_printer.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <nlohmann/json.hpp>

#include "json_value.h"
#include "si/description.h"
#include "text/printable.h"

namespace dvbshell {

namespace {

using Json = nlohmann::ordered_json;
using WallClock = std::chrono::system_clock;

/// Fields of sections that may be there several times. They are arrays even if there is one.
constexpr const char* kRepeated[] = {"is", "boundary_extension", "URL_extension"};

/// Seconds since the epoch, to the millisecond.
double epochSeconds(WallClock::time_point time) {
    constexpr double kMilliseconds = 1000;
    return std::round(std::chrono::duration<double>(time.time_since_epoch()).count() * kMilliseconds) / kMilliseconds;
}

/// Each field becomes a member. A repeated field becomes an array, and so do the child nodes of each name.
Json treeOf(const si::Node& node) {
    Json object = {{"name", node.name}};
    std::map<std::string, int> times;
    for (const si::Node::Field& field : node.fields) {
        ++times[field.name];
    }
    for (const si::Node::Field& field : node.fields) {
        const Json value = field.number ? Json(*field.number) : Json(field.text);
        const bool isRepeated =
            std::find(std::begin(kRepeated), std::end(kRepeated), field.name) != std::end(kRepeated);
        if (isRepeated || times[field.name] > 1) {
            object[field.name].push_back(value);
        } else {
            object[field.name] = value;
        }
    }
    for (const si::Node& below : node.nodes) {
        Json child = treeOf(below);
        child.erase("name");
        object[below.name + "s"].push_back(std::move(child));
    }
    return object;
}

void write(std::FILE* output, const Json& object) {
    const std::string line = object.dump(-1, ' ', false, Json::error_handler_t::replace);
    std::fprintf(output, "%s\n", text::printableJson(line).c_str());
    std::fflush(output);
}

}  // namespace

void JsonPrinter::print(const Event& event, const std::string& ccid) {
    Json object = {{"time", epochSeconds(event.wallClock)}, {"event", event.name}};
    for (const message_fields::FieldValue& value : valuesOf(event)) {
        message_fields::addTo(object, value);
    }
    if (event.kind == EventKind::channel) {
        object["ccid"] = ccid;
    }
    if (!event.section.empty()) {
        object["section"] = message_fields::hexadecimal(event.section);
        object["table"] = treeOf(si::describeSection(event.section));
    }
    write(output(), object);
}

void JsonPrinter::note(const std::string& text) {
    if (!text.empty()) {
        write(output(), {{"time", epochSeconds(WallClock::now())}, {"note", text}});
    }
}

void JsonPrinter::result(const Operation& operation, const Outcome& outcome) {
    Json object = {{"time", epochSeconds(WallClock::now())}, {"operation", operation.slot}};
    if (outcome.result) {
        object["result"] = *outcome.result;
    }
    if (outcome.text) {
        object["text"] = *outcome.text;
    }
    for (const message_fields::FieldValue& value : outcome.values) {
        message_fields::addTo(object, value);
    }
    write(output(), object);
}

}  // namespace dvbshell
