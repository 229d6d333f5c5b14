// Manual pages and completion scripts, as the programs that use them understand them.
#include "command_line/generated.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include "described_program.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

/// A file that exists as long as the object does.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& text) {
        const int file = mkstemp(path.data());
        EXPECT_EQ(write(file, text.data(), text.size()), static_cast<ssize_t>(text.size()));
        close(file);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() { unlink(path.c_str()); }

    std::string path = testing::TempDir() + "generated_test.XXXXXX";
};

std::string outputOf(const std::string& command) {
    std::FILE* const pipe = popen((command + " 2>&1").c_str(), "re");
    std::string output;
    char buffer[4096];
    for (std::size_t count = 0; (count = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
        output.append(buffer, count);
    }
    EXPECT_EQ(pclose(pipe), 0) << output;
    return output;
}

/// What bash offers at the end of the line, sorted as the script gives it.
std::vector<std::string> offered(const std::string& line, const std::string& folder = "/") {
    const TemporaryFile script(command_line::bashCompletion(describedProgram()));
    const std::string output =
        outputOf("cd " + folder + " && bash -c '. \"$0\"; COMP_LINE=$1; COMP_POINT=${#1}; " +
                 "_radioctl; printf \"%s\\n\" \"${COMPREPLY[@]}\"' " + script.path + " \"" + line + "\"");
    std::vector<std::string> words;
    std::istringstream stream(output);
    for (std::string word; std::getline(stream, word);) {
        if (!word.empty()) {
            words.push_back(word);
        }
    }
    return words;
}

}  // namespace

TEST(AManualPage, IsReadByRoffWithoutAWarning) {
    command_line::Program program = describedProgram();
    program.description += "\n\n.at the begin of a line\n\n'quoted' back\\slash ~ ^ `";
    const TemporaryFile page(command_line::manPage(program));

    EXPECT_EQ(outputOf("groff -ww -z -man -Tutf8 " + page.path), "");
    const std::string text = outputOf("groff -man -Tascii -P-c -P-b -P-u " + page.path);
    EXPECT_THAT(text, HasSubstr(".at the begin of a line"));
    EXPECT_THAT(text, HasSubstr("'quoted' back\\slash ~ ^ `"));
}

TEST(AManualPage, HasTheUsualSections) {
    const std::string page = command_line::manPage(describedProgram());

    std::vector<std::string> headings;
    std::istringstream stream(page);
    for (std::string line; std::getline(stream, line);) {
        if (line.compare(0, 4, ".SH ") == 0) {
            headings.push_back(line.substr(4));
        }
    }
    EXPECT_THAT(headings,
                ElementsAre("\"NAME\"", "\"SYNOPSIS\"", "\"DESCRIPTION\"", "\"COMMANDS\"", "\"OPTIONS\"",
                            "\"EXIT STATUS\"", "\"ENVIRONMENT\"", "\"FILES\"", "\"EXAMPLES\"", "\"SEE ALSO\""));
    EXPECT_THAT(page, HasSubstr("radioctl \\- operates a radio\n"));
    EXPECT_THAT(page, HasSubstr("Only with play, volume: seconds until it is loud"));
    EXPECT_THAT(page, HasSubstr(".BR radiod (1)\n"));
}

TEST(Completion, OffersVerbsFirst) {
    EXPECT_THAT(offered("radioctl "), UnorderedElementsAre("play", "volume", "tape", "status"));
    EXPECT_THAT(offered("radioctl --json st"), ElementsAre("status"));
    EXPECT_THAT(offered("radioctl tape "), UnorderedElementsAre("insert", "eject"));
    EXPECT_THAT(offered("radioctl status "), IsEmpty());
}

TEST(Completion, OffersTheOptionsThatFit) {
    EXPECT_THAT(offered("radioctl --"), UnorderedElementsAre("--json", "--device", "--offline", "--help", "--version"));
    EXPECT_THAT(offered("radioctl tape insert --s"), ElementsAre("--side"));
    EXPECT_THAT(offered("radioctl play --f"), ElementsAre("--fade"));
    EXPECT_THAT(offered("radioctl status --f"), IsEmpty());
}

TEST(Completion, OffersTheValuesOfAnOption) {
    EXPECT_THAT(offered("radioctl --device "), ElementsAre("usb", "network"));
    EXPECT_THAT(offered("radioctl --device=n"), ElementsAre("network"));
    EXPECT_THAT(offered("radioctl --device usb --fade "), IsEmpty());
    EXPECT_THAT(offered("radioctl --device usb stat"), ElementsAre("status"));
}

TEST(Completion, OffersTheValuesOfAnArgument) {
    EXPECT_THAT(offered("radioctl volume 5 "), ElementsAre("left", "right"));
    EXPECT_THAT(offered("radioctl volume "), IsEmpty());
    EXPECT_THAT(offered("radioctl play "), ElementsAre("1:2:3", "1:2:4", "5:6:7"));
}

TEST(Completion, RepliesWithWhatFollowsTheColon) {
    EXPECT_THAT(offered("radioctl play 1:2"), ElementsAre("2:3", "2:4"));
    EXPECT_THAT(offered("radioctl play 5:6:"), ElementsAre("7"));
}

TEST(Completion, OffersFilesForEveryWordOfARepeatedArgument) {
    EXPECT_THAT(offered("radioctl tape insert et", "/"), ElementsAre("etc"));
    EXPECT_THAT(offered("radioctl tape insert etc et", "/"), ElementsAre("etc"));
}
