// Reading input specifications.
#include "input_spec.h"

#include <charconv>

namespace dtvservice {

namespace {

bool startsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

/// [@]HOST:PORT[?interface=ADDRESS]; an IPv6 address stands in brackets.
bool parseAddress(std::string address, InputSpec& spec, std::string& error) {
    const std::string option = "interface=";
    if (const std::size_t query = address.find('?'); query != std::string::npos) {
        const std::string given = address.substr(query + 1);
        address.resize(query);
        if (!startsWith(given, option)) {
            error = "\"" + given + "\" is not interface=ADDRESS";
            return false;
        }
        spec.interface = given.substr(option.size());
    }
    if (startsWith(address, "@")) {
        address.erase(0, 1);
    }
    const std::size_t colon = address.rfind(':');
    if (colon == std::string::npos) {
        error = "no port: HOST:PORT is needed";
        return false;
    }
    spec.host = address.substr(0, colon);
    if (startsWith(spec.host, "[") && spec.host.back() == ']') {
        spec.host = spec.host.substr(1, spec.host.size() - 2);
    }
    const char* const begin = address.data() + colon + 1;
    const char* const end = address.data() + address.size();
    const auto [stopped, failure] = std::from_chars(begin, end, spec.port);
    if (failure != std::errc() || stopped != end || spec.port == 0) {
        error = "port \"" + address.substr(colon + 1) + "\" is not a number from 1 to 65535";
        return false;
    }
    return true;
}

}  // namespace

std::optional<InputSpec> parseInput(const std::string& text, std::string& error) {
    InputSpec spec;
    spec.text = text;
    std::string problem;
    if (text == "-") {
        spec.kind = InputSpec::Kind::standardInput;
    } else if (startsWith(text, "udp://") || startsWith(text, "rtp://")) {
        spec.kind = text[0] == 'u' ? InputSpec::Kind::udp : InputSpec::Kind::rtp;
        parseAddress(text.substr(6), spec, problem);
    } else if (startsWith(text, "file:")) {
        spec.path = text.substr(5);
        problem = spec.path.empty() ? "no file is named" : "";
    } else if (const std::size_t scheme = text.find("://"); scheme != std::string::npos) {
        problem = "unknown kind of input \"" + text.substr(0, scheme) + "\"";
    } else {
        spec.path = text;
        problem = text.empty() ? "no file is named" : "";
    }
    if (!problem.empty()) {
        error = "input \"" + text + "\": " + problem;
        return std::nullopt;
    }
    return spec;
}

}  // namespace dtvservice
