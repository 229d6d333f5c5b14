// Reads arguments.
#include "values.h"

namespace tvbrowser {

json tripletValue(const si::Triplet& triplet) {
    return {{"onid", triplet.onid}, {"tsid", triplet.tsid}, {"sid", triplet.sid}};
}

std::string safeText(const std::string& bytes) {
    return json::parse(json(bytes).dump(-1, ' ', false, json::error_handler_t::replace)).get<std::string>();
}

std::string hexText(si::Bytes bytes) {
    constexpr const char* kDigits = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size * 2);
    for (std::size_t index = 0; index < bytes.size; ++index) {
        text += kDigits[bytes.data[index] >> 4U];
        text += kDigits[bytes.data[index] & 0x0FU];
    }
    return text;
}

namespace {

std::optional<unsigned int> digit(char character) {
    constexpr unsigned int kTen = 10;
    if (character >= '0' && character <= '9') {
        return static_cast<unsigned int>(character - '0');
    }
    if (character >= 'a' && character <= 'f') {
        return static_cast<unsigned int>(character - 'a') + kTen;
    }
    if (character >= 'A' && character <= 'F') {
        return static_cast<unsigned int>(character - 'A') + kTen;
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> bytesOfHex(const std::string& text) {
    std::string bytes;
    for (std::size_t at = 0; at + 1 < text.size(); at += 2) {
        const std::optional<unsigned int> high = digit(text[at]);
        const std::optional<unsigned int> low = digit(text[at + 1]);
        if (!high || !low) {
            return std::nullopt;
        }
        bytes += static_cast<char>(*high << 4U | *low);
    }
    return text.size() % 2 == 0 ? std::optional(bytes) : std::nullopt;
}

Arguments::Arguments(const std::string& newCall, const json& newValue) : call(newCall), value(newValue) {
    if (!value.is_object()) {
        throw BadCall(call + ": the argument is not an object");
    }
}

void Arguments::refuse(const std::string& key, const std::string& wanted) const {
    throw BadCall(call + ": " + key + " is not " + wanted);
}

bool Arguments::has(const std::string& key) const {
    const auto found = value.find(key);
    return found != value.end() && !found->is_null();
}

const json& Arguments::at(const std::string& key) const {
    if (!has(key)) {
        throw BadCall(call + ": " + key + " is missing");
    }
    return value.at(key);
}

/// A script's number is a floating-point one, whatever its value.
std::uint64_t Arguments::number(const std::string& key, std::uint64_t most) const {
    constexpr double kMostExact = 9007199254740992.0;
    const json& found = at(key);
    const std::string wanted = "a number from 0 to " + std::to_string(most);
    std::uint64_t result = 0;
    if (found.is_number_unsigned()) {
        result = found.get<std::uint64_t>();
    } else if (found.is_number_integer() && found.get<std::int64_t>() >= 0) {
        result = static_cast<std::uint64_t>(found.get<std::int64_t>());
    } else if (found.is_number_float() && found.get<double>() >= 0 && found.get<double>() <= kMostExact) {
        result = static_cast<std::uint64_t>(found.get<double>());
        if (static_cast<double>(result) != found.get<double>()) {
            refuse(key, wanted);
        }
    } else {
        refuse(key, wanted);
    }
    if (result > most) {
        refuse(key, wanted);
    }
    return result;
}

std::uint16_t Arguments::word(const std::string& key) const {
    return static_cast<std::uint16_t>(number(key, UINT16_MAX));
}

std::string Arguments::text(const std::string& key) const {
    const json& found = at(key);
    if (!found.is_string()) {
        refuse(key, "a text");
    }
    return found.get<std::string>();
}

bool Arguments::flag(const std::string& key) const {
    const json& found = at(key);
    if (!found.is_boolean()) {
        refuse(key, "true or false");
    }
    return found.get<bool>();
}

si::Triplet Arguments::triplet() const {
    return {word("onid"), word("tsid"), word("sid")};
}

}  // namespace tvbrowser
