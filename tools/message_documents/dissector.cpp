// Writes Wireshark's dissector of records of the bus, in Lua: the catalogue as tables, then the frame.
#include <algorithm>
#include <map>

#include "documents.h"
#include "message_layout.h"

namespace message_documents {

namespace {

using namespace message_fields;

/// Where a field's name stands in all messages: its type must be the same everywhere.
struct Use {
    const Field* field = nullptr;
    bool isCarrier = false;
    bool isSigned = false;
    bool isUnsigned = false;
    std::size_t width = 0;
};

std::map<std::string, Use> usesOfNames() {
    std::map<std::string, Use> uses;
    for (const Message& message : messages()) {
        for (const Place& place : layoutOf(message)) {
            Use& use = uses[place.field->name];
            use.field = place.field;
            use.isCarrier = place.isCarrier;
            use.isSigned = use.isSigned || place.isSigned;
            use.isUnsigned = use.isUnsigned || !place.isSigned;
            use.width = std::max(use.width, place.width);
        }
    }
    return uses;
}

/// A number that is signed in one message and not in another has a type that holds both.
bool isWide(const Use& use) {
    return !use.isCarrier && use.isSigned && use.isUnsigned;
}

bool isBytes(const Field& field) {
    return field.form->notation == Notation::bytes || field.form->notation == Notation::section;
}

const char* typeOf(const Use& use) {
    constexpr std::size_t kWidest = 8;
    if (use.isCarrier) {
        return isBytes(*use.field) ? "bytes" : "string";
    }
    return isWide(use) ? "int64" : use.width == kWidest ? "uint64" : use.isSigned ? "int32" : "uint32";
}

void writeField(const std::string& name, const Use& use, std::ostream& output) {
    const bool isHexadecimal = !use.isCarrier && !use.isSigned && use.field->form->notation == Notation::hexadecimal;
    output << "    " << name << " = ProtoField." << typeOf(use) << "(\"dtvbus." << name << "\", \"" << name << "\""
           << (isHexadecimal ? ", base.HEX" : "") << "),\n";
}

void writeNames(const std::string& name, const Use& use, std::ostream& output) {
    if (use.field->form->names.empty() || use.field->form->notation == Notation::flags) {
        return;
    }
    output << "    " << name << " = {";
    for (const NamedValue& named : use.field->form->names) {
        output << " [" << named.value << "] = \"" << named.name << "\",";
    }
    output << " },\n";
}

void writeMessage(const Message& message, std::ostream& output) {
    const std::vector<Place> layout = layoutOf(message);
    output << "    [" << hexadecimalNumber(message.identifier, 1) << "] = { name = \"" << message.name
           << "\", size = " << fixedSizeOf(layout) << ",";
    for (const Place& place : layout) {
        const bool isSection = place.field->form->notation == Notation::section;
        output << " { \"" << place.field->name << "\", " << place.width << ", \""
               << (place.isCarrier  ? "carrier"
                   : place.isSigned ? "signed"
                                    : "unsigned")
               << "\"" << (isSection ? ", \"section\"" : "") << " },";
    }
    output << " },\n";
}

}  // namespace

void writeDissector(const std::string& frame, std::ostream& output) {
    const std::map<std::string, Use> uses = usesOfNames();
    output << "-- Generated. Shows records of the DTV bus in Wireshark and tshark.\n"
              "-- Fields of messages by name; then those that are wider than in some messages, named values, and "
              "messages\n"
              "-- by identifier: each field's name, width, and what it is.\n"
              "local fields = {\n";
    for (const auto& [name, use] : uses) {
        writeField(name, use, output);
    }
    output << "}\nlocal wide = {";
    for (const auto& [name, use] : uses) {
        output << (isWide(use) ? " " + name + " = true," : "");
    }
    output << " }\nlocal names = {\n";
    for (const auto& [name, use] : uses) {
        writeNames(name, use, output);
    }
    output << "}\nlocal messages = {\n";
    for (const Message& message : messages()) {
        if (message.kind != Message::Kind::record) {
            writeMessage(message, output);
        }
    }
    output << "}\n" << frame;
}

}  // namespace message_documents
