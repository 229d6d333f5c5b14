// Help texts.
#include "command_line/help.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command_line/arguments.h"
#include "described_program.h"

using testing::HasSubstr;

namespace {

std::size_t longestLine(const std::string& text) {
    std::size_t longest = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = text.find('\n', at);
        longest = std::max(longest, end - at);
        at = end + 1;
    }
    return longest;
}

class TheHelpsWidth : public testing::Test {
protected:
    TheHelpsWidth() { unsetenv("COLUMNS"); }
    ~TheHelpsWidth() override { unsetenv("COLUMNS"); }

    static std::size_t withColumns(const char* columns) {
        setenv("COLUMNS", columns, 1);
        return command_line::helpWidth();
    }
};

}  // namespace

TEST(TheHelp, HasEveryPartOfTheDescription) {
    EXPECT_EQ(command_line::helpText(describedProgram(), 72),
              "usage: radioctl COMMAND    asks the radio\n"
              "       radioctl --offline  asks nobody\n"
              "\n"
              "Sends one command to the radio that runs on this machine.\n"
              "\n"
              "A second paragraph.\n"
              "\n"
              "Commands:\n"
              "  play STATION               plays a station\n"
              "  volume LEVEL [left|right]  changes the volume\n"
              "  tape insert FILE...        puts tapes in\n"
              "  tape eject                 takes the tape out\n"
              "  status                     prints what plays\n"
              "\n"
              "Options:\n"
              "  --json           print JSON\n"
              "  --device DEVICE  the radio; one of these\n"
              "                     usb      the one that is plugged in\n"
              "                     network  the one that answers first\n"
              "                   Others are not known.\n"
              "  --offline        ask nobody\n"
              "  --help           print this help; with a command, its help\n"
              "  --version        print the version\n"
              "\n"
              "Options of play, volume:\n"
              "  --fade N  seconds until it is loud\n"
              "\n"
              "Options of tape insert:\n"
              "  --side A|B  the tape's side\n"
              "\n"
              "Exit codes:\n"
              "  0  done\n"
              "  2  wrong command line\n"
              "\n"
              "Environment:\n"
              "  RADIO  the device, if --device is not given\n"
              "\n"
              "Files:\n"
              "  /dev/radio  the device\n"
              "\n"
              "Examples:\n"
              "  radioctl play 1:2:3\n"
              "      play the first station\n");
}

TEST(TheHelp, FitsTheWidth) {
    command_line::Program program = describedProgram();
    program.options[0].help = "one two three four five six seven eight nine ten eleven twelve thirteen";

    EXPECT_THAT(command_line::helpText(program, 44), HasSubstr("  --json           one two three four five\n"
                                                               "                   six seven eight nine ten\n"
                                                               "                   eleven twelve thirteen\n"));
    for (const std::size_t width : {52U, 60U, 72U, 100U}) {
        EXPECT_LE(longestLine(command_line::helpText(program, width)), width);
    }
}

TEST(TheHelp, PutsTheTextOfALongTermOnItsOwnLine) {
    command_line::Program program = describedProgram();
    program.options[0].value = "A-VALUE-WITH-A-VERY-LONG-NAME";

    EXPECT_THAT(command_line::helpText(program, 80), HasSubstr("\n  --json A-VALUE-WITH-A-VERY-LONG-NAME\n"
                                                               "                   print JSON\n"));
}

TEST(TheHelpOfAVerb, HasItsTextOptionsAndExample) {
    const command_line::Program program = describedProgram();

    EXPECT_EQ(command_line::helpText(program, *command_line::findVerb(program, {"volume"}), 80),
              "usage: radioctl volume LEVEL [left|right]\n"
              "\n"
              "changes the volume\n"
              "\n"
              "The level is relative to the present one.\n"
              "\n"
              "Options:\n"
              "  --fade N  seconds until it is loud\n"
              "\n"
              "Example:\n"
              "  radioctl volume -5 left\n");
}

TEST(TheHelpOfAVerb, IsPrintedWhenTheVerbIsGiven) {
    const auto help = [](std::vector<const char*> words) {
        words.insert(words.begin(), "radioctl");
        words.push_back(nullptr);
        testing::internal::CaptureStdout();
        EXPECT_EXIT(
            {
                dup2(STDOUT_FILENO, STDERR_FILENO);
                command_line::parseOrEnd(describedProgram(), static_cast<int>(words.size()) - 1,
                                         const_cast<char**>(words.data()));
            },
            testing::ExitedWithCode(0), "");
        return testing::internal::GetCapturedStdout();
    };

    EXPECT_THAT(help({"volume", "--help"}), HasSubstr("usage: radioctl volume LEVEL"));
    EXPECT_THAT(help({"--help", "volume"}), HasSubstr("usage: radioctl volume LEVEL"));
    EXPECT_THAT(help({"--help"}), HasSubstr("usage: radioctl COMMAND"));
    EXPECT_THAT(help({"--version", "play"}), testing::MatchesRegex("radioctl [0-9]+[.][0-9]+[.][0-9]+\n"));
}

TEST_F(TheHelpsWidth, IsTheTerminals) {
    EXPECT_EQ(withColumns("72"), 72U);
}

TEST_F(TheHelpsWidth, IsNeitherTooNarrowNorTooWide) {
    EXPECT_EQ(withColumns("10"), 40U);
    EXPECT_EQ(withColumns("500"), 100U);
}

TEST_F(TheHelpsWidth, Is80WithoutATerminal) {
    testing::internal::CaptureStdout();
    const std::size_t unset = command_line::helpWidth();
    const std::size_t wrong = withColumns("many");
    testing::internal::GetCapturedStdout();

    EXPECT_EQ(unset, 80U);
    EXPECT_EQ(wrong, 80U);
}
