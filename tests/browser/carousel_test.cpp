// Applications and files out of object carousels.
#include <gmock/gmock.h>

#include "tv_browser.h"

namespace browser_tests {

namespace {

/// A picture of two by one points.
constexpr char kImageBytes[] = "GIF89a\2\0\1\0\x80\0\0\0\0\0\xFF\xFF\xFF,\0\0\0\0\2\0\1\0\0\2\2\x44\x0A\0;";
const std::string kImage(kImageBytes, sizeof kImageBytes - 1);

class ACarousel : public ATvBrowser {
protected:
    static constexpr std::uint8_t kTag = 0x20;
    static constexpr std::uint8_t kOtherTag = 0x21;
    static constexpr std::uint16_t kPid = 900;

    using Files = std::map<std::string, std::string>;

    static Files applicationFiles(const std::string& data) {
        return {{"index.html", fileText(std::string(PAGES) + "/carousel/index.html")},
                {"report.js", fileText(std::string(PAGES) + "/report.js")},
                {"scripts/more steps.js", "window.moreSteps = \"run\";"},
                {"style.css", "p { color: rgb(1, 2, 3) }"},
                {"images/dot.png", kImage},
                {"data.txt", data}};
    }
    /// The sound takes 2.4 seconds.
    static Files mediaFiles() {
        constexpr std::size_t kFrames = 100;
        constexpr std::size_t kFrameSize = 192;
        std::string sound;
        for (std::size_t frame = 0; frame < kFrames; ++frame) {
            sound += "\xFF\xFB\x54\xC0";  // MPEG-1 layer III: 64 kbit/s, 48 kHz, one channel, 24 ms
            sound.append(kFrameSize - 4, '\0');
        }
        return {{"media.html", fileText(std::string(PAGES) + "/carousel/media.html")},
                {"report.js", fileText(std::string(PAGES) + "/report.js")},
                {"sound.mp3", sound}};
    }
    static tsmake::Carousel mediaCarousel() {
        tsmake::Carousel made = carousel({{0, "", mediaFiles()}});
        made.isCompressed = false;  // the sound is silence, which readers take for a trap
        return made;
    }
    static tsmake::Carousel carousel(const std::vector<tsmake::CarouselVersion>& versions, std::uint8_t tag = kTag) {
        tsmake::Carousel made;
        made.id = tag;
        made.versions = versions;
        made.tag = tag;
        made.pid = static_cast<std::uint16_t>(kPid + tag);
        made.bitRate = 300000;
        return made;
    }
    /// In the carousel alone.
    tsmake::Application inCarousel(const std::string& path, std::uint16_t id = 1,
                                   std::uint8_t control = kAutostart) const {
        tsmake::Application made = application(path, id, control);
        made.urlBase.clear();
        made.carouselTag = kTag;
        return made;
    }
    tsmake::Multiplex broadcast(const std::vector<tsmake::Application>& applications,
                                const std::vector<tsmake::Carousel>& carousels) const {
        tsmake::Multiplex made = broadcastWithoutApplications();
        made.services[0].ait.versions = {{0, 1, applications}};
        made.services[0].carousels = carousels;
        return made;
    }
    /// The application, whose fragment names a file for the keys of its page.
    tsmake::Multiplex broadcastAskingFor(const std::string& file, const std::vector<tsmake::Carousel>& others = {},
                                         const std::string& query = "first") const {
        std::vector<tsmake::Carousel> all{carousel({{0, "", applicationFiles("one")}})};
        all.insert(all.end(), others.begin(), others.end());
        return broadcast({inCarousel("index.html?" + query + "#" + file)}, all);
    }
    static tsmake::Carousel otherCarousel() { return carousel({{0, "", applicationFiles("other")}}, kOtherTag); }
    static std::string tune(const std::string& channel) {
        ChildProcess dtvctl(DTVCTL, {"tune", channel}, "dtvctl");
        return dtvctl.wait() == 0 ? "done" : dtvctl.output();
    }
};

const std::string kOrigin = "dvb://1.401.6dca.20";
const std::string kOtherOrigin = "dvb://1.401.6dca.21";
const std::string kSecondService = "1:1025:28107";
const std::string kServiceWithoutApplications = "1:1025:28108";

TEST_F(ACarousel, HasAnApplicationWithItsFiles) {
    start(broadcast({inCarousel("index.html?first")}, {carousel({{0, "", applicationFiles("one")}})}));
    EXPECT_EQ(reported("running"), "first");
    EXPECT_TRUE(says("application: started"));
    EXPECT_EQ(reported("image"), "2x1");
    EXPECT_EQ(reported("style"), "rgb(1, 2, 3)");
    EXPECT_EQ(reported("script"), "run");
    EXPECT_EQ(reported("origin"), kOrigin + " " + kOrigin);
    EXPECT_EQ(reported("place"), kOrigin + "/index.html?first");
    EXPECT_EQ(reported("storage"), "kept");
    EXPECT_EQ(reported("sync"), "one 200 text/plain");
    EXPECT_EQ(reported("read"), "data.txt#fragment 200 one");
    EXPECT_EQ(reported("fetched"), "one");
}

TEST_F(ACarousel, MayHaveADocumentOfHbbTvsOwnType) {
    tsmake::Carousel typed = carousel({{0,
                                        "",
                                        {{"documents.xhtml", fileText(std::string(PAGES) + "/documents.xhtml")},
                                         {"report.js", fileText(std::string(PAGES) + "/report.js")}}}});
    typed.contentTypes = {{"documents.xhtml", "application/vnd.hbbtv.xhtml+xml; charset=utf-8"}};
    start(broadcast({inCarousel("documents.xhtml?first")}, {typed}));
    EXPECT_EQ(reported("loaded"), kOrigin + "/documents.xhtml?first");
    EXPECT_EQ(reported("made"), "function DIV");
    press("1");
    EXPECT_EQ(reported("loaded", 2), kOrigin + "/documents.xhtml?second");
    EXPECT_EQ(reported("length", 2), "2");
    press("2");
    EXPECT_EQ(reported("loaded", 3), kOrigin + "/documents.xhtml?first");
    press("8");
    EXPECT_EQ(reported("type"), "application/vnd.hbbtv.xhtml+xml; charset=utf-8");
    EXPECT_EQ(reported("requested"), "1");
}

TEST_F(ACarousel, GivesNewFilesToARunningApplication) {
    startFed(broadcast(
        {inCarousel("index.html?first")},
        {carousel({{0, "", applicationFiles("one")}, {FedBroadcast::kSecondState, "", applicationFiles("two")}})}));
    EXPECT_EQ(reported("sync"), "one 200 text/plain");
    reported("running");
    change();
    EXPECT_TRUE(eventually([this] {
        press("RED");
        return browser->reports("sync").back() == "two 200 text/plain";
    }));
    EXPECT_THAT(browser->reports("sync"), testing::Each(testing::AnyOf("one 200 text/plain", "two 200 text/plain")));
    EXPECT_EQ(browser->count("application: load"), 1U);
}

TEST_F(ACarousel, IsWaitedForUntilItsBlocksCome) {
    constexpr std::uint16_t kBlocks = 999;
    tsmake::Carousel late = otherCarousel();
    late.blockTag = kOtherTag + 1;
    late.blockPid = kBlocks;
    startFed(broadcastAskingFor(kOtherOrigin + "/images/dot.png", {late}), {kBlocks});
    reported("running");
    press("2");
    reported("asks");
    press("RED");
    EXPECT_EQ(reported("sync", 2), "one 200 text/plain") << "other files come meanwhile";
    EXPECT_TRUE(browser->reports("shown").empty());
    change();
    EXPECT_EQ(reported("shown"), "2x1");
}

TEST_F(ACarousel, WithoutTheFileFailsAndSaysSo) {
    start(broadcastAskingFor("none/of%20these.txt"));
    reported("running");
    press("YELLOW");
    EXPECT_EQ(reported("read", 2), "none/of these.txt failed");
    EXPECT_TRUE(says("carousel: " + kOrigin + "/none/of%20these.txt: the carousel has no such file"));
    press("1");
    EXPECT_EQ(reported("sync", 2), "NetworkError");
}

TEST_F(ACarousel, WithoutTheFirstPageDoesNotStartItsApplication) {
    start(broadcast({inCarousel("none.html")}, {carousel({{0, "", applicationFiles("one")}})}));
    EXPECT_TRUE(says("application: not started"));
    EXPECT_TRUE(says("its page does not load: " + kOrigin + "/none.html: the carousel has no such file"));
}

TEST_F(ACarousel, ThatTheServiceDoesNotHaveFails) {
    start(broadcastAskingFor("dvb://1.401.6dca.33/data.txt"));
    reported("running");
    press("2");
    EXPECT_EQ(reported("shown"), "failed");
    EXPECT_TRUE(says("carousel: dvb://1.401.6dca.33/data.txt: the service has no such carousel"));
}

TEST_F(ACarousel, OfAnotherServiceFails) {
    start(broadcastAskingFor("dvb://1.401.6dcb.20/data.txt"));
    reported("running");
    press("2");
    EXPECT_EQ(reported("shown"), "failed");
    EXPECT_TRUE(says("carousel: dvb://1.401.6dcb.20/data.txt: its service is not presented"));
}

TEST_F(ACarousel, BesideAnotherIsAnOriginOfItsOwn) {
    start(broadcastAskingFor(kOtherOrigin + "/data.txt", {otherCarousel()}));
    reported("running");
    press("YELLOW");
    EXPECT_EQ(reported("read", 2), kOtherOrigin + "/data.txt failed");
}

TEST_F(ACarousel, BesideAnotherShowsItsImages) {
    start(broadcastAskingFor(kOtherOrigin + "/images/dot.png", {otherCarousel()}));
    reported("running");
    press("2");
    EXPECT_EQ(reported("shown"), "2x1");
}

TEST_F(ACarousel, IsTheBoundaryOfItsApplication) {
    start(broadcastAskingFor(kOtherOrigin + "/index.html", {otherCarousel()}));
    reported("running");
    press("BLUE");
    EXPECT_TRUE(
        says("not started: " + kOtherOrigin + "/index.html: only a signalled application can be in a carousel"));
    press("RED");
    EXPECT_EQ(reported("sync", 2), "one 200 text/plain");
    EXPECT_EQ(browser->count("application: load"), 1U);
}

TEST_F(ACarousel, HasTheOtherPagesOfItsApplication) {
    start(broadcastAskingFor("index.html%3Fnext"));
    reported("running");
    press("BLUE");
    EXPECT_EQ(reported("running", 2), "next");
    EXPECT_EQ(reported("storage", 2), "keptkept");
    EXPECT_EQ(browser->count("application: load"), 1U);
}

TEST_F(ACarousel, HasAnApplicationThatIsCreatedByTheCurrentAit) {
    start(broadcast({inCarousel("index.html?first#dvb%3A%2F%2Fcurrent.ait%2F190.2%3Fmore"),
                     inCarousel("index.html?second", 2, kPresent)},
                    {carousel({{0, "", applicationFiles("one")}})}));
    reported("running");
    press("GREEN");
    EXPECT_EQ(reported("created"), "true");
    EXPECT_EQ(reported("running", 2), "second&more");
    EXPECT_EQ(reported("place", 2), kOrigin + "/index.html?second&more");
}

TEST_F(ACarousel, HasAMediumThatAnObjectPlays) {
    start(broadcast({inCarousel("media.html?sound.mp3")}, {mediaCarousel()}));
    EXPECT_EQ(reported("play"), "true");
    EXPECT_EQ(reported("state", 1), "3");
    EXPECT_TRUE(browser->reports("state", "1"));
    EXPECT_TRUE(browser->reports("state", "5"));
}

TEST_F(ACarousel, WithoutTheMediumIsAnErrorOfTheObject) {
    start(broadcast({inCarousel("media.html?none.mp3")}, {mediaCarousel()}));
    EXPECT_EQ(reported("state", 1), "3");
    EXPECT_EQ(reported("state", 2), "6 1");
}

TEST_F(ACarousel, IsReadAgainWhenTheDtvServiceIsBack) {
    start(broadcastAskingFor("data.txt"));
    reported("running");
    service.reset();
    ASSERT_TRUE(says("service: gone"));
    press("YELLOW");
    service = std::make_unique<ServiceProcess>(kRunDirectory + "/broadcast.ts");
    EXPECT_EQ(reported("read", 2), "data.txt 200 one");
    press("YELLOW");
    EXPECT_EQ(reported("read", 3), "data.txt 200 one");
}

TEST_F(ACarousel, ThatIsLeftHoldsNoScriptUp) {
    constexpr std::uint16_t kBlocks = 999;
    tsmake::Carousel late = otherCarousel();
    late.blockTag = kOtherTag + 1;
    late.blockPid = kBlocks;
    tsmake::Multiplex made = broadcastAskingFor(kOtherOrigin + "/data.txt", {late});
    made.services[1].ait.versions = {{0, 1, {application("life.html?second", 2)}}};
    startFed(made, {kBlocks});
    reported("running");
    press("1");
    reported("asks");
    EXPECT_EQ(tune(kSecondService), "done");
    EXPECT_TRUE(says("carousel: " + kOtherOrigin + "/data.txt: its"));
    EXPECT_EQ(reported("running", 2), "second");
}

TEST_F(ACarousel, IsLeftWithItsService) {
    start(broadcastAskingFor("data.txt"));
    reported("running");
    EXPECT_EQ(tune(kServiceWithoutApplications), "done");
    EXPECT_TRUE(says("application: none"));
}

class AnApplicationOfTwoTransports : public ACarousel {
protected:
    tsmake::Application ofBoth(const std::string& page, bool isCarouselFirst) const {
        tsmake::Application made = inCarousel(page);
        made.urlBase = pages.url();
        made.isCarouselFirst = isCarouselFirst;
        return made;
    }
};

TEST_F(AnApplicationOfTwoTransports, ComesByTheOneThatItsAitPrefers) {
    start(broadcast({ofBoth("carousel/index.html?first", true)},
                    {carousel({{0,
                                "",
                                {{"carousel/index.html", applicationFiles("one")["index.html"]},
                                 {"carousel/report.js", applicationFiles("one")["report.js"]}}}})}));
    EXPECT_EQ(reported("place"), kOrigin + "/carousel/index.html?first");
}

TEST_F(AnApplicationOfTwoTransports, ComesByTheServerIfThatIsPreferred) {
    start(broadcast({ofBoth("life.html?first", false)}, {carousel({{0, "", applicationFiles("one")}})}));
    EXPECT_EQ(reported("running"), "first");
    EXPECT_TRUE(says("application: load 190.1 " + pages.url() + "life.html?first"));
}

TEST_F(AnApplicationOfTwoTransports, ComesByTheOtherWhereTheFirstDoesNotHaveIt) {
    start(broadcast({ofBoth("life.html?first", true)}, {carousel({{0, "", applicationFiles("one")}})}));
    EXPECT_EQ(reported("running"), "first");
    EXPECT_TRUE(says("application: load 190.1 " + kOrigin + "/life.html?first"));
    EXPECT_TRUE(says("application: load 190.1 " + pages.url() + "life.html?first"));
    EXPECT_TRUE(says("application: started"));
}

}  // namespace

}  // namespace browser_tests
