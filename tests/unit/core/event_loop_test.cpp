// The loop that runs all of the service's work.
#include "event_loop.h"

#include <gtest/gtest.h>

namespace {

using dtvservice::EventLoop;

class AnEventLoop : public testing::Test {
protected:
    /// A task that counts, and posts itself again until it has run so often.
    void runAgainUntil(std::size_t count) {
        loop.post([this, count] {
            if (++done < count) {
                runAgainUntil(count);
            }
        });
    }

    const EventLoop::Clock::time_point past = EventLoop::Clock::now();
    EventLoop loop;
    std::size_t done = 0;
};

}  // namespace

TEST_F(AnEventLoop, RunsAllThatIsPosted) {
    runAgainUntil(1000);
    EXPECT_TRUE(loop.runUntil(past));
    EXPECT_EQ(done, 1000U);
}

TEST_F(AnEventLoop, RunsAFewTasksWhereItsTimeIsOver) {
    runAgainUntil(1000);
    EXPECT_TRUE(loop.runUntil(past, 4));
    EXPECT_EQ(done, 4U);
    EXPECT_TRUE(loop.runUntil(past, 0));
    EXPECT_EQ(done, 4U);
    EXPECT_TRUE(loop.runUntil(past));
    EXPECT_EQ(done, 1000U) << "the others have waited";
}

TEST_F(AnEventLoop, RunsNothingOnceItIsStopped) {
    runAgainUntil(1);
    loop.stop();
    EXPECT_FALSE(loop.runUntil(past));
    EXPECT_FALSE(loop.runUntil(EventLoop::Clock::now() + std::chrono::hours(1)));
    EXPECT_EQ(done, 0U);
}

TEST_F(AnEventLoop, RunsUntilItIsStopped) {
    runAgainUntil(1000);
    const std::function<void()> stopAtLast = [&] { done == 1000 ? loop.stop() : loop.post(stopAtLast); };
    loop.post(stopAtLast);
    loop.run();
    EXPECT_EQ(done, 1000U);
}

TEST_F(AnEventLoop, RunsADelayedTaskAtItsTime) {
    loop.postAt(past, [this] { done += 1; });
    loop.postAt(past + std::chrono::hours(1), [this] { done += 100; });
    EXPECT_TRUE(loop.runUntil(past));
    EXPECT_EQ(done, 1U);
}
