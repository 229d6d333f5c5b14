// The calls of the set.
#include "set_calls.h"

#include <set>
#include <vector>

#include "application_choice.h"
#include "keyset.h"

namespace tvbrowser {

namespace {

constexpr const char* kCreate = "createApplication";
constexpr const char* kSetKeyset = "setKeyset";

std::vector<Profile> profilesOf(const nlohmann::json& list) {
    std::vector<Profile> profiles;
    for (const nlohmann::json& each : list) {
        profiles.push_back({each.at("profile"), each.at("major"), each.at("minor"), each.at("micro")});
    }
    return profiles;
}

/// Of each application that which decides on its start. The manager knows an AIT from the moment that it is complete.
Applications signalledBy(const nlohmann::json& known) {
    Applications applications;
    if (!known.at("complete")) {
        return applications;
    }
    for (const nlohmann::json& each : known.at("list")) {
        SignalledApplication application;
        application.id = {each.at("organisation"), each.at("application")};
        application.control = static_cast<ControlCode>(each.at("control").get<std::uint8_t>());
        application.url = each.at("url");
        application.profiles = profilesOf(each.at("profiles"));
        applications.push_back(std::move(application));
    }
    return applications;
}

}  // namespace

bool isCallOfTheSet(const std::string& name) {
    static const std::set<std::string> kCalls{kCreate,           "destroyApplication", "showApplication",
                                              "hideApplication", kSetKeyset,           "leaveBroadcast"};
    return kCalls.count(name) != 0;
}

bool isTune(const std::string& name) {
    return name == kTuneCall || name == "tuneByDescriptor";
}

bool mayCall(const std::string& name, const nlohmann::json& argument, Broadcast& broadcast) {
    return name != kCreate || canStart(argument.value("url", ""), broadcast.call("applications", nullptr));
}

bool canStart(const std::string& url, const nlohmann::json& applications) {
    std::string error;
    const Applications signalled = signalledBy(applications);
    return requestedStart(url, signalled, Terminal(), error).has_value();
}

nlohmann::json answerOf(const std::string& name, const nlohmann::json& argument) {
    if (name != kSetKeyset) {
        return true;
    }
    return Keyset().set(argument.value("mask", KeyMask{0}), argument.value("otherKeys", std::vector<unsigned int>()));
}

}  // namespace tvbrowser
