// JsonReader: reads the members of a JSON object and names the place of each error. A key that the program does not
// read is an error, so a misspelt key is reported.
// Threads: one.
// Blocks:  never.
// Fails:   DescriptionError.
#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace tsmake {

struct DescriptionError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class JsonReader {
public:
    /// `place` names the value in errors. The value must outlive the reader.
    JsonReader(const nlohmann::json& newValue, std::string newPlace);

    bool has(const std::string& key) const;
    /// A whole number from `least` to `most`. A missing key gives `otherwise`, or an error without it.
    std::uint64_t number(const std::string& key, std::uint64_t least, std::uint64_t most,
                         std::optional<std::uint64_t> otherwise = std::nullopt);
    template <typename Number>
    Number numberOf(const std::string& key, std::optional<std::uint64_t> otherwise = std::nullopt) {
        return static_cast<Number>(number(key, 0, std::numeric_limits<Number>::max(), otherwise));
    }
    std::string text(const std::string& key, std::optional<std::string> otherwise = std::nullopt);
    bool flag(const std::string& key);
    /// object() reads the object under the key, list() each object of the list under the key. Both accept a missing
    /// key.
    void object(const std::string& key, const std::function<void(JsonReader&)>& read);
    void list(const std::string& key, const std::function<void(JsonReader&)>& read);
    /// Reads the list of texts under the key, if any.
    void texts(const std::string& key, std::vector<std::string>& list);
    /// The unconverted value under the key; null when the key is missing.
    const nlohmann::json* member(const std::string& key);

    [[noreturn]] void fail(const std::string& key, const std::string& problem) const;
    /// Fails for a key that has not been read.
    void finish() const;

private:
    std::string placeOf(const std::string& key) const;
    const nlohmann::json& needed(const std::string& key);

    const nlohmann::json& value;
    std::string place;
    std::set<std::string> asked;
};

}  // namespace tsmake
