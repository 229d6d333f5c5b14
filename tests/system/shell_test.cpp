// The shell as a program, and the demonstration.
#include <sys/stat.h>

#include <regex>

#include "browser_fixture.h"
#include "terminal_process.h"

namespace {

using testing::HasSubstr;
using testing::Not;

constexpr const char* kCtrlC = "\x03";
constexpr const char* kCtrlD = "\x04";

/// The shell with an output that cannot be written.
int exitCodeOnAFullDevice(std::vector<std::string> arguments) {
    const pid_t process = fork();
    if (process == 0) {
        dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO);
        become(DVBSHELL, std::move(arguments));
    }
    int status = 0;
    waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// Waits until the service presents something.
bool presentsAChannel() {
    return eventually([] {
        ChildProcess shell(DVBSHELL, {"info", "--seconds", "0"}, "presented");
        return shell.wait() == 0;
    });
}

}  // namespace

TEST(TheShell, SaysWhichLibraryItCannotLoadAndWhy) {
    ChildProcess shell(DVBSHELL, {"--library", "/nonexistent.so", "watch"}, "shell");
    EXPECT_EQ(shell.wait(), 1);
    EXPECT_THAT(shell.output(), testing::StartsWith("dvbshell: cannot load /nonexistent.so: "));
}

TEST(TheShell, NamesAWrongArgumentAndItsRange) {
    ChildProcess shell(DVBSHELL, {"tune", "1:2:70000"}, "shell");
    EXPECT_EQ(shell.wait(), 2);
    EXPECT_THAT(shell.output(), HasSubstr("\"1:2:70000\" is not ONID:TSID:SID, each from 0 to 65535"));
}

TEST(TheShell, FailsWhereATuneFails) {
    const ServiceProcess service;
    ChildProcess shell(DVBSHELL, {"--seconds", "60", "tune", "1:1025:9"}, "shell");
    EXPECT_EQ(shell.wait(), 1);
    EXPECT_THAT(shell.output(), HasSubstr("not tuned to 1:1025:9: the DTV service has no such channel; "));
    EXPECT_THAT(shell.output(), Not(HasSubstr("done")));
}

TEST(TheShell, SaysThatNoServiceAnswersAndHowToStartOne) {
    for (const char* const verb : {"watch", "channels", "info", "ait", "ccid"}) {
        ChildProcess shell(DVBSHELL, {verb}, "shell");
        EXPECT_EQ(shell.wait(), 3) << verb;
        EXPECT_THAT(shell.output(), testing::StartsWith("dvbshell: no DTV service answers")) << verb;
        EXPECT_THAT(shell.output(), HasSubstr("start one: dtvserviced --input FILE.ts\n")) << verb;
    }
}

TEST(TheShell, ListsTheChannels) {
    const ServiceProcess service;
    ChildProcess shell(DVBSHELL, {"channels", "--seconds", "60"}, "shell");
    EXPECT_EQ(shell.wait(), 0);
    EXPECT_THAT(shell.output(), HasSubstr("1:1025:28107  Velmora Zwei F\xC3\xB6hn"));
}

TEST(TheShell, FailsWhereItsOutputCannotBeWritten) {
    const ServiceProcess service;
    EXPECT_EQ(exitCodeOnAFullDevice({"channels"}), 1);
    EXPECT_EQ(exitCodeOnAFullDevice({"--json", "channels"}), 1);
    EXPECT_EQ(exitCodeOnAFullDevice({"watch"}), 1);
}

TEST(TheShell, TellsWhenTheServiceGoesAndComesBack) {
    auto service = std::make_unique<ServiceProcess>();
    const ChildProcess shell(DVBSHELL, {"watch"}, "shell");
    ASSERT_TRUE(eventually([&] { return shell.output().find("PMT") != std::string::npos; }));
    service.reset();
    EXPECT_TRUE(eventually([&] { return shell.output().find("the DTV service has gone\n") != std::string::npos; }));
    service = std::make_unique<ServiceProcess>();
    EXPECT_TRUE(
        eventually([&] { return shell.output().find("the DTV service is there again\n") != std::string::npos; }));
}

TEST(TheShell, ShowsTheLibrarysLogOnlyWhereAskedFor) {
    const ServiceProcess service;
    TerminalProcess quiet(DVBSHELL, {"sections", "0", "--count", "1"});
    EXPECT_EQ(quiet.wait(), 0);
    EXPECT_THAT(quiet.text(), Not(HasSubstr("SectionFilterService")));
    TerminalProcess asked(DVBSHELL, {"sections", "0", "--count", "1", "--log", "failure"});
    EXPECT_EQ(asked.wait(), 0);
    EXPECT_THAT(asked.text(), HasSubstr("SectionFilterService"));
}

