// Checks what the operator learns from dtvctl and from the service's own output: inputs that give nothing, changes, and
// exit codes.
#include <sys/socket.h>
#include <sys/un.h>

#include <nlohmann/json.hpp>
#include <regex>

#include "fed_input.h"

namespace {

using nlohmann::json;

constexpr int kRefused = 1;
constexpr int kUsageError = 2;
constexpr int kNoService = 3;

/// The exit code of dtvctl, and what it prints.
std::pair<int, std::string> operated(const std::vector<std::string>& arguments) {
    ChildProcess console(DTVCTL, arguments, "dtvctl");
    const int code = console.wait();
    return {code, console.output()};
}

json answerTo(const std::string& command) {
    return json::parse(operated({"--json", command}).second, nullptr, false);
}

/// Waits until the first input has this state, and returns its reason.
std::string reasonOnceItIs(const std::string& state) {
    std::string reason;
    const bool is = eventually([&] {
        const json status = answerTo("status");
        reason = status.is_object() ? status["inputs"][0]["reason"] : json("no answer");
        return status.is_object() && status["inputs"][0]["state"] == state;
    });
    return is ? reason : "not " + state + " but: " + reason;
}

/// Runs a shell command with $DTVCTL and the others set. Returns its exit code.
int shell(const std::string& command) {
    const std::string programs = std::string("run() { $DTV_EMULATOR \"$@\"; }; DTVCTL=") + DTVCTL +
                                 " DTVSERVICED=" + DTVSERVICED + " TSMAKE=" + TSMAKE + " SAMPLE=" + SAMPLE_FILE + "; ";
    ChildProcess process("/bin/sh", {"-c", programs + command}, "shell", Runner::machine);
    return process.wait();
}

using AnInputsState = AnInputThatComesByItself;
using TheOperator = ARawBrowser;

}  // namespace

TEST_F(AnInputsState, IsSilentWithoutDatagrams) {
    const ServiceProcess process("udp://127.0.0.1:" + std::to_string(freePort()));
    EXPECT_THAT(reasonOnceItIs("silent"), testing::MatchesRegex("silent for [0-9]+ s"));
    EXPECT_TRUE(eventually([&] { return std::regex_search(process.log(), std::regex(": silent for [0-9]+ s\n")); }));
    EXPECT_FALSE(answerTo("status").contains("presented_service"));
    EXPECT_EQ(answerTo("status")["inputs"][0]["service_count"], 0);
    EXPECT_THAT(operated({"channels"}).second,
                testing::ContainsRegex("no services\n  input 1 .*: silent for [0-9]+ s"));
}

TEST_F(AnInputsState, IsWithoutPacketsWhereDatagramsAreNoise) {
    const std::uint16_t port = freePort();
    const ServiceProcess process("udp://127.0.0.1:" + std::to_string(port));
    EXPECT_TRUE(eventually([&] {
        sender.send(std::string(1316, 'x'), addressOf("127.0.0.1", port));
        return process.log().find(": bytes without packets for ") != std::string::npos;
    }));
    EXPECT_GT(answerTo("statistics")["inputs"][0]["skipped_bytes"], 0);
}

TEST_F(AnInputsState, IsWithoutPat) {
    const std::uint16_t port = freePort();
    const ServiceProcess process("udp://127.0.0.1:" + std::to_string(port));
    const std::vector<std::string> others = datagramsOf(withoutPids(fileText(SAMPLE_FILE), {0}));
    EXPECT_TRUE(
        playsUntil(port, others, [&] { return process.log().find(": no PAT after 2 s") != std::string::npos; }));
    EXPECT_THAT(operated({"channels"}).second, testing::HasSubstr("): no PAT after "));
}

TEST_F(AnInputsState, IsEndedAfterStandardInput) {
    const std::string script = std::string("exec $DTV_EMULATOR ") + DTVSERVICED + " --input - < /dev/null";
    const ChildProcess process("/bin/sh", {"-c", script}, "service", Runner::machine);
    EXPECT_EQ(reasonOnceItIs("ended"), "ended");
}

TEST_F(AnInputsState, IsFailedWhereItsFileIsCutToNothing) {
    const std::string file = writeBroadcast(kSample, 1, "cut.ts");
    const ServiceProcess process(file);
    EXPECT_EQ(reasonOnceItIs("playing"), "playing");
    ASSERT_EQ(truncate(file.c_str(), 0), 0);
    EXPECT_EQ(reasonOnceItIs("failed"), file + " is empty");
    EXPECT_THAT(process.log(), testing::HasSubstr(file + " is empty; trying again every second"));
}

TEST_F(TheOperator, IsToldOfTheInputsAndTheRunDirectoryAtTheStart) {
    const ServiceProcess process(SAMPLE_FILE);
    EXPECT_THAT(process.output(), testing::StartsWith("input 1: " + std::string(SAMPLE_FILE) + "\nrun directory: " +
                                                      kRunDirectory + "\nconnect with: DTV_RUN_DIR=" + kRunDirectory +
                                                      " dvbshell watch\nready: playing " + SAMPLE_FILE + "\n"));
    EXPECT_TRUE(eventually([&] { return process.output().find(" Mbit/s, 4 services\n") != std::string::npos; }))
        << process.output();
}

TEST_F(TheOperator, SeesTheRateOfEachPid) {
    const ServiceProcess process;
    EXPECT_TRUE(eventually([] {
        const json answer = answerTo("statistics");
        for (const json& pid : answer["inputs"][0]["pids"]) {
            if (pid["pid"] == 0 && pid["bit_rate"] > 0 && pid["sections"] > 0) {
                return true;
            }
        }
        return false;
    }));
}

