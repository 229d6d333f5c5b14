// Takes URLs apart as far as applications need it.
#include "application_url.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace tvbrowser {

namespace {

constexpr std::string_view kDvbScheme = "dvb:";
constexpr std::string_view kCurrentAit = "dvb://current.ait/";

/// Scheme and host have no capital and small letters.
std::string inSmallLetters(std::string_view text) {
    std::string small(text);
    for (char& letter : small) {
        if (letter >= 'A' && letter <= 'Z') {
            letter = static_cast<char>(letter - 'A' + 'a');
        }
    }
    return small;
}

bool beginsWith(std::string_view text, std::string_view beginning) {
    return text.substr(0, beginning.size()) == beginning;
}

/// A URL in its parts: "https" "a.example:443" "/path" "?query" "#fragment".
struct Parts {
    std::string scheme;
    std::string authority;
    std::string path;
    std::string query;
    std::string fragment;
};

std::string withPort(const std::string& scheme, const std::string& authority) {
    constexpr std::pair<const char*, const char*> kDefaultPorts[] = {{"http", ":80"}, {"https", ":443"}};
    const bool hasPort = authority.find(':', authority.find(']') + 1) != std::string::npos;
    for (const auto& [name, port] : kDefaultPorts) {
        if (scheme == name && !hasPort) {
            return authority + port;
        }
    }
    return authority;
}

bool isSchemeLetter(char letter) {
    return (letter >= 'a' && letter <= 'z') || (letter >= '0' && letter <= '9') || letter == '+' || letter == '-' ||
           letter == '.';
}

/// Cuts what follows the first of the characters off, and returns it.
std::string cutFrom(std::string& text, const char* characters) {
    const std::size_t at = std::min(text.find_first_of(characters), text.size());
    std::string rest = text.substr(at);
    text.resize(at);
    return rest;
}

/// Engines take a backslash for a slash, so it ends the host too.
std::optional<Parts> partsOf(const std::string& url) {
    constexpr std::string_view kAfterScheme = "://";
    const std::size_t colon = url.find(kAfterScheme);
    if (colon == 0 || colon == std::string::npos) {
        return std::nullopt;
    }
    Parts parts;
    parts.scheme = inSmallLetters(url.substr(0, colon));
    if (!std::all_of(parts.scheme.begin(), parts.scheme.end(), isSchemeLetter)) {
        return std::nullopt;
    }
    std::string host = url.substr(colon + kAfterScheme.size());
    parts.path = cutFrom(host, "/\\?#");
    parts.fragment = cutFrom(parts.path, "#");
    parts.query = cutFrom(parts.path, "?");
    const std::size_t user = host.rfind('@');
    host.erase(0, user == std::string::npos ? 0 : user + 1);
    parts.authority = withPort(parts.scheme, inSmallLetters(host));
    if (parts.path.empty()) {
        parts.path = "/";
    }
    return parts;
}

std::string originOf(const Parts& parts) {
    return parts.scheme + "://" + parts.authority;
}

/// The rest of the boundary is a beginning of the path, as it stands. The hosts must be the same: "http://a.example" is
/// no beginning of "http://a.example.org".
bool beginsWithBoundary(const Parts& url, const std::string& boundary) {
    const std::optional<Parts> prefix = partsOf(boundary);
    return prefix && originOf(*prefix) == originOf(url) && beginsWith(url.path, prefix->path);
}

}  // namespace

bool isDvbUrl(const std::string& text) {
    return inSmallLetters(text.substr(0, kDvbScheme.size())) == kDvbScheme;
}

bool isHttpUrl(const std::string& text) {
    const std::optional<Parts> parts = partsOf(text);
    return parts && (parts->scheme == "http" || parts->scheme == "https");
}

std::optional<CurrentAitUrl> parseCurrentAitUrl(const std::string& text, std::string& error) {
    if (inSmallLetters(text.substr(0, kCurrentAit.size())) != kCurrentAit) {
        error = text + ": does not begin with " + std::string(kCurrentAit);
        return std::nullopt;
    }
    std::string name = text.substr(kCurrentAit.size());
    CurrentAitUrl url;
    url.fragment = cutFrom(name, "#");
    url.query = cutFrom(name, "?");
    const std::optional<ApplicationId> id = parseApplicationId(name);
    if (!id) {
        error = text + ": \"" + name + "\" is not ORGANISATION.APPLICATION in hexadecimal digits";
        return std::nullopt;
    }
    url.id = *id;
    return url;
}

std::string urlWith(const std::string& url, const std::string& query, const std::string& fragment) {
    std::string result = url;
    const std::string ownFragment = cutFrom(result, "#");
    if (!query.empty()) {
        const bool hasQuery = result.find('?') != std::string::npos;
        result += hasQuery ? "&" + query.substr(1) : query;
    }
    return result + (fragment.empty() ? ownFragment : fragment);
}

bool isSameDocument(const std::string& one, const std::string& other) {
    const std::optional<Parts> first = partsOf(one);
    const std::optional<Parts> second = partsOf(other);
    return first && second && originOf(*first) == originOf(*second) && first->path == second->path;
}

std::optional<std::string> originOf(const std::string& url) {
    const std::optional<Parts> parts = partsOf(url);
    return parts ? std::optional<std::string>(originOf(*parts)) : std::nullopt;
}

bool isWithinBoundary(const std::string& url, const RunningApplication& application) {
    const std::optional<Parts> parts = partsOf(url);
    if (!parts) {
        return false;
    }
    return originOf(*parts) == originOf(application.url) ||
           std::any_of(application.boundaries.begin(), application.boundaries.end(),
                       [&parts](const std::string& boundary) { return beginsWithBoundary(*parts, boundary); });
}

}  // namespace tvbrowser
