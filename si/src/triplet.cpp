// Reads and writes triplets.
#include "si/triplet.h"

#include <array>
#include <charconv>
#include <string_view>

namespace si {

namespace {

bool hasHexadecimalPrefix(std::string_view text) {
    return text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

bool parseNumber(std::string_view text, std::uint16_t& number) {
    constexpr int kDecimal = 10;
    constexpr int kHexadecimal = 16;
    const bool isHexadecimal = hasHexadecimalPrefix(text);
    const std::string_view digits = text.substr(isHexadecimal ? 2 : 0);
    const char* const end = digits.data() + digits.size();
    const auto result = std::from_chars(digits.data(), end, number, isHexadecimal ? kHexadecimal : kDecimal);
    return result.ec == std::errc() && result.ptr == end;
}

}  // namespace

std::optional<Triplet> parseTriplet(const std::string& text) {
    std::array<std::uint16_t, 3> numbers{};
    std::size_t start = 0;
    for (std::size_t index = 0; index < numbers.size(); ++index) {
        const bool isLast = index + 1 == numbers.size();
        const std::size_t end = isLast ? text.size() : text.find(':', start);
        if (end == std::string::npos || start > end ||
            !parseNumber(std::string_view(text).substr(start, end - start), numbers[index])) {
            return std::nullopt;
        }
        start = end + 1;
    }
    return Triplet{numbers[0], numbers[1], numbers[2]};
}

std::string tripletText(const Triplet& triplet) {
    return std::to_string(triplet.onid) + ":" + std::to_string(triplet.tsid) + ":" + std::to_string(triplet.sid);
}

}  // namespace si
