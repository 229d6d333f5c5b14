// Lines that fit a width.
#include "wrapped_text.h"

#include <gtest/gtest.h>

using dvbshell::wrapped;

TEST(ALongLine, ContinuesIndentedAtABlank) {
    EXPECT_EQ(wrapped("event  one 1, two 2, three 3", 16, 2), "event  one 1,\n  two 2, three 3");
    EXPECT_EQ(wrapped("  ab cd", 4, 2), "  ab\n  cd");
}

TEST(ALongLine, KeepsAWordThatIsWiderThanTheLine) {
    EXPECT_EQ(wrapped("http://a.example/long/path x", 10, 4), "http://a.example/long/path\n    x");
    EXPECT_EQ(wrapped("a http://b.example/long/path", 10, 1), "a\n http://b.example/long/path");
}

TEST(ALine, IsUnchangedIfItFits) {
    EXPECT_EQ(wrapped("a  b   c ", 9, 2), "a  b   c ");
    EXPECT_EQ(wrapped("", 9, 2), "");
    EXPECT_EQ(wrapped("a b c", 0, 2), "a b c");
    EXPECT_EQ(wrapped("F\xC3\xB6hn \xCE\xA4\xCF\x81", 7, 2), "F\xC3\xB6hn \xCE\xA4\xCF\x81") << "counted in characters";
}
