// Lines on a terminal.
#include "terminal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using dvbshell::columnsOf;
using dvbshell::folded;
using dvbshell::painted;

TEST(ALineOnATerminal, IsFoldedAtBlanks) {
    EXPECT_EQ(folded("one two three four", 11), "one two\n    three\n    four");
    EXPECT_EQ(folded("one two", 7), "one two");
    EXPECT_EQ(folded("one two   ", 7), "one two");
    EXPECT_EQ(folded("", 7), "");
}

TEST(ALineOnATerminal, IsWholeWithoutALimit) {
    EXPECT_EQ(folded(std::string(500, 'a'), 0), std::string(500, 'a'));
}

TEST(ALineOnATerminal, IsCutInsideAWordThatIsTooLong) {
    EXPECT_EQ(folded("aaaaaaaaaaaaaaaaaaaaaaaaa", 12), "aaaaaaaaaaaa\n    aaaaaaaa\n    aaaaa");
}

TEST(ALineOnATerminal, KeepsTheIndentOfItsContent) {
    const std::string head = "   1.234  event    one two";
    EXPECT_EQ(folded(head + " three", 28), head + "\n              three");
    EXPECT_EQ(folded(head + " three", 40).size(), head.size() + 6);
    EXPECT_EQ(folded("                    a b c d e f g h i j k l m n o p q r s t", 45),
              "                    a b c d e f g h i j k l m\n                      n o p q r s t");
}

TEST(ALineOnATerminal, IsFoldedBetweenTwoValues) {
    EXPECT_EQ(folded("      pid 257, component_tag 0x01, presented yes", 40),
              "      pid 257, component_tag 0x01,\n          presented yes");
    EXPECT_EQ(folded("      a long video (AVC)  component_tag 0x01", 40),
              "      a long video (AVC)\n          component_tag 0x01");
    EXPECT_EQ(folded("      a, a long text without any comma", 30),
              "      a, a long text without\n          any comma");
}

TEST(ALineOnATerminal, GivesUpItsAlignmentBeforeItIsFolded) {
    EXPECT_EQ(folded("      PID 1     video        tag 1", 30), "      PID 1  video  tag 1");
    EXPECT_EQ(folded("      PID 1     video  tag 1", 30), "      PID 1     video  tag 1");
}

TEST(ALineOnATerminal, CountsColumnsNotBytes) {
    EXPECT_EQ(columnsOf("F\xC3\xB6hn"), 4U);
    EXPECT_EQ(columnsOf("\xE8\x8F\xAF\xE8\xA6\x96"), 4U);
    EXPECT_EQ(columnsOf("e\xCC\x81"), 1U);
    EXPECT_EQ(columnsOf("\xFF\xFE"), 2U);
    const std::string wide = "\xE8\x8F\xAF\xE8\xA6\x96\xE8\x8F\xAF\xE8\xA6\x96";
    EXPECT_EQ(folded(wide, 5), wide.substr(0, 6) + "\n  " + wide.substr(6, 3) + "\n  " + wide.substr(9));
}

TEST(ALineOnATerminal, HasColoursAtItsHead) {
    EXPECT_EQ(painted("   1.234  PMT      1:2:3"), "\033[2m   1.234  \033[0m\033[36mPMT\033[0m      1:2:3");
    EXPECT_EQ(painted("all arrived"), "\033[32mall arrived\033[0m");
    EXPECT_EQ(painted("1:1025:28106  One"), "1:1025:28106  One");
    EXPECT_EQ(painted("                    PID 257"), "                    PID 257");
    EXPECT_EQ(painted(""), "");
}
