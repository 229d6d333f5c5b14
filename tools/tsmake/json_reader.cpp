// Reads the members of JSON objects.
#include "json_reader.h"

#include <algorithm>

namespace tsmake {

JsonReader::JsonReader(const nlohmann::json& newValue, std::string newPlace)
    : value(newValue), place(std::move(newPlace)) {
    if (!value.is_object()) {
        throw DescriptionError((place.empty() ? "the description" : place) + ": an object is needed");
    }
}

std::string JsonReader::placeOf(const std::string& key) const {
    return place.empty() ? key : place + "." + key;
}

void JsonReader::fail(const std::string& key, const std::string& problem) const {
    throw DescriptionError(placeOf(key) + ": " + problem);
}

bool JsonReader::has(const std::string& key) const {
    return value.contains(key);
}

const nlohmann::json* JsonReader::member(const std::string& key) {
    asked.insert(key);
    const auto found = value.find(key);
    return found == value.end() ? nullptr : &*found;
}

const nlohmann::json& JsonReader::needed(const std::string& key) {
    const nlohmann::json* const found = member(key);
    if (found == nullptr) {
        fail(key, "is missing");
    }
    return *found;
}

std::uint64_t JsonReader::number(const std::string& key, std::uint64_t least, std::uint64_t most,
                                 std::optional<std::uint64_t> otherwise) {
    if (otherwise && !has(key)) {
        return *otherwise;
    }
    const nlohmann::json& found = needed(key);
    if (!found.is_number_unsigned() || found.get<std::uint64_t>() < least || found.get<std::uint64_t>() > most) {
        fail(key,
             found.dump() + " is not a whole number from " + std::to_string(least) + " to " + std::to_string(most));
    }
    return found.get<std::uint64_t>();
}

std::string JsonReader::text(const std::string& key, std::optional<std::string> otherwise) {
    if (otherwise && !has(key)) {
        return *otherwise;
    }
    const nlohmann::json& found = needed(key);
    if (!found.is_string()) {
        fail(key, found.dump() + " is not a text");
    }
    return found.get<std::string>();
}

bool JsonReader::flag(const std::string& key) {
    const nlohmann::json* const found = member(key);
    if (found != nullptr && !found->is_boolean()) {
        fail(key, found->dump() + " is neither true nor false");
    }
    return found != nullptr && found->get<bool>();
}

void JsonReader::object(const std::string& key, const std::function<void(JsonReader&)>& read) {
    if (const nlohmann::json* const found = member(key)) {
        JsonReader reader(*found, placeOf(key));
        read(reader);
        reader.finish();
    }
}

void JsonReader::list(const std::string& key, const std::function<void(JsonReader&)>& read) {
    const nlohmann::json* const found = member(key);
    if (found == nullptr) {
        return;
    }
    if (!found->is_array()) {
        fail(key, "a list is needed");
    }
    for (std::size_t index = 0; index < found->size(); ++index) {
        JsonReader reader((*found)[index], placeOf(key) + "[" + std::to_string(index) + "]");
        read(reader);
        reader.finish();
    }
}

void JsonReader::texts(const std::string& key, std::vector<std::string>& list) {
    const nlohmann::json* const found = member(key);
    if (found == nullptr) {
        return;
    }
    const bool isIt = found->is_array() && std::all_of(found->begin(), found->end(),
                                                       [](const nlohmann::json& text) { return text.is_string(); });
    if (!isIt) {
        fail(key, "a list of texts is needed");
    }
    list = found->get<std::vector<std::string>>();
}

void JsonReader::finish() const {
    for (const auto& entry : value.items()) {
        if (asked.count(entry.key()) == 0) {
            fail(entry.key(), "is no known key");
        }
    }
}

}  // namespace tsmake
