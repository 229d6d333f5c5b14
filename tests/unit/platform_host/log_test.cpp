// The host's log.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <sstream>
#include <thread>

#include "ovx/log.h"
#include "own_log.h"
#include "platform/host/log_sink.h"

namespace {

std::vector<std::string> logLines() {
    std::istringstream text(logText());
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// A pipe, or with a socket type a socket pair, that a sink writes to.
class SinkToAPipe : public testing::TestWithParam<int> {
protected:
    SinkToAPipe() {
        EXPECT_EQ(GetParam() == 0 ? pipe(ends) : socketpair(AF_UNIX, GetParam(), 0, ends), 0);
        sink = std::make_unique<host::LogSink>(ends[1], true);
    }
    ~SinkToAPipe() override {
        close(ends[0]);
        close(ends[1]);
    }
    /// What waits in the pipe.
    std::string content() {
        std::string all(std::size_t{4} << 20U, '\0');
        const ssize_t count = GetParam() == 0 ? read(ends[0], all.data(), all.size())
                                              : recv(ends[0], all.data(), all.size(), MSG_DONTWAIT);
        all.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
        return all;
    }
    static bool isSignalPending() {
        sigset_t pending;
        sigpending(&pending);
        return sigismember(&pending, SIGPIPE) == 1;
    }

    int ends[2] = {-1, -1};
    std::unique_ptr<host::LogSink> sink;
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(PipeAndSocket, SinkToAPipe, testing::Values(0, SOCK_STREAM),
                         [](const testing::TestParamInfo<int>& kind) { return kind.param == 0 ? "Pipe" : "Socket"; });

TEST_P(SinkToAPipe, SurvivesThatItsReaderGoes) {
    sink->write("read\n");
    EXPECT_EQ(content(), "read\n");
    close(std::exchange(ends[0], -1));
    for (int count = 0; count < 3; ++count) {
        sink->write("not read\n");
    }
    EXPECT_FALSE(isSignalPending());
}

TEST_P(SinkToAPipe, LeavesASignalThatTheProcessKeepsBack) {
    sigset_t signal;
    sigset_t before;
    sigemptyset(&signal);
    sigaddset(&signal, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &signal, &before);
    raise(SIGPIPE);
    close(std::exchange(ends[0], -1));
    sink->write("not read\n");
    EXPECT_TRUE(isSignalPending());
    const timespec atOnce{};
    sigtimedwait(&signal, nullptr, &atOnce);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST_P(SinkToAPipe, LosesLinesThatNobodyReadsAndTellsTheirNumber) {
    const std::string line = std::string(99, 'x') + "\n";
    constexpr std::size_t kLines = 20000;  // more than a pipe holds
    for (std::size_t count = 0; count < kLines; ++count) {
        sink->write(line);
    }
    const std::string kept = content();
    EXPECT_GT(kept.size(), 10 * line.size());
    const std::string rest = kept.size() % line.size() == 0 ? "" : "\n";
    const std::size_t whole = (kept.size() + line.size() - 1) / line.size();
    sink->write("after it\n");
    EXPECT_EQ(content(),
              rest + std::to_string(kLines - whole) + " log lines were lost before the next one\nafter it\n");
    sink->write("and on\n");
    EXPECT_EQ(content(), "and on\n");
}

TEST_P(SinkToAPipe, EndsALineThatWentThroughInPart) {
    sink->write(std::string(std::size_t{2} << 20U, 'x') + "\n");
    const std::string part = content();
    ASSERT_LT(part.size(), std::size_t{2} << 20U);
    EXPECT_EQ(part, std::string(part.size(), 'x'));
    sink->write("next\n");
    EXPECT_EQ(content(), "\nnext\n");
}

TEST_P(SinkToAPipe, FollowsItsDescriptor) {
    sink->write("first\n");
    int other[2];
    ASSERT_EQ(pipe(other), 0);
    ASSERT_EQ(dup2(other[1], ends[1]), ends[1]);
    sink->write("second\n");
    EXPECT_EQ(content(), "first\n");
    char text[10] = {};
    EXPECT_EQ(read(other[0], text, sizeof text), 7);
    EXPECT_STREQ(text, "second\n");
    close(other[0]);
    close(other[1]);
}

TEST_P(SinkToAPipe, WritesNowhereIfItIsClosed) {
    close(std::exchange(ends[1], -1));
    sink->write("nobody hears\n");
    EXPECT_EQ(content(), "");
}

TEST(TheHostsLog, WritesOneLinePerCall) {
    BLOG_WRITE(blog::kOrdinary, "%s", "two breaks at its end\n\n");
    BLOG_WRITE(blog::kOrdinary, "%s", "a break\nand a \x01 inside\n");
    BLOG_WRITE(blog::kOrdinary, "%s", std::string(5000, 'x').c_str());
    const std::vector<std::string> lines = logLines();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_THAT(lines[0], testing::EndsWith(" O two breaks at its end"));
    EXPECT_THAT(lines[1], testing::EndsWith(" O a break\\x0aand a \\x01 inside"));
    EXPECT_THAT(lines[2], testing::EndsWith(std::string(5000, 'x')));
}

TEST(TheHostsLog, WritesNothingThatControlsATerminal) {
    BLOG_WRITE(blog::kOrdinary, "%s", "\xC2\x9B 2J, \xE2\x80\xAE right to left, F\xC3\xB6hn, no UTF-8: \x9B\n");
    const std::vector<std::string> lines = logLines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_THAT(lines[0],
                testing::EndsWith("\\xc2\\x9b 2J, \\xe2\\x80\\xae right to left, F\xC3\xB6hn, no UTF-8: \\x9b"));
}

TEST(TheHostsLog, WritesNoLineAboveItsLevel) {
    BLOG_WRITE(blog::kTrace, "%s", "trace");
    BLOG_WRITE(blog::kAlways, "%s", "always");
    BLOG_WRITE(blog::kFailure, "%s", "failure");
    BLOG_WRITE(blog::kUnsupported, "%s", "unsupported");
    const std::vector<std::string> lines = logLines();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_THAT(lines[0], testing::EndsWith(" * always"));
    EXPECT_THAT(lines[1], testing::EndsWith(" F failure"));
    EXPECT_THAT(lines[2], testing::EndsWith(" W unsupported"));
}

TEST(TheHostsLog, NamesTheProcessThatWrites) {
    BLOG_WRITE(blog::kOrdinary, "%s", "of the parent");
    const pid_t child = fork();
    if (child == 0) {
        BLOG_WRITE(blog::kOrdinary, "%s", "of the child");
        _exit(0);
    }
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    const std::vector<std::string> lines = logLines();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_THAT(lines[0], testing::EndsWith(" " + std::to_string(getpid()) + " O of the parent"));
    EXPECT_THAT(lines[1], testing::EndsWith(" " + std::to_string(child) + " O of the child"));
}

TEST(TheHostsLog, KeepsALineThatFillsTheCommonSize) {
    for (const std::size_t size : {510U, 511U, 512U, 513U}) {
        BLOG_WRITE(blog::kOrdinary, "%s\n", std::string(size, 'x').c_str());
        EXPECT_THAT(logLines().back(), testing::EndsWith(" O " + std::string(size, 'x')));
    }
}

TEST(TheHostsLog, KeepsLinesOfManyThreadsWhole) {
    constexpr int kThreads = 4;
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([thread] {
            for (int count = 0; count < 200; ++count) {
                BLOG_WRITE(blog::kOrdinary, "<%s>", std::string(300, static_cast<char>('a' + thread)).c_str());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const std::vector<std::string> lines = logLines();
    ASSERT_EQ(lines.size(), 800U);
    for (const std::string& line : lines) {
        const std::size_t at = line.find('<');
        ASSERT_NE(at, std::string::npos);
        EXPECT_EQ(line.substr(at), "<" + std::string(300, line[at + 1]) + ">");
    }
}

TEST(TheHostsLog, DumpsBytesInRows) {
    const std::uint8_t bytes[] = {'A', 0x00, 0xFF, 'z', 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 'Q'};
    dump_memory("Title: ", bytes, sizeof bytes, 1);
    const std::vector<std::string> lines = logLines();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_THAT(lines[0], testing::HasSubstr("Title:  (1), 17 bytes"));
    EXPECT_THAT(lines[1], testing::HasSubstr("0000  41 00 FF 7A 01 02 03 04 05 06 07 08 09 0A 0B 0C  A..z"));
    EXPECT_THAT(lines[2], testing::HasSubstr("0010  51"));
}

TEST(TheHostsLog, NamesAPathsLastPart) {
    EXPECT_STREQ(blog_base_name("/a/b/c.cpp"), "c.cpp");
    EXPECT_STREQ(blog_base_name("c.cpp"), "c.cpp");
    EXPECT_STREQ(blog_base_name("a/"), "");
    EXPECT_STREQ(blog_base_name(nullptr), "");
}
