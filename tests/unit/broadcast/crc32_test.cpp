// CRC_32 of sections against its definition, a bit at a time.
#include <gtest/gtest.h>

#include <numeric>

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
    std::vector<std::uint8_t> bytes(200);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0x5A});
    for (std::size_t from = 0; from < 9; ++from) {
        for (std::size_t size = 0; from + size <= bytes.size(); ++size) {
            const si::Bytes part(bytes.data() + from, size);
            ASSERT_EQ(si::crc32(part), byDefinition(part)) << size << " bytes from " << from;
        }
    }
}
