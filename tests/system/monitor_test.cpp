// What dtvmon shows of a running service and its browser.
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <nlohmann/json.hpp>

#include "raw_browser.h"
#include "velmora/msgqueue/ipc_message_queue.h"

using nlohmann::json;

namespace {

class AMonitoredBrowser : public ARawBrowser {
protected:
    /// What the system calls this program: on another machine's processor it is the emulator.
    static std::string ownName() {
        const std::string line = fileText("/proc/self/comm");
        return line.substr(0, line.find('\n'));
    }
    /// Waits for an object with these members.
    static bool shows(const ChildProcess& monitor, const json& members) {
        return eventually([&] {
            std::istringstream lines(monitor.output());
            for (std::string line; std::getline(lines, line) && !lines.eof();) {
                json object = json::parse(line);
                const json whole = object;
                object.update(members);
                if (object == whole) {
                    return true;
                }
            }
            return false;
        });
    }
};

}  // namespace

TEST_F(AMonitoredBrowser, IsShownWithItsProcessAndItsProgram) {
    const ServiceProcess process;
    ASSERT_TRUE(answersWhatWasAsked());
    const ChildProcess monitor(DTVMON, {"--json"}, "dtvmon");
    EXPECT_TRUE(shows(
        monitor,
        {{"record", "connected"}, {"browser", 1}, {"process", getpid()}, {"program", ownName()}, {"text", "before"}}))
        << monitor.output();
    ASSERT_TRUE(sends(&Commands::cmdStartOSDDetection, 3U));
    EXPECT_TRUE(shows(monitor, {{"operation", "cmdStartOSDDetection"},
                                {"direction", "to_service"},
                                {"process", getpid()},
                                {"values", {{"layer", 3}}}}));
    EXPECT_TRUE(shows(monitor, {{"operation", "onOSDStateChanged"},
                                {"direction", "to_browser"},
                                {"values", {{"layer", 3}, {"osd_state", "hidden"}}}}));
}

TEST_F(AMonitoredBrowser, IsShownAsItComesAndGoes) {
    const ServiceProcess process;
    const ChildProcess monitor(DTVMON, {"--json"}, "dtvmon");
    ASSERT_TRUE(shows(monitor, {{"record", "connected"}, {"browser", 1}}));
    ChildProcess other(DTVCTL, {"status"}, "operator");
    EXPECT_EQ(other.wait(), 0) << "an operator is no browser";
    leaves();
    EXPECT_TRUE(shows(monitor, {{"record", "disconnected"}, {"browser", 1}, {"process", getpid()}}));
}

TEST_F(AMonitoredBrowser, IsShownWhatItIsRefused) {
    const ServiceProcess process;
    ASSERT_TRUE(answersWhatWasAsked());
    const ChildProcess monitor(DTVMON, {"--json", "--only", "refused"}, "dtvmon");
    ASSERT_TRUE(eventually([&] {
        sends(&Commands::cmdFilterOpen, std::string("one"), 9000U, lo::browserdvbservice::OpenFilterMatchMask_t());
        return monitor.output().find("PID 9000 is above 8191") != std::string::npos;
    }));
    EXPECT_TRUE(
        shows(monitor, {{"record", "refused"}, {"operation", "cmdFilterOpen"}, {"text", "PID 9000 is above 8191"}}));
    ASSERT_TRUE(sends(&Commands::cmdStartTemiTimelineRequest, 256U, 0U, 0U));
    EXPECT_TRUE(shows(monitor, {{"operation", "cmdStartTemiTimelineRequest"},
                                {"text", "component_tag and timeline_id are 0 to 255"}}));
}

