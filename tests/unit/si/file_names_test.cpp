// Tests of the names that files get.
#include "si/file_names.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

std::vector<std::string> namesOf(const std::vector<std::string>& wanted) {
    si::FileNames names;
    std::vector<std::string> all;
    for (const std::string& name : wanted) {
        all.push_back(names.take(name));
    }
    return all;
}

}  // namespace

using testing::ElementsAre;

TEST(TheNameOfAFile, StaysIfItIsSafe) {
    const std::vector<std::string> safe{"index.html", ".htaccess", "a b%20c", "f\xC3\xBC", "...", "con.log"};
    EXPECT_EQ(namesOf(safe), safe);
}

TEST(TheNameOfAFile, LeadsOutOfNoFolder) {
    EXPECT_THAT(namesOf({".", "..", "", "/etc/passwd", "../x", std::string("a\0b", 3), "a\nb\x7F"}),
                ElementsAre("%2E", "%2E%2E", "%", "%2Fetc%2Fpasswd", "..%2Fx", "a%00b", "a%0Ab%7F"));
}

TEST(TheNameOfAFile, IsCutBetweenCharacters) {
    constexpr std::size_t kLong = 300;
    const std::vector<std::string> names =
        namesOf({std::string(kLong, 'x'), std::string(kLong, 'x') + "y", std::string(199, 'x') + "\xC3\x9C"});
    EXPECT_EQ(names[0], std::string(si::FileNames::kLongest, 'x'));
    EXPECT_EQ(names[1], names[0] + "~2");
    EXPECT_EQ(names[2], std::string(199, 'x'));
}

TEST(TheNameOfAFile, IsToldFromOthers) {
    EXPECT_THAT(namesOf({"Logo.png", "logo.png", "logo.png", "a~2", "a", "a", "a/", "a%2F"}),
                ElementsAre("Logo.png", "logo.png", "logo.png~2", "a~2", "a", "a~3", "a%2F", "a%2F~2"));
}

TEST(TheNameOfAFile, TakesNoLongerTheMoreAreTheSame) {
    constexpr std::size_t kMany = 100000;
    si::FileNames names;
    std::string last;
    for (std::size_t index = 0; index < kMany; ++index) {
        last = names.take("same");
    }
    EXPECT_EQ(last, "same~" + std::to_string(kMany));
}
