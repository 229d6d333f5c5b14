// The filter pattern on the command line, and trees as lines.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sections.h"
#include "tree_text.h"

namespace {

using dvbshell::Pattern;
using testing::ElementsAre;

}  // namespace

TEST(ATableOption, IsTheFirstByteOfThePattern) {
    Pattern pattern;
    ASSERT_TRUE(dvbshell::setTable("0x4E", pattern));
    EXPECT_EQ(pattern.match, "\x4E");
    EXPECT_EQ(pattern.mask, "\xFF");
    ASSERT_TRUE(dvbshell::setTable("80/0xF0", pattern));
    EXPECT_EQ(pattern.match, "\x50");
    EXPECT_EQ(pattern.mask, "\xF0");
}

TEST(ATableOption, PrecedesAGivenPattern) {
    Pattern pattern;
    pattern.match = "\x01\x02\x03";
    pattern.mask = "\xFF\xFF\xFF";
    ASSERT_TRUE(dvbshell::setTable("0x74/0xFE", pattern));
    EXPECT_EQ(pattern.match, "\x74\x02\x03");
    EXPECT_EQ(pattern.mask, "\xFE\xFF\xFF");
}

TEST(ATableOption, IsRefusedWhenItIsNone) {
    for (const char* const wrong : {"", "x", "256", "1/", "1/256", "1/2/3", "-1", "0x", "1 "}) {
        Pattern pattern;
        EXPECT_FALSE(dvbshell::setTable(wrong, pattern)) << wrong;
        EXPECT_TRUE(pattern.match.empty()) << wrong;
    }
}

TEST(ATree, IsIndentedByDepthWithOneLineForEachDescriptor) {
    si::Node table;
    si::Node& service = table.add("service");
    service.number("service_id", 5).hex("flags", 0xA, 2);
    si::Node& known = service.add("descriptor");
    known.hex("tag", 0x48, 2).number("length", 3).text("is", "service type=1").text("is", "more");
    known.add("name").text("language", "eng").text("text", "");
    si::Node& unknown = service.add("descriptor");
    unknown.hex("tag", 0x99, 2).number("length", 1).bytes("bytes", std::string("\xAB"));
    EXPECT_THAT(dvbshell::treeLines(table.nodes),
                ElementsAre("service  service_id 5, flags 0x0A", "  service type=1; more  [language eng, text -]",
                            "  descriptor  tag 0x99, length 1, bytes AB"));
}

TEST(ATree, ShortensValuesThatFillTheScreen) {
    si::Node node;
    node.text("bytes", std::string(1000, 'a'));
    EXPECT_EQ(dvbshell::fieldsText(node), "bytes " + std::string(160, 'a') + "... (1000 characters)");
}
