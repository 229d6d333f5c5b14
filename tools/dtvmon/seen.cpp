// Reads records.
#include "seen.h"

#include <algorithm>

#include "message_layout.h"

namespace dtvmon {

namespace {

si::Node describe(const std::string& section) {
    return si::describeSection({reinterpret_cast<const std::uint8_t*>(section.data()), section.size()});
}

void readMessage(Seen& seen) {
    if (seen.record.kind == bus::Kind::refused && seen.record.message == 0) {
        return;
    }
    const message_fields::Message* const message = message_fields::findMessage(seen.record.message);
    if (message == nullptr) {
        seen.problem = "no message has the identifier " + message_fields::hexadecimalNumber(seen.record.message, 1);
        return;
    }
    seen.operation = message->name;
    seen.name = message->name;
    if (seen.record.kind != bus::Kind::message) {
        return;
    }
    message_fields::readImage(*message, seen.record.bytes, seen.values, seen.problem);
    const auto section = std::find_if(seen.values.begin(), seen.values.end(), [](const auto& value) {
        return value.field->form->notation == message_fields::Notation::section;
    });
    if (section != seen.values.end()) {
        seen.section = describe(std::get<std::string>(section->value));
    }
}

}  // namespace

Seen see(bus::Record record) {
    Seen seen;
    seen.record = std::move(record);
    seen.name = bus::nameOf(seen.record.kind);
    switch (seen.record.kind) {
        case bus::Kind::message:
        case bus::Kind::refused:
            readMessage(seen);
            break;
        case bus::Kind::sectionQueued:
        case bus::Kind::sectionDropped:
            seen.section = describe(seen.record.bytes);
            break;
        default:
            break;
    }
    return seen;
}

std::string loopsOf(const si::Node& section) {
    std::vector<std::pair<std::string, int>> loops;
    for (const si::Node& node : section.nodes) {
        const auto found =
            std::find_if(loops.begin(), loops.end(), [&node](const auto& loop) { return loop.first == node.name; });
        if (found == loops.end()) {
            loops.emplace_back(node.name, 1);
        } else {
            ++found->second;
        }
    }
    std::string text;
    for (const auto& [name, count] : loops) {
        text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + name + (count == 1 ? "" : "s");
    }
    return text;
}

}  // namespace dtvmon
