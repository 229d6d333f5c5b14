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

}  // namespace

bool mayRun(const SignalledApplication& application) {
    return application.control == ControlCode::autostart || application.control == ControlCode::present;
}

const SignalledApplication* findRunnable(const Applications& applications, const ApplicationId& id) {
    const auto found = std::find_if(applications.begin(), applications.end(),
                                    [&id](const SignalledApplication& one) { return one.id == id && mayRun(one); });
    return found == applications.end() ? nullptr : &*found;
}

std::string obstacleTo(const SignalledApplication& application, const Terminal& terminal) {
    if (application.url.empty()) {
        return "it has no HTTP address";
    }
    if (!isHttpUrl(application.url)) {
        return "its address \"" + application.url + "\" is neither http nor https";
    }
    const std::string missing = missingProfiles(application.profiles, terminal.best);
    return missing.empty() ? "" : "it needs version " + missing + "; here is " + profileText(terminal.best);
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
