// What surrounds the platform in its process: standard descriptors that are closed, forked children.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <thread>

#include "eventually.h"
#include "frame/process.h"
#include "in_a_child.h"
#include "members.h"
#include "ovx/log.h"
#include "own_log.h"
#include "platform/host/log_sink.h"
#include "sanitizers.h"
#include "velmora/msgqueue/ipc_message_queue.h"

namespace {

/// The lowest number of an open descriptor.
int lowestOpen() {
    int number = 0;
    while (fcntl(number, F_GETFD) < 0) {
        ++number;
    }
    return number;
}

}  // namespace

TEST(TheHostPlatform, TakesNoNumberOfAStandardDescriptor) {
    enum Finding { allRight, noConnection, noQueue, takesOne };
    EXPECT_EQ(
        inAChild([] {
            for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
                close(standard);
            }
            BLOG_WRITE(blog::kAlways, "%s", "opens the log");
            toy::Member service(frame::CouplingModeService);
            toy::Member client(frame::CouplingModeClient);
            if (service.start() != 0 || client.start() != 0 || !eventually([&] { return service.connected == 1; })) {
                return noConnection;
            }
            const std::unique_ptr<velmora::msgqueue::IPCMessageQueue> queue(
                velmora::msgqueue::IPCMessageQueue::create("queue", 100, 8));
            if (queue == nullptr) {
                return noQueue;
            }
            // A new descriptor has a low number for the moment until the platform moves it.
            return eventually([] { return lowestOpen() > STDERR_FILENO; }) ? allRight : takesOne;
        }),
        allRight);
}

TEST(TheHostPlatform, KeepsItsServiceWhereAForkedChildExits) {
    if (kIsSanitized) {
        GTEST_SKIP() << "the end of a forked child under a sanitizer needs threads that the child does not have";
    }
    frame::Process process = frame::Process::getInstance();
    ASSERT_EQ(process.startAppMembersSync([] {
        auto** const members =
            static_cast<frame::AbstractApplication**>(std::calloc(2, sizeof(frame::AbstractApplication*)));
        members[0] = new toy::Member(frame::CouplingModeService);
        return members;
    }),
              0);
    toy::Member client(frame::CouplingModeClient);
    ASSERT_EQ(client.start(), 0);
    EXPECT_EQ(inAChild([]() -> int { std::exit(0); }), 0);
    EXPECT_EQ(access((kOwnRunDirectory + "/toy.sock").c_str(), F_OK), 0);
    EXPECT_EQ(client.send(1), 0);
    toy::Member later(frame::CouplingModeClient);
    ASSERT_EQ(later.start(), 0);
    EXPECT_TRUE(eventually([&] { return later.connected == 1; }));
    process.stopAppMembers();
}

TEST(TheHostPlatform, DoesNotStartAMemberWithoutMemory) {
    if (kIsSanitized) {
        GTEST_SKIP() << "the sanitizers need address space of their own";
    }
    if (!std::vector<std::string> EMULATOR.empty()) {
        GTEST_SKIP() << "the emulator needs address space of its own";
    }
    EXPECT_EQ(inAChild([] {
                  BLOG_WRITE(blog::kAlways, "%s", "opens the log");
                  toy::Member client(frame::CouplingModeClient);
                  std::ifstream pages("/proc/self/statm");
                  rlim_t used = 0;
                  pages >> used;
                  constexpr rlim_t kLittle = 100000;
                  const rlimit little{used * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + kLittle, RLIM_INFINITY};
                  setrlimit(RLIMIT_AS, &little);
                  return client.start() == -ENOMEM ? 0 : 1;
              }),
              0);
    EXPECT_NE(logText().find("no memory to receive packets"), std::string::npos);
}

/// A child has the locks as they are when it is forked, and not the threads that hold them.
TEST(TheHostPlatform, WritesNoLineRatherThanWaitInAForkedChild) {
    int first[2];
    int second[2];
    ASSERT_EQ(pipe2(first, O_CLOEXEC), 0);
    ASSERT_EQ(pipe2(second, O_CLOEXEC), 0);
    const int descriptor = dup(first[1]);
    host::LogSink sink(descriptor, true);
    std::atomic<bool> isOver{false};
    // Each line goes to another target than the one before, so the lock is taken most of the time.
    std::thread writer([&] {
        while (!isOver) {
            dup2(first[1], descriptor);
            sink.write("x\n");
            dup2(second[1], descriptor);
            sink.write("x\n");
        }
    });
    constexpr int kChildren = 50;
    for (int count = 0; count < kChildren; ++count) {
        const pid_t child = fork();
        if (child == 0) {
            sink.write("of a child\n");
            _exit(0);
        }
        const bool hasEnded = eventually([child] { return waitpid(child, nullptr, WNOHANG) == child; });
        EXPECT_TRUE(hasEnded);
        if (!hasEnded) {
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
            break;
        }
    }
    isOver = true;
    writer.join();
}
