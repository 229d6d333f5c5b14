// Writes docs/json.schema.json. Every key refers to its one definition, so it has one type and unit everywhere.
#include <nlohmann/json.hpp>

#include "documents.h"
#include "message_fields.h"
#include "message_layout.h"

namespace message_documents {

namespace {

using namespace message_fields;
using Json = nlohmann::ordered_json;

/// A text that is one of the names, or a number without a name.
Json namesOf(const Form& form) {
    Json names = Json::array();
    for (const NamedValue& named : form.names) {
        names.push_back(named.name);
    }
    return {{"type", "string"}, {"anyOf", {{{"enum", names}}, {{"pattern", "^-?[0-9]+$"}}}}};
}

std::string descriptionOf(const Form& form) {
    std::string text = form.name;
    text += form.unit[0] != '\0' ? std::string(", ") + form.unit : "";
    if (form.json == JsonType::number) {
        for (const NamedValue& named : form.names) {
            text += "; " + std::to_string(named.value) + " " + named.name;
        }
    }
    if (form.notation == Notation::bytes || form.notation == Notation::section) {
        text += " in hexadecimal digits, two a byte";
    }
    return text;
}

Json typeOf(const Form& form) {
    Json type;
    switch (form.json) {
        case JsonType::number:
            type = {{"type", "integer"}};
            break;
        case JsonType::boolean:
            type = {{"type", "boolean"}};
            break;
        case JsonType::listOfTexts:
            type = {{"type", "array"}, {"items", namesOf(form)}};
            break;
        default:
            type = form.names.empty() ? Json{{"type", "string"}} : namesOf(form);
    }
    type["description"] = descriptionOf(form);
    return type;
}

Json reference(const std::string& key) {
    return {{"$ref", "#/definitions/values/" + key}};
}

/// An object with `time`, the operation's name under `kind`, and the values.
Json objectOf(const char* kind, const Operation& operation, const std::vector<const Field*>& fields) {
    Json object = {{"type", "object"}};
    object["properties"] = {{"time", reference("time")}, {kind, {{"type", "string"}, {"const", operation.name}}}};
    object["required"] = {"time", kind};
    for (const Field* const field : fields) {
        object["properties"][field->name] = reference(field->name);
        object["required"].push_back(field->name);
    }
    object["additionalProperties"] = false;
    return object;
}

Json eventOf(const Operation& operation) {
    const std::vector<const Field*> fields = fieldsOf(operation, operation.parameters);
    Json event = objectOf("event", operation, fields);
    const auto add = [&event](const char* key) {
        event["properties"][key] = reference(key);
        event["required"].push_back(key);
    };
    if (operation.kind == Operation::Kind::report) {
        event["required"] = {"time", "event"};
    }
    if (std::string(operation.name) == "OnChannelChanged") {
        add("ccid");
    }
    if (event["properties"].contains("section")) {
        add("table");
    }
    return event;
}

/// What a stored AIT lacks is an event without section and table.
Json eventWithoutSection(Json event) {
    event["properties"].erase("section");
    event["properties"].erase("table");
    Json required = Json::array();
    for (const Json& key : event["required"]) {
        if (key != "section" && key != "table") {
            required.push_back(key);
        }
    }
    event["required"] = required;
    return event;
}

/// The values of an operation that failed are left out.
Json resultOf(const Operation& operation) {
    Json result = objectOf("operation", operation, fieldsOf(operation, operation.results));
    result["properties"]["result"] = reference("result");
    result["properties"]["text"] = reference("text");
    result["required"] = {"time", "operation"};
    return result;
}

/// Defines the fields of messages that the frame refers to.
void addReferenced(const Json& node, Json& values) {
    constexpr const char* kValues = "#/definitions/values/";
    for (const auto& member : node.items()) {
        const Json& value = member.value();
        if (value.is_structured()) {
            addReferenced(value, values);
        } else if (member.key() == "$ref" && value.get<std::string>().rfind(kValues, 0) == 0) {
            const std::string name = value.get<std::string>().substr(std::string(kValues).size());
            if (const Field* const field = findField(name); field != nullptr && !values.contains(name)) {
                values[name] = typeOf(*field->form);
            }
        }
    }
}

/// A message as dtvmon shows it. What cannot be read of it is left out, and there is a problem.
Json busMessageOf(const Message& message) {
    Json values = {{"type", "object"}, {"properties", Json::object()}, {"required", Json::array()}};
    for (const Place& place : layoutOf(message)) {
        values["properties"][place.field->name] = reference(place.field->name);
        values["required"].push_back(place.field->name);
    }
    Json all = Json::object();
    all["properties"]["values"]["type"] = "object";
    all["properties"]["values"]["required"] = values["required"];
    values.erase("required");
    values["additionalProperties"] = false;
    Json object = {{"type", "object"}, {"properties", Json::object()}};
    for (const char* const key :
         {"time", "side", "browser", "process", "program", "direction", "table", "problem", "bytes"}) {
        object["properties"][key] = reference(key);
    }
    object["properties"]["record"] = {{"type", "string"}, {"const", "message"}};
    object["properties"]["operation"] = {{"type", "string"}, {"const", message.name}};
    object["properties"]["values"] = std::move(values);
    object["required"] = {"time", "record", "side", "direction", "operation", "values"};
    object["anyOf"] = {std::move(all), {{"required", {"problem"}}}};
    object["additionalProperties"] = false;
    return object;
}

/// The values of events, results and messages.
void addValues(Json& values) {
    values["result"] = typeOf(*findField("result")->form);
    for (const Operation& operation : operations()) {
        const bool isCall = operation.kind == Operation::Kind::call;
        for (const Field* const field : fieldsOf(operation, isCall ? operation.results : operation.parameters)) {
            if (!values.contains(field->name)) {
                values[field->name] = typeOf(*field->form);
            }
        }
    }
    for (const Field& field : fields()) {
        if (!values.contains(field.name)) {
            values[field.name] = typeOf(*field.form);
        }
    }
}

void addMessages(Json& schema) {
    for (const Message& message : messages()) {
        if (message.kind != Message::Kind::record) {
            const std::string name = std::string("bus_") + message.name;
            schema["definitions"][name] = busMessageOf(message);
            schema["oneOf"].push_back({{"$ref", "#/definitions/" + name}});
        }
    }
}

/// One definition for each operation, an alternative of the schema. An operation that stands twice has two.
void addOperations(Json& schema) {
    const auto add = [&schema](const std::string& name, Json definition) {
        schema["definitions"][name] = std::move(definition);
        schema["oneOf"].push_back({{"$ref", "#/definitions/" + name}});
    };
    for (const Operation& operation : operations()) {
        const bool isCall = operation.kind == Operation::Kind::call;
        const std::string parameters = operation.parameters;
        std::string name = operation.name;
        if (name == "onSectionData") {
            name += "_of_" + parameters.substr(0, parameters.find(' '));
        }
        if (!schema["definitions"].contains(name)) {
            add(name, isCall ? resultOf(operation) : eventOf(operation));
        }
    }
    add("onCurrentChannelAIT_without_section", eventWithoutSection(schema["definitions"]["onCurrentChannelAIT"]));
}

}  // namespace

bool writeSchema(const std::string& frame, std::ostream& output, std::string& error) {
    try {
        Json schema = Json::parse(frame);
        Json& values = schema.at("definitions").at("values");
        addValues(values);
        addReferenced(Json::parse(frame), values);
        addOperations(schema);
        addMessages(schema);
        output << schema.dump(1, '\t') << "\n";
    } catch (const Json::exception& failure) {
        error = failure.what();
        return false;
    }
    return true;
}

}  // namespace message_documents