TEST_F(TheOperator, MayTuneByWhatTheChannelListSays) {
    const std::string unknown = kRunDirectory + "/unknown.ts";
    std::ofstream(unknown, std::ios::binary) << withoutPids(fileText(SAMPLE_FILE), {0x10, 0x11, 0x12});
    const ServiceProcess process({unknown, SAMPLE_FILE});
    ASSERT_TRUE(eventually([] { return operated({"channels"}).second.find("65535:1025:28106") != std::string::npos; }));
    EXPECT_EQ(operated({"tune", "65535:1025:28107"}), std::make_pair(0, std::string()));
    EXPECT_EQ(answerTo("status")["presented_service"]["input"], 1);
    ASSERT_TRUE(eventually([] { return operated({"channels"}).second.find(" 1:1025:28106") != std::string::npos; }));
    EXPECT_EQ(operated({"tune", "0x1:0x401:0x6DCB"}), std::make_pair(0, std::string()));
    EXPECT_EQ(answerTo("status")["presented_service"]["input"], 2) << "the exact triplet comes first";
}

TEST_F(TheOperator, GetsAnExitCodeForEachKindOfFailure) {
    EXPECT_EQ(operated({"status"}).first, kNoService);
    EXPECT_EQ(operated({"tune", "1:1025"}).first, kUsageError) << "the service is not asked";
    const ServiceProcess process;
    EXPECT_EQ(operated({"status"}).first, 0);
    EXPECT_EQ(operated({"tune", "1:1025:1"}).first, kRefused);
    EXPECT_EQ(operated({"tune", "1:1025"}).first, kUsageError);
    EXPECT_EQ(operated({"sing"}).first, kUsageError);
    EXPECT_EQ(shell("run $DTVSERVICED --bitrate 5G --input $SAMPLE"), kUsageError);
}

TEST_F(TheOperator, HasARefusalPrintedAsJson) {
    const ServiceProcess process;
    const auto [code, output] = operated({"--json", "tune", "1:1025:1"});
    EXPECT_EQ(code, kRefused);
    const std::string error = "no service 1:1025:1 in the channel list";
    EXPECT_THAT(output, testing::EndsWith("\ndtvctl: " + error + "\n"));
    const json answer = json::parse(jsonLines(output), nullptr, false);
    ASSERT_TRUE(answer.is_object()) << output;
    EXPECT_EQ(answer.value("ok", true), false);
    EXPECT_EQ(answer.value("error", ""), error);
}

TEST_F(TheOperator, WatchesUntilTheServiceGoes) {
    auto process = std::make_unique<ServiceProcess>();
    ChildProcess console(DTVCTL, {"watch"}, "watch");
    ASSERT_TRUE(presents(kSample.services[0]));
    EXPECT_TRUE(eventually([&] { return console.output().find(" browser 1 connected\n") != std::string::npos; }));
    EXPECT_TRUE(eventually([&] { return console.output().find(" presented: 1:1025:28106 ") != std::string::npos; }));
    operated({"tune", "1:1025:28107"});
    EXPECT_TRUE(eventually([&] { return console.output().find(" presented: 1:1025:28107 ") != std::string::npos; }));
    process->end(SIGTERM);
    EXPECT_EQ(console.wait(), kNoService);
    EXPECT_THAT(console.output(), testing::EndsWith("dtvctl: the service has gone\n"));
}

TEST_F(TheOperator, WatchesInJson) {
    const ServiceProcess process;
    ChildProcess console(DTVCTL, {"--json", "watch"}, "watch");
    EXPECT_TRUE(eventually([&] { return console.output().find('\n') != std::string::npos; }));
    const std::string first = console.output().substr(0, console.output().find('\n'));
    const json change = json::parse(first, nullptr, false);
    EXPECT_EQ(change["event"], "presented_service") << first;
    EXPECT_TRUE(change["time"].is_number());
    console.end(SIGINT);
}

TEST_F(TheOperator, IsToldOfOutputThatCannotBeWritten) {
    const ServiceProcess process;
    for (const char* const command :
         {"run $DTVCTL status", "run $DTVCTL --json channels", "run $DTVCTL --help", "run $DTVCTL watch",
          "run $DTVSERVICED --list $SAMPLE", "run $DTVSERVICED --help", "run $TSMAKE --print-sample"}) {
        EXPECT_EQ(shell(std::string(command) + " > /dev/full"), 1) << command;
    }
}

TEST_F(TheOperator, TrustsNoServiceOfAnotherUser) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can run a service as another user";
    }
    const std::string path = kRunDirectory + "/dtvctl.sock";
    const int listening = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::copy(path.begin(), path.end(), address.sun_path);
    ASSERT_EQ(bind(listening, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    constexpr uid_t kNobody = 65534;
    const pid_t other = fork();
    if (other == 0) {
        // The peer's user is the one at the time of listen().
        _exit(setuid(kNobody) == 0 && listen(listening, 1) == 0 ? 0 : 1);
    }
    int ended = -1;
    waitpid(other, &ended, 0);
    ASSERT_EQ(ended, 0);
    EXPECT_EQ(
        operated({"status"}),
        std::make_pair(kRefused, "dtvctl: " + path + ": served by user 65534, neither this user nor root; not used\n"));
    close(listening);
}
