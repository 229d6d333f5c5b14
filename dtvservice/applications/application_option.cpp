// Parses the option --application.
#include "application_option.h"

#include <algorithm>
#include <charconv>

#include "si/ait_writer.h"

namespace dtvservice {

namespace {

constexpr std::uint32_t kOrganisation = 0xFFFFFF;
constexpr std::uint16_t kApplication = 1;

template <typename Number>
bool parseHexadecimal(const std::string& text, Number& number) {
    constexpr int kBase = 16;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number, kBase);
    return failure == std::errc() && end == text.data() + text.size();
}

/// The comma before ORG.APP. A URL may have commas too, so only hexadecimal digits and points may follow.
std::size_t commaBeforeId(const std::string& text) {
    const std::size_t comma = text.rfind(',');
    const bool isBeforeId =
        comma != std::string::npos && text.find_first_not_of("0123456789abcdefABCDEF.", comma + 1) == std::string::npos;
    return isBeforeId ? comma : std::string::npos;
}

bool parseId(const std::string& text, si::Ait::Application& application, std::string& error) {
    const std::size_t point = text.find('.');
    if (point == std::string::npos || !parseHexadecimal(text.substr(0, point), application.organisationId) ||
        !parseHexadecimal(text.substr(point + 1), application.applicationId)) {
        error = "\"" + text + "\" is not ORG.APP: hexadecimal numbers up to ffffffff and ffff";
        return false;
    }
    return true;
}

/// An AIT has ASCII, and a URL has no spaces.
bool isPlain(const std::string& url, std::string& error) {
    const auto wrong = std::find_if(url.begin(), url.end(), [](char byte) { return byte <= ' ' || byte > '~'; });
    if (wrong != url.end()) {
        error = "the URL has a space, a control character or one that is not ASCII at byte " +
                std::to_string(wrong - url.begin() + 1) + "; write it as % and two digits";
    }
    return wrong == url.end();
}

/// Where the host begins; npos if the URL is not one of HTTP.
std::size_t hostAt(const std::string& url) {
    std::string scheme = url.substr(0, url.find(':'));
    std::transform(scheme.begin(), scheme.end(), scheme.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    const bool isHttp = scheme == "http" || scheme == "https";
    return isHttp && url.compare(scheme.size(), 3, "://") == 0 ? scheme.size() + 3 : std::string::npos;
}

bool fits(const char* part, const std::string& text, std::size_t longest, std::string& error) {
    if (text.size() > longest) {
        error = std::string("the URL's ") + part + " has " + std::to_string(text.size()) +
                " bytes; an AIT has room for " + std::to_string(longest);
    }
    return text.size() <= longest;
}

/// The URL base ends with the last slash of the path; the rest is the initial path.
bool split(const std::string& url, si::Ait::Application& application, std::string& error) {
    const std::size_t host = hostAt(url);
    if (host == std::string::npos) {
        error = "\"" + url + "\" is not a URL that begins with http:// or https://";
        return false;
    }
    const std::size_t hostEnd = std::min(url.find_first_of("/?#", host), url.size());
    const std::size_t pathEnd = std::min(url.find_first_of("?#", hostEnd), url.size());
    if (hostEnd == host) {
        error = "\"" + url + "\" has no host";
        return false;
    }
    constexpr std::uint16_t kHttp = 0x0003;
    constexpr std::uint8_t kLabel = 1;
    const std::size_t baseEnd = hostEnd == pathEnd ? hostEnd : url.rfind('/', pathEnd - 1) + 1;
    const std::string base = url.substr(0, baseEnd) + (hostEnd == pathEnd ? "/" : "");
    application.names = {{"eng", url.substr(host, hostEnd - host)}};
    application.transports = {{kHttp, kLabel, base}};
    application.initialPath = url.substr(baseEnd);
    return fits("part up to the last slash of the path", base, si::kLongestUrlBase, error) &&
           fits("part after the last slash of the path", application.initialPath, si::kLongestInitialPath, error);
}

}  // namespace

std::optional<si::Ait::Application> parseApplication(const std::string& text, std::string& error) {
    constexpr std::uint8_t kAutostart = 1;
    constexpr std::uint8_t kToUsersAndApplications = 3;
    si::Ait::Application application;
    application.organisationId = kOrganisation;
    application.applicationId = kApplication;
    application.controlCode = kAutostart;
    application.profiles = {{0, 1, 1, 1}};
    application.priority = 1;
    application.visibility = kToUsersAndApplications;
    const std::size_t comma = commaBeforeId(text);
    const std::string url = text.substr(0, comma);
    const bool isRight = (comma == std::string::npos || parseId(text.substr(comma + 1), application, error)) &&
                         isPlain(url, error) && split(url, application, error);
    return isRight ? std::optional(application) : std::nullopt;
}

}  // namespace dtvservice
