// The filter pattern on the command line, and trees as lines.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sections.h"
#include "tree_text.h"

namespace {

using dvbshell::SectionsRequest;
using testing::ElementsAre;

}  // namespace

TEST(ATableOption, IsTheFirstByteOfThePattern) {
    SectionsRequest request;
    ASSERT_TRUE(dvbshell::setTable("0x4E", request));
    EXPECT_EQ(request.match, "\x4E");
    EXPECT_EQ(request.mask, "\xFF");
    ASSERT_TRUE(dvbshell::setTable("80/0xF0", request));
    EXPECT_EQ(request.match, "\x50");
    EXPECT_EQ(request.mask, "\xF0");
}

TEST(ATableOption, PrecedesAGivenPattern) {
    SectionsRequest request;
    request.match = "\x01\x02\x03";
    request.mask = "\xFF\xFF\xFF";
    ASSERT_TRUE(dvbshell::setTable("0x74/0xFE", request));
    EXPECT_EQ(request.match, "\x74\x02\x03");
    EXPECT_EQ(request.mask, "\xFE\xFF\xFF");
}

TEST(ATableOption, IsRefusedWhenItIsNone) {
    for (const char* const wrong : {"", "x", "256", "1/", "1/256", "1/2/3", "-1", "0x", "1 "}) {
        SectionsRequest request;
        EXPECT_FALSE(dvbshell::setTable(wrong, request)) << wrong;
        EXPECT_TRUE(request.match.empty()) << wrong;
    }
}

TEST(AnUnsignedNumber, IsDecimalOrHexadecimalUpToItsBound) {
    unsigned int number = 0;
    EXPECT_TRUE(dvbshell::parseUnsigned("8191", 8191, number));
    EXPECT_EQ(number, 8191U);
    EXPECT_TRUE(dvbshell::parseUnsigned("0x1fff", 8191, number));
    EXPECT_EQ(number, 8191U);
    EXPECT_FALSE(dvbshell::parseUnsigned("8192", 8191, number));
    EXPECT_FALSE(dvbshell::parseUnsigned("99999999999", 8191, number));
    EXPECT_FALSE(dvbshell::parseUnsigned("+1", 8191, number));
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
                ElementsAre("service  service_id 5, flags 0x0a", "  service type=1; more  [language eng, text -]",
                            "  descriptor  tag 0x99, length 1, bytes ab"));
}

TEST(ATree, ShortensValuesThatFillTheScreen) {
    si::Node node;
    node.text("bytes", std::string(1000, 'a'));
    EXPECT_EQ(dvbshell::fieldsText(node), "bytes " + std::string(160, 'a') + "... (1000 characters)");
}
