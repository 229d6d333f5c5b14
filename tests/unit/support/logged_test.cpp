// What a test that failed on log lines shows of them.
#include "logged.h"

#include <gtest/gtest-spi.h>

namespace {

recording::LogLine lineOf(std::uint32_t level, const std::string& tag, const std::string& message) {
    recording::LogLine line;
    line.level = level;
    line.tag = tag;
    line.file = "unit.cpp";
    line.line = 7;
    line.function = "work";
    line.message = message;
    line.text = (tag.empty() ? "" : "[" + tag + "] ") + "unit.cpp:7:work(): " + message;
    return line;
}

logged::Line expectedLine() {
    return logged::tagged(blog::kFailure, "B-LOG", "unit.cpp", "work", "lost 2\n");
}

}  // namespace

TEST(ALogLine, IsShownInWords) {
    EXPECT_EQ(testing::PrintToString(lineOf(blog::kFailure, "B-LOG", "lost \xE2\x82\xAC 2\n")),
              "\n    failure: [B-LOG] unit.cpp:7:work(): lost \xE2\x82\xAC 2\\n");
    EXPECT_EQ(testing::PrintToString(lineOf(blog::kOrdinary, "", "a\x01\x7F\tb")),
              "\n    ordinary: unit.cpp:7:work(): a\\x01\\x7F\\x09b");
    EXPECT_EQ(testing::PrintToString(lineOf(0xC0FFEE, "", "")), "\n    level 0xC0FFEE: unit.cpp:7:work(): ");
}

TEST(ALogLine, OfNoShapeIsShownWithItsText) {
    recording::LogLine line;
    line.level = blog::kTrace;
    line.text = "[TRACE] somewhere";
    EXPECT_EQ(testing::PrintToString(line), "\n    trace: [TRACE] somewhere");
}

TEST(AnExpectedLogLine, MatchesEachLineNumberAndNoOtherField) {
    EXPECT_TRUE(testing::Value(lineOf(blog::kFailure, "B-LOG", "lost 2\n"), expectedLine()));
    testing::StringMatchResultListener why;
    recording::LogLine line = lineOf(blog::kOrdinary, "", "lost 3\n");
    line.file = "other.cpp";
    line.line = 0;
    line.function = "rest";
    EXPECT_FALSE(testing::ExplainMatchResult(expectedLine(), line, &why));
    EXPECT_EQ(why.str(), "which differs in: level, tag, file, line number, function, message");
}

TEST(AFailedLogLineTest, ShowsTheExpectedLineAboveTheCapturedOne) {
    const std::vector<recording::LogLine> lines = {lineOf(blog::kOrdinary, "B-LOG", "found 2\n")};
    EXPECT_NONFATAL_FAILURE(EXPECT_THAT(lines.front(), expectedLine()),
                            "Expected: is the line\n"
                            "    failure: [B-LOG] unit.cpp:<number>:work(): lost 2\\n\n"
                            "  Actual: \n"
                            "    ordinary: [B-LOG] unit.cpp:7:work(): found 2\\n"
                            " (of type");
}

TEST(AFailedLogLineTest, ShowsAllLinesThatWereThere) {
    static const std::vector<recording::LogLine> lines = {lineOf(blog::kFailure, "B-LOG", "lost 2\n"),
                                                          lineOf(blog::kTrace, "", "found 2\n")};
    EXPECT_NONFATAL_FAILURE(EXPECT_THAT(lines, testing::ElementsAre(expectedLine(), expectedLine())),
                            "  Actual: { \n"
                            "    failure: [B-LOG] unit.cpp:7:work(): lost 2\\n, \n"
                            "    trace: unit.cpp:7:work(): found 2\\n }, "
                            "whose element #1 doesn't match, which differs in: level, tag, message");
}
