// The run directory is missing, full, read-only, another user's, or has something else where a file is expected.
#include <sched.h>
#include <sys/mount.h>

#include "faults.h"

namespace {

using faults::Directory;
using testing::HasSubstr;

void becomeNobody() {
    faults::become(faults::kNobody);
}

/// What the service writes and how it ends with this run directory.
struct Start {
    int code = 0;
    std::string log;
};

Start startIn(const std::string& directory, const std::function<void()>& prepare = {}) {
    ChildProcess service(DTVSERVICED, {"--input", SAMPLE_FILE}, "service", Runner::emulator, [&] {
        setenv("DTV_RUN_DIR", directory.c_str(), 1);
        unsetenv("DTV_LOG_FILE");
        if (prepare) {
            prepare();
        }
    });
    Start start;
    start.code = service.wait();
    start.log = service.output();
    return start;
}

/// A service in another run directory than the test's.
class ServiceIn : public ChildProcess {
public:
    explicit ServiceIn(const std::string& directory, const std::function<void()>& prepare = {})
        : ChildProcess(DTVSERVICED, {"--input", SAMPLE_FILE}, "service", Runner::emulator, [&] {
              setenv("DTV_RUN_DIR", directory.c_str(), 1);
              unsetenv("DTV_LOG_FILE");
              if (prepare) {
                  prepare();
              }
          }) {
        EXPECT_TRUE(eventually([this] { return output().find("\nready") != std::string::npos; })) << output();
    }
};

/// A browser in that run directory that wants one section.
class BrowserIn : public ChildProcess {
public:
    explicit BrowserIn(const std::string& directory)
        : ChildProcess(DVBSHELL, {"--seconds", "20", "sections", "0", "--count", "1"}, "browser", Runner::emulator,
                       [&] { setenv("DTV_RUN_DIR", directory.c_str(), 1); }) {}
};

/// Mounts a file system with room for a few names and nothing else, visible to this process alone. False if the machine
/// does not allow it.
bool mountTiny(const std::string& directory) {
    return unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("tiny", directory.c_str(), "tmpfs", 0, "size=4k,nr_inodes=2,mode=0700") == 0;
}

bool mayMount() {
    const Directory directory(0700);
    const pid_t child = fork();
    if (child == 0) {
        _exit(mountTiny(directory.path()) ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status == 0;
}

}  // namespace

TEST(ARunDirectory, ThatIsMissingIsMade) {
    const Directory parent(0700);
    const std::string made = parent.path() + "/made";
    const ServiceIn service(made);
    struct stat found {};
    ASSERT_EQ(stat(made.c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & 0777U, 0700U);
    BrowserIn browser(made);
    EXPECT_EQ(browser.wait(), 0) << browser.output();
}

TEST(ARunDirectory, ThatCannotBeMadeEndsTheStartWithTheReason) {
    const Directory parent(0700);
    const Start start = startIn(parent.path() + "/missing/made");
    EXPECT_EQ(start.code, 1);
    EXPECT_THAT(start.log,
                HasSubstr("cannot create run directory " + parent.path() + "/missing/made: No such file or directory"));
}

TEST(ARunDirectory, ThatIsFullEndsTheStartWithTheReason) {
    if (!mayMount()) {
        GTEST_SKIP() << "the machine lets this user mount no file system";
    }
    const Directory directory(0700);
    const Start start = startIn(directory.path(), [&] {
        if (!mountTiny(directory.path())) {
            _exit(126);
        }
    });
    EXPECT_EQ(start.code, 1);
    EXPECT_THAT(start.log,
                HasSubstr("cannot listen at " + directory.path() + "/browserdvbservice.sock: No space left on device"));
}

TEST(ARunDirectory, ThatIsReadOnlyEndsTheStartWithTheReason) {
    const bool isRoot = geteuid() == 0;
    const std::string why = isRoot ? faults::whyNotAs(faults::kNobody, DTVSERVICED) : "";
    if (!why.empty()) {
        GTEST_SKIP() << why << "; root writes to everything";
    }
    const Directory directory(0500, isRoot ? faults::kNobody : geteuid());
    const Start start =
        startIn(directory.path(), isRoot ? std::function<void()>(&becomeNobody) : std::function<void()>());
    EXPECT_EQ(start.code, 1);
    EXPECT_THAT(start.log, HasSubstr("cannot take " + directory.path() + "/browserdvbservice.lock: Permission denied"));
}

TEST(ARunDirectory, OfAnotherUserIsRefused) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can make a directory of another user";
    }
    const Directory directory(0700, faults::kNobody);
    const Start start = startIn(directory.path());
    EXPECT_EQ(start.code, 1);
    EXPECT_THAT(start.log, HasSubstr("run directory " + directory.path() + " belongs to user 65534, not to us"));
}

TEST(ARunDirectory, OfAnotherUserIsNotUsedByABrowser) {
    const std::string why = faults::whyNotAs(faults::kNobody, DTVSERVICED);
    if (!why.empty()) {
        GTEST_SKIP() << why;
    }
    const Directory directory(0700, faults::kNobody);
    const ServiceIn service(directory.path(), &becomeNobody);
    ChildProcess browser(DVBSHELL, {"--seconds", "1", "sections", "0", "--count", "1"}, "browser", Runner::emulator,
                         [&] { setenv("DTV_RUN_DIR", directory.path().c_str(), 1); });
    constexpr int kNoService = 3;
    EXPECT_EQ(browser.wait(), kNoService) << browser.output();
    EXPECT_EQ(faults::timesIn(browser.log(), "the service at " + directory.path() +
                                                 "/browserdvbservice.sock belongs to another user; refused"),
              1U)
        << browser.log();
    EXPECT_TRUE(
        eventually([&] { return service.output().find("a client of another user was refused") != std::string::npos; }));
}

TEST(ARunDirectory, ThatIsASymbolicLinkIsRefused) {
    const Directory directory(0700);
    const std::string link = directory.path() + "/link";
    ASSERT_EQ(symlink(faults::kRunDirectory.c_str(), link.c_str()), 0);
    const Start start = startIn(link);
    EXPECT_EQ(start.code, 1);
    EXPECT_THAT(start.log, HasSubstr("run directory " + link + " is not a directory"));
}

TEST(ARunDirectory, WithALinkForTheLockIsRefused) {
    const Directory directory(0700);
    const std::string target = directory.path() + "/target";
    std::ofstream(target) << "kept";
    ASSERT_EQ(symlink(target.c_str(), (directory.path() + "/browserdvbservice.lock").c_str()), 0);
    const Start start = startIn(directory.path());
    EXPECT_EQ(start.code, 1);
    EXPECT_THAT(start.log, HasSubstr("browserdvbservice.lock: Too many levels of symbolic links"));
    EXPECT_EQ(fileText(target), "kept");
}

TEST(ARunDirectory, WithLinksForTheSocketsLosesThem) {
    const Directory directory(0700);
    const std::string target = directory.path() + "/target";
    std::ofstream(target) << "kept";
    ASSERT_EQ(chmod(target.c_str(), 0644), 0);
    for (const char* const name : {"/browserdvbservice.sock", "/dtvctl.sock"}) {
        ASSERT_EQ(symlink(target.c_str(), (directory.path() + name).c_str()), 0);
    }
    const ServiceIn service(directory.path());
    BrowserIn browser(directory.path());
    EXPECT_EQ(browser.wait(), 0) << browser.output();
    EXPECT_EQ(fileText(target), "kept");
    struct stat found {};
    ASSERT_EQ(stat(target.c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & 0777U, 0644U);
}

TEST(ARunDirectory, WithDirectoriesForTheSocketsEndsTheStartWithTheReason) {
    const Directory directory(0700);
    ASSERT_EQ(mkdir((directory.path() + "/browserdvbservice.sock").c_str(), 0700), 0);
    const Start start = startIn(directory.path());
    EXPECT_EQ(start.code, 1);
    EXPECT_THAT(start.log, HasSubstr("/browserdvbservice.sock: Address already in use"));
}

TEST(ARunDirectory, ThatIsRemovedKeepsWhoIsConnected) {
    const Directory parent(0700);
    const std::string directory = parent.path() + "/run";
    ServiceIn service(directory);
    ChildProcess browser(DVBSHELL, {"--seconds", "60", "sections", "0", "--count", "1000000"}, "browser",
                         Runner::emulator, [&] { setenv("DTV_RUN_DIR", directory.c_str(), 1); });
    ASSERT_TRUE(eventually([&] { return !browser.output().empty(); }));
    std::filesystem::remove_all(directory);
    const std::size_t before = browser.output().size();
    EXPECT_TRUE(eventually([&] { return browser.output().size() > before; }));
    EXPECT_EQ(service.end(SIGTERM), 0);
}
