// Which system calls a question and its answer take, in the browser and in the service together. Both run under
// ptrace(); the difference between many and twice as many questions leaves out start and end.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <map>
#include <optional>

#include "cpus.h"
#include "questions.h"

namespace {

constexpr std::int64_t kQuestions = 2000;

using Counts = std::map<std::uint64_t, std::int64_t>;  // by number of the call

void countEntry(pid_t thread, Counts& counts) {
    __ptrace_syscall_info call{};
    ptrace(PTRACE_GET_SYSCALL_INFO, thread, sizeof call, &call);
    if (call.op == PTRACE_SYSCALL_INFO_ENTRY) {
        ++counts[call.entry.nr];
    }
}

/// Follows the process and all that it starts until they have ended.
Counts countsOf(pid_t first) {
    constexpr long kOptions =
        PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACECLONE | PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK | PTRACE_O_EXITKILL;
    constexpr int kSystemCall = SIGTRAP | 0x80;
    Counts counts;
    int status = 0;
    waitpid(first, &status, 0);
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

/// Nothing if this process may not trace.
std::optional<Counts> countsOfAsking(std::int64_t questions) {
    const pid_t child = fork();
    if (child == 0) {
        if (ptrace(PTRACE_TRACEME, 0, 0, 0) != 0) {
            _exit(1);
        }
        raise(SIGSTOP);
        bench::runDirectory();
        { bench::Questions(0, 0).ask(questions); }
        _exit(0);
    }
    int status = 0;
    if (waitpid(child, &status, WNOHANG | WNOWAIT | WEXITED) == child && WIFEXITED(status)) {
        return std::nullopt;
    }
    return countsOf(child);
}

}  // namespace

TEST(AQuestionAndItsAnswer, TakeASendAndAReceiveEachAndOneWait) {
    const std::optional<Counts> some = countsOfAsking(kQuestions);
    if (!some) {
        GTEST_SKIP() << "this process may not trace others";
    }
    Counts more = *countsOfAsking(2 * kQuestions);
    for (const auto& [call, count] : *some) {
        more[call] -= count;
    }
    // A look for a second packet behind the first comes rarely, but some times after one that has found a packet, which
    // spares the wait for it. The start does not take each of its calls the same number of times.
    constexpr double kTrips = kQuestions;
    constexpr double kFew = kTrips / 20;
    constexpr double kLooks = kTrips / 4;
    EXPECT_NEAR(static_cast<double>(more[SYS_sendto]), 2 * kTrips, kFew);
    EXPECT_NEAR(static_cast<double>(more[SYS_recvfrom] + more[SYS_epoll_pwait]), 3 * kTrips, kLooks);
    EXPECT_LT(static_cast<double>(more[SYS_epoll_pwait]), kTrips + kFew);
    for (const int call : {SYS_sendto, SYS_recvfrom, SYS_epoll_pwait}) {
        more.erase(static_cast<std::uint64_t>(call));
    }
    for (const auto& [call, count] : more) {
        EXPECT_LT(count, kFew) << "call " << call;
    }
}
