// CRC_32 of sections against its definition, a bit at a time.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <random>

#include "si/section.h"

namespace {

std::uint32_t byDefinition(si::Bytes bytes) {
    std::uint32_t remainder = 0xFFFFFFFF;
    for (std::size_t at = 0; at < bytes.size; ++at) {
        for (unsigned int bit = 8; bit-- > 0;) {
            const bool carries = (remainder >> 31U) != (bytes.data[at] >> bit & 1U);
            remainder = remainder << 1U ^ (carries ? 0x04C11DB7U : 0U);
        }
    }
    return remainder;
}

}  // namespace

TEST(TheCrc, HasTheStandardsCheckValue) {
    EXPECT_EQ(si::crc32(std::string("123456789")), 0x0376E6E7U);
    EXPECT_EQ(si::crc32({}), 0xFFFFFFFFU);
}

TEST(TheCrc, IsRightForEachLengthAndAlignment) {
    constexpr std::size_t kAlignments = 16;
    constexpr std::size_t kLongest = 300;
    alignas(kAlignments) std::array<std::uint8_t, kAlignments + kLongest> bytes;
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0x5A});
    for (std::size_t from = 0; from < kAlignments; ++from) {
        for (std::size_t size = 0; size <= kLongest; ++size) {
            const si::Bytes part(bytes.data() + from, size);
            const std::uint32_t expected = byDefinition(part);
            ASSERT_EQ(si::crc32(part), expected) << size << " bytes from " << from;
            ASSERT_EQ(si::crc32ByTables(part), expected) << size << " bytes from " << from;
        }
    }
}

TEST(TheCrc, IsRightForTheLongestSection) {
    std::vector<std::uint8_t> bytes(si::kLongestSection);
    std::mt19937 random(1);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(random()); });
    EXPECT_EQ(si::crc32(bytes), byDefinition(bytes));
    EXPECT_EQ(si::crc32ByTables(bytes), byDefinition(bytes));
}
