// The JSON of the tools on a broadcast. ChildProcess compares every line with the schema.
#include <nlohmann/json.hpp>

#include "browser_fixture.h"

namespace {

using nlohmann::json;

/// Whether a complete line has the value.
bool has(const std::string& output, const char* key, const json& value) {
    std::istringstream lines(output.substr(0, output.rfind('\n') + 1));
    for (std::string line; std::getline(lines, line);) {
        const json object = json::parse(line, nullptr, false);
        if (object.is_object() && object.contains(key) && object[key] == value) {
            return true;
        }
    }
    return false;
}

/// Runs dvbshell until an object has the value. Runs it again if none has: a busy machine may tell the channel too
/// late.
testing::AssertionResult prints(std::vector<std::string> arguments, const char* key, const json& value) {
    arguments.insert(arguments.end(), {"--json", "--seconds", "60"});
    std::string output;
    const bool came = eventually([&] {
        ChildProcess shell(DVBSHELL, arguments, "shell");
        const bool isThere = eventually([&] { return has(shell.output(), key, value); }, std::chrono::seconds(5));
        shell.end(SIGKILL);
        output = shell.output();
        return isThere;
    });
    return came ? testing::AssertionSuccess() : testing::AssertionFailure() << output;
}

}  // namespace

TEST(TheShellsJson, FollowsTheSchemaWhileItWatches) {
    const ServiceProcess service;
    ChildProcess shell(DVBSHELL, {"watch", "--json", "--seconds", "60"}, "watching");
    // The shell may connect later than the operator acts, so the operator acts again.
    EXPECT_TRUE(eventually([&shell] {
        ChildProcess operating(DTVCTL, {"engine", "3"}, "operating");
        operating.wait();
        return eventually([&shell] { return has(shell.output(), "engine_status", 3); }, std::chrono::seconds(1));
    })) << shell.output();
    shell.end(SIGKILL);
}

TEST(TheShellsJson, FollowsTheSchemaInEveryVerb) {
    const ServiceProcess service;
    EXPECT_TRUE(prints({"tune", "1:1025:28106"}, "event", "OnChannelChanged"));
    EXPECT_TRUE(prints({"start-notify"}, "event", "onPMTSectionUpdated"));
    EXPECT_TRUE(prints({"ait"}, "event", "onCurrentChannelAIT"));
    EXPECT_TRUE(prints({"sections", "0"}, "pid", 0));
    EXPECT_TRUE(prints({"pmt", "28106"}, "sid", 28106));
    EXPECT_TRUE(prints({"pts", "0"}, "event", "onPtsNotify"));
    EXPECT_TRUE(prints({"current"}, "onid", 1));
    EXPECT_TRUE(prints({"ccid"}, "ccid", "ccid:1:1025:28106"));
    EXPECT_TRUE(prints({"osd-start", "3"}, "osd_state", "hidden"));
    EXPECT_TRUE(prints({"drm-message", "5", "0x4AF4", "0", "type", "text"}, "result_code", "unknown DRM system"));
    EXPECT_TRUE(prints({"dtv-info"}, "event", "onDATagsServicePmtSectionUpdated"));
}
