// The schema, and the types of keys so far.
#include "valid_json.h"

#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <valijson/adapters/nlohmann_json_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validation_results.hpp>
#include <valijson/validator.hpp>

namespace {

using nlohmann::json;
using Adapter = valijson::adapters::NlohmannJsonAdapter;

const json& schemaText() {
    static const json kText = json::parse(std::ifstream(SCHEMA_FILE));
    return kText;
}

const valijson::Schema& schema() {
    static const valijson::Schema& parsed = []() -> const valijson::Schema& {
        static valijson::Schema filled;
        valijson::SchemaParser(valijson::SchemaParser::kDraft7).populateSchema(Adapter(schemaText()), filled);
        return filled;
    }();
    return parsed;
}

/// The definition for the object's kind, which explains an error better than all alternatives together.
std::string definitionOf(const json& object) {
    for (const char* const kind : {"event", "operation", "record", "note"}) {
        if (object.contains(kind)) {
            return object[kind].get<std::string>();
        }
    }
    return "none";
}

std::string errorsOf(valijson::ValidationResults& results) {
    std::string text;
    valijson::ValidationResults::Error error;
    while (results.popError(error)) {
        std::string path;
        for (const std::string& part : error.context) {
            path += part;
        }
        text += "\n  " + path + ": " + error.description;
    }
    return text;
}

using Types = std::map<std::string, std::string>;

/// Adds the types of the object's keys; returns a key that had another type before. A section has the standards' keys,
/// which are apart from the others.
std::string otherType(const json& value, Types& types, Types& ofSections) {
    std::string found;
    for (const auto& item : value.items()) {
        const json& member = item.value();
        if (value.is_object()) {
            const std::string type = member.is_number() ? "number" : member.type_name();
            const std::string known = types.emplace(item.key(), type).first->second;
            found = known == type ? found : item.key() + " is a " + type + " and a " + known;
        }
        if (member.is_structured()) {
            const bool isSection = value.is_object() && item.key() == "table";
            const std::string below = otherType(member, isSection ? ofSections : types, ofSections);
            found = below.empty() ? found : below;
        }
    }
    return found;
}

testing::AssertionResult isValidLine(const std::string& line) {
    static Types types;
    static Types ofSections;
    const json object = json::parse(line, nullptr, false);
    if (!object.is_object()) {
        return testing::AssertionFailure() << "no JSON object: " << line;
    }
    valijson::Validator validator;
    valijson::ValidationResults results;
    if (!validator.validate(schema(), Adapter(object), &results)) {
        return testing::AssertionFailure() << definitionOf(object) << errorsOf(results) << "\nin " << line;
    }
    const std::string differing = otherType(object, types, ofSections);
    if (!differing.empty()) {
        return testing::AssertionFailure() << differing << ": " << line;
    }
    return testing::AssertionSuccess();
}

}  // namespace

testing::AssertionResult isValidJson(const std::string& lines) {
    std::istringstream all(lines);
    for (std::string line; std::getline(all, line);) {
        const testing::AssertionResult result = isValidLine(line);
        if (!result) {
            return result;
        }
    }
    return testing::AssertionSuccess();
}
