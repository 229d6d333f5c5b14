// Arguments and texts.
#include "values.h"

#include "made_tables.h"

using tvbrowser::Arguments;

TEST(AText, OfBytesIsUtf8WithoutBeingLongerThanNeeded) {
    EXPECT_EQ(tvbrowser::safeText("Föhn"), "Föhn");
    EXPECT_EQ(tvbrowser::safeText("a\xFF"), "a\xEF\xBF\xBD");
    EXPECT_EQ(tvbrowser::hexText(std::vector<std::uint8_t>{0x00, 0xAF}), "00af");
    EXPECT_EQ(tvbrowser::bytesOfHex("00Af"), std::string("\0\xAF", 2));
    EXPECT_EQ(tvbrowser::bytesOfHex("0"), std::nullopt);
    EXPECT_EQ(tvbrowser::bytesOfHex("0g"), std::nullopt);
}

TEST(AnArgument, IsANumberWithinItsRangeAlsoAsAScriptsNumber) {
    const Arguments arguments("c",
                              json::parse(R"({"a": 5, "b": 5.0, "c": 5.5, "d": -1, "e": 256, "f": "5", "g": null})"));
    EXPECT_EQ(arguments.number("a", 255), 5U);
    EXPECT_EQ(arguments.number("b", 255), 5U);
    for (const char* const key : {"c", "d", "e", "f", "g", "h"}) {
        EXPECT_THROW(arguments.number(key, 255), tvbrowser::BadCall) << key;
    }
    EXPECT_FALSE(arguments.has("g"));
    EXPECT_THROW(Arguments("c", json::array()), tvbrowser::BadCall);
    EXPECT_THROW(arguments.text("a"), tvbrowser::BadCall);
    EXPECT_THROW(arguments.flag("a"), tvbrowser::BadCall);
}
