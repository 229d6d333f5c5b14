// Shared memory, descriptors, threads or memory run out, in a service and in a browser. While one lasts, a process
// waits instead of spinning, and says so once.
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>

#include <limits>
#include <list>

#include "library_browser.h"
#include "message_transfer.h"
#include "velmora/msgqueue/ipc_message_queue.h"

namespace {

using faults::isIdle;
using faults::limit;
using faults::linesOf;
using faults::timesIn;
using testing::HasSubstr;

constexpr rlim_t kFewDescriptors = 5;

/// A service whose input is silent: without a fault it does nothing.
class QuietService : public ChildProcess {
public:
    explicit QuietService(const std::function<void()>& prepare = {})
        : ChildProcess(DTVSERVICED, {"--input", "-"}, "service", Runner::emulator, [&] {
              int ends[2];
              if (pipe(ends) != 0 || dup2(ends[0], STDIN_FILENO) != STDIN_FILENO || close(ends[0]) != 0) {
                  _exit(126);
              }
              if (prepare) {
                  prepare();
              }
          }) {}
    bool isReady() const { return output().find("\nready") != std::string::npos; }
    bool hasEnded() const { return faults::stateOf(pid()).letter == 'Z'; }
};

/// Enough for what a heap grows by.
constexpr rlim_t kLessThanAQueue = 400000;

/// In bytes.
rlim_t addressSpaceOf(pid_t process) {
    std::istringstream pages(fileText("/proc/" + std::to_string(process) + "/statm"));
    rlim_t count = 0;
    pages >> count;
    return count * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

/// Leaves a process so much address space. While one of its threads allocates for the first time, it has twice the
/// space of an arena for a moment, so two readings must give the same. Returns the limit of before.
rlimit leaveAddressSpace(pid_t process, rlim_t more) {
    rlim_t space = 0;
    EXPECT_TRUE(eventually([&] {
        const rlim_t last = std::exchange(space, addressSpaceOf(process));
        return last == space;
    }));
    return limit(process, RLIMIT_AS, space + more);
}

enum class Outcome { serves, saysWhyNot, fails };

/// Starts a service under a limit. It must serve and end when it is told to, or say in a few lines why not.
Outcome outcomeUnder(const std::function<void()>& prepare) {
    QuietService service(prepare);
    EXPECT_TRUE(eventually([&] { return service.isReady() || service.hasEnded(); }));
    if (!service.hasEnded() && service.end(SIGTERM) == 0) {
        return Outcome::serves;
    }
    const int code = service.wait();
    const std::string said = service.output();
    constexpr std::size_t kMostLines = 20;
    if (code > 0 && !said.empty() && linesOf(said) < kMostLines) {
        return Outcome::saysWhyNot;
    }
    ADD_FAILURE() << "exit code " << code << "; it says: " << said;
    return Outcome::fails;
}

std::string statusForTheOperator() {
    ChildProcess console(DTVCTL, {"status"}, "dtvctl");
    console.wait();
    return console.output();
}

class AShortage : public faults::ALibraryBrowser {};

}  // namespace

TEST(AFullSharedMemoryDirectory, DoesNotMatter) {
    const auto fillIt = [] {
        const bool isFull = unshare(CLONE_NEWNS) == 0 &&
                            mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                            mount("tiny", "/dev/shm", "tmpfs", 0, "size=4k,nr_inodes=2") == 0;
        const int file = isFull ? open("/dev/shm/full", O_WRONLY | O_CREAT | O_CLOEXEC, 0600) : -1;
        const std::string bytes(8192, 'x');
        // The first write takes the one page that there is.
        if (file < 0 || write(file, bytes.data(), bytes.size()) < 0 || write(file, "x", 1) >= 0) {
            _exit(126);
        }
    };
    const pid_t child = fork();
    if (child == 0) {
        fillIt();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (status != 0) {
        GTEST_SKIP() << "the machine lets this user mount no file system";
    }
    ChildProcess service(DTVSERVICED, {"--input", SAMPLE_FILE}, "service", Runner::emulator, fillIt);
    ASSERT_TRUE(eventually([&] { return service.output().find("\nready") != std::string::npos; }));
    ChildProcess browser(DVBSHELL, {"--seconds", "20", "sections", "0", "--count", "3"}, "browser", Runner::emulator,
                         fillIt);
    EXPECT_EQ(browser.wait(), 0) << browser.output();
}

TEST_F(AShortage, OfDescriptorsFailsABrowsersFirstFilterAtOnce) {
    if (kIsSanitized) {
        GTEST_SKIP() << "the sanitizers need descriptors of their own";
    }
    const ServiceProcess service;
    ASSERT_TRUE(connects());
    faults::CountingFilter& filter = newFilter();
    const rlimit before = limit(getpid(), RLIMIT_NOFILE, kFewDescriptors);
    const bool opened = opens(filter, "without");
    limit(getpid(), RLIMIT_NOFILE, before.rlim_cur);
    EXPECT_FALSE(opened);
    EXPECT_THAT(faults::ownLog(), HasSubstr("no memory to share: Too many open files"));
    EXPECT_THAT(service.log(), HasSubstr("filter without refused: the browser has no section queue"));
    closes(filter, "without");
    EXPECT_TRUE(opens(filter, "with"));
    EXPECT_TRUE(faults::receives(filter));
}

TEST_F(AShortage, OfFileSizeFailsABrowsersFirstFilterAtOnce) {
    const ServiceProcess service;
    ASSERT_TRUE(connects());
    faults::CountingFilter& filter = newFilter();
    constexpr rlim_t kShort = 100000;  // the log is shorter
    const rlimit before = limit(getpid(), RLIMIT_FSIZE, kShort);
    const bool opened = opens(filter, "without");
    limit(getpid(), RLIMIT_FSIZE, before.rlim_cur);
    EXPECT_FALSE(opened);
    EXPECT_THAT(faults::ownLog(), HasSubstr("no memory to share: File too large"));
    closes(filter, "without");
    EXPECT_TRUE(opens(filter, "with"));
    EXPECT_TRUE(faults::receives(filter));
}

TEST_F(AShortage, OfAddressSpaceFailsABrowsersFirstFilterAtOnce) {
    if (kIsSanitized || faults::isEmulated()) {
        GTEST_SKIP() << "the sanitizers and the emulator need address space of their own";
    }
    const ServiceProcess service;
    ASSERT_TRUE(connects());
    faults::CountingFilter& filter = newFilter();
    const rlimit before = leaveAddressSpace(getpid(), kLessThanAQueue);
    const bool opened = opens(filter, "without");
    limit(getpid(), RLIMIT_AS, before.rlim_cur);
    EXPECT_FALSE(opened);
    EXPECT_THAT(faults::ownLog(), HasSubstr("no memory to share: Cannot allocate memory"));
    closes(filter, "without");
    EXPECT_TRUE(opens(filter, "with"));
    EXPECT_TRUE(faults::receives(filter));
}

TEST_F(AShortage, OfDescriptorsKeepsABrowserWaitingForItsService) {
    auto service = std::make_unique<ServiceProcess>();
    ChildProcess browser(DVBSHELL, {"watch"}, "browser", Runner::emulator, [] {
        unsetenv("DTV_LOG_FILE");
        setenv("DTV_LOG_LEVEL", "failure", 1);
    });
    ASSERT_TRUE(eventually([&] { return browser.output().find("PMT") != std::string::npos; })) << "it has begun";
    const rlimit before = limit(browser.pid(), RLIMIT_NOFILE, kFewDescriptors);
    service->end(SIGTERM);
    ASSERT_TRUE(
        eventually([&] { return timesIn(browser.output(), "cannot create a socket: Too many open files") == 1; }));
    service = std::make_unique<ServiceProcess>();
    EXPECT_TRUE(isIdle(browser.pid()));
    EXPECT_EQ(timesIn(browser.output(), "cannot create a socket"), 1U);
    limit(browser.pid(), RLIMIT_NOFILE, before.rlim_cur);
    EXPECT_TRUE(eventually([&] { return service->log().find("browser 1 connected") != std::string::npos; }));
}

TEST_F(AShortage, OfDescriptorsLetsBrowsersAndOperatorsOfAServiceWait) {
    if (kIsSanitized) {
        GTEST_SKIP() << "the sanitizers need descriptors of their own";
    }
    const QuietService service;
    ASSERT_TRUE(eventually([&] { return service.isReady(); }));
    ASSERT_TRUE(connects());
    ASSERT_TRUE(eventually([&] { return service.log().find("browser 1 connected") != std::string::npos; }))
        << "the log is open";
    std::list<faults::RawBrowser> browsers;
    std::list<faults::RawOperator> operators;
    const rlimit before = limit(service.pid(), RLIMIT_NOFILE, descriptorsOf(service.pid()) + 2);
    constexpr int kMany = 10;
    for (int count = 0; count < kMany; ++count) {
        browsers.emplace_back();
        operators.emplace_back();
    }
    ASSERT_TRUE(eventually([&] {
        return timesIn(service.log(), "clients must wait: Too many open files") == 1 &&
               timesIn(service.log(), "operators must wait: Too many open files") == 1;
    })) << service.log()
        << service.output();
    EXPECT_TRUE(isIdle(service.pid()));
    EXPECT_TRUE(isConnected()) << "who is connected already is served";
    EXPECT_LE(linesOf(service.log()), 10U) << service.log();
    limit(service.pid(), RLIMIT_NOFILE, before.rlim_cur);
    for (faults::RawOperator& each : operators) {
        each.send("{\"command\":\"status\"}\n");
        EXPECT_TRUE(eventually([&] { return !each.received().empty(); }));
    }
    EXPECT_TRUE(eventually([&] { return service.log().find("browser 11 connected") != std::string::npos; }));
}

TEST_F(AShortage, OfDescriptorsAtTheStartIsSurvivedOrNamed) {
    if (kIsSanitized || faults::isEmulated()) {
        GTEST_SKIP() << "the sanitizers and the emulator need descriptors of their own";
    }
    Outcome outcome = Outcome::fails;
    constexpr rlim_t kEnough = 16;
    for (rlim_t most = 4; most <= kEnough; ++most) {
        SCOPED_TRACE(std::to_string(most) + " descriptors");
        outcome = outcomeUnder([most] {
            unsetenv("DTV_LOG_FILE");
            limit(getpid(), RLIMIT_NOFILE, most);
        });
    }
    EXPECT_EQ(outcome, Outcome::serves);
}

TEST_F(AShortage, OfThreadsAtTheStartIsSurvivedOrNamed) {
    const uid_t user = faults::userWithoutProcesses();
    const std::string why = faults::whyNotAs(user, DTVSERVICED);
    if (!why.empty()) {
        GTEST_SKIP() << why << "; the limit counts all threads of a user";
    }
    if (kIsSanitized || faults::isEmulated()) {
        GTEST_SKIP() << "the sanitizers and the emulator need threads of their own";
    }
    const faults::Directory directory(0700, user);
    Outcome outcome = Outcome::fails;
    constexpr rlim_t kEnough = 6;
    for (rlim_t most = 1; most <= kEnough; ++most) {
        SCOPED_TRACE(std::to_string(most) + " threads");
        outcome = outcomeUnder([&] {
            setenv("DTV_RUN_DIR", directory.path().c_str(), 1);
            unsetenv("DTV_LOG_FILE");
            faults::become(user);
            limit(getpid(), RLIMIT_NPROC, most);
        });
    }
    EXPECT_EQ(outcome, Outcome::serves);
}

TEST_F(AShortage, OfThreadsLeavesABrowserWithoutAService) {
    if (kIsSanitized || faults::isEmulated() || sizeof(void*) < 8) {
        GTEST_SKIP() << "the sanitizers and the emulator need threads of their own";
    }
    const ServiceProcess service;
    // No thread can be made, because its stack would be larger than the address space.
    constexpr rlim_t kHuge = std::numeric_limits<rlim_t>::max() >> 17U;
    rlimit stack{};
    ASSERT_EQ(getrlimit(RLIMIT_STACK, &stack), 0);
    if (stack.rlim_max != RLIM_INFINITY) {
        GTEST_SKIP() << "the size of a stack is limited";
    }
    ChildProcess browser(DVBSHELL, {"info"}, "browser", Runner::emulator, [] {
        setenv("DTV_LOG_LEVEL", "failure", 1);
        limit(getpid(), RLIMIT_STACK, kHuge);
    });
    constexpr int kNoService = 3;
    EXPECT_EQ(browser.wait(), kNoService) << browser.output();
    EXPECT_EQ(timesIn(browser.log(), "cannot start the transport thread: "), 1U) << browser.log();
    EXPECT_LT(linesOf(browser.log()), 200U);
}

TEST_F(AShortage, OfAddressSpaceAtTheStartIsSurvivedOrNamed) {
    if (kIsSanitized || faults::isEmulated()) {
        GTEST_SKIP() << "the sanitizers and the emulator need address space of their own";
    }
    constexpr rlim_t kMegabyte = rlim_t{1} << 20U;
    Outcome outcome = Outcome::fails;
    constexpr rlim_t kEnough = 512;  // three threads have a heap of 64 MiB each
    for (rlim_t most = 8; most <= kEnough; most += most < 64 ? 2 : 32) {
        SCOPED_TRACE(std::to_string(most) + " MiB");
        outcome = outcomeUnder([most] {
            unsetenv("DTV_LOG_FILE");
            limit(getpid(), RLIMIT_AS, most * kMegabyte);
        });
    }
    EXPECT_EQ(outcome, Outcome::serves);
}

TEST_F(AShortage, OfAddressSpaceRefusesABrowsersQueueWithTheReason) {
    if (kIsSanitized || faults::isEmulated()) {
        GTEST_SKIP() << "the sanitizers and the emulator need address space of their own";
    }
    const ServiceProcess service;
    ASSERT_TRUE(connects());
    ASSERT_TRUE(tunesTo(28106));
    constexpr rlim_t kForTheHeap = rlim_t{4} << 20U;
    const rlimit before = leaveAddressSpace(service.pid(), kForTheHeap);
    using velmora::msgqueue::IPCMessageQueue;
    const std::unique_ptr<IPCMessageQueue> large(IPCMessageQueue::create("large", 16384, 1024));
    ASSERT_NE(large, nullptr);
    EXPECT_TRUE(eventually([&] {
        return timesIn(service.log(), "queue large: its memory cannot be mapped: Cannot allocate memory; dropped") == 1;
    })) << service.log();
    EXPECT_TRUE(isConnected());
    EXPECT_EQ(statusForTheOperator().find("dtvctl: "), std::string::npos);
    EXPECT_TRUE(tunesTo(28107));
    EXPECT_LT(linesOf(service.log()), 40U);
    limit(service.pid(), RLIMIT_AS, before.rlim_cur);
}

TEST_F(AShortage, OfMemoryEndsAServiceAtOnceWithALine) {
    if (kIsSanitized || faults::isEmulated()) {
        GTEST_SKIP() << "the sanitizers and the emulator need address space of their own";
    }
    {
        ServiceProcess service;
        ASSERT_TRUE(connects());
        ASSERT_TRUE(tunesTo(28106));
        limit(service.pid(), RLIMIT_DATA, 1);
        faults::RawBrowser peer;
        const frame::MsgMeta header = lo::browserdvbservice::messages::CmdSendPMTCache::header();
        const std::string request =
            faults::packet("DTV1", header.interfaceId, header.messageId, header.direction, {'\0'});
        // The events that it does not read are kept for it.
        EXPECT_TRUE(eventually([&] {
            while (peer.send(request)) {
            }
            return peer.hasGone;
        }));
        EXPECT_EQ(service.wait(), 1);
        EXPECT_THAT(service.output(), testing::EndsWith("\ndtvserviced: no memory is left\n"));
    }
    const ServiceProcess service;
    ASSERT_TRUE(connects());
    EXPECT_TRUE(tunesTo(28107));
}
