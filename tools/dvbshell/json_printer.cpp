// Writing JSON.
#include "json_printer.h"

#include <map>
#include <nlohmann/json.hpp>

#include "hex.h"
#include "si/ait.h"
#include "si/description.h"
#include "si/tables.h"

namespace dvbshell {

namespace {

using Json = nlohmann::ordered_json;

void readSection(const Event& event, Json& object) {
    std::string error;
    if (event.kind == EventKind::pmt) {
        if (const auto pmt = si::parsePmt(event.section, error)) {
            object["version"] = pmt->version;
            object["pcrPid"] = pmt->pcrPid;
            for (const si::Pmt::Stream& stream : pmt->streams) {
                object["streams"].push_back({{"pid", stream.pid},
                                             {"streamType", stream.streamType},
                                             {"name", si::streamName(stream)},
                                             {"language", si::language(stream)}});
            }
        }
    } else if (event.kind == EventKind::eit) {
        if (const auto eit = si::parseEit(event.section, error)) {
            object["serviceId"] = eit->serviceId;
            object["version"] = eit->version;
            object["sectionNumber"] = eit->sectionNumber;
            for (const si::Eit::Event& item : eit->events) {
                object["events"].push_back({{"eventId", item.eventId},
                                            {"start", item.start ? Json(*item.start) : Json()},
                                            {"duration", item.durationSeconds},
                                            {"name", item.name},
                                            {"text", item.text}});
            }
        }
    } else if (event.kind == EventKind::ait) {
        if (const auto ait = si::parseAit(event.section, error)) {
            object["version"] = ait->version;
            for (const si::Ait::Application& application : ait->applications) {
                object["applications"].push_back(
                    {{"organisationId", application.organisationId},
                     {"applicationId", application.applicationId},
                     {"controlCode", application.controlCode},
                     {"name", application.names.empty() ? std::string() : application.names[0].text},
                     {"url", application.url()}});
            }
        }
    }
    if (!error.empty()) {
        object["unreadable"] = error;
    }
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
        if (times[field.name] > 1) {
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
    std::fprintf(output, "%s\n", object.dump(-1, ' ', false, Json::error_handler_t::replace).c_str());
    std::fflush(output);
}

}  // namespace

void JsonPrinter::print(const Event& event, const std::string& ccid) {
    Json object = {{"event", event.name}, {"time", secondsOf(event.time)}};
    if (event.kind == EventKind::channel) {
        object["started"] = event.started;
        object["ccid"] = ccid;
    }
    if (event.onid >= 0) {
        object["onid"] = event.onid;
        object["tsid"] = event.tsid;
        object["sid"] = event.sid;
    }
    for (const auto& value : event.values) {
        object[value.first] = value.second;
    }
    if (event.kind == EventKind::pmt || event.kind == EventKind::eit) {
        object["update"] = event.update;
    }
    if (event.kind == EventKind::application || event.kind == EventKind::filtered) {
        object["table"] = event.section.empty() ? Json() : treeOf(si::describeSection(event.section));
        object["section"] = hexOf(event.section);
    } else if (!event.section.empty()) {
        readSection(event, object);
        object["section"] = hexOf(event.section);
    }
    write(output(), object);
}

void JsonPrinter::note(const std::string& text) {
    if (!text.empty()) {
        write(output(), {{"note", text}});
    }
}

void JsonPrinter::result(const Operation& operation, const Outcome& outcome) {
    Json object = {{"operation", operation.slot}};
    if (outcome.result) {
        object["result"] = *outcome.result;
    }
    if (outcome.text) {
        object["text"] = *outcome.text;
    }
    write(output(), object);
}

}  // namespace dvbshell
