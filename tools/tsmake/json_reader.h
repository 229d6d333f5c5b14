// JsonReader: the members of a JSON object, each with its place for errors. What nobody asked for is an error, so that
// a misspelt key is not passed over.
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
    /// A whole number from `least` to `most`; the default where the key is missing, an error without one.
    std::uint64_t number(const std::string& key, std::uint64_t least, std::uint64_t most,
                         std::optional<std::uint64_t> otherwise = std::nullopt);
    template <typename Number>
    Number numberOf(const std::string& key, std::optional<std::uint64_t> otherwise = std::nullopt) {
        return static_cast<Number>(number(key, 0, std::numeric_limits<Number>::max(), otherwise));
    }
    std::string text(const std::string& key, std::optional<std::string> otherwise = std::nullopt);
    bool flag(const std::string& key);
    /// The object under the key, if there is one; then each object of the list under the key, if there is one.
    void object(const std::string& key, const std::function<void(JsonReader&)>& read);
    void list(const std::string& key, const std::function<void(JsonReader&)>& read);
    /// The list of texts under the key, if there is one.
    void texts(const std::string& key, std::vector<std::string>& list);
    /// The value under the key as it is; null where it is missing.
    const nlohmann::json* member(const std::string& key);

    [[noreturn]] void fail(const std::string& key, const std::string& problem) const;
    /// Every key has been asked for.
    void finish() const;

private:
    std::string placeOf(const std::string& key) const;
    const nlohmann::json& needed(const std::string& key);

    const nlohmann::json& value;
    std::string place;
    std::set<std::string> asked;
};

}  // namespace tsmake
