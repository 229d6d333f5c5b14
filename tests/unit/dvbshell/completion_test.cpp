// Completion at the prompt.
#include "completion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using dvbshell::commonBeginning;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> completions(const std::string& line) {
    return dvbshell::completionsOf(line, {"1:1025:28106", "1:1025:28107"});
}

}  // namespace

TEST(Completion, OffersCommandsFirst) {
    EXPECT_THAT(completions("tun"), ElementsAre("tune", "tune-component", "tune-dsd", "tune-numbers"));
    EXPECT_THAT(completions("  chan"), ElementsAre("channels"));
    EXPECT_THAT(completions(""), testing::Contains("watch"));
    EXPECT_THAT(completions("nothing"), IsEmpty());
}

TEST(Completion, OffersTheOptionsOfTheCommand) {
    EXPECT_THAT(completions("sections 0x12 --m"), ElementsAre("--mask", "--match"));
    EXPECT_THAT(completions("watch --"), ElementsAre("--help", "--seconds"));
    EXPECT_THAT(completions("sections --count "), IsEmpty());
}

TEST(Completion, OffersChannels) {
    EXPECT_THAT(completions("tune "), ElementsAre("1:1025:28106", "1:1025:28107"));
    EXPECT_THAT(completions("tune --seconds 3 1:1025:28107"), ElementsAre("1:1025:28107"));
    EXPECT_THAT(completions("tune 1:1025:28106 "), IsEmpty());
    EXPECT_THAT(completions("pts "), IsEmpty());
}

TEST(Completion, OffersTheNamesOfAnEnumeration) {
    EXPECT_THAT(completions("select "), ElementsAre("audio", "subtitle", "video"));
    EXPECT_THAT(completions("tune-component v"), ElementsAre("video"));
    EXPECT_THAT(completions("osd-start "), IsEmpty());
}

TEST(Completion, OffersCommandsToHelp) {
    EXPECT_THAT(completions("help tune-d"), ElementsAre("tune-dsd"));
}

TEST(ACommonBeginning, IsThatOfAllWords) {
    EXPECT_EQ(commonBeginning({"tune-dsd", "tune-numbers"}), "tune-");
    EXPECT_EQ(commonBeginning({"tune", "tune-dsd"}), "tune");
    EXPECT_EQ(commonBeginning({"one"}), "one");
    EXPECT_EQ(commonBeginning({}), "");
}
