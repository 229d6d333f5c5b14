// Tests of reading and writing bit rates.
#include "bit_rate.h"

#include <gtest/gtest.h>

using dtvservice::parseBitRate;

TEST(ABitRate, IsShownInMegabits) {
    EXPECT_EQ(dtvservice::shownBitRate(4981234), "4.98 Mbit/s");
    EXPECT_EQ(dtvservice::shownBitRate(0), "0.00 Mbit/s");
}

TEST(ABitRate, MayHaveAUnit) {
    EXPECT_EQ(parseBitRate("5000000"), 5000000U);
    EXPECT_EQ(parseBitRate("500k"), 500000U);
    EXPECT_EQ(parseBitRate("38M"), 38000000U);
    EXPECT_EQ(parseBitRate("4.5M"), 4500000U);
}

TEST(ABitRate, IsRefusedIfItIsNone) {
    for (const char* const text : {"", "M", "-5M", "5m", "5G", "5 M", "5Mx", "0x500000", "inf", "nan", "1e999", "1.5e3",
                                   "5E6", "1e3k", "999", "0", "501M", "1,5M"}) {
        EXPECT_FALSE(parseBitRate(text)) << text;
    }
}
