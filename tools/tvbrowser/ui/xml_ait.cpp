// Collects the elements of each Application, then makes an application of them.
#include "xml_ait.h"

#include <glib.h>

#include <charconv>
#include <limits>
#include <map>
#include <string_view>
#include <system_error>
#include <utility>

namespace tvbrowser {

namespace {

constexpr std::string_view kHbbTvType = "application/vnd.hbbtv.xhtml+xml";
constexpr std::string_view kApplication = "ServiceDiscovery/ApplicationDiscovery/ApplicationList/Application";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::size_t kMostApplications = 256;
constexpr std::size_t kDeepest = 32;  ///< elements in elements
constexpr int kDecimal = 10;
constexpr int kHexadecimal = 16;

/// The texts of an Application's elements, by their names with those around them: "applicationIdentifier/orgId".
using Elements = std::multimap<std::string, std::string>;

std::string trimmed(std::string_view text) {
    constexpr std::string_view kSpace = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kSpace);
    return first == std::string_view::npos ? std::string()
                                           : std::string(text.substr(first, text.find_last_not_of(kSpace) - first + 1));
}

/// Any prefix may stand for the namespace.
std::string_view localName(std::string_view name) {
    return name.substr(name.find(':') + 1);
}

std::string textOf(const Elements& elements, const std::string& name) {
    const auto [first, last] = elements.equal_range(name);
    return first == last ? std::string() : first->second;
}

/// False, and `error` says why, if the element is there and is no number of this width.
template <typename Number>
bool read(const Elements& elements, const std::string& name, int base, Number& number, std::string& error) {
    const auto found = elements.find(name);
    if (found == elements.end()) {
        return true;
    }
    const char* const end = found->second.data() + found->second.size();
    const auto [rest, problem] = std::from_chars(found->second.data(), end, number, base);
    if (problem == std::errc() && rest == end) {
        return true;
    }
    error =
        name + ": \"" + found->second + "\" is no number up to " + std::to_string(std::numeric_limits<Number>::max());
    return false;
}

/// By name; `known` gives the numbers. A name that is not known has no number.
template <typename Known>
std::optional<std::uint8_t> numberOf(const std::string& name, const Known& known) {
    for (const auto& [each, number] : known) {
        if (name == each) {
            return number;
        }
    }
    return std::nullopt;
}

std::optional<std::uint8_t> controlCodeOf(const std::string& name) {
    static const std::map<std::string, std::uint8_t> kCodes{{"AUTOSTART", 1}, {"PRESENT", 2},           {"DESTROY", 3},
                                                            {"KILL", 4},      {"PREFETCH", 5},          {"REMOTE", 6},
                                                            {"DISABLED", 7},  {"PLAYBACK_AUTOSTART", 8}};
    return numberOf(name, kCodes);
}

std::optional<std::uint8_t> visibilityOf(const std::string& name) {
    static const std::map<std::string, std::uint8_t> kVisibilities{
        {"NOT_VISIBLE_ALL", 0}, {"NOT_VISIBLE_USERS", 1}, {"VISIBLE_ALL", kVisibleToAll}, {"", kVisibleToAll}};
    return numberOf(name, kVisibilities);
}

bool readNumbers(const Elements& elements, SignalledApplication& application, std::string& error) {
    const std::string version = "applicationDescriptor/mhpVersion/";
    Profile profile;
    const bool isRead = read(elements, "applicationIdentifier/orgId", kDecimal, application.id.organisation, error) &&
                        read(elements, "applicationIdentifier/appId", kDecimal, application.id.application, error) &&
                        read(elements, "applicationDescriptor/priority", kHexadecimal, application.priority, error) &&
                        read(elements, version + "profile", kDecimal, profile.profile, error) &&
                        read(elements, version + "versionMajor", kDecimal, profile.major, error) &&
                        read(elements, version + "versionMinor", kDecimal, profile.minor, error) &&
                        read(elements, version + "versionMicro", kDecimal, profile.micro, error);
    if (isRead && elements.count(version + "versionMajor") != 0) {
        application.profiles.push_back(profile);
    }
    return isRead;
}

std::optional<SignalledApplication> applicationOf(const Elements& elements, std::string& error) {
    for (const char* const needed : {"applicationIdentifier/orgId", "applicationIdentifier/appId",
                                     "applicationDescriptor/controlCode", "applicationTransport/URLBase"}) {
        if (elements.count(needed) == 0) {
            error = std::string(needed) + " is missing";
            return std::nullopt;
        }
    }
    SignalledApplication application;
    if (!readNumbers(elements, application, error)) {
        return std::nullopt;
    }
    const std::string control = textOf(elements, "applicationDescriptor/controlCode");
    const std::string visibility = textOf(elements, "applicationDescriptor/visibility");
    const std::optional<std::uint8_t> code = controlCodeOf(control);
    const std::optional<std::uint8_t> level = visibilityOf(visibility);
    if (!code || !level) {
        error = code ? "applicationDescriptor/visibility: \"" + visibility + "\" is no visibility"
                     : "applicationDescriptor/controlCode: \"" + control + "\" is no control code";
        return std::nullopt;
    }
    application.control = static_cast<ControlCode>(*code);
    application.visibility = *level;
    application.name = textOf(elements, "appName");
    application.isServiceBound = textOf(elements, "applicationDescriptor/serviceBound") == "true";
    application.url = textOf(elements, "applicationTransport/URLBase") + textOf(elements, "applicationLocation");
    const auto [first, last] = elements.equal_range("applicationBoundary/BoundaryExtension");
    for (auto each = first; each != last; ++each) {
        application.boundaries.push_back(each->second);
    }
    return application;
}

/// What GMarkup, which calls the functions, works on.
struct Reading {
    std::string path = {};  ///< of the open elements, local names
    std::size_t depth = 0;
    std::string text = {};
    Elements elements = {};
    bool isTransportByHttp = false;
    Applications applications = {};
    std::size_t count = 0;
};

/// The path within the Application; no value outside of one.
std::optional<std::string> within(const Reading& reading) {
    const bool isWithin = reading.path.size() > kApplication.size() + 1 &&
                          reading.path.compare(0, kApplication.size(), kApplication) == 0 &&
                          reading.path[kApplication.size()] == '/';
    return isWithin ? std::optional(reading.path.substr(kApplication.size() + 1)) : std::nullopt;
}

void onStart(GMarkupParseContext*, const char* name, const char** attributes, const char** values, gpointer data,
             GError** error) {
    Reading& reading = *static_cast<Reading*>(data);
    if (++reading.depth > kDeepest) {
        g_set_error(error, G_MARKUP_ERROR, G_MARKUP_ERROR_INVALID_CONTENT, "%s: elements are more than %zu deep", name,
                    kDeepest);
        return;
    }
    reading.path += (reading.path.empty() ? "" : "/") + std::string(localName(name));
    reading.text.clear();
    if (reading.path == kApplication) {
        reading.elements.clear();
    } else if (within(reading) == "applicationTransport") {
        reading.isTransportByHttp = false;
        for (std::size_t index = 0; attributes[index] != nullptr; ++index) {
            reading.isTransportByHttp = reading.isTransportByHttp || (localName(attributes[index]) == "type" &&
                                                                      localName(values[index]) == "HTTPTransportType");
        }
    }
}

void onText(GMarkupParseContext*, const char* text, gsize size, gpointer data, GError**) {
    static_cast<Reading*>(data)->text.append(text, size);
}

/// An application of another type is none for this terminal, and may lack what one of HbbTV's needs.
bool take(Reading& reading, GError** error) {
    ++reading.count;
    if (textOf(reading.elements, "applicationDescriptor/type/OtherApp") != kHbbTvType) {
        return true;
    }
    std::string why;
    const std::optional<SignalledApplication> application = applicationOf(reading.elements, why);
    if (!application || reading.applications.size() >= kMostApplications) {
        why = application ? "there are more than " + std::to_string(kMostApplications) : why;
        g_set_error(error, G_MARKUP_ERROR, G_MARKUP_ERROR_INVALID_CONTENT, "Application %zu: %s", reading.count,
                    why.c_str());
        return false;
    }
    reading.applications.push_back(*application);
    return true;
}

void onEnd(GMarkupParseContext*, const char*, gpointer data, GError** error) {
    Reading& reading = *static_cast<Reading*>(data);
    const std::optional<std::string> name = within(reading);
    const bool isOtherTransport = name && name->rfind("applicationTransport/", 0) == 0 && !reading.isTransportByHttp;
    if (name && !isOtherTransport) {
        reading.elements.emplace(*name, trimmed(reading.text));
    }
    reading.text.clear();
    if (reading.path == kApplication && !take(reading, error)) {
        return;
    }
    --reading.depth;
    const std::size_t slash = reading.path.rfind('/');
    reading.path.resize(slash == std::string::npos ? 0 : slash);
}

}  // namespace

std::optional<Applications> parseXmlAit(const std::string& document, std::string& error) {
    const GMarkupParser parser{onStart, onEnd, onText, nullptr, nullptr};
    Reading reading;
    GMarkupParseContext* const context =
        g_markup_parse_context_new(&parser, G_MARKUP_TREAT_CDATA_AS_TEXT, &reading, nullptr);
    const bool isMarked = document.compare(0, kByteOrderMark.size(), kByteOrderMark) == 0;
    const std::size_t start = isMarked ? kByteOrderMark.size() : 0;
    GError* problem = nullptr;
    const bool isRead = g_markup_parse_context_parse(context, document.data() + start,
                                                     static_cast<gssize>(document.size() - start), &problem) != 0 &&
                        g_markup_parse_context_end_parse(context, &problem) != 0;
    g_markup_parse_context_free(context);
    if (!isRead) {
        error = problem->message;
        g_error_free(problem);
        return std::nullopt;
    }
    if (reading.count == 0) {
        error = "it has no Application";
        return std::nullopt;
    }
    return std::move(reading.applications);
}

}  // namespace tvbrowser
