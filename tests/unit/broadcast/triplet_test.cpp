// Tests of the text form of triplets.
#include "si/triplet.h"

#include <gtest/gtest.h>

TEST(ATriplet, IsReadInDecimalAndInHexadecimal) {
    EXPECT_EQ(si::parseTriplet("1:1025:28106"), (si::Triplet{1, 1025, 28106}));
    EXPECT_EQ(si::parseTriplet("0x2114:0X0401:0x6dCA"), (si::Triplet{8468, 1025, 28106}));
    EXPECT_EQ(si::parseTriplet("0:0x0:65535"), (si::Triplet{0, 0, 65535}));
    EXPECT_EQ(si::parseTriplet("0xffff:007:10"), (si::Triplet{65535, 7, 10}));
}

TEST(ATriplet, IsNothingElse) {
    for (const char* const text : {"",          ":",       "::",        "1:2",         "1:2:",
                                   "1::3",      ":2:3",    "1:2:3:4",   "1:2:3:",      "1:2:65536",
                                   "65536:2:3", "1:-2:3",  "1:+2:3",    " 1:2:3",      "1:2:3 ",
                                   "1: 2:3",    "1:2:3x",  "0x:2:3",    "0x10000:2:3", "x1:2:3",
                                   "ab:2:3",    "1.0:2:3", "0x0x1:2:3", "0x-1:2:3",    "99999999999999999999:2:3"}) {
        EXPECT_FALSE(si::parseTriplet(text)) << text;
    }
}

TEST(ATriplet, IsWrittenInDecimalAndReadAgain) {
    const si::Triplet triplet{8468, 1025, 65535};
    EXPECT_EQ(si::tripletText(triplet), "8468:1025:65535");
    EXPECT_EQ(si::parseTriplet(si::tripletText(triplet)), triplet);
}
