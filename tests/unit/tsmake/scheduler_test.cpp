// The times of packets, and the values of timelines at those times.
#include "scheduler.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint64_t kTicks = 27000000;
constexpr std::uint64_t kLongest = 3600;

}  // namespace

TEST(APacket, HasATimeFromItsNumberAndTheBitRate) {
    EXPECT_EQ(tsmake::packetTicks(0, 1504000), 0U);
    EXPECT_EQ(tsmake::packetTicks(1, 1504000), kTicks / 1000);
    EXPECT_EQ(tsmake::packetTicks(2, 3000000), 27072U);
}

TEST(APacket, HasATimeAtTheHighestBitRate) {
    constexpr std::uint64_t kBitRate = 200000000;
    constexpr std::uint64_t kPacketsIn47Seconds = 6250000;
    for (std::uint64_t part = 1; part * 47 <= kLongest; ++part) {
        EXPECT_EQ(tsmake::packetTicks(part * kPacketsIn47Seconds, kBitRate), part * 47 * kTicks);
    }
    EXPECT_EQ(tsmake::packetTicks(478723404, kBitRate), kLongest * kTicks - 52);
}

TEST(ATimeline, CountsInItsTimescale) {
    tsmake::Service service;
    service.timescale = 1000;
    EXPECT_EQ(service.mediaTimestampAt(kTicks * 3 / 2), 1500U);
    service.timescale = 3;
    EXPECT_EQ(service.mediaTimestampAt(kTicks - 1), 2U);
}

TEST(ATimeline, CountsAtTheFinestTimescale) {
    tsmake::Service service;
    service.timescale = 0xFFFFFFFF;
    EXPECT_EQ(service.mediaTimestampAt(kLongest * kTicks), kLongest * 0xFFFFFFFF);
    EXPECT_EQ(service.mediaTimestampAt(kLongest * kTicks - kTicks / 2), (2 * kLongest - 1) * 0xFFFFFFFF / 2);
}
