// Browsers that exit while their threads are inside the library, and that fork. Each browser is a process of its own.
// The service is stopped and the handshake's clock stands still where a thread waits, so the wait itself would never
// end.
#include <fcntl.h>

#include "library_browser.h"
#include "without_threads.h"

namespace {

using Api = velmora::dvbservice::BrowserDvbAPI;
using Filters = velmora::dvbservice::SectionFilterAPI;

constexpr int kExited = 3;
constexpr int kFailed = 4;

void require(bool condition) {
    if (!condition) {
        _exit(kFailed);
    }
}

/// The exit code of a process that runs the scenario and exits; -1 if a signal ended it, -2 if it did not end.
int endOf(const std::function<void()>& scenario) {
    const pid_t child = fork();
    if (child == 0) {
        faults::HandshakeTime::stand();
        scenario();
        std::exit(kExited);
    }
    int status = 0;
    if (!eventually([&] { return waitpid(child, &status, WNOHANG) == child; })) {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        return -2;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void requireConnection() {
    require(eventually([] { return Api::getInstance()->sendPtsRequest(0) == 0; }));
}

bool opens(velmora::dtv::SectionFilterClient& client) {
    return Filters::getInstance()->startSection(&client, "a filter", 0, nullptr, nullptr, 0);
}

/// Runs a call on another thread until it sleeps in its wait for a confirmation.
template <typename Call>
void waitsForConfirmation(Call call) {
    const std::size_t before = faults::HandshakeTime::timesRead();
    std::thread(call).detach();
    require(eventually([before] { return faults::HandshakeTime::timesRead() >= before + 2; }));
}

bool hasLogged(const std::string& text) {
    return faults::ownLog().find(text) != std::string::npos;
}

/// Runs its reaction in its first section.
class ReactingFilter final : public velmora::dtv::SectionFilterClient {
public:
    explicit ReactingFilter(std::function<void()> newReaction) : reaction(std::move(newReaction)) {}
    void onSectionData(const std::string&, unsigned int, const unsigned char*, unsigned int) override {
        entered = true;
        reaction();
    }
    std::atomic<bool> entered{false};

private:
    std::function<void()> reaction;
};

/// Opens a filter and waits until its client is inside its first section.
void entersASection(const std::function<void()>& reaction) {
    auto& client = faults::keptForLife<ReactingFilter>(reaction);
    require(opens(client));
    require(eventually([&] { return client.entered.load(); }));
}

class ABrowserThatEnds : public testing::Test {
protected:
    /// Whether the service has seen the browser go, and serves another one.
    void expectServed() {
        EXPECT_TRUE(eventually([this] { return service.log().find("browser 1 disconnected") != std::string::npos; }));
        ChildProcess other(DVBSHELL, {"sections", "0", "--count", "1"}, "other");
        EXPECT_EQ(other.wait(), 0) << other.output();
    }
    ServiceProcess service;
};

using AForkedBrowser = ABrowserThatEnds;

}  // namespace

TEST_F(ABrowserThatEnds, MayWaitForTheAudioSource) {
    EXPECT_EQ(endOf([this] {
                  requireConnection();
                  require(faults::stops(service.pid()));
                  std::thread([] { Api::getInstance()->setAudioSource("a"); }).detach();
                  require(eventually([] { return hasLogged("set audio source, session 1"); }));
              }),
              kExited);
    kill(service.pid(), SIGCONT);
    expectServed();
}

TEST_F(ABrowserThatEnds, MayOpenAFilter) {
    EXPECT_EQ(endOf([this] {
                  requireConnection();
                  require(faults::stops(service.pid()));
                  waitsForConfirmation([] { opens(faults::keptForLife<faults::CountingFilter>()); });
              }),
              kExited);
    kill(service.pid(), SIGCONT);
    expectServed();
}

TEST_F(ABrowserThatEnds, MayCloseAFilter) {
    EXPECT_EQ(endOf([this] {
                  requireConnection();
                  auto& client = faults::keptForLife<faults::CountingFilter>();
                  require(opens(client));
                  require(faults::stops(service.pid()));
                  waitsForConfirmation([&client] { Filters::getInstance()->stopSection(&client, "a filter"); });
              }),
              kExited);
    kill(service.pid(), SIGCONT);
    expectServed();
}

TEST_F(ABrowserThatEnds, MayWaitForADeliveryThreadThatCannotBeMade) {
    EXPECT_EQ(endOf([] {
                  requireConnection();
                  std::promise<void> goOn;
                  std::thread([mayGoOn = goOn.get_future().share()] {
                      mayGoOn.wait();
                      opens(faults::keptForLife<faults::CountingFilter>());
                  }).detach();
                  const WithoutThreads none;
                  goOn.set_value();
                  require(eventually([] { return hasLogged("Wait thread_proc_section_data create 0"); }));
                  require(Api::getInstance()->sendPtsRequest(0) == 0);
              }),
              kExited);
    EXPECT_EQ(service.log().find("filter "), std::string::npos) << "the filter is not asked for";
    expectServed();
}

TEST_F(ABrowserThatEnds, MaySendFromInsideASection) {
    EXPECT_EQ(endOf([] {
                  requireConnection();
                  entersASection([] {
                      while (true) {
                          Api::getInstance()->sendPtsRequest(0);
                          Api::getInstance()->tuneToService(12, 1, 1025, 28107, 0);
                      }
                  });
              }),
              kExited);
    expectServed();
}

TEST_F(ABrowserThatEnds, MayBlockInsideASection) {
    EXPECT_EQ(endOf([] {
                  requireConnection();
                  entersASection([] {
                      while (true) {
                          pause();
                      }
                  });
              }),
              kExited);
    expectServed();
}

TEST_F(ABrowserThatEnds, MayEndInsideASection) {
    EXPECT_EQ(endOf([] {
                  requireConnection();
                  entersASection([] { std::exit(kExited); });
                  while (true) {
                      pause();
                  }
              }),
              kExited);
    expectServed();
}

TEST_F(ABrowserThatEnds, MayEndWhileSectionsCome) {
    EXPECT_EQ(endOf([] {
                  requireConnection();
                  auto& client = faults::keptForLife<faults::CountingFilter>();
                  require(opens(client));
                  require(faults::receives(client));
              }),
              kExited);
    expectServed();
}

TEST_F(AForkedBrowser, LosesNothingWhereItsChildExits) {
    if (kIsSanitized) {
        GTEST_SKIP() << "the end of a forked child under a sanitizer needs threads that the child does not have";
    }
    EXPECT_EQ(endOf([] {
                  requireConnection();
                  auto& client = faults::keptForLife<faults::CountingFilter>();
                  require(opens(client));
                  require(faults::receives(client));
                  // The child runs the exit handlers.
                  require(endOf([] {}) == kExited);
                  require(faults::receives(client));
                  require(Api::getInstance()->sendPtsRequest(0) == 0);
                  require(Filters::getInstance()->stopSection(&client, "a filter"));
              }),
              kExited);
    EXPECT_EQ(faults::timesIn(service.log(), "browser 1 disconnected"), 1U);
    expectServed();
}

TEST_F(AForkedBrowser, MayHaveThreadsInTheLibraryWhenItForks) {
    if (kIsSanitized) {
        GTEST_SKIP() << "the end of a forked child under a sanitizer needs threads that the child does not have";
    }
    EXPECT_EQ(endOf([this] {
                  requireConnection();
                  require(faults::stops(service.pid()));
                  std::thread([] { Api::getInstance()->setAudioSource("a"); }).detach();
                  waitsForConfirmation([] { opens(faults::keptForLife<faults::CountingFilter>()); });
                  require(endOf([] {}) == kExited);
                  kill(service.pid(), SIGCONT);
                  requireConnection();
              }),
              kExited);
    expectServed();
}

TEST_F(AForkedBrowser, GivesAProgramNoneOfItsDescriptors) {
    EXPECT_EQ(endOf([] {
                  const std::size_t before = descriptorsOf(getpid());
                  requireConnection();
                  auto& client = faults::keptForLife<faults::CountingFilter>();
                  require(opens(client));
                  require(descriptorsOf(getpid()) > before);
                  ChildProcess program("/bin/sh", {"-c", "ls -l /proc/self/fd"}, "program", Runner::machine);
                  require(program.wait() == 0);
                  const std::string shown = program.output();
                  require(shown.find("socket:") == std::string::npos && shown.find("memfd:") == std::string::npos &&
                          shown.find("eventfd") == std::string::npos);
              }),
              kExited);
    expectServed();
}

TEST_F(AForkedBrowser, IsSeenToGoThoughAChildThatUsesNothingStays) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    EXPECT_EQ(endOf([&ends] {
                  requireConnection();
                  if (fork() == 0) {
                      close(ends[1]);
                      char byte = 0;
                      _exit(read(ends[0], &byte, 1) == 0 ? 0 : 1);  // at the end of the test
                  }
              }),
              kExited);
    expectServed();
    close(ends[0]);
    close(ends[1]);
}
