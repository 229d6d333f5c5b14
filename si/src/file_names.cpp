// Makes names safe and tells them apart.
#include "si/file_names.h"

#include <algorithm>
#include <array>
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

/// Of ASCII letters, whatever the locale.
std::string inLowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char each) { return each >= 'A' && each <= 'Z' ? static_cast<char>(each - 'A' + 'a') : each; });
    return text;
}

/// Whether the name, up to its first dot, is one of a device.
bool isOfDevice(const std::string& name) {
    static constexpr std::array<std::string_view, 4> kDevices = {"con", "prn", "aux", "nul"};
    static constexpr std::array<std::string_view, 2> kNumbered = {"com", "lpt"};
    constexpr std::size_t kNumberAt = 3;
    const std::string stem = inLowerCase(name.substr(0, name.find('.')));
    const auto is = [&stem](std::string_view device) { return stem == device; };
    const auto isBegun = [&stem](std::string_view device) { return stem.compare(0, kNumberAt, device) == 0; };
    const bool isNumbered = stem.size() == kNumberAt + 1 && stem[kNumberAt] >= '0' && stem[kNumberAt] <= '9';
    return std::any_of(kDevices.begin(), kDevices.end(), is) ||
           (isNumbered && std::any_of(kNumbered.begin(), kNumbered.end(), isBegun));
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
    if (isOfDevice(result)) {
        result = escaped(result[0]) + result.substr(1);
    }
    return cut(result, FileNames::kLongest);
}

}  // namespace

std::string FileNames::take(const std::string& name) {
    const std::string first = safe(name);
    std::string candidate = first;
    std::size_t& next = taken[inLowerCase(first)];
    for (bool isFree = next == 0; !isFree;) {
        candidate = first + "~" + std::to_string(next++);
        isFree = taken.try_emplace(inLowerCase(candidate), 2).second;
    }
    next = std::max<std::size_t>(next, 2);
    return candidate;
}

}  // namespace si
