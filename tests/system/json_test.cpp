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

/// The object that dtvctl prints.
json answerTo(std::vector<std::string> arguments) {
    arguments.emplace_back("--json");
    ChildProcess console(DTVCTL, arguments, "console");
    EXPECT_EQ(console.wait(), 0) << console.output();
    return json::parse(console.output(), nullptr, false);
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
    EXPECT_TRUE(prints({"channels"}, "event", "channel"));
    EXPECT_TRUE(prints({"info"}, "event", "info"));
    EXPECT_TRUE(prints({"current"}, "onid", 1));
    EXPECT_TRUE(prints({"ccid"}, "ccid", "ccid:1:1025:28106"));
    EXPECT_TRUE(prints({"osd-start", "3"}, "osd_state", "hidden"));
    EXPECT_TRUE(prints({"drm-message", "5", "0x4AF4", "0", "type", "text"}, "result_code", "unknown DRM system"));
    EXPECT_TRUE(prints({"dtv-info"}, "event", "onDATagsServicePmtSectionUpdated"));
}

TEST(TheConsolesJson, FollowsTheSchemaInEveryCommand) {
    const ServiceProcess service;
    const std::vector<std::vector<std::string>> commands = {{"channels"},          {"status"},
                                                            {"statistics"},        {"tune", "1:1025:28107"},
                                                            {"osd", "3", "on"},    {"ca", "insert", "2"},
                                                            {"ca", "remove", "2"}, {"engine", "4"},
                                                            {"stop-terminals"}};
    for (const std::vector<std::string>& command : commands) {
        const json answer = answerTo(command);
        ASSERT_TRUE(answer.is_object()) << command[0];
        EXPECT_EQ(answer.value("ok", false), true) << answer;
        EXPECT_GT(answer.value("time", 0.0), 1.6e9) << "seconds since the epoch: " << answer;
    }
}

TEST(TheConsolesJson, FollowsTheSchemaWhileAMessageWaits) {
    const ServiceProcess service;
    answerTo({"ca", "insert", "2"});
    ChildProcess shell(DVBSHELL, {"drm-message", "5", "0x4AF4", "2", "type", "text", "--json", "--seconds", "60"},
                       "asking");
    json messages;
    EXPECT_TRUE(eventually([&messages] {
        messages = answerTo({"status"})["drm_messages"];
        return !messages.empty();
    })) << shell.output();
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0]["ca_session"], 5);
    EXPECT_EQ(messages[0]["message_type"], "type");
    answerTo({"ca", "reply", "5", "0", "fine"});
    EXPECT_TRUE(eventually([&shell] { return has(shell.output(), "message", "fine"); })) << shell.output();
    shell.end(SIGKILL);
}