TEST_F(AMonitoredBrowser, IsShownWithTheSectionsThatItGetsAndThoseThatItLoses) {
    const std::string name = "SECTION-raw-" + std::to_string(getpid());
    const std::unique_ptr<velmora::msgqueue::IPCMessageQueue> queue{
        velmora::msgqueue::IPCMessageQueue::create(name, 4500, 2)};
    const ServiceProcess process;
    ASSERT_TRUE(answersWhatWasAsked());
    const ChildProcess monitor(DTVMON, {"--json", "--only", "section_*", "--only", "connected"}, "dtvmon");
    ASSERT_TRUE(shows(monitor, {{"record", "connected"}}));
    ASSERT_TRUE(sends(&Commands::cmdUpdateIPCChannelNames, name, std::string(), std::string()));
    ASSERT_TRUE(
        sends(&Commands::cmdFilterOpen, std::string("pat"), 0U, lo::browserdvbservice::OpenFilterMatchMask_t()));
    const json section = {{"filter_session", "pat"}, {"browser", 1}, {"direction", "to_browser"}};
    json queued = section;
    queued["record"] = "section_queued";
    EXPECT_TRUE(shows(monitor, queued)) << monitor.output();
    EXPECT_THAT(monitor.output(), testing::HasSubstr(R"("table":{"name":"PAT","table_id":0)"));
    json dropped = section;
    dropped["record"] = "section_dropped";
    EXPECT_TRUE(shows(monitor, dropped)) << "nobody reads the queue";
}

TEST_F(AMonitoredBrowser, IsCountedEachSecond) {
    const ServiceProcess process;
    ASSERT_TRUE(answersWhatWasAsked());
    ChildProcess monitor(DTVMON, {"--statistics", "--json", "--only", "cmdStartOSDDetection"}, "dtvmon");
    ASSERT_TRUE(shows(monitor, {{"seconds", 1.0}, {"statistics", json::array()}}));
    ASSERT_TRUE(sends(&Commands::cmdStartOSDDetection, 3U));
    const json once = {{"name", "cmdStartOSDDetection"}, {"records", 1}, {"byte_count", 4}, {"rate", 1.0}};
    EXPECT_TRUE(shows(monitor, {{"statistics", json::array({once})}})) << "in the second that it came in";
    json later = once;
    later["rate"] = 0.0;
    EXPECT_TRUE(shows(monitor, {{"statistics", json::array({later})}})) << "and in those behind it";
    EXPECT_EQ(monitor.end(SIGINT), 0);
}

TEST_F(AMonitoredBrowser, IsServedWhileAMonitorIsStopped) {
    const ServiceProcess process;
    ASSERT_TRUE(answersWhatWasAsked());
    const ChildProcess monitor(DTVMON, {"--json", "--only", "lost", "--only", "connected"}, "dtvmon");
    ASSERT_TRUE(shows(monitor, {{"record", "connected"}}));
    ASSERT_EQ(kill(monitor.pid(), SIGSTOP), 0);
    const std::string text(100000, 'x');
    constexpr int kMoreThanWaits = 300;  // 30 MB
    for (int count = 0; count < kMoreThanWaits; ++count) {
        ASSERT_TRUE(sends(&Commands::cmdVodGetMaxdomeSecureSerialNumber, text));
    }
    EXPECT_TRUE(answersWhatWasAsked()) << "the service's loop goes on";
    EXPECT_THAT(operate({"status"}), testing::HasSubstr("browser")) << "and its operator is answered";
    ASSERT_EQ(kill(monitor.pid(), SIGCONT), 0);
    EXPECT_TRUE(shows(monitor, {{"record", "lost"}})) << "the monitor is told";
}

TEST_F(AMonitoredBrowser, IsNotShownWithoutAService) {
    ChildProcess monitor(DTVMON, {}, "dtvmon");
    EXPECT_EQ(monitor.wait(), 3);
    EXPECT_THAT(monitor.output(), testing::HasSubstr("is dtvserviced running?"));
}

TEST_F(AMonitoredBrowser, IsShownUntilTheServiceGoes) {
    ServiceProcess process;
    ChildProcess monitor(DTVMON, {"--json"}, "dtvmon");
    ASSERT_TRUE(shows(monitor, {{"record", "connected"}}));
    process.end(SIGKILL);
    EXPECT_EQ(monitor.wait(), 3);
    EXPECT_THAT(monitor.output(), testing::HasSubstr("dtvmon: the service has gone"));
}

