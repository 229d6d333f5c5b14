// The A/V control object of pages.
#include "object_test.h"

namespace browser_tests {

namespace {

class AnAvControl : public AnObject {
protected:
    void run(const std::string& what) { pageEverywhere("av_control.html?" + what); }
    /// False if the engine cannot play audio here.
    bool playsAudio(const std::string& what) {
        run(what);
        return reported("supported") == "true";
    }
};

constexpr const char* kNoAudio = "gstreamer1.0-plugins-good is not installed; ./run test --browser installs it";

TEST_F(AnAvControl, SaysThatThereIsNoMedia) {
    run("missing");
    EXPECT_EQ(reported("data"), R"(["missing.mp4",null,0,320,180])");
    EXPECT_EQ(reported("refused"), "[false,false,false,true]");
    EXPECT_EQ(reported("unknown"), "[true,true,0]");
    EXPECT_EQ(reported("play"), "true");
    EXPECT_EQ(events(2), (Events{"PlaySpeedChanged 0", "PlayStateChange 3"}));
    EXPECT_EQ(reported("asExpected"), "true");
    EXPECT_EQ(reported("state", 1), "[3,3]");
    EXPECT_EQ(reported("state", 2), "[6,6]");
    EXPECT_EQ(reported("stopped"), "0");
}

TEST_F(AnAvControl, SaysWhyThereIsNoMedium) {
    if (!playsAudio("errors")) {
        GTEST_SKIP() << kNoAudio;
    }
    EXPECT_EQ(reported("refused"), "[1,1,true]");
    EXPECT_EQ(reported("missing"), "[5,5,true]");
    EXPECT_EQ(reported("noise"), "[4,4,true]");
    EXPECT_EQ(reported("unknown"), "[0,0,true]");
}

TEST_F(AnAvControl, PlaysAudioFromMemoryAsOftenAsItIsTold) {
    if (!playsAudio("loop")) {
        GTEST_SKIP() << kNoAudio;
    }
    EXPECT_EQ(reported("ends"), "3");
    EXPECT_EQ(reported("withoutCache"), "1");
    EXPECT_EQ(reported("infinite"), "true");
    EXPECT_EQ(reported("stopped"), "0");
}

TEST_F(AnAvControl, IsCopiedWithoutItsPicture) {
    if (!playsAudio("copies")) {
        GTEST_SKIP() << kNoAudio;
    }
    EXPECT_EQ(reported("markup"), "[1,1]");
    EXPECT_EQ(reported("clone"), R"([true,1,"beep.mp3"])");
    EXPECT_EQ(reported("own"), "[1,1,1]");
    EXPECT_EQ(reported("ofThePage"), "1");
}

TEST_F(AnAvControl, PlaysWhatIsQueuedNext) {
    if (!playsAudio("queue")) {
        GTEST_SKIP() << kNoAudio;
    }
    EXPECT_EQ(reported("null"), "true");
    EXPECT_EQ(reported("atOnce"), R"([true,"beep.mp3"])");
    EXPECT_EQ(reported("queued"), R"([true,false,"beep.mp3"])");
    EXPECT_EQ(reported("next"), R"(["silence.mp3",true,true])");
    EXPECT_EQ(reported("emptied"), "[true,true,true]");
    EXPECT_EQ(reported("afterStop"), "[0,true]");
}

TEST_F(AnAvControl, TakesItsDataAtAnyTime) {
    run("noData");
    EXPECT_EQ(reported("play"), "[false,0]");
    EXPECT_EQ(reported("late"), R"(["late.mp3",null])");
    EXPECT_EQ(reported("later"), "later.mp3");
}

TEST_F(AnAvControl, PlaysToTheEnd) {
    if (!playsAudio("play")) {
        GTEST_SKIP() << kNoAudio;
    }
    EXPECT_EQ(reported("play"), "true");
    EXPECT_EQ(reported("playing"), "[1,12000]");
    EXPECT_EQ(reported("seek"), "[false,false,true,11000]");
    EXPECT_EQ(reported("finished"), "[0,true]");
    EXPECT_EQ(reported("state", 1), "[3,3]");
    EXPECT_EQ(reported("state", 2), "[4,4]");
    EXPECT_EQ(reported("state", 3), "[1,1]");
}

TEST_F(AnAvControl, PausesAndGoesOn) {
    if (!playsAudio("pause")) {
        GTEST_SKIP() << kNoAudio;
    }
    EXPECT_EQ(reported("paused"), "[2,0]");
    EXPECT_EQ(reported("stays"), "true");
    EXPECT_EQ(reported("goesOn"), "1");
    EXPECT_EQ(reported("stopped"), "[0,true]");
}

TEST_F(AnAvControl, IsPausedBeforeItHasPlayed) {
    if (!playsAudio("pauseFirst")) {
        GTEST_SKIP() << kNoAudio;
    }
    EXPECT_EQ(reported("paused"), "[0,12000,0]");
    EXPECT_EQ(reported("plays"), "1");
}

TEST_F(AnAvControl, IsPausedWhileItsDataAreOnTheirWay) {
    if (!playsAudio("pauseBeforeData")) {
        GTEST_SKIP() << kNoAudio;
    }
    EXPECT_EQ(reported("paused"), "[0,0]");
}

}  // namespace

}  // namespace browser_tests
