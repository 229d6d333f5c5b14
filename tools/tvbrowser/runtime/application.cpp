// Reads and writes the ids of applications.
#include "application.h"

#include <charconv>
#include <tuple>

namespace tvbrowser {

namespace {

constexpr int kHexadecimal = 16;

template <typename Number>
bool parseHexadecimal(const char* first, const char* last, Number& number) {
    const auto result = std::from_chars(first, last, number, kHexadecimal);
    return result.ec == std::errc() && result.ptr == last;
}

template <typename Number>
std::string hexadecimalText(Number number) {
    constexpr std::size_t kMostDigits = 8;
    std::string text(kMostDigits, '0');
    const auto result = std::to_chars(text.data(), text.data() + text.size(), number, kHexadecimal);
    text.resize(static_cast<std::size_t>(result.ptr - text.data()));
    return text;
}

}  // namespace

std::optional<ApplicationId> parseApplicationId(const std::string& text) {
    const std::size_t dot = text.find('.');
    if (dot == std::string::npos) {
        return std::nullopt;
    }
    ApplicationId id;
    const char* const begin = text.data();
    if (!parseHexadecimal(begin, begin + dot, id.organisation) ||
        !parseHexadecimal(begin + dot + 1, begin + text.size(), id.application)) {
        return std::nullopt;
    }
    return id;
}

std::string applicationIdText(const ApplicationId& id) {
    return hexadecimalText(id.organisation) + "." + hexadecimalText(id.application);
}

bool operator==(const SignalledApplication& one, const SignalledApplication& other) {
    const auto fields = [](const SignalledApplication& of) {
        return std::tie(of.id, of.control, of.name, of.url, of.priority, of.visibility, of.isServiceBound, of.profiles,
                        of.boundaries, of.otherUrls);
    };
    return fields(one) == fields(other);
}

}  // namespace tvbrowser
