// The calls of the set.
#include "set_calls.h"

#include <cstdlib>
#include <set>

namespace tvbrowser {

namespace {

constexpr const char* kCreate = "createApplication";
constexpr const char* kSetKeyset = "setKeyset";
constexpr const char* kCurrentAit = "dvb://current.ait/";
constexpr int kHexadecimal = 16;

/// Whether a URL dvb://current.ait/ORG.APP names a signalled application. Both numbers are hexadecimal.
bool isSignalled(const std::string& url, Broadcast& broadcast) {
    const std::string numbers = url.substr(std::string(kCurrentAit).size());
    char* end = nullptr;
    const unsigned long organisation = std::strtoul(numbers.c_str(), &end, kHexadecimal);
    if (*end != '.') {
        return false;
    }
    const unsigned long application = std::strtoul(end + 1, nullptr, kHexadecimal);
    const nlohmann::json known = broadcast.call("applications", nullptr);
    for (const nlohmann::json& signalled : known["list"]) {
        if (signalled["organisation"] == organisation && signalled["application"] == application) {
            return true;
        }
    }
    return false;
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
    if (name != kCreate) {
        return true;
    }
    const std::string url = argument.value("url", "");
    return url.rfind(kCurrentAit, 0) != 0 || isSignalled(url, broadcast);
}

nlohmann::json answerOf(const std::string& name, const nlohmann::json& argument) {
    return name == kSetKeyset ? argument.value("mask", nlohmann::json(0)) : nlohmann::json(true);
}

}  // namespace tvbrowser
