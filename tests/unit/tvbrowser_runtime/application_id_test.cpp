// The ids of applications as texts.
#include <gtest/gtest.h>

#include "application.h"

namespace tvbrowser {

TEST(AnApplicationId, IsTwoHexadecimalNumbers) {
    const std::optional<ApplicationId> id = parseApplicationId("1Af.00b");
    ASSERT_TRUE(id);
    EXPECT_EQ(id->organisation, 0x1AFU);
    EXPECT_EQ(id->application, 0xBU);
    EXPECT_EQ(applicationIdText(*id), "1af.b");
}

TEST(AnApplicationId, HasAllValuesOfItsFields) {
    EXPECT_EQ(parseApplicationId("ffffffff.ffff"), (ApplicationId{0xFFFFFFFF, 0xFFFF}));
    EXPECT_EQ(parseApplicationId("0.0"), ApplicationId{});
    EXPECT_EQ(applicationIdText({0xFFFFFFFF, 0xFFFF}), "ffffffff.ffff");
    EXPECT_EQ(applicationIdText({}), "0.0");
}

TEST(AnApplicationId, IsNoOtherText) {
    for (const char* text : {"", ".", "1", "1.", ".1", "1.2.3", "g.1", "1.g", "-1.1", "1.-1", "+1.1", " 1.1", "1.1 ",
                             "0x1.1", "100000000.1", "1.10000"}) {
        EXPECT_FALSE(parseApplicationId(text)) << text;
    }
}

}  // namespace tvbrowser
