// The calls of the set.
#include "set_calls.h"

#include <set>
#include <vector>

#include "application_choice.h"
#include "application_url.h"
#include "keyset.h"
#include "signalled_applications.h"

namespace tvbrowser {

namespace {

constexpr const char* kCreate = "createApplication";
constexpr const char* kSetKeyset = "setKeyset";

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
    // The manager knows an AIT from the moment that it is complete.
    const Applications signalled =
        applications.at("complete") ? signalledApplications(applications.at("list")) : Applications();
    return requestedStart(url, signalled, Terminal(), error).has_value();
}

bool isOfApplication(const nlohmann::json& argument) {
    RunningApplication application;
    application.url = argument.at("url").get<std::string>();
    application.boundaries = argument.at("boundaries").get<std::vector<std::string>>();
    return isWithinBoundary(argument.at("place").get<std::string>(), application);
}

nlohmann::json answerOf(const std::string& name, const nlohmann::json& argument) {
    if (name != kSetKeyset) {
        return true;
    }
    return Keyset().set(argument.value("mask", KeyMask{0}), argument.value("otherKeys", std::vector<unsigned int>()));
}

}  // namespace tvbrowser
