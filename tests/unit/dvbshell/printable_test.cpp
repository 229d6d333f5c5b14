// Texts from the broadcast or a peer, printed on the terminal.
#include "text/printable.h"

#include <gtest/gtest.h>

#include "captured_output.h"
#include "printer.h"

using text::printable;

TEST(ATextOfOthers, IsUnchangedIfPlain) {
    EXPECT_EQ(printable("Velmora Zwei F\xC3\xB6hn, \xCE\xA4\xCF\x81\xCE\xAF\xCE\xB1, \xE8\x8F\xAF\xE8\xA6\x96, "
                        "\xF0\x9F\x93\xBA"),
              "Velmora Zwei F\xC3\xB6hn, \xCE\xA4\xCF\x81\xCE\xAF\xCE\xB1, \xE8\x8F\xAF\xE8\xA6\x96, \xF0\x9F\x93\xBA");
    EXPECT_EQ(printable(""), "");
}

TEST(ATextOfOthers, CannotSteerTheTerminal) {
    EXPECT_EQ(printable("a\x1b[2Jb"), "a\\x1b[2Jb");
    EXPECT_EQ(printable("\n\r\t\x7f"), "\\x0a\\x0d\\x09\\x7f");
    EXPECT_EQ(printable("\xC2\x9B"
                        "2J"),
              "\\xc2\\x9b2J");
    EXPECT_EQ(printable("\xE2\x80\xAE"), "\\xe2\\x80\\xae");
    EXPECT_EQ(printable("\xD8\x9C\xE2\x80\x8F\xE2\x80\xA8"), "\\xd8\\x9c\\xe2\\x80\\x8f\\xe2\\x80\\xa8");
    EXPECT_EQ(printable(std::string("a\0b", 3)), "a\\x00b");
}

TEST(ATextOfOthers, ShowsBytesThatAreNoUtf8) {
    EXPECT_EQ(printable("\x80"), "\\x80");
    EXPECT_EQ(printable("\xC3"), "\\xc3");
    EXPECT_EQ(printable("\xC3"
                        "A"),
              "\\xc3A");
    EXPECT_EQ(printable("\xC0\xAF"), "\\xc0\\xaf");
    EXPECT_EQ(printable("\xED\xA0\x80"), "\\xed\\xa0\\x80");
    EXPECT_EQ(printable("\xF4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");
    EXPECT_EQ(printable("\xFF"), "\\xff");
}

TEST(ATextOfOthers, IsEscapedInAnEvent) {
    const CapturedOutput output;
    dvbshell::Printer printer(output.file());
    dvbshell::Event event;
    event.name = "onDrmResultReply";
    event.values = {dvbshell::namedValue("message", "\x1b]0;owned\x07")};
    printer.print(event, "");
    EXPECT_NE(output.text().find("message \\x1b]0;owned\\x07\n"), std::string::npos) << output.text();
}
