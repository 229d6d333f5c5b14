// Makes the JSON schema from the tables of keys.
#include <nlohmann/json.hpp>

#include "scenario_keys.h"

namespace dtvservice {

namespace {

using Json = nlohmann::ordered_json;

Json namesOf(const std::vector<CatalogueName>& names) {
    Json list = Json::array();
    for (const CatalogueName& name : names) {
        list.push_back(name.name);
    }
    return list;
}

Json faultNames() {
    Json list = Json::array();
    for (const Action& action : actions()) {
        if (action.kind == Action::Kind::fault) {
            list.push_back(action.name);
        }
    }
    return list;
}

/// Most readers of JSON have no larger numbers, so a schema with one would be wrong for them.
constexpr std::uint64_t kMostOfReaders = std::numeric_limits<std::int64_t>::max();

Json rangeOf(const Key& key, const char* type) {
    Json range = {{"type", type}, {"minimum", key.least}};
    if (key.most <= kMostOfReaders) {
        range["maximum"] = key.most;
    }
    return range;
}

Json typeOf(const Key& key) {
    switch (key.kind) {
        case Key::Kind::whole:
            return rangeOf(key, "integer");
        case Key::Kind::number:
            return rangeOf(key, "number");
        case Key::Kind::flag:
            return {{"type", "boolean"}};
        case Key::Kind::text:
            return {{"type", "string"}, {"maxLength", key.most}};
        case Key::Kind::command:
            return {{"enum", namesOf(commandNames())}};
        case Key::Kind::event:
            return {{"enum", namesOf(eventNames())}};
        case Key::Kind::fault:
            break;
    }
    return {{"enum", faultNames()}};
}

void addKeys(const std::vector<Key>& keys, Json& object) {
    for (const Key& key : keys) {
        Json type = typeOf(key);
        type["description"] = key.meaning;
        object["properties"][key.name] = std::move(type);
        if (key.isRequired) {
            object["required"].push_back(key.name);
        }
    }
}

Json objectOf(const std::vector<Key>& keys) {
    Json object = {{"type", "object"}, {"properties", Json::object()}, {"additionalProperties", false}};
    addKeys(keys, object);
    return object;
}

Json stepSchema() {
    Json step = objectOf(stepKeys());
    Json oneAction = Json::array();
    for (const Action& action : actions()) {
        Json value = objectOf(action.keys);
        value["description"] = action.meaning;
        step["properties"][action.name] = std::move(value);
        oneAction.push_back({{"required", {action.name}}});
    }
    step["allOf"] = Json::array({{{"oneOf", oneAction}},
                                 {{"oneOf", {{{"required", {"at"}}}, {{"required", {"upon"}}}}}},
                                 {{"not", {{"required", {"nth", "every"}}}}}});
    for (const char* const key : {"after", "nth", "every", "browser"}) {
        step["dependencies"][key] = {"upon"};
    }
    return step;
}

}  // namespace

std::string scenarioSchema() {
    Json schema = {{"$schema", "http://json-schema.org/draft-07/schema#"},
                   {"title", "a scenario for dtvserviced --scenario and dtvctl run"}};
    schema.update(objectOf(scenarioKeys()));
    schema["properties"]["steps"] = {
        {"type", "array"}, {"minItems", 1}, {"maxItems", kMostSteps}, {"items", stepSchema()}};
    schema["required"].push_back("steps");
    return schema.dump(1, '\t') + "\n";
}

}  // namespace dtvservice
