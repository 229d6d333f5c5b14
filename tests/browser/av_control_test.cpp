// The A/V control object of pages.
#include "object_test.h"

namespace browser_tests {

namespace {

class AnAvControl : public AnObject {
protected:
    void run(const std::string& what) { pageEverywhere("av_control.html?" + what); }
};

TEST_F(AnAvControl, SaysThatThereIsNoMedia) {
    run("missing");
    EXPECT_EQ(reported("data"), R"(["missing.mp4",null,0,320,180])");
    EXPECT_EQ(reported("refused"), "[false,false,false,true]");
    EXPECT_EQ(reported("unknown"), "[true,true,0]");
    EXPECT_EQ(reported("play"), "true");
    EXPECT_EQ(reported("event"), "PlayStateChange 3");
    EXPECT_EQ(reported("asExpected"), "true");
    EXPECT_EQ(reported("stopped"), "0");
}

TEST_F(AnAvControl, TakesItsDataAtAnyTime) {
    run("noData");
    EXPECT_EQ(reported("play"), "[false,0]");
    EXPECT_EQ(reported("late"), R"(["late.mp3",null])");
    EXPECT_EQ(reported("later"), "later.mp3");
}

}  // namespace

}  // namespace browser_tests
