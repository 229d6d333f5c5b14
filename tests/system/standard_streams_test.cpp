// Standard output and error that are closed, full, without a reader, or not read, of a service and of a browser.
#include <fcntl.h>
#include <poll.h>

#include "library_browser.h"

namespace {

/// What a program's output and errors go to.
class Sink {
public:
    explicit Sink(const std::string& newKind) : kind(newKind) {
        if (kind == "FullDevice") {
            writing = open("/dev/full", O_WRONLY | O_CLOEXEC);
        } else if (kind == "UnreadPipe" || kind == "BrokenPipe") {
            int ends[2];
            EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
            reading = ends[0];
            writing = ends[1];
        } else if (kind == "UnreadFifo") {
            const std::string path = faults::kRunDirectory + "/fifo";
            EXPECT_EQ(mkfifo(path.c_str(), 0600), 0);
            reading = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
            writing = open(path.c_str(), O_WRONLY | O_CLOEXEC);
        }
        if (kind == "BrokenPipe") {
            close(std::exchange(reading, -1));
        } else if (reading >= 0) {
            fill();
        }
    }
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;
    ~Sink() {
        close(reading);
        close(writing);
    }
    /// In a new process: makes it the standard error, and the standard output too.
    void use(bool isOutputToo) const {
        for (const int standard : {STDERR_FILENO, STDOUT_FILENO}) {
            if (standard == STDERR_FILENO || isOutputToo) {
                kind == "Closed" ? close(standard) : dup2(writing, standard);
            }
        }
    }

private:
    /// Each write to it would wait now.
    void fill() const {
        pollfd room{writing, POLLOUT, 0};
        const std::string bytes(4096, 'x');
        while (poll(&room, 1, 0) == 1) {
            ASSERT_GT(write(writing, bytes.data(), bytes.size()), 0);
        }
    }

    std::string kind;
    int reading = -1;
    int writing = -1;
};

class AStandardStream : public faults::ALibraryBrowser, public testing::WithParamInterface<const char*> {
protected:
    static void logAllToTheStandardError() {
        unsetenv("DTV_LOG_FILE");
        setenv("DTV_LOG_LEVEL", "trace", 1);
    }
    const Sink sink{GetParam()};
};

using AClosedStandardStream = faults::ALibraryBrowser;

}  // namespace

INSTANTIATE_TEST_SUITE_P(Of, AStandardStream,
                         testing::Values("Closed", "FullDevice", "UnreadPipe", "BrokenPipe", "UnreadFifo"),
                         [](const auto& kind) { return std::string(kind.param); });

TEST_P(AStandardStream, HoldsNoServiceUp) {
    ChildProcess service(DTVSERVICED, {"--input", SAMPLE_FILE}, "service", Runner::emulator, [this] {
        logAllToTheStandardError();
        sink.use(true);
    });
    ASSERT_TRUE(connects());
    EXPECT_TRUE(tunesTo(28106));
    // The service has a line about its input once it knows the rate, two seconds after the start.
    EXPECT_TRUE(eventually([] {
        ChildProcess console(DTVCTL, {"--json", "statistics"}, "dtvctl");
        console.wait();
        const std::string answer = console.output();
        const std::size_t rate = answer.find("\"bit_rate\":");
        return rate != std::string::npos && answer.compare(rate, 13, "\"bit_rate\":0,") != 0;
    }));
    EXPECT_TRUE(tunesTo(28107));
    faults::CountingFilter& filter = newFilter();
    EXPECT_TRUE(opens(filter, "a filter"));
    EXPECT_TRUE(faults::receives(filter));
    EXPECT_TRUE(isConnected());
    EXPECT_THAT(service.end(SIGTERM), testing::AnyOf(0, 1)) << "1 where its output could not be written";
}

TEST_P(AStandardStream, HoldsNoBrowserUp) {
    const ServiceProcess service;
    ChildProcess browser(DVBSHELL, {"sections", "0", "--count", "3"}, "browser", Runner::emulator, [this] {
        logAllToTheStandardError();
        sink.use(false);
    });
    EXPECT_EQ(browser.wait(), 0) << browser.output();
    EXPECT_NE(browser.output().find("PAT"), std::string::npos);
}

TEST_F(AClosedStandardStream, ThatABrowserPrintsOnReachesNoService) {
    const ServiceProcess service;
    const pid_t browser = fork();
    if (browser == 0) {
        for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            close(standard);
        }
        const bool connected = connects();
        const std::string line = "a browser's own message\n";
        const bool isWritten =
            write(STDOUT_FILENO, line.data(), line.size()) >= 0 || write(STDERR_FILENO, line.data(), line.size()) >= 0;
        _exit(!connected ? 1 : isWritten ? 2 : isConnected() ? 0 : 3);
    }
    int status = 0;
    waitpid(browser, &status, 0);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(service.log().find("dropped"), std::string::npos);
}
