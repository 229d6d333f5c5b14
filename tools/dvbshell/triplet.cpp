// Reads and writes triplets.
#include "triplet.h"

#include <charconv>

namespace dvbshell {

namespace {

bool parseNumber(const std::string& text, int& number) {
    const bool hexadecimal = text.compare(0, 2, "0x") == 0 || text.compare(0, 2, "0X") == 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data() + (hexadecimal ? 2 : 0), end, number, hexadecimal ? 16 : 10);
    return result.ec == std::errc() && result.ptr == end && number >= 0 && number <= 0xFFFF;
}

}  // namespace

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts(1);
    for (const char character : text) {
        if (character == separator) {
            parts.emplace_back();
        } else {
            parts.back() += character;
        }
    }
    return parts;
}

bool parseTriplet(const std::string& text, Triplet& triplet) {
    const std::vector<std::string> parts = split(text, ':');
    return parts.size() == 3 && parseNumber(parts[0], triplet.onid) && parseNumber(parts[1], triplet.tsid) &&
           parseNumber(parts[2], triplet.sid);
}

std::string tripletText(const Triplet& triplet) {
    return std::to_string(triplet.onid) + ":" + std::to_string(triplet.tsid) + ":" + std::to_string(triplet.sid);
}

}  // namespace dvbshell
