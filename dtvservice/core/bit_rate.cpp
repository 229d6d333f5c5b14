// Reads and writes bit rates.
#include "bit_rate.h"

#include <cmath>
#include <cstdio>
#include <locale>
#include <sstream>

namespace dtvservice {

std::optional<std::uint64_t> parseBitRate(const std::string& text) {
    // A stream, unlike strtod(), reads neither "inf" nor hexadecimal numbers.
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    double number = 0;
    std::string unit;
    const bool hasExponent = text.find_first_of("eE") != std::string::npos;
    if (text.empty() || text[0] < '0' || text[0] > '9' || hasExponent || !(stream >> number)) {
        return std::nullopt;
    }
    std::getline(stream, unit);
    const double factor = unit.empty() ? 1 : unit == "k" ? 1e3 : unit == "M" ? 1e6 : 0;
    const double bitRate = std::round(number * factor);
    if (bitRate < static_cast<double>(kLowestBitRate) || bitRate > static_cast<double>(kHighestBitRate)) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(bitRate);
}

std::string shownBitRate(std::uint64_t bitRate) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f Mbit/s", static_cast<double>(bitRate) / 1e6);
    return text;
}

}  // namespace dtvservice
