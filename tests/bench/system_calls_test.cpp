// Which system calls a question and its answer take, in the browser and in the service together. Both run under
// ptrace(); the difference between many and twice as many questions leaves out start and end, and other browsers.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <map>
#include <optional>
#include <thread>

#include "idle_browser.h"
#include "questions.h"
#include "quiet_run_directory.h"

namespace {

constexpr std::int64_t kQuestions = 500;
/// Between an answer and the next question, so that each message comes alone: after its receiver waits again.
constexpr std::chrono::milliseconds kPause{2};

using Counts = std::map<std::uint64_t, std::int64_t>;  // by number of the call

void countEntry(pid_t thread, Counts& counts) {
    __ptrace_syscall_info call{};
    ptrace(PTRACE_GET_SYSCALL_INFO, thread, sizeof call, &call);
    if (call.op == PTRACE_SYSCALL_INFO_ENTRY) {
        ++counts[call.entry.nr];
    }
}

/// Follows the process, which has stopped, and all that it starts until they have ended.
Counts countsOf(pid_t first) {
    constexpr long kOptions =
        PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACECLONE | PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK | PTRACE_O_EXITKILL;
    constexpr int kSystemCall = SIGTRAP | 0x80;
    Counts counts;
    int status = 0;
    ptrace(PTRACE_SETOPTIONS, first, 0, kOptions);
    ptrace(PTRACE_SYSCALL, first, 0, 0);
    for (pid_t thread = 0; (thread = waitpid(-1, &status, __WALL)) > 0;) {
        if (!WIFSTOPPED(status)) {
            continue;
        }
        const int stop = WSTOPSIG(status);
        if (stop == kSystemCall) {
            countEntry(thread, counts);
        }
        const bool isTracers = stop == kSystemCall || stop == SIGTRAP || stop == SIGSTOP;
        ptrace(PTRACE_SYSCALL, thread, 0, isTracers ? 0 : stop);
    }
    return counts;
}

void ask(std::int64_t count, std::int64_t otherBrowsers) {
    bench::Questions questions(0, 0);
    const auto others = bench::idleBrowsers(otherBrowsers);
    for (; count > 0; --count) {
        questions.ask(1);
        std::this_thread::sleep_for(kPause);
    }
}

/// Nothing if this process may not trace.
std::optional<Counts> countsOfAsking(std::int64_t questions, std::int64_t otherBrowsers) {
    const pid_t child = fork();
    if (child == 0) {
        if (ptrace(PTRACE_TRACEME, 0, 0, 0) != 0) {
            _exit(1);
        }
        raise(SIGSTOP);
        ask(questions, otherBrowsers);
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSTOPPED(status) ? std::optional(countsOf(child)) : std::nullopt;
}

}  // namespace

class AQuestionAndItsAnswer : public testing::TestWithParam<std::int64_t> {};

TEST_P(AQuestionAndItsAnswer, TakeASendAndAReceiveEachAndNoOtherWaitWhateverTheNumberOfBrowsers) {
    const std::optional<Counts> some = countsOfAsking(kQuestions, GetParam());
    if (!some) {
        GTEST_SKIP() << "this process may not trace others";
    }
    Counts more = *countsOfAsking(2 * kQuestions, GetParam());
    for (const auto& [call, count] : *some) {
        more[call] -= count;
    }
    // What the start takes once more or less.
    constexpr double kTrips = kQuestions;
    constexpr double kFew = kTrips / 10;
    EXPECT_NEAR(static_cast<double>(more[SYS_sendto]), 2 * kTrips, kFew);
    EXPECT_NEAR(static_cast<double>(more[SYS_recvfrom]), 2 * kTrips, kFew);
    for (const int call : {SYS_epoll_pwait, SYS_read, SYS_poll, SYS_ppoll, SYS_recvmsg, SYS_sendmsg}) {
        EXPECT_LT(static_cast<double>(more[static_cast<std::uint64_t>(call)]), kFew) << "call " << call;
    }
}

INSTANTIATE_TEST_SUITE_P(OtherBrowsers, AQuestionAndItsAnswer, testing::Values(0, 16));