namespace {

/// What one side has seen of the messages: all that both sides know of one.
std::vector<json> messagesOf(const std::vector<json>& records, const std::string& side) {
    std::vector<json> messages;
    for (const json& record : records) {
        if (record["side"] == side && record["record"] == "message") {
            messages.push_back({{"operation", record["operation"]},
                                {"direction", record["direction"]},
                                {"process", record["process"]},
                                {"program", record["program"]},
                                {"values", record["values"]},
                                {"bytes", record["bytes"]}});
        }
    }
    return messages;
}

/// What dtvmon prints, as objects.
std::vector<json> objectsOf(const std::vector<std::string>& arguments) {
    ChildProcess reader(DTVMON, arguments, "reader");
    EXPECT_EQ(reader.wait(), 0) << reader.output();
    std::istringstream lines(reader.output());
    std::vector<json> objects;
    for (std::string line; std::getline(lines, line);) {
        objects.push_back(json::parse(line));
    }
    return objects;
}

}  // namespace

/// dvbshell, whose platform writes what it says and hears.
class ABrowserWithABusFile : public testing::Test {
protected:
    ABrowserWithABusFile() { setenv("DTV_BUS_FILE", (folder + "/bus.pcapng").c_str(), 1); }
    std::string fileOf(pid_t process) const { return folder + "/bus." + std::to_string(process) + ".pcapng"; }

    const std::string folder = OwnRunDirectory::instance().path();
};

TEST_F(ABrowserWithABusFile, TellsOfCommandsThatNeverLeft) {
    ChildProcess shell(DVBSHELL, {"pts", "0"}, "shell");
    const pid_t process = shell.pid();
    shell.wait();
    const std::vector<json> records = objectsOf({"--json", "--read", fileOf(process)});
    ASSERT_GE(records.size(), 3U);
    EXPECT_EQ(records[0]["text"], "no service is in " + folder);
    for (std::size_t index = 1; index + 1 < records.size(); index += 2) {
        EXPECT_EQ(records[index]["record"], "message");
        EXPECT_EQ(records[index + 1]["record"], "refused");
        EXPECT_EQ(records[index + 1]["operation"], records[index]["operation"]);
        EXPECT_EQ(records[index + 1]["result"], -107);
        EXPECT_EQ(records[index + 1]["side"], "browser");
    }
}

TEST_F(ABrowserWithABusFile, HasWhatItsServiceSees) {
    const ServiceProcess service;
    EXPECT_FALSE(std::filesystem::exists(fileOf(service.pid()))) << "the setting is for browsers";
    ChildProcess monitor(DTVMON, {"--write", folder + "/service.pcapng"}, "dtvmon");
    ASSERT_TRUE(eventually([this] { return !fileText(folder + "/service.pcapng").empty(); }));
    ChildProcess shell(DVBSHELL, {"--seconds", "2", "tune", "1:1025:28106"}, "shell");
    const pid_t process = shell.pid();
    EXPECT_EQ(shell.wait(), 0) << shell.output();
    ASSERT_TRUE(eventually([&] {
        const std::vector<json> records = objectsOf({"--json", "--read", folder + "/service.pcapng"});
        return !records.empty() && records.back()["record"] == "disconnected";
    }));
    EXPECT_EQ(monitor.end(SIGTERM), 0);
    const std::vector<json> both =
        objectsOf({"--json", "--bytes", "--read", folder + "/service.pcapng", "--read", fileOf(process)});
    EXPECT_TRUE(std::is_sorted(both.begin(), both.end(),
                               [](const json& one, const json& other) { return one["time"] < other["time"]; }));
    const std::vector<json> seenByService = messagesOf(both, "service");
    const std::vector<json> seenByBrowser = messagesOf(both, "browser");
    EXPECT_GT(seenByBrowser.size(), 10U);
    for (const char* direction : {"to_service", "to_browser"}) {
        const auto inDirection = [direction](const std::vector<json>& all) {
            std::vector<json> some;
            std::copy_if(all.begin(), all.end(), std::back_inserter(some),
                         [direction](const json& each) { return each["direction"] == direction; });
            return some;
        };
        EXPECT_EQ(inDirection(seenByService), inDirection(seenByBrowser)) << "a message that was sent has come";
    }
}
