// Makes names safe and tells them apart.
#include "si/file_names.h"

#include <algorithm>
#include <string_view>

namespace si {

namespace {

std::string escaped(char byte) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    constexpr unsigned int kDigitBits = 4;
    constexpr unsigned int kDigitMask = 0xF;
    const auto value = static_cast<unsigned char>(byte);
    return {'%', kDigits[value >> kDigitBits], kDigits[value & kDigitMask]};
}

bool isUnsafe(char byte) {
    constexpr unsigned char kDelete = 0x7F;
    const auto value = static_cast<unsigned char>(byte);
    return value < ' ' || value == kDelete || byte == '/';
}

/// At the end of a character, if the name is UTF-8.
std::string cut(const std::string& name, std::size_t size) {
    constexpr unsigned int kTopBits = 0xC0;
    constexpr unsigned int kContinuation = 0x80;
    constexpr std::size_t kMostContinuations = 3;
    if (name.size() <= size) {
        return name;
    }
    std::size_t end = size;
    while (size - end < kMostContinuations && (static_cast<unsigned char>(name[end]) & kTopBits) == kContinuation) {
        --end;
    }
    return name.substr(0, end);
}

std::string safe(const std::string& name) {
    if (name.empty()) {
        return "%";
    }
    const bool isDots = name == "." || name == "..";
    std::string result;
    for (const char byte : name) {
        result += isDots || isUnsafe(byte) ? escaped(byte) : std::string(1, byte);
    }
    return cut(result, FileNames::kLongest);
}

}  // namespace

std::string FileNames::take(const std::string& name) {
    const std::string first = safe(name);
    std::string candidate = first;
    std::size_t& next = taken[first];
    for (bool isFree = next == 0; !isFree;) {
        candidate = first + "~" + std::to_string(next++);
        isFree = taken.try_emplace(candidate, 2).second;
    }
    next = std::max<std::size_t>(next, 2);
    return candidate;
}

}  // namespace si
