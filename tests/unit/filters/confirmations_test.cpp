// Confirmations: which wait takes which one, how waits sleep and wake, and how they use the clock.
#include <chrono>
#include <future>

#include "eventually.h"
#include "handshake_fixture.h"
#include "waits_for_lock.h"
#include "wrapped_time.h"

namespace {

class AConfirmation : public AHandshake {
protected:
    ~AConfirmation() override { wrapped_time::asUsual(); }

    void hurry() { velmora::dvbservice::handshakeClock = &hurryingSeconds; }
    void letTimedWaits(wrapped_time::TimedWaits how) {
        wrapped_time::setTimedWaits(BrowserDVBServiceTestAccess::handshakeCondition(*service), how);
    }
    bool started(unsigned int pid, const std::string& session) {
        return service->waitForStartSectionResult(pid, session);
    }
    bool stopped(const std::string& session) { return service->waitForStopSectionResult(session); }
    std::future<bool> waitForStart(unsigned int pid, const std::string& session) {
        return std::async(std::launch::async, [=] { return started(pid, session); });
    }
    static bool sleeping(std::size_t count) {
        return eventually([count] { return wrapped_time::deadlines().size() == count; });
    }
    /// Starts four waits and confirms them one by one.
    template <typename Wait, typename Confirm>
    void expectEveryWaitWoken(Wait wait, Confirm confirm) {
        letTimedWaits(wrapped_time::TimedWaits::endNever);
        const std::string sessions[] = {"1", "2", "3", "4"};
        std::vector<std::future<bool>> waits;
        for (const std::string& session : sessions) {
            waits.push_back(std::async(std::launch::async, wait, session));
            ASSERT_TRUE(sleeping(waits.size()));
        }
        // In reverse order: with a notify_one() the wait that slept last would not wake first.
        bool allWoken = true;
        for (std::size_t index = waits.size(); index-- > 0;) {
            confirm(sessions[index]);
            allWoken = allWoken && isReady(waits[index]);
        }
        EXPECT_TRUE(allWoken);
        for (std::future<bool>& each : waits) {
            // Wakes the waits that a broken build has left asleep.
            EXPECT_TRUE(eventually([&] {
                confirm("somebody");
                return each.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
            }));
            EXPECT_TRUE(each.get());
        }
    }
    std::vector<std::string> results() { return BrowserDVBServiceTestAccess::results(*service); }
    std::mutex& lock() { return BrowserDVBServiceTestAccess::handshakeLock(*service); }
};

}  // namespace

TEST_F(AConfirmation, IsKeptWithItsKindSessionPidAndResult) {
    confirmOpen(8191, "a", -1);
    confirmClose("b", 32767);
    confirmOpen(0xFFFFFFFF, "", -32768);
    EXPECT_THAT(results(), testing::ElementsAre("1 a 8191 -1", "2 b 65535 32767", "1  4294967295 -32768"));
    EXPECT_THAT(logged::story(),
                testing::ElementsAre(
                    "-> onBrowserOpenFilterConf", "onBrowserOpenFilterConf: Filter Open Result :  a, -1, size:1\n",
                    "<- onBrowserOpenFilterConf", "-> onBrowserOCloseFilterConf",
                    "onBrowserOCloseFilterConf: Filter Close Result :  b, 32767, size:2\n",
                    "<- onBrowserOCloseFilterConf", "-> onBrowserOpenFilterConf",
                    "onBrowserOpenFilterConf: Filter Open Result :  , -32768, size:3\n", "<- onBrowserOpenFilterConf"));
}

TEST_F(AConfirmation, EndsOnlyTheWaitOfItsKindSessionAndPid) {
    confirmOpen(100, "a", 0);
    confirmOpen(65535, "b", 0);
    confirmClose("a", 0);
    confirmOpen(101, "a", 0);
    hurry();
    const std::vector<std::string> all = results();
    for (const unsigned int pid : {102U, 100U + 0x2000U, 100U + 0x10000U, 0U}) {
        EXPECT_FALSE(started(pid, "a")) << "another PID: " << pid;
    }
    EXPECT_FALSE(started(100, "A")) << "another session";
    EXPECT_FALSE(started(100, "")) << "another session";
    EXPECT_FALSE(started(100, std::string("a\0", 2))) << "a longer session";
    EXPECT_FALSE(started(65535, "a")) << "that one is a close";
    EXPECT_FALSE(stopped("b")) << "that one is an open";
    EXPECT_EQ(results(), all);
    EXPECT_TRUE(started(101, "a"));
    EXPECT_THAT(results(), testing::ElementsAre("1 a 100 0", "1 b 65535 0", "2 a 65535 0"));
    EXPECT_TRUE(stopped("a"));
    EXPECT_TRUE(started(100, "a"));
    EXPECT_THAT(results(), testing::ElementsAre("1 b 65535 0")) << "the others stay";
}

