// The broadcast's picture in pages, from the stream that the service gives by HTTP.
#include "tv_browser.h"

namespace browser_tests {

namespace {

/// A broadcast of one service whose picture is red; empty if there is no ffmpeg that makes it.
std::string redBroadcast() {
    const std::string file = kRunDirectory + "/red.ts";
    ChildProcess ffmpeg("/usr/bin/env",
                        {"ffmpeg",
                         "-loglevel",
                         "error",
                         "-f",
                         "lavfi",
                         "-i",
                         "color=c=red:size=320x180:rate=25",
                         "-f",
                         "lavfi",
                         "-i",
                         "sine=frequency=440",
                         "-c:a",
                         "mp2",
                         "-t",
                         "10",
                         "-c:v",
                         "mpeg2video",
                         "-b:v",
                         "500k",
                         "-f",
                         "mpegts",
                         "-mpegts_flags",
                         "system_b",
                         file},
                        "ffmpeg", Runner::machine);
    return ffmpeg.wait() == 0 ? file : "";
}

/// The colour of a PNG at a place, red, green and blue.
std::vector<int> colourAt(const std::string& png, const std::string& place) {
    ChildProcess ffmpeg("/usr/bin/env",
                        {"ffmpeg", "-y", "-loglevel", "error", "-i", png, "-vf", "crop=1:1:" + place, "-f", "rawvideo",
                         "-pix_fmt", "rgb24", "pipe:1"},
                        "colour", Runner::machine);
    EXPECT_EQ(ffmpeg.wait(), 0);
    std::vector<int> colour;
    for (const char byte : ffmpeg.output()) {
        colour.push_back(static_cast<unsigned char>(byte));
    }
    return colour;
}

class APicture : public ATvBrowser {
protected:
    /// False if the picture cannot be made or served here.
    bool start() {
        const std::string file = redBroadcast();
        if (file.empty()) {
            return false;
        }
        service = std::make_unique<ServiceProcess>(
            std::vector<std::string>{file, "--http", "0", "--application", pages.url() + "picture.html"});
        const std::string output = service->output();
        const std::size_t at = output.find("stream: ");
        if (at == std::string::npos) {
            return false;
        }
        const std::size_t from = at + std::string("stream: ").size();
        const std::string stream = output.substr(from, output.find('\n', from) - from);
        browser = std::make_unique<Browser>(std::vector<std::string>{"--picture", stream});
        return true;
    }
    std::vector<int> colourOnScreen(const std::string& place) const {
        const std::string file = kRunDirectory + "/screen.png";
        browser->command("screenshot " + file);
        EXPECT_TRUE(browser->says("screenshot: " + file, ++screenshots));
        return colourAt(file, place);
    }
    bool isRed(const std::string& place) const {
        constexpr int kStrong = 180;
        constexpr int kWeak = 80;
        const std::vector<int> colour = colourOnScreen(place);
        return colour.size() == 3 && colour[0] > kStrong && colour[1] < kWeak && colour[2] < kWeak;
    }

    mutable std::size_t screenshots = 0;
};

TEST_F(APicture, IsInTheBoxOfTheBroadcastObject) {
    if (!start()) {
        GTEST_SKIP() << "ffmpeg or libmicrohttpd is not installed; ./run test --browser installs them";
    }
    EXPECT_EQ(reported("picture"), "[320,180]");
    EXPECT_EQ(reported("box"), "[100,50,640,360]");
    EXPECT_EQ(reported("fullScreen"), "[0,0,1280,720]");
    EXPECT_EQ(reported("above"), "controls");
    EXPECT_EQ(reported("below"), "true");
    EXPECT_EQ(reported("unplaced"), "[320,150]");
    EXPECT_EQ(reported("boxAgain"), "[100,50,640,360]");
    EXPECT_EQ(reported("volume"), "[100,true,30]");
    EXPECT_TRUE(eventually([this] { return isRed("400:200"); }));
    EXPECT_FALSE(isRed("50:200")) << "left of the box";
    press("RED");
    EXPECT_EQ(reported("stopped"), "0");
    EXPECT_TRUE(eventually([this] { return !isRed("400:200"); }));
}

}  // namespace

}  // namespace browser_tests
