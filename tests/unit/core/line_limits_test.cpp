// Tests of limiting the log lines about a subject.
#include "line_limits.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "logged.h"

namespace {

using dtvservice::LineLimits;

class SomeLines : public testing::Test {
protected:
    SomeLines() { recording::reset(); }

    std::uint64_t tell(const std::string& subject, std::uint64_t times, const char* function = "tune") {
        std::uint64_t told = 0;
        for (std::uint64_t line = 0; line < times; ++line) {
            told += limits.mayTell(subject, function, now) ? 1 : 0;
        }
        return told;
    }

    LineLimits limits;
    LineLimits::Clock::time_point now;
};

}  // namespace

TEST_F(SomeLines, AreAllWrittenUpToTheLimit) {
    for (int period = 0; period < 3; ++period) {
        EXPECT_EQ(tell("browser 1", LineLimits::kMostLines), LineLimits::kMostLines);
        now += LineLimits::kPeriod;
    }
    limits.forget("browser 1");
    EXPECT_THAT(logged::messages(), testing::IsEmpty());
}

TEST_F(SomeLines, AreLeftOutAboveItAndCounted) {
    EXPECT_EQ(tell("browser 1", 1000), LineLimits::kMostLines);
    EXPECT_EQ(tell("browser 2", 1), 1U) << "another one";
    EXPECT_EQ(tell("browser 1", 1, "open"), 1U) << "another kind";
    EXPECT_THAT(logged::messages(), testing::ElementsAre("browser 1: no further line of tune() for 10 s\n"));
    now += LineLimits::kPeriod;
    EXPECT_EQ(tell("browser 1", 1), 1U);
    EXPECT_THAT(logged::messages(), testing::ElementsAre("browser 1: no further line of tune() for 10 s\n",
                                                         "browser 1: 950 lines of tune() were left out\n"));
}

TEST_F(SomeLines, AreCountedWhenTheSubjectGoes) {
    tell("browser 1", 52);
    limits.forget("browser 1");
    limits.forget("browser 1");
    EXPECT_THAT(logged::messages(), testing::ElementsAre("browser 1: no further line of tune() for 10 s\n",
                                                         "browser 1: 2 lines of tune() were left out\n"));
}

TEST(AShownName, IsSafeAndShort) {
    EXPECT_EQ(dtvservice::shownName("session-7"), "session-7");
    EXPECT_EQ(dtvservice::shownName("a\x1b[2Jb"), "a\\x1b[2Jb");
    EXPECT_EQ(dtvservice::shownName(std::string(65, 'n')), std::string(64, 'n') + "...");
}