TEST(TheShell, RefusesALogLevelThatThereIsNot) {
    ChildProcess shell(DVBSHELL, {"--log", "warn", "info"}, "shell");
    EXPECT_EQ(shell.wait(), 2);
    EXPECT_THAT(shell.output(), testing::StartsWith("dvbshell: --log: \"warn\" is none of off, failure, "));
}

TEST(TheShell, DoesNotFoldSectionsInHexadecimal) {
    const ServiceProcess service;
    TerminalProcess shell(DVBSHELL, {"sections", "0", "--count", "1", "--hex"}, 50);
    EXPECT_EQ(shell.wait(), 0);
    EXPECT_THAT(shell.text(), testing::MatchesRegex("[0-9A-F]{60,}\r\n"));
}

TEST(ThePrompt, BeginsWithWhatIsPresented) {
    const ServiceProcess service;
    ASSERT_TRUE(presentsAChannel());
    TerminalProcess shell(DVBSHELL, {});
    EXPECT_TRUE(shell.shows("presented: ccid:1:1025:28106")) << shell.text();
    // The name comes with the SDT.
    EXPECT_TRUE(shell.shows("Velmora One HD\r\n")) << shell.text();
    EXPECT_TRUE(shell.shows("dvb> "));
    EXPECT_EQ(shell.endsOn(kCtrlD), 0);
}

TEST(ThePrompt, EndsOnCtrlDAfterANul) {
    TerminalProcess shell(DVBSHELL, {});
    ASSERT_TRUE(shell.shows("dvb> "));
    shell.type(std::string(1, '\0'));
    EXPECT_EQ(shell.endsOn(kCtrlD), 0);
}

TEST(ThePrompt, ClearsTheLineOnCtrlCAndEndsWhatRuns) {
    const ServiceProcess service;
    ASSERT_TRUE(presentsAChannel());
    TerminalProcess shell(DVBSHELL, {});
    ASSERT_TRUE(shell.shows("dvb> "));
    shell.type("nonsense");
    ASSERT_TRUE(shell.shows("nonsense"));
    shell.type(kCtrlC);
    ASSERT_TRUE(shell.shows("^C\r\n"));
    shell.type("ccid\r");
    EXPECT_TRUE(shell.shows("getCurrentCCID  ccid ccid:1:1025:28106\r\n")) << shell.text();
    shell.type("watch\r");
    ASSERT_TRUE(shell.shows("watch\r\n"));
    shell.type(kCtrlC);
    ASSERT_TRUE(shell.shows("dvb> "));
    shell.type("quit\r");
    EXPECT_EQ(shell.wait(), 0);
    EXPECT_THAT(shell.text(), Not(HasSubstr("unknown command")));
}

TEST(ThePrompt, CompletesChannelsThatItHasRead) {
    const ServiceProcess service;
    TerminalProcess shell(DVBSHELL, {});
    ASSERT_TRUE(shell.shows("dvb> "));
    shell.type("chan\t --seconds 60\r");
    ASSERT_TRUE(shell.shows("1:1025:28120  Velmora Radio")) << shell.text();
    shell.type("tune 1:1025:2812\t\r");
    EXPECT_TRUE(shell.shows("ccid:1:1025:28120  started")) << shell.text();
}

TEST(ThePrompt, KeepsItsHistoryInAPrivateFile) {
    const std::string path = kRunDirectory + "/state/dvbshell/history";
    for (int run = 0; run < 2; ++run) {
        TerminalProcess shell(DVBSHELL, {});
        ASSERT_TRUE(shell.shows("dvb> "));
        // The second time, the line comes back with the key for the line before, typed twice.
        shell.type(run == 0 ? "help quit\r" : "\x10\x10\r");
        ASSERT_TRUE(shell.shows("end; so does Ctrl-D")) << shell.text();
        shell.type("quit\r");
        EXPECT_EQ(shell.wait(), 0);
    }
    struct stat state {};
    ASSERT_EQ(stat(path.c_str(), &state), 0);
    EXPECT_EQ(state.st_mode & 0777U, 0600U);
}

TEST(AScript, EndsOnCtrlCWhileItWaitsForALine) {
    const ServiceProcess service;
    ASSERT_TRUE(presentsAChannel());
    int input[2] = {-1, -1};
    ASSERT_EQ(pipe2(input, O_CLOEXEC), 0);
    ChildProcess shell(DVBSHELL, {}, "shell", Runner::emulator, [&] { dup2(input[0], STDIN_FILENO); });
    const std::string lineAndAHalf = "ccid\nhel";
    EXPECT_EQ(write(input[1], lineAndAHalf.data(), lineAndAHalf.size()), static_cast<ssize_t>(lineAndAHalf.size()));
    EXPECT_TRUE(eventually([&] { return shell.output().find("getCurrentCCID  ccid") != std::string::npos; }));
    EXPECT_EQ(shell.end(SIGINT), 0);
    EXPECT_THAT(shell.output(), Not(HasSubstr("unknown command")));
    close(input[0]);
    close(input[1]);
}

