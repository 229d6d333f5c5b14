// Parses the names of inputs.
#include "input_name.h"

#include <algorithm>
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

bool parseNumber(const std::string& text, unsigned int& number) {
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    return failure == std::errc() && end == text.data() + text.size();
}

/// ADAPTER[/FRONTEND][?NAME=VALUE&NAME=VALUE]
bool parseAdapter(std::string address, InputName& input, std::string& error) {
    std::string query;
    if (const std::size_t mark = address.find('?'); mark != std::string::npos) {
        query = address.substr(mark + 1);
        address.resize(mark);
    }
    const std::size_t slash = address.find('/');
    const std::string frontend = slash == std::string::npos ? "0" : address.substr(slash + 1);
    if (!parseNumber(address.substr(0, slash), input.adapter) || !parseNumber(frontend, input.frontend)) {
        error = "\"" + address + "\" is not ADAPTER or ADAPTER/FRONTEND in numbers";
        return false;
    }
    for (std::size_t at = 0; at < query.size();) {
        const std::size_t end = std::min(query.find('&', at), query.size());
        const std::string option = query.substr(at, end - at);
        const std::size_t equals = option.find('=');
        if (equals == std::string::npos) {
            error = "\"" + option + "\" is not NAME=VALUE";
            return false;
        }
        input.options.push_back({option.substr(0, equals), option.substr(equals + 1)});
        at = end + 1;
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
    } else if (startsWith(text, "dvb://")) {
        input.kind = InputName::Kind::dvb;
        parseAdapter(text.substr(6), input, problem);
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