TEST_F(AConfirmation, IsTakenInTheOrderOfArrival) {
    hurry();
    confirmOpen(100, "a", 0);
    confirmOpen(100, "a", -1);
    confirmOpen(100, "a", 0);
    EXPECT_TRUE(started(100, "a"));
    EXPECT_FALSE(started(100, "a"));
    EXPECT_THAT(results(), testing::ElementsAre("1 a 100 0"));
    confirmClose("a", 1);
    confirmClose("a", 0);
    EXPECT_FALSE(stopped("a"));
    EXPECT_TRUE(stopped("a"));
}

TEST_F(AConfirmation, SaysSuccessByZeroAlone) {
    hurry();
    for (const int result : {1, -1, 256, 32767, -32768}) {
        recording::reset();
        confirmOpen(100, "a", result);
        EXPECT_FALSE(started(100, "a")) << result;
        confirmClose("a", result);
        EXPECT_FALSE(stopped("a")) << result;
        EXPECT_TRUE(results().empty()) << "it is taken all the same";
        EXPECT_TRUE(recording::logOf("waitForStartSectionResult").empty()) << "a refusal is no time-out";
        EXPECT_TRUE(recording::logOf("waitForStopSectionResult").empty());
    }
}

TEST_F(AConfirmation, IsAnsweredWithZero) {
    frame::MsgIds ids;
    EXPECT_EQ(service->onBrowserOpenFilterConf(ids, {}, 1, "a", -1), 0);
    EXPECT_EQ(service->onBrowserOCloseFilterConf(ids, {}, "a", -1), 0);
    EXPECT_EQ(service->onFilterOpened(ids, {}, "unknown", ""), 0);
    EXPECT_EQ(service->onFilterClosed(ids, {}, "unknown"), 0);
    EXPECT_EQ(service->onFilterSectionDataArrived(ids, {}, "unknown", "", 1), 0);
}

TEST_F(AConfirmation, IsFiledAndTakenUnderItsLock) {
    hurry();
    frame::MsgIds ids;
    EXPECT_TRUE(waitsForLock(lock(), [&] { service->onBrowserOpenFilterConf(ids, {}, 1, "a", 0); }));
    EXPECT_TRUE(waitsForLock(lock(), [&] { started(1, "a"); }));
    EXPECT_TRUE(waitsForLock(lock(), [&] { service->onBrowserOCloseFilterConf(ids, {}, "a", 0); }));
    EXPECT_TRUE(waitsForLock(lock(), [&] { stopped("a"); }));
    EXPECT_TRUE(isFree(lock()));
}

TEST_F(AConfirmation, HasItsLinesWrittenUnderTheLock) {
    hurry();
    std::vector<std::string> heldAt;
    std::vector<std::string> freeAt;
    recording::setLogAction([&](const recording::LogLine& line) {
        if (line.text.find(kFile) != std::string::npos) {
            (isFree(lock()) ? freeAt : heldAt).push_back(line.level == blog::kTrace ? "trace" : line.message);
        }
    });
    frame::MsgIds ids;
    service->onBrowserOpenFilterConf(ids, {}, 1, "a", 0);
    service->onBrowserOCloseFilterConf(ids, {}, "a", 0);
    started(2, "a");
    stopped("b");
    recording::setLogAction(nullptr);
    EXPECT_THAT(heldAt,
                testing::ElementsAre("Filter Open Result :  a, 0, size:1\n", "Filter Close Result :  a, 0, size:2\n",
                                     "Wait response timeout for a,  assume failed.\n",
                                     "Wait response timeout for b,  assume failed.\n"));
    EXPECT_THAT(freeAt, testing::SizeIs(8)) << "the traces stand around it";
}

TEST_F(AConfirmation, IsAwaitedInSleepsOfTenSeconds) {
    // The clock does not advance for the first four readings, the one at the beginning included.
    static std::atomic<int> looks;
    looks = 0;
    velmora::dvbservice::handshakeClock = [] { return ++looks <= 4 ? 5.0 : 15.1; };
    letTimedWaits(wrapped_time::TimedWaits::endAtOnce);
    const auto now = [] {
        return std::chrono::duration_cast<std::chrono::nanoseconds>(
            std::chrono::system_clock::now().time_since_epoch());
    };
    const std::chrono::nanoseconds begin = now();
    EXPECT_FALSE(started(1, "a"));
    const std::chrono::nanoseconds end = now();
    const std::vector<wrapped_time::Deadline> deadlines = wrapped_time::deadlines();
    ASSERT_EQ(deadlines.size(), 3U);
    for (const wrapped_time::Deadline& deadline : deadlines) {
        EXPECT_EQ(deadline.clock, CLOCK_REALTIME);
        EXPECT_GE(deadline.at, begin + std::chrono::seconds(10));
        EXPECT_LE(deadline.at, end + std::chrono::seconds(10));
    }
    EXPECT_LT(deadlines[0].at, deadlines[2].at) << "each sleep is ten seconds from its own begin";
}

