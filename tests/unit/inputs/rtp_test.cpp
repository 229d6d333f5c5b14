// Tests of the order of RTP packets.
#include "rtp.h"

#include <gtest/gtest.h>

#include <string>

namespace {

class ARow : public testing::Test {
protected:
    /// Takes an RTP packet with one byte of payload.
    std::string take(std::uint16_t sequence, char payload, std::uint8_t first = 0x80,
                     const std::vector<std::uint8_t>& behindHeader = {}, const std::vector<std::uint8_t>& behind = {}) {
        std::vector<std::uint8_t> datagram = {first, 33, static_cast<std::uint8_t>(sequence >> 8U),
                                              static_cast<std::uint8_t>(sequence & 0xFFU)};
        datagram.resize(12);
        datagram.insert(datagram.end(), behindHeader.begin(), behindHeader.end());
        datagram.push_back(static_cast<std::uint8_t>(payload));
        datagram.insert(datagram.end(), behind.begin(), behind.end());
        const std::vector<std::uint8_t> payloads = row.take(datagram.data(), datagram.size());
        return {payloads.begin(), payloads.end()};
    }

    dtvservice::RtpReorderer row;
};

}  // namespace

TEST_F(ARow, GivesPacketsInTheOrderOfTheirNumbers) {
    EXPECT_EQ(take(65534, 'a'), "a");
    EXPECT_EQ(take(0, 'c'), "");
    EXPECT_EQ(take(1, 'd'), "");
    EXPECT_EQ(take(65535, 'b'), "bcd") << "numbers go on at 0";
    EXPECT_EQ(row.lost(), 0U);
}

TEST_F(ARow, GivesARepeatedPacketOnce) {
    EXPECT_EQ(take(5, 'a'), "a");
    EXPECT_EQ(take(5, 'a'), "");
    EXPECT_EQ(take(7, 'c'), "");
    EXPECT_EQ(take(7, 'c'), "");
    EXPECT_EQ(take(6, 'b'), "bc");
    EXPECT_EQ(row.repeated(), 2U);
}

TEST_F(ARow, CountsPacketsBeyondItsWindowAsLost) {
    EXPECT_EQ(take(0, 'a'), "a");
    std::string all;
    for (std::uint16_t number = 3; number < 3 + dtvservice::RtpReorderer::kWindow; ++number) {
        all += take(number, 'x');
    }
    EXPECT_EQ(all, "");
    all = take(3 + dtvservice::RtpReorderer::kWindow, 'y');
    EXPECT_EQ(all, std::string(dtvservice::RtpReorderer::kWindow, 'x') + "y");
    EXPECT_EQ(row.lost(), 2U);
    EXPECT_EQ(take(1, 'b'), "") << "too late";
}

TEST_F(ARow, ContinuesAfterTheSenderRestarts) {
    EXPECT_EQ(take(30000, 'a'), "a");
    EXPECT_EQ(take(10, 'b'), "b");
    EXPECT_EQ(take(11, 'c'), "c");
    EXPECT_EQ(row.lost(), 0U);
}

TEST_F(ARow, FindsThePayloadBehindEveryKindOfHeader) {
    EXPECT_EQ(take(0, 'a', 0x82, std::vector<std::uint8_t>(8)), "a") << "two contributing sources";
    EXPECT_EQ(take(1, 'b', 0x90, {0, 0, 0, 1, 9, 9, 9, 9}), "b") << "an extension";
    EXPECT_EQ(take(2, 'c', 0xA0, {}, {0, 0, 3}), "c") << "padding";
}

TEST_F(ARow, CountsWhatIsNoRtp) {
    EXPECT_EQ(take(0, 'a', 0x47), "");
    EXPECT_EQ(take(0, 'a', 0xA0, {}, {200}), "") << "more padding than packet";
    EXPECT_EQ(take(0, 'a', 0x90), "") << "an extension that is cut";
    const std::vector<std::uint8_t> shortOne = {0x80, 33};
    EXPECT_TRUE(row.take(shortOne.data(), shortOne.size()).empty());
    EXPECT_EQ(row.unreadable(), 4U);
}
