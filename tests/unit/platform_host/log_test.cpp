// The host's log.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <thread>

#include "ovx/log.h"
#include "run_directory.h"

namespace {

const std::string kDirectory = OwnRunDirectory::instance().path();

std::vector<std::string> logLines() {
    std::ifstream file(kDirectory + "/log");
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}

}  // namespace

TEST(TheHostsLog, WritesOneLinePerCall) {
    BLOG_WRITE(blog::kOrdinary, "%s", "two breaks at its end\n\n");
    BLOG_WRITE(blog::kOrdinary, "%s", "a break\nand a \x01 inside\n");
    BLOG_WRITE(blog::kOrdinary, "%s", std::string(5000, 'x').c_str());
    const std::vector<std::string> lines = logLines();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_THAT(lines[0], testing::EndsWith(" O two breaks at its end"));
    EXPECT_THAT(lines[1], testing::EndsWith(" O a break\\x0Aand a \\x01 inside"));
    EXPECT_THAT(lines[2], testing::EndsWith(std::string(5000, 'x')));
}

TEST(TheHostsLog, WritesNoLineAboveItsLevel) {
    BLOG_WRITE(blog::kTrace, "%s", "trace");
    BLOG_WRITE(blog::kAlways, "%s", "always");
    BLOG_WRITE(blog::kFailure, "%s", "failure");
    BLOG_WRITE(blog::kUnsupported, "%s", "unsupported");
    const std::vector<std::string> lines = logLines();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_THAT(lines[0], testing::EndsWith(" * always"));
    EXPECT_THAT(lines[1], testing::EndsWith(" F failure"));
    EXPECT_THAT(lines[2], testing::EndsWith(" W unsupported"));
}

TEST(TheHostsLog, KeepsLinesOfManyThreadsWhole) {
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([thread] {
            for (int count = 0; count < 200; ++count) {
                BLOG_WRITE(blog::kOrdinary, "<%s>", std::string(300, static_cast<char>('a' + thread)).c_str());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const std::vector<std::string> lines = logLines();
    ASSERT_EQ(lines.size(), 800U);
    for (const std::string& line : lines) {
        const std::size_t at = line.find('<');
        ASSERT_NE(at, std::string::npos);
        EXPECT_EQ(line.substr(at), "<" + std::string(300, line[at + 1]) + ">");
    }
}

TEST(TheHostsLog, DumpsBytesInRows) {
    const std::uint8_t bytes[] = {'A', 0x00, 0xFF, 'z', 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 'Q'};
    dump_memory("Title: ", bytes, sizeof bytes, 1);
    const std::vector<std::string> lines = logLines();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_THAT(lines[0], testing::HasSubstr("Title:  (1), 17 bytes"));
    EXPECT_THAT(lines[1], testing::HasSubstr("0000  41 00 FF 7A 01 02 03 04 05 06 07 08 09 0A 0B 0C  A..z"));
    EXPECT_THAT(lines[2], testing::HasSubstr("0010  51"));
}

TEST(TheHostsLog, NamesAPathsLastPart) {
    EXPECT_STREQ(blog_base_name("/a/b/c.cpp"), "c.cpp");
    EXPECT_STREQ(blog_base_name("c.cpp"), "c.cpp");
    EXPECT_STREQ(blog_base_name("a/"), "");
    EXPECT_STREQ(blog_base_name(nullptr), "");
}
