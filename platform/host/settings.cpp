// Reads the settings from the environment.
#include "settings.h"

#include <unistd.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>

namespace host {

namespace {

struct LevelName {
    const char* name;
    std::uint32_t threshold;
};

constexpr LevelName kLevels[] = {{"off", 0}, {"failure", 1000}, {"warning", 3000}, {"ordinary", 4000}, {"trace", 5000}};
constexpr std::uint32_t kDefaultThreshold = 3000;

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

std::uint32_t thresholdOf(const std::string& name) {
    if (name.empty()) {
        return kDefaultThreshold;
    }
    for (const LevelName& level : kLevels) {
        if (name == level.name) {
            return level.threshold;
        }
    }
    std::fprintf(stderr, "DTV_LOG_LEVEL: \"%s\" is none of off, failure, warning, ordinary, trace; taken as warning\n",
                 name.c_str());
    return kDefaultThreshold;
}

std::string defaultRunDirectory() {
    const std::string runtime = variable("XDG_RUNTIME_DIR");
    return runtime.empty() ? "/tmp/dtv-" + std::to_string(getuid()) : runtime + "/dtv";
}

std::string runDirectoryOf(const std::string& value) {
    if (value.empty()) {
        return defaultRunDirectory();
    }
    if (value.front() != '/') {
        std::fprintf(stderr, "DTV_RUN_DIR: \"%s\" does not begin with \"/\"; %s is used\n", value.c_str(),
                     defaultRunDirectory().c_str());
        return defaultRunDirectory();
    }
    return value;
}

std::uint32_t clientRateOf(const std::string& value) {
    constexpr std::uint32_t kHighest = 1000000;
    std::uint32_t rate = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), rate);
    if (error == std::errc() && end == value.data() + value.size() && rate <= kHighest) {
        return rate;
    }
    if (!value.empty()) {
        std::fprintf(stderr, "DTV_CLIENT_RATE: \"%s\" is no number from 0 to %u; taken as 0\n", value.c_str(),
                     kHighest);
    }
    return 0;
}

}  // namespace

Settings readSettings() {
    return {runDirectoryOf(variable("DTV_RUN_DIR")), thresholdOf(variable("DTV_LOG_LEVEL")), variable("DTV_LOG_FILE"),
            variable("DTV_BUS_FILE"), clientRateOf(variable("DTV_CLIENT_RATE"))};
}

const Settings& settings() {
    static const auto* const read = new Settings(readSettings());
    return *read;
}

}  // namespace host
