// Tests of counting messages that repeat.
#include "repeated_messages.h"

#include <gtest/gtest.h>

namespace {

using dtvservice::RepeatedMessages;

class ARepeatedMessage : public testing::Test {
protected:
    /// Tells the message once a second. Returns what is written, or empty.
    std::string tellAfter(std::chrono::seconds passed, const std::string& message = "no signal") {
        now += passed;
        return messages.tell(message, now).value_or("");
    }

    RepeatedMessages messages;
    RepeatedMessages::Clock::time_point now{};
};

constexpr std::chrono::seconds kSecond{1};

}  // namespace

TEST_F(ARepeatedMessage, IsWrittenOnceThenWithItsNumber) {
    EXPECT_EQ(tellAfter(kSecond), "no signal");
    for (int count = 1; count < 10; ++count) {
        EXPECT_EQ(tellAfter(kSecond), "") << count;
    }
    EXPECT_EQ(tellAfter(kSecond), "no signal (repeated 10 times)");
    for (int count = 1; count < 20; ++count) {
        EXPECT_EQ(tellAfter(kSecond), "") << count;
    }
    EXPECT_EQ(tellAfter(kSecond), "no signal (repeated 20 times)");
}

TEST_F(ARepeatedMessage, DelaysNoOther) {
    EXPECT_EQ(tellAfter(kSecond), "no signal");
    EXPECT_EQ(tellAfter(kSecond, "no adapter"), "no adapter");
    EXPECT_EQ(tellAfter(kSecond), "") << "still the first";
}

TEST_F(ARepeatedMessage, IsNewAfterAnHour) {
    EXPECT_EQ(tellAfter(kSecond), "no signal");
    EXPECT_EQ(tellAfter(RepeatedMessages::kLongestPause + kSecond), "no signal");
}

TEST_F(ARepeatedMessage, TellsAfterAnHourWhatWasNotTold) {
    EXPECT_EQ(tellAfter(kSecond), "no signal");
    EXPECT_EQ(tellAfter(kSecond), "");
    EXPECT_EQ(tellAfter(RepeatedMessages::kLongestPause + kSecond), "no signal (repeated 2 times)");
    EXPECT_EQ(tellAfter(RepeatedMessages::kFirstPause), "no signal (repeated 1 times)") << "as at first";
}

TEST_F(ARepeatedMessage, MayHaveATextThatChanges) {
    EXPECT_EQ(messages.tell("lost", "3 lost so far", 3, now), "3 lost so far");
    EXPECT_EQ(messages.tell("lost", "5 lost so far", 2, now), std::nullopt);
    EXPECT_EQ(messages.tell("lost", "9 lost so far", 4, now + RepeatedMessages::kFirstPause),
              "9 lost so far (repeated 6 times)");
}

TEST_F(ARepeatedMessage, IsOneOfALimitedNumber) {
    for (std::size_t number = 0; number <= RepeatedMessages::kMostMessages; ++number) {
        EXPECT_NE(tellAfter(kSecond, std::to_string(number)), "");
    }
    EXPECT_EQ(tellAfter(kSecond, "0"), "0") << "forgotten";
}

TEST_F(ARepeatedMessage, IsNotForgottenUntold) {
    for (std::size_t number = 0; number < RepeatedMessages::kMostMessages; ++number) {
        tellAfter(std::chrono::seconds(0), std::to_string(number));
    }
    EXPECT_EQ(tellAfter(kSecond, "0"), "");
    EXPECT_EQ(tellAfter(kSecond, "1"), "");
    EXPECT_EQ(tellAfter(kSecond), "no signal (2 repetitions of other messages were not told)");
    EXPECT_EQ(tellAfter(kSecond, "0"), "0");
}