TEST(ThePrompt, FitsItsLinesToTheTerminal) {
    const ServiceProcess service;
    TerminalProcess shell(DVBSHELL, {"tune", "1:1025:28106", "--seconds", "600", "--color", "never"}, 50);
    ASSERT_TRUE(shell.has("Media")) << shell.text();
    ASSERT_TRUE(shell.has("started")) << shell.text();
    shell.type(kCtrlC);
    EXPECT_EQ(shell.wait(), 0);
    // The terminal itself writes ^C, in front of whatever line comes next.
    std::istringstream lines(std::regex_replace(shell.text(), std::regex("\\^C"), ""));
    for (std::string line; std::getline(lines, line);) {
        EXPECT_LE(line.size(), 51U) << line;  // with the carriage return
    }
}

TEST(TheDemonstration, SeesEverythingOfTheSample) {
    ChildProcess demo(DEMO_SCRIPT, {BUILD_FOLDER, SAMPLE_FILE}, "demo");
    EXPECT_EQ(demo.wait(), 0) << demo.output();
    const std::string output = demo.output();
    for (const char* const expected :
         {"ccid:1:1025:28106  started", "ccid:1:1025:28107  started", "AIT (HbbTV)", "Morning on the Lake",
          "2026-01-01 09:00-10:00 UTC", "organisation_id 400 (0x190), application_id 1 (0x1)  AUTOSTART  Red Button",
          "http://hbbtv.one.example/redbutton/index.html?lang=en", "Velmora Zwei Föhn", "all arrived"}) {
        EXPECT_THAT(output, HasSubstr(expected));
    }
}

TEST(TheDemonstration, ShowsTheServicesOfTheUserAndSaysWhatToTryNext) {
    ChildProcess demo(DEMO_SCRIPT,
                      {BUILD_FOLDER, "--service", "0x1:0x401:28107", SAMPLE_FILE, "--service", "65535:1025:28108"},
                      "demo");
    EXPECT_EQ(demo.wait(), 0) << demo.output();
    const std::string output = demo.output();
    EXPECT_THAT(output, testing::ContainsRegex("\nshown +1:1025:28107 +Velmora Zwei"));
    EXPECT_THAT(output, testing::ContainsRegex("\nleft out +1:1025:28106 +Velmora One HD +not chosen\n"));
    EXPECT_THAT(output, Not(HasSubstr("tuning to 1:1025:28106")));
    EXPECT_THAT(output, HasSubstr("bin/dvbshell tune 1:1025:28107\n"));
}

TEST(TheDemonstration, NamesAServiceThatTheBroadcastLacks) {
    ChildProcess demo(DEMO_SCRIPT, {BUILD_FOLDER, SAMPLE_FILE, "--service", "1:1025:9"}, "demo");
    EXPECT_EQ(demo.wait(), 1);
    EXPECT_THAT(demo.output(), HasSubstr("dvbshell: demo: the broadcast has no service 1:1025:9\n"));
    ChildProcess wrong(DEMO_SCRIPT, {BUILD_FOLDER, SAMPLE_FILE, "--service", "x"}, "demo");
    EXPECT_EQ(wrong.wait(), 2);
    EXPECT_THAT(wrong.output(), HasSubstr("\"x\" is not ONID:TSID:SID"));
    ChildProcess two(DEMO_SCRIPT, {BUILD_FOLDER, SAMPLE_FILE, SAMPLE_FILE}, "demo");
    EXPECT_EQ(two.wait(), 2);
    EXPECT_THAT(two.output(), testing::StartsWith("run: demo: one file at most: "));
}

TEST(TheDemonstration, EndsPromptlyOnABroadcastWithoutAPat) {
    const std::string path = kRunDirectory + "/nopat.ts";
    std::ofstream file(path, std::ios::binary);
    std::string packet(188, '\xFF');
    packet[0] = 0x47;
    packet[1] = 0x01;
    packet[2] = 0x00;
    packet[3] = 0x10;
    for (int count = 0; count < 100; ++count) {
        file << packet;
    }
    file.close();
    ChildProcess demo(DEMO_SCRIPT, {BUILD_FOLDER, path}, "demo");
    EXPECT_EQ(demo.wait(), 1);
    EXPECT_THAT(demo.output(), HasSubstr("there is no PAT in the file"));
}
