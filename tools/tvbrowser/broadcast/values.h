// Values of calls and events as JSON, and the arguments of calls.
// Threads: any.
// Blocks:  never.
// Fails:   a wrong argument throws BadCall, with the names of the call and the argument.
#pragma once

#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "bad_call.h"
#include "si/section.h"
#include "si/triplet.h"

namespace tvbrowser {

using nlohmann::json;

/// Runs the task later on the loop's thread. Callable on any thread.
using Post = std::function<void(std::function<void()>)>;
/// Takes an event's name and value, on the loop's thread.
using Emit = std::function<void(const std::string&, const json&)>;

/// {onid,tsid,sid}
json tripletValue(const si::Triplet& triplet);
/// Null for an absent value.
template <typename Value>
json orNull(const std::optional<Value>& value) {
    return value ? json(*value) : json();
}

/// The text with U+FFFD for what is not UTF-8.
std::string safeText(const std::string& bytes);
/// "0aff"
std::string hexText(si::Bytes bytes);
std::optional<std::string> bytesOfHex(const std::string& text);

/// The argument of a call, an object.
class Arguments {
public:
    Arguments(const std::string& newCall, const json& newValue);

    /// Whether there is such a value; null counts as none.
    bool has(const std::string& key) const;
    std::uint64_t number(const std::string& key, std::uint64_t most) const;
    std::uint16_t word(const std::string& key) const;
    std::string text(const std::string& key) const;
    bool flag(const std::string& key) const;
    /// onid, tsid and sid
    si::Triplet triplet() const;

private:
    const json& at(const std::string& key) const;
    [[noreturn]] void refuse(const std::string& key, const std::string& wanted) const;

    std::string call;
    json value;
};

}  // namespace tvbrowser
