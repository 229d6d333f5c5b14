// Reads the names and arguments of operations.
#include "operations.h"

#include <charconv>

namespace dvbshell {

namespace {

template <typename Number>
bool parseWhole(const std::string& word, Number& number) {
    const bool hexadecimal = word.size() > 2 && word[0] == '0' && (word[1] == 'x' || word[1] == 'X');
    const char* const begin = word.data() + (hexadecimal ? 2 : 0);
    const char* const end = word.data() + word.size();
    const auto read = std::from_chars(begin, end, number, hexadecimal ? 16 : 10);
    return read.ec == std::errc() && read.ptr == end;
}

bool parseNumber(const Parameter& parameter, const std::string& word, std::uint64_t& number) {
    for (const message_fields::NamedValue& named : parameter.names) {
        if (word == named.name) {
            number = static_cast<std::uint64_t>(named.value);
            return true;
        }
    }
    if (!word.empty() && word[0] == '-') {
        std::int64_t negative = 0;
        const bool good = parseWhole(word, negative) && negative >= parameter.least;
        number = static_cast<std::uint64_t>(negative);
        return good;
    }
    return parseWhole(word, number) && number <= parameter.most;
}

/// "not a number from 0 to 255", "neither video, audio, subtitle nor a number from 0 to 255"
std::string notAllowed(const Parameter& parameter) {
    if (parameter.kind == Parameter::Kind::hexBytes) {
        return "not bytes in hexadecimal";
    }
    std::string names;
    for (const message_fields::NamedValue& named : parameter.names) {
        names += (names.empty() ? "neither " : ", ") + std::string(named.name);
    }
    return (names.empty() ? "not" : names + " nor") + " a number from " + std::to_string(parameter.least) + " to " +
           std::to_string(parameter.most);
}

bool parseValue(const Parameter& parameter, const std::string& word, Value& value) {
    switch (parameter.kind) {
        case Parameter::Kind::number:
            return parseNumber(parameter, word, value.number);
        case Parameter::Kind::hexBytes:
            return parseHex(word, value.text);
        default:
            value.text = word;
            return true;
    }
}

}  // namespace

const Operation* findOperation(const std::string& name) {
    for (const Operation& operation : operations()) {
        if (name == operation.name) {
            return &operation;
        }
    }
    return nullptr;
}

std::string synopsis(const Operation& operation) {
    std::string text = operation.name;
    for (const Parameter& parameter : operation.parameters) {
        text += std::string(" ") + parameter.name;
    }
    return text;
}

bool parseValues(const Operation& operation, const std::vector<std::string>& words, Values& values,
                 std::string& error) {
    if (words.size() != operation.parameters.size()) {
        error = std::string(operation.name) + " takes " + std::to_string(operation.parameters.size()) +
                " arguments: " + synopsis(operation);
        return false;
    }
    for (std::size_t index = 0; index < words.size(); ++index) {
        const Parameter& parameter = operation.parameters[index];
        values.emplace_back();
        if (!parseValue(parameter, words[index], values.back())) {
            error = std::string(operation.name) + ": " + parameter.name + ": \"" + words[index] + "\" is " +
                    notAllowed(parameter);
            return false;
        }
    }
    return true;
}

bool parseHex(const std::string& word, std::string& bytes) {
    if (word.size() % 2 != 0) {
        return false;
    }
    for (std::size_t at = 0; at < word.size(); at += 2) {
        unsigned int byte = 0;
        const char* const end = word.data() + at + 2;
        const auto read = std::from_chars(word.data() + at, end, byte, 16);
        if (read.ec != std::errc() || read.ptr != end) {
            return false;
        }
        bytes += static_cast<char>(byte);
    }
    return true;
}

}  // namespace dvbshell
