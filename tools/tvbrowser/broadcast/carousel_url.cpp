// Takes URLs of carousels apart, and makes them.
#include "carousel_url.h"

#include <charconv>
#include <string_view>
#include <vector>

#include "si/tables.h"

namespace tvbrowser {

namespace {

constexpr int kHexadecimal = 16;

template <typename Number>
std::optional<Number> hexadecimal(std::string_view digits) {
    Number number = 0;
    const char* const end = digits.data() + digits.size();
    const auto result = std::from_chars(digits.data(), end, number, kHexadecimal);
    return result.ec == std::errc() && result.ptr == end ? std::optional(number) : std::nullopt;
}

std::vector<std::string_view> separated(std::string_view text, char by) {
    std::vector<std::string_view> parts;
    for (std::size_t end = text.find(by); end != std::string_view::npos; end = text.find(by)) {
        parts.push_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    parts.push_back(text);
    return parts;
}

/// A percent sign without two digits stands for itself.
std::string percentDecoded(std::string_view text) {
    constexpr std::size_t kDigits = 2;
    std::string decoded;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::string_view digits = text.substr(at + 1, kDigits);
        const auto byte =
            text[at] == '%' && digits.size() == kDigits ? hexadecimal<std::uint8_t>(digits) : std::nullopt;
        decoded += byte ? static_cast<char>(*byte) : text[at];
        at += byte ? kDigits : 0;
    }
    return decoded;
}

/// A scheme has no capital and small letters.
bool hasDvbScheme(std::string_view text) {
    constexpr std::string_view kScheme = "dvb://";
    constexpr std::string_view kInCapitals = "DVB://";
    const auto isIn = [](char letter, char small, char capital) { return letter == small || letter == capital; };
    bool has = text.size() >= kScheme.size();
    for (std::size_t at = 0; has && at < kScheme.size(); ++at) {
        has = isIn(text[at], kScheme[at], kInCapitals[at]);
    }
    return has;
}

/// ONID.[TSID].SID[.TAG]
bool readHost(std::string_view host, CarouselPlace& place) {
    constexpr std::size_t kTagAt = 3;
    const std::vector<std::string_view> numbers = separated(host, '.');
    if (numbers.size() != kTagAt && numbers.size() != kTagAt + 1) {
        return false;
    }
    const auto onid = hexadecimal<std::uint16_t>(numbers[0]);
    const auto sid = hexadecimal<std::uint16_t>(numbers[2]);
    place.tsid = hexadecimal<std::uint16_t>(numbers[1]);
    place.componentTag = numbers.size() > kTagAt ? hexadecimal<std::uint8_t>(numbers[kTagAt]) : std::nullopt;
    place.onid = onid.value_or(0);
    place.sid = sid.value_or(0);
    return onid && sid && (place.tsid || numbers[1].empty()) && (place.componentTag || numbers.size() == kTagAt);
}

std::string digitsOf(unsigned int number) {
    constexpr std::size_t kMostDigits = 8;
    std::string text(kMostDigits, '0');
    const auto result = std::to_chars(text.data(), text.data() + text.size(), number, kHexadecimal);
    text.resize(static_cast<std::size_t>(result.ptr - text.data()));
    return text;
}

}  // namespace

bool CarouselPlace::isOf(const si::Triplet& service) const {
    const bool isNetwork =
        onid == service.onid || onid == si::kUnknownNetworkId || service.onid == si::kUnknownNetworkId;
    return isNetwork && tsid.value_or(service.tsid) == service.tsid && sid == service.sid;
}

std::optional<CarouselPlace> parseCarouselUrl(const std::string& text, std::string& error) {
    constexpr std::size_t kSchemeSize = 6;
    if (!hasDvbScheme(text)) {
        error = text + ": does not begin with dvb://";
        return std::nullopt;
    }
    const std::string_view all = std::string_view(text).substr(kSchemeSize);
    const std::string_view host = all.substr(0, all.find_first_of("/?#"));
    const std::string_view rest = all.substr(host.size());
    CarouselPlace place;
    if (!readHost(host, place)) {
        error = text + ": \"" + std::string(host) + "\" is not ONID.TSID.SID.TAG in hexadecimal digits";
        return std::nullopt;
    }
    place.path = percentDecoded(rest.substr(0, rest.find_first_of("?#")));
    return place;
}

std::string carouselUrl(const si::Triplet& service, std::uint8_t componentTag, const std::string& path) {
    const std::string slash = path.empty() || path.front() != '/' ? "/" : "";
    return "dvb://" + digitsOf(service.onid) + "." + digitsOf(service.tsid) + "." + digitsOf(service.sid) + "." +
           digitsOf(componentTag) + slash + path;
}

}  // namespace tvbrowser
