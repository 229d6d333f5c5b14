// Reading applications from JSON.
#include "signalled_applications.h"

namespace tvbrowser {

namespace {

std::vector<Profile> profilesOf(const nlohmann::json& list) {
    std::vector<Profile> profiles;
    for (const nlohmann::json& entry : list) {
        Profile profile;
        profile.profile = entry.value("profile", std::uint16_t{0});
        profile.major = entry.value("major", std::uint8_t{0});
        profile.minor = entry.value("minor", std::uint8_t{0});
        profile.micro = entry.value("micro", std::uint8_t{0});
        profiles.push_back(profile);
    }
    return profiles;
}

}  // namespace

std::vector<SignalledApplication> signalledApplications(const nlohmann::json& list) {
    std::vector<SignalledApplication> applications;
    for (const nlohmann::json& entry : list) {
        SignalledApplication application;
        application.id = {entry.value("organisation", std::uint32_t{0}), entry.value("application", std::uint16_t{0})};
        application.control = static_cast<ControlCode>(entry.value("control", std::uint8_t{0}));
        application.name = entry.value("name", "");
        std::vector<std::string> urls = entry.value("entries", std::vector<std::string>());
        if (!urls.empty()) {
            application.url = urls.front();
            application.otherUrls.assign(urls.begin() + 1, urls.end());
        }
        application.priority = entry.value("priority", std::uint8_t{0});
        application.visibility = entry.value("visibility", kVisibleToAll);
        application.isServiceBound = entry.value("serviceBound", false);
        application.profiles = profilesOf(entry.value("profiles", nlohmann::json::array()));
        application.boundaries = entry.value("boundaries", std::vector<std::string>());
        applications.push_back(application);
    }
    return applications;
}

}  // namespace tvbrowser
