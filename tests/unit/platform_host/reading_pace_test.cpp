// The pace at which a service reads a client's packets.
#include "platform/host/reading_pace.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using host::ReadingPace;

constexpr int kPerSecond = 2000;

class AReadingPace : public testing::Test {
protected:
    /// Reads all that may be read at this time, and returns the number.
    int readAt(ReadingPace::Clock::time_point time) {
        int count = 0;
        for (; pace.mayRead(time); ++count) {
            pace.read(time);
        }
        return count;
    }

    const ReadingPace::Clock::time_point begin = ReadingPace::Clock::time_point(std::chrono::hours(1));
    ReadingPace pace{kPerSecond};
};

}  // namespace

TEST(AReadingPaceWithoutALimit, AllowsEverything) {
    ReadingPace pace(0);
    const ReadingPace::Clock::time_point now(std::chrono::hours(1));
    for (int count = 0; count < 2 * ReadingPace::kBurst; ++count) {
        pace.read(now);
    }
    EXPECT_TRUE(pace.mayRead(now));
    EXPECT_FALSE(pace.isLimited());
}

TEST_F(AReadingPace, AllowsABurst) {
    EXPECT_EQ(readAt(begin), ReadingPace::kBurst);
}

TEST_F(AReadingPace, IsSteadyAfterTheBurst) {
    readAt(begin);
    EXPECT_EQ(pace.readableAt() - begin, 500us);
    EXPECT_EQ(readAt(begin + 499us), 0);
    EXPECT_EQ(readAt(begin + 500us), 1);
    int count = 1;
    for (auto time = begin; time <= begin + std::chrono::seconds(1); time += 1ms) {
        count += readAt(time);
    }
    EXPECT_EQ(count, kPerSecond);
}

TEST_F(AReadingPace, AllowsABurstAgainAfterAPause) {
    readAt(begin);
    EXPECT_EQ(readAt(begin + 100ms), kPerSecond / 10);
    EXPECT_EQ(readAt(begin + std::chrono::hours(1)), ReadingPace::kBurst);
}
