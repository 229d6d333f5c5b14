// The tables of messages, fields and operations, and their checks against each other.
#include "message_fields.h"

#include <algorithm>
#include <iterator>

#include "forms.h"

namespace message_fields {

namespace {

constexpr Message kMessages[] = {
#define NESTED(Record, fields) {Message::Kind::record, #Record, 0, #fields},
#define COMMAND(identifier, operation, Name, fields) {Message::Kind::command, #operation, identifier, #fields},
#define EVENT(identifier, operation, Name, decoder, fields) {Message::Kind::event, #operation, identifier, #fields},
#include "browserdvbservice_messages.inc"
};

constexpr Field kFields[] = {
#define FIELD(message, field, name, form, origin, meaning) \
    {#message, #field, #name, &forms::form, Origin::origin, meaning},
#include "browserdvbservice_fields.inc"
};

constexpr Field kAdditions[] = {
#define ADDED(name, form, meaning) {"", #name, #name, &forms::form, Origin::interface, meaning},
#include "browser_operations.inc"
};

constexpr Operation kOperations[] = {
#define CALL(operation, message, parameters, results) \
    {Operation::Kind::call, #operation, #message, parameters, results},
#define CALLED(operation, message, parameters) {Operation::Kind::event, #operation, #message, parameters, ""},
#define REPORTED(name, values) {Operation::Kind::report, #name, "none", values, ""},
#include "browser_operations.inc"
};

struct Unseen {
    const char* message;
    const char* use;
};
constexpr Unseen kUnseen[] = {
#define UNSEEN(message, use) {#message, use},
#include "browser_operations.inc"
};

/// Whether the fields from `index` on are those of the message, in its order. `index` becomes the next one.
constexpr bool namesAll(const Message& message, std::size_t& index) {
    std::string_view rest = message.types;
    while (!rest.empty()) {
        const std::size_t comma = rest.find(", ");
        const std::size_t end = rest.find(')');
        const std::string_view member = rest.substr(comma + 2, end - comma - 2);
        if (index == std::size(kFields) || kFields[index].message != std::string_view(message.name) ||
            kFields[index].member != member) {
            return false;
        }
        rest.remove_prefix(end + 1);
        rest = rest.substr(std::min(rest.find('('), rest.size()));
        ++index;
    }
    return true;
}

constexpr bool namesEveryField() {
    std::size_t index = 0;
    for (const Message& message : kMessages) {
        if (!namesAll(message, index)) {
            return false;
        }
    }
    return index == std::size(kFields);
}

static_assert(namesEveryField(),
              "browserdvbservice_fields.inc needs one FIELD for each field of the catalogue, in its order");

const Field* findIn(List<Field> list, std::string_view name) {
    const Field* const found =
        std::find_if(list.begin(), list.end(), [name](const Field& field) { return name == field.name; });
    return found == list.end() ? nullptr : found;
}

}  // namespace

List<Message> messages() {
    return {kMessages, std::size(kMessages)};
}

List<Field> fields() {
    return {kFields, std::size(kFields)};
}

List<Field> fieldsOf(std::string_view message) {
    const auto isOfMessage = [message](const Field& field) { return message == field.message; };
    const Field* const first = std::find_if(std::begin(kFields), std::end(kFields), isOfMessage);
    const Field* const end = std::find_if_not(first, std::end(kFields), isOfMessage);
    return {first, static_cast<std::size_t>(end - first)};
}

List<Field> additions() {
    return {kAdditions, std::size(kAdditions)};
}

const char* useOf(std::string_view message) {
    for (const Unseen& unseen : kUnseen) {
        if (message == unseen.message) {
            return unseen.use;
        }
    }
    return "";
}

List<Operation> operations() {
    return {kOperations, std::size(kOperations)};
}

const Field* findField(std::string_view name) {
    const Field* const found = findIn(fields(), name);
    return found != nullptr ? found : findIn(additions(), name);
}

std::vector<const Field*> fieldsOf(const Operation& operation, std::string_view names) {
    std::vector<const Field*> found;
    while (!names.empty()) {
        const std::string_view name = names.substr(0, names.find(' '));
        const Field* const own = findIn(fieldsOf(operation.message), name);
        found.push_back(own != nullptr ? own : findField(name));
        names.remove_prefix(std::min(name.size() + 1, names.size()));
    }
    return found;
}

std::vector<const Field*> parametersOf(std::string_view operation, std::size_t count) {
    for (const Operation& each : kOperations) {
        if (operation == each.name) {
            std::vector<const Field*> parameters = fieldsOf(each, each.parameters);
            if (parameters.size() == count) {
                return parameters;
            }
        }
    }
    return {};
}

}  // namespace message_fields
