// What dtvmon shows of a running service and its browser.
#include <unistd.h>

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
