// Which system calls a question and its answer take, and a tune, in the browser and in the service together. Both run
// under ptrace(); the difference between many and twice as many leaves out start and end, and other browsers.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <thread>

#include "idle_browser.h"
#include "questions.h"
#include "quiet_run_directory.h"
#include "reference_service.h"
#include "zapper.h"

namespace {

constexpr std::int64_t kTrips = 500;
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

void zap(std::int64_t count) {
    const bench::ReferenceService service;
    const auto zapper = std::make_shared<bench::Zapper>();
    bench::dvbApi().addListener(zapper);
    bench::waitForService();
    zapper->zap(2);  // ends when the tables of both services are known
    for (; count > 0; --count) {
        zapper->zap(1);
        std::this_thread::sleep_for(kPause);
    }
}

/// Of a process that does this; nothing if this process may not trace.
std::optional<Counts> countsOf(const std::function<void()>& action) {
    const pid_t child = fork();
    if (child == 0) {
        if (ptrace(PTRACE_TRACEME, 0, 0, 0) != 0) {
            _exit(1);
        }
        raise(SIGSTOP);
        action();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSTOPPED(status) ? std::optional(countsOf(child)) : std::nullopt;
}

/// Of kTrips actions more; nothing if this process may not trace.
std::optional<Counts> countsOfTrips(const std::function<void(std::int64_t count)>& trips) {
    const std::optional<Counts> some = countsOf([&trips] { trips(kTrips); });
    std::optional<Counts> more = some ? countsOf([&trips] { trips(2 * kTrips); }) : std::nullopt;
    if (more) {
        for (const auto& [call, count] : *some) {
            (*more)[call] -= count;
        }
    }
    return more;
}

/// One packet each way, and no other call for messages.
void expectOnePacketEachWay(Counts counts) {
    // What the start takes once more or less.
    constexpr double kFew = static_cast<double>(kTrips) / 10;
    EXPECT_NEAR(static_cast<double>(counts[SYS_sendto]), 2.0 * kTrips, kFew);
    EXPECT_NEAR(static_cast<double>(counts[SYS_recvfrom]), 2.0 * kTrips, kFew);
    for (const int call : {SYS_epoll_pwait, SYS_read, SYS_poll, SYS_ppoll, SYS_recvmsg, SYS_sendmsg}) {
        EXPECT_LT(static_cast<double>(counts[static_cast<std::uint64_t>(call)]), kFew) << "call " << call;
    }
}

}  // namespace

class AQuestionAndItsAnswer : public testing::TestWithParam<std::int64_t> {};

TEST_P(AQuestionAndItsAnswer, TakeASendAndAReceiveEachAndNoOtherWaitWhateverTheNumberOfBrowsers) {
    const std::optional<Counts> counts = countsOfTrips([](std::int64_t count) { ask(count, GetParam()); });
    if (!counts) {
        GTEST_SKIP() << "this process may not trace others";
    }
    expectOnePacketEachWay(*counts);
}

INSTANTIATE_TEST_SUITE_P(OtherBrowsers, AQuestionAndItsAnswer, testing::Values(0, 16));

TEST(ATune, IsOnePacketAndAllThatIsToldOfItsServiceAnother) {
    const std::optional<Counts> counts = countsOfTrips(zap);
    if (!counts) {
        GTEST_SKIP() << "this process may not trace others";
    }
    expectOnePacketEachWay(*counts);
}
