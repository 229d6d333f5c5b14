// Reading the names of inputs.
#include "input_name.h"

#include <charconv>

namespace dtvservice {

namespace {

bool startsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

/// [@]HOST:PORT[?interface=ADDRESS]; an IPv6 address stands in brackets.
bool parseAddress(std::string address, InputName& input, std::string& error) {
    const std::string option = "interface=";
    if (const std::size_t query = address.find('?'); query != std::string::npos) {
        const std::string given = address.substr(query + 1);
        address.resize(query);
        if (!startsWith(given, option)) {
            error = "\"" + given + "\" is not interface=ADDRESS";
            return false;
        }
        input.interface = given.substr(option.size());
    }
    if (startsWith(address, "@")) {
        address.erase(0, 1);
    }
    const std::size_t colon = address.rfind(':');
    if (colon == std::string::npos) {
        error = "no port: HOST:PORT is needed";
        return false;
    }
    input.host = address.substr(0, colon);
    if (startsWith(input.host, "[") && input.host.back() == ']') {
        input.host = input.host.substr(1, input.host.size() - 2);
    }
    const char* const begin = address.data() + colon + 1;
    const char* const end = address.data() + address.size();
    const auto [stopped, failure] = std::from_chars(begin, end, input.port);
    if (failure != std::errc() || stopped != end || input.port == 0) {
        error = "port \"" + address.substr(colon + 1) + "\" is not a number from 1 to 65535";
        return false;
    }
    return true;
}

}  // namespace

std::optional<InputName> parseInput(const std::string& text, std::string& error) {
    InputName input;
    input.text = text;
    std::string problem;
    if (text == "-") {
        input.kind = InputName::Kind::standardInput;
    } else if (startsWith(text, "udp://") || startsWith(text, "rtp://")) {
        input.kind = text[0] == 'u' ? InputName::Kind::udp : InputName::Kind::rtp;
        parseAddress(text.substr(6), input, problem);
    } else if (startsWith(text, "file:")) {
        input.path = text.substr(5);
        problem = input.path.empty() ? "no file is named" : "";
    } else if (const std::size_t scheme = text.find("://"); scheme != std::string::npos) {
        problem = "unknown kind of input \"" + text.substr(0, scheme) + "\"";
    } else {
        input.path = text;
        problem = text.empty() ? "no file is named" : "";
    }
    if (!problem.empty()) {
        error = "input \"" + text + "\": " + problem;
        return std::nullopt;
    }
    return input;
}

}  // namespace dtvservice
