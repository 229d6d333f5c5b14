// Chooses among signalled applications.
#include "application_choice.h"

#include <algorithm>
#include <tuple>

#include "application_url.h"

namespace tvbrowser {

namespace {

bool isSupported(const Profile& needed, const Profile& best) {
    const bool hasOptions = (needed.profile & ~best.profile) == 0;
    return hasOptions &&
           std::tie(needed.major, needed.minor, needed.micro) <= std::tie(best.major, best.minor, best.micro);
}

std::string profileText(const Profile& profile) {
    return std::to_string(profile.major) + "." + std::to_string(profile.minor) + "." + std::to_string(profile.micro) +
           " with profile " + std::to_string(profile.profile);
}

/// Empty if the terminal has one of the profiles.
std::string missingProfiles(const std::vector<Profile>& profiles, const Profile& best) {
    std::string missing;
    for (const Profile& profile : profiles) {
        if (isSupported(profile, best)) {
            return {};
        }
        missing += (missing.empty() ? "" : ", or ") + profileText(profile);
    }
    return missing;
}

std::string obstacle(const SignalledApplication& application, const Terminal& terminal) {
    if (application.url.empty()) {
        return "it has no address by HTTP or in a carousel of the service";
    }
    if (!isHttpUrl(application.url) && !isDvbUrl(application.url)) {
        return "its address \"" + application.url + "\" is none of http, https or dvb";
    }
    const std::string missing = missingProfiles(application.profiles, terminal.best);
    return missing.empty() ? "" : "it needs version " + missing + "; here is " + profileText(terminal.best);
}

std::optional<RequestedStart> startByCurrentAit(const std::string& url, const Applications& applications,
                                                std::string& error) {
    const std::optional<CurrentAitUrl> parsed = parseCurrentAitUrl(url, error);
    if (!parsed) {
        return std::nullopt;
    }
    const SignalledApplication* const application = findRunnable(applications, parsed->id);
    if (application == nullptr) {
        error = url + ": the application is not signalled, or may not run";
        return std::nullopt;
    }
    return RequestedStart{application, entryPoints(*application, parsed->query, parsed->fragment)};
}

/// The URL of an entry point stands for its application. Other pages of the same server do not, because an application
/// may leave for a broadcast-independent one that its own server has.
std::optional<RequestedStart> startByHttp(const std::string& url, const Applications& applications,
                                          std::string& error) {
    if (!isHttpUrl(url)) {
        error = "\"" + url + "\" is neither an HTTP URL nor one of the current AIT";
        return std::nullopt;
    }
    const auto entry = std::find_if(applications.begin(), applications.end(), [&url](const SignalledApplication& one) {
        return mayRun(one) && isEntryPoint(one, url);
    });
    return RequestedStart{entry == applications.end() ? nullptr : &*entry, {url}};
}

}  // namespace

std::vector<std::string> entryPoints(const SignalledApplication& application, const std::string& query,
                                     const std::string& fragment) {
    std::vector<std::string> urls{urlWith(application.url, query, fragment)};
    for (const std::string& url : application.otherUrls) {
        urls.push_back(urlWith(url, query, fragment));
    }
    return urls;
}

bool isEntryPoint(const SignalledApplication& application, const std::string& url) {
    const auto isIt = [&url](const std::string& one) { return isSameDocument(one, url); };
    return isIt(application.url) || std::any_of(application.otherUrls.begin(), application.otherUrls.end(), isIt);
}

bool mayRun(const SignalledApplication& application) {
    return application.control == ControlCode::autostart || application.control == ControlCode::present;
}

const SignalledApplication* findRunnable(const Applications& applications, const ApplicationId& id) {
    const auto found = std::find_if(applications.begin(), applications.end(),
                                    [&id](const SignalledApplication& one) { return one.id == id && mayRun(one); });
    return found == applications.end() ? nullptr : &*found;
}

std::string obstacleTo(const SignalledApplication& application, const Terminal& terminal) {
    const std::string why = obstacle(application, terminal);
    return why.empty() ? "" : "application " + applicationIdText(application.id) + ": " + why;
}

std::optional<RequestedStart> requestedStart(const std::string& url, const Applications& applications,
                                             const Terminal& terminal, std::string& error) {
    std::optional<RequestedStart> start =
        isDvbUrl(url) ? startByCurrentAit(url, applications, error) : startByHttp(url, applications, error);
    if (start && start->application != nullptr) {
        error = obstacleTo(*start->application, terminal);
        return error.empty() ? start : std::nullopt;
    }
    return start;
}

const SignalledApplication* bestOf(const Applications& applications,
                                   const std::function<bool(const SignalledApplication&)>& isCandidate) {
    const SignalledApplication* best = nullptr;
    for (const SignalledApplication& one : applications) {
        if ((best == nullptr || one.priority > best->priority) && isCandidate(one)) {
            best = &one;
        }
    }
    return best;
}

}  // namespace tvbrowser
