// Reading of command lines.
#include "command_line/arguments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "described_program.h"

using command_line::Arguments;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const command_line::Program& radio() {
    static const command_line::Program kProgram = describedProgram();
    return kProgram;
}

Arguments accepted(const std::vector<std::string>& words) {
    std::string error;
    const std::optional<Arguments> arguments = command_line::parse(radio(), words, error);
    EXPECT_TRUE(arguments.has_value()) << error;
    return arguments.value_or(Arguments());
}

std::string problemOf(const std::vector<std::string>& words) {
    std::string error;
    EXPECT_FALSE(command_line::parse(radio(), words, error).has_value());
    return error;
}

}  // namespace

TEST(ACommandLine, GivesItsVerbOperandsAndOptions) {
    const Arguments arguments = accepted({"--json", "play", "1:2:3", "--device", "usb", "--device=network"});

    ASSERT_NE(arguments.verb, nullptr);
    EXPECT_EQ(arguments.verb->name, "play");
    EXPECT_THAT(arguments.operands, ElementsAre("1:2:3"));
    EXPECT_THAT(arguments.words, ElementsAre("play", "1:2:3"));
    EXPECT_TRUE(arguments.has("json"));
    EXPECT_FALSE(arguments.has("offline"));
    EXPECT_THAT(arguments.values("device"), ElementsAre("usb", "network"));
    EXPECT_EQ(arguments.value("device"), "network");
    EXPECT_EQ(arguments.value("fade"), std::nullopt);
}

TEST(ACommandLine, MayBeEmpty) {
    const Arguments arguments = accepted({});

    EXPECT_EQ(arguments.verb, nullptr);
    EXPECT_THAT(arguments.words, IsEmpty());
}

TEST(ACommandLine, HasNegativeNumbersAsArguments) {
    EXPECT_THAT(accepted({"volume", "-5", "--json"}).operands, ElementsAre("-5"));
    EXPECT_THAT(accepted({"play", "-"}).operands, ElementsAre("-"));
}

TEST(ACommandLine, HasNoOptionsAfterTwoDashes) {
    EXPECT_THAT(accepted({"play", "--", "--json"}).operands, ElementsAre("--json"));
}

TEST(ACommandLine, TakesAnOptionsValueThatLooksLikeAnOption) {
    EXPECT_EQ(accepted({"--device", "--json"}).value("device"), "--json");
}

TEST(ACommandLine, KnowsVerbsOfSeveralWords) {
    const Arguments arguments = accepted({"tape", "insert", "a.tape", "b.tape"});

    EXPECT_EQ(arguments.verb->name, "tape insert");
    EXPECT_THAT(arguments.operands, ElementsAre("a.tape", "b.tape"));
}

TEST(AWrongCommandLine, NamesTheWordThatIsWrong) {
    EXPECT_EQ(problemOf({"--frobnicate"}), "unknown option --frobnicate");
    EXPECT_EQ(problemOf({"--frobnicate=3", "play"}), "unknown option --frobnicate");
    EXPECT_EQ(problemOf({"play", "--device"}), "--device needs a value");
    EXPECT_EQ(problemOf({"--json=yes"}), "--json takes no value");
    EXPECT_EQ(problemOf({"frobnicate"}), "unknown command frobnicate");
    EXPECT_EQ(problemOf({"play"}), "play: STATION is missing");
    EXPECT_EQ(problemOf({"volume", "1", "left", "now"}), "volume: unexpected argument now");
    EXPECT_EQ(problemOf({"tape", "insert"}), "tape insert: FILE... is missing");
}

TEST(AWrongCommandLine, GetsTheWordsThatMayFollow) {
    EXPECT_EQ(problemOf({"tape"}), "tape takes one of: insert FILE..., eject");
    EXPECT_EQ(problemOf({"tape", "wind"}), "tape takes one of: insert FILE..., eject");
}

TEST(AWrongCommandLine, HasAnOptionOfAnotherVerb) {
    EXPECT_EQ(problemOf({"tape", "eject", "--fade", "3"}), "--fade is an option of play, volume");
    EXPECT_EQ(problemOf({"--side", "A"}), "--side is an option of tape insert");
    EXPECT_EQ(accepted({"--fade", "3", "play", "1:2:3"}).value("fade"), "3");
}

TEST(AWrongCommandLine, EndsTheProcessInTwoLines) {
    const char* words[] = {"radioctl", "frobnicate"};
    EXPECT_EXIT(command_line::parseOrEnd(radio(), 2, const_cast<char**>(words)), testing::ExitedWithCode(2),
                "^radioctl: unknown command frobnicate\ntry: radioctl --help\n$");
}

TEST(ANumber, IsDecimalOrHexadecimal) {
    EXPECT_EQ(command_line::parseNumber("18"), 18U);
    EXPECT_EQ(command_line::parseNumber("0x12"), 18U);
    EXPECT_EQ(command_line::parseNumber("18446744073709551615"), UINT64_MAX);
    for (const char* const wrong : {"", "-1", "1 ", " 1", "0x", "1x", "18446744073709551616", "ten"}) {
        EXPECT_EQ(command_line::parseNumber(wrong), std::nullopt) << wrong;
    }
}

TEST(ANumber, EndsTheProcessOutsideOfItsBounds) {
    EXPECT_EQ(command_line::numberOrEnd(radio(), "--fade", "10", 0, 10), 10U);
    EXPECT_EXIT(command_line::numberOrEnd(radio(), "--fade", "11", 0, 10), testing::ExitedWithCode(2),
                "^radioctl: --fade: \"11\" is not a number from 0 to 10\ntry: radioctl --help\n$");
}
