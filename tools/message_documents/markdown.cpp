// Writes docs/messages.md.
#include <iomanip>
#include <vector>

#include "documents.h"
#include "message_fields.h"

namespace message_documents {

namespace {

using namespace message_fields;

constexpr const char* kHead = R"(<!-- Generated; CONTRIBUTING.md says how. -->
# Messages and their fields

All messages between browser and DTV service, in the order of their identifiers, and what a browser calls and is called
with. The names stand in every output of the tools, in JSON, and in the headers for browsers.

A meaning marked *(reference)* is the reference service's own choice: the library only passes the value on, and another
DTV service may put something else there. Without the mark, the interface gives the meaning: the field's name, or what
the library does with it.
)";

/// The C++-like types of the fields, from "(U32, request)(String, path)".
std::vector<std::string> typesOf(const Message& message) {
    std::vector<std::string> types;
    std::string rest = message.types;
    while (!rest.empty()) {
        types.push_back(rest.substr(1, rest.find(',') - 1));
        rest.erase(0, rest.find(')') + 1);
        rest.erase(0, rest.find('(') == std::string::npos ? rest.size() : rest.find('('));
    }
    return types;
}

/// "number, 90 kHz", "0 video, 1 audio"
std::string writtenAs(const Form& form) {
    std::string text = form.name;
    text += form.unit[0] != '\0' ? std::string(", ") + form.unit : "";
    const char* separator = ": ";
    for (const NamedValue& named : form.names) {
        text += separator + std::to_string(named.value) + " " + named.name;
        separator = ", ";
    }
    return text;
}

void writeFields(const Message& message, std::ostream& output) {
    const List<Field> fields = fieldsOf(message.name);
    if (fields.empty()) {
        output << "\nNo fields.\n";
        return;
    }
    const std::vector<std::string> types = typesOf(message);
    output << "\n| name | in the catalogue | written as | meaning |\n|---|---|---|---|\n";
    for (std::size_t index = 0; index < fields.size(); ++index) {
        const Field& field = fields[index];
        output << "| `" << field.name << "` | " << types.at(index) << " `" << field.member << "` | "
               << writtenAs(*field.form) << " | " << field.meaning
               << (field.origin == Origin::reference ? " *(reference)*" : "") << " |\n";
    }
}

/// "`onPtsNotify(pts, pcr_base)`"
std::string callText(const Operation& operation) {
    std::string parameters = operation.parameters;
    for (std::size_t at = 0; (at = parameters.find(' ', at)) != std::string::npos; at += 2) {
        parameters.replace(at, 1, ", ");
    }
    return std::string("`") + operation.name + "(" + parameters + ")`";
}

std::string callsOf(const Message& message) {
    std::string calls;
    for (const Operation& operation : operations()) {
        if (operation.message == std::string(message.name)) {
            calls += (calls.empty() ? "" : ", ") + callText(operation);
        }
    }
    return calls;
}

/// What a browser has to do with the message.
std::string useText(const Message& message) {
    const std::string calls = callsOf(message);
    if (calls.empty()) {
        return std::string("No operation of the DVB API: ") + useOf(message.name);
    }
    return (message.kind == Message::Kind::command ? "The browser calls " : "The browser is called with ") + calls;
}

void writeMessages(Message::Kind kind, const char* title, std::ostream& output) {
    output << "\n## " << title << "\n";
    for (const Message& message : messages()) {
        if (message.kind != kind) {
            continue;
        }
        output << "\n### " << message.name << "\n";
        if (kind != Message::Kind::record) {
            output << "\nIdentifier 0x" << std::hex << std::uppercase << message.identifier << std::dec << ". "
                   << useText(message) << ".\n";
        }
        writeFields(message, output);
    }
}

void writeOthers(std::ostream& output) {
    output << "\n## Without a message of their own\n\n| operation | returns |\n|---|---|\n";
    for (const Operation& operation : operations()) {
        if (operation.message == std::string("none") && operation.kind != Operation::Kind::report) {
            output << "| " << callText(operation) << " | "
                   << (operation.results[0] == '\0' ? "" : std::string("`") + operation.results + "`") << " |\n";
        }
    }
    output << "\n| name | written as | meaning |\n|---|---|---|\n";
    for (const Field& addition : additions()) {
        output << "| `" << addition.name << "` | " << writtenAs(*addition.form) << " | " << addition.meaning << " |\n";
    }
}

}  // namespace

void writeMarkdown(std::ostream& output) {
    output << kHead;
    writeMessages(Message::Kind::command, "Commands", output);
    writeMessages(Message::Kind::event, "Events", output);
    writeMessages(Message::Kind::record, "Records in commands", output);
    writeOthers(output);
}

}  // namespace message_documents