TEST_F(AConfirmation, IsCheckedBeforeTheTime) {
    // More than ten seconds have passed at the first check, but the confirmation has already arrived.
    hurry();
    confirmClose("a", 0);
    EXPECT_TRUE(stopped("a"));
    // The confirmation arrives during a sleep that exceeds the limit.
    testSeconds = 0;
    velmora::dvbservice::handshakeClock = &readTestSeconds;
    letTimedWaits(wrapped_time::TimedWaits::endNever);
    std::future<bool> waiting = waitForStart(1, "a");
    ASSERT_TRUE(sleeping(1));
    testSeconds = 100;
    confirmOpen(1, "a", 0);
    EXPECT_TRUE(waiting.get());
}

TEST_F(AConfirmation, IsAwaitedForeverWithoutAClock) {
    velmora::dvbservice::handshakeClock = [] { return -1.0; };
    letTimedWaits(wrapped_time::TimedWaits::endAtOnce);
    std::future<bool> waiting = waitForStart(1, "a");
    ASSERT_TRUE(eventually([] { return wrapped_time::deadlines().size() > 20; }));
    EXPECT_EQ(waiting.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    confirmOpen(1, "a", 0);
    EXPECT_TRUE(waiting.get());
}

TEST_F(AConfirmation, OfAnOpeningWakesEveryWait) {
    expectEveryWaitWoken([this](const std::string& session) { return started(1, session); },
                         [](const std::string& session) { confirmOpen(1, session, 0); });
}

TEST_F(AConfirmation, OfAClosingWakesEveryWait) {
    expectEveryWaitWoken([this](const std::string& session) { return stopped(session); },
                         [](const std::string& session) { confirmClose(session, 0); });
}

TEST_F(AConfirmation, EndsOnlyOneOfTwoWaits) {
    letTimedWaits(wrapped_time::TimedWaits::endNever);
    std::future<bool> waits[] = {waitForStart(1, "a"), waitForStart(1, "a")};
    ASSERT_TRUE(sleeping(2));
    const auto ready = [&waits] {
        return std::count_if(std::begin(waits), std::end(waits), [](const std::future<bool>& wait) {
            return wait.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
        });
    };
    confirmOpen(1, "a", 0);
    // Both waits woke, and one of them sleeps again.
    ASSERT_TRUE(sleeping(3));
    EXPECT_TRUE(eventually([&ready] { return ready() == 1; }));
    EXPECT_TRUE(results().empty());
    confirmOpen(1, "a", -1);
    EXPECT_TRUE(eventually([&ready] { return ready() == 2; }));
    EXPECT_NE(waits[0].get(), waits[1].get());
}

TEST_F(AConfirmation, OfAFiltersStateWakesNobody) {
    letTimedWaits(wrapped_time::TimedWaits::endNever);
    std::future<bool> waiting = waitForStart(1, "a");
    ASSERT_TRUE(sleeping(1));
    service->saveFilter(FilterParameter::create(&client, "a", 1, nullptr, nullptr, 0));
    for (const char* const session : {"a", "unknown"}) {
        injectEvent<messages::OnFilterOpened>(session, "slot");
        injectEvent<messages::OnFilterOpened>(session, "");
        injectEvent<messages::OnFilterClosed>(session);
    }
    EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    EXPECT_EQ(wrapped_time::deadlines().size(), 1U) << "it has not looked again";
    confirmOpen(1, "a", 0);
    EXPECT_TRUE(waiting.get());
}

TEST_F(AConfirmation, IsTimedByTheMonotonicClockInSeconds) {
    const timespec now{12, 500000000};
    wrapped_time::setClock(&now);
    const double seconds = velmora::dvbservice::monotonicSeconds();
    const std::vector<clockid_t> read = wrapped_time::clocksRead();
    wrapped_time::setClock(nullptr);
    const double unreadable = velmora::dvbservice::monotonicSeconds();
    wrapped_time::asUsual();
    EXPECT_DOUBLE_EQ(seconds, 12.5);
    EXPECT_THAT(read, testing::ElementsAre(CLOCK_MONOTONIC));
    EXPECT_DOUBLE_EQ(unreadable, -1.0);
    EXPECT_GT(velmora::dvbservice::monotonicSeconds(), 0.0);
    EXPECT_EQ(velmora::dvbservice::handshakeClock.load(), &velmora::dvbservice::monotonicSeconds);
}
