// Reads numbers, triplets and bytes.
#include "arguments.h"

#include "operations.h"

namespace dvbshell {

unsigned int ArgumentReader::number(const std::string& name, const std::string& text, unsigned int most) {
    const std::optional<std::uint64_t> number = command_line::parseNumber(text);
    if (!number || *number > most) {
        refuse(name + ": \"" + text + "\" is not a number from 0 to " + std::to_string(most));
        return 0;
    }
    return static_cast<unsigned int>(*number);
}

Triplet ArgumentReader::triplet(const std::string& text) {
    const std::optional<Triplet> triplet = si::parseTriplet(text);
    if (!triplet) {
        refuse("\"" + text + "\" is not ONID:TSID:SID, each from 0 to 65535");
    }
    return triplet.value_or(Triplet());
}

std::string ArgumentReader::bytes(const std::string& name, const std::string& text) {
    std::string bytes;
    if (!parseHex(text, bytes)) {
        refuse(name + ": \"" + text + "\" is not bytes in hexadecimal");
    }
    return bytes;
}

std::optional<unsigned int> ArgumentReader::option(const std::string& name, unsigned int most) {
    const std::optional<std::string> text = all.value(name);
    return text ? std::make_optional(number("--" + name, *text, most)) : std::nullopt;
}

std::optional<std::chrono::seconds> ArgumentReader::seconds() {
    constexpr unsigned int kMostSeconds = 86400;
    const std::optional<unsigned int> number = option("seconds", kMostSeconds);
    return number ? std::make_optional(std::chrono::seconds(*number)) : std::nullopt;
}

void ArgumentReader::refuse(const std::string& newError) {
    if (firstError.empty()) {
        firstError = newError;
    }
}

}  // namespace dvbshell
