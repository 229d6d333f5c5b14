// The JSON of the tools on a broadcast. ChildProcess compares every line with the schema.
#include <nlohmann/json.hpp>

#include "browser_fixture.h"

namespace {

using nlohmann::json;

/// The objects that dvbshell writes, and its exit code.
std::vector<json> jsonOf(std::vector<std::string> arguments, int exitCode = 0) {
    arguments.insert(arguments.begin(), "--json");
    ChildProcess shell(DVBSHELL, std::move(arguments), "shell");
    EXPECT_EQ(shell.wait(), exitCode) << shell.output();
    std::vector<json> objects;
    std::istringstream lines(shell.output());
    for (std::string line; std::getline(lines, line);) {
        objects.push_back(json::parse(line));
    }
    return objects;
}

bool has(const std::vector<json>& objects, const char* key, const json& value) {
    return std::any_of(objects.begin(), objects.end(),
                       [&](const json& object) { return object.contains(key) && object[key] == value; });
}

}  // namespace

TEST(TheShellsJson, FollowsTheSchemaInEveryVerb) {
    const ServiceProcess service;
    EXPECT_TRUE(has(jsonOf({"tune", "1:1025:28106", "--seconds", "2"}), "event", "OnChannelChanged"));
    EXPECT_TRUE(has(jsonOf({"watch", "--seconds", "1"}), "event", "onPMTSectionUpdated"));
    EXPECT_TRUE(has(jsonOf({"ait", "--seconds", "2"}), "event", "onCurrentChannelAIT"));
    EXPECT_TRUE(has(jsonOf({"sections", "0", "--count", "1"}), "pid", 0));
    EXPECT_TRUE(has(jsonOf({"pmt", "28106"}), "sid", 28106));
    EXPECT_TRUE(has(jsonOf({"pts", "0"}), "event", "onPtsNotify"));
    EXPECT_TRUE(has(jsonOf({"current"}), "onid", 1));
    jsonOf({"info"});
    EXPECT_TRUE(has(jsonOf({"osd-start", "3"}), "osd_state", "hidden"));
    EXPECT_TRUE(has(jsonOf({"drm-message", "5", "0x4AF4", "0", "type", "text"}), "result_code", "unknown DRM system"));
}
