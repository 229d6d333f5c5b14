// Applications that have several transports, or one by a carousel.
#include "a_terminal.h"

namespace tvbrowser {

namespace {

const std::string kInCarousel = "dvb://1.401.1.20/index.html";

SignalledApplication ofBoth(ControlCode control) {
    SignalledApplication application = signalled(kA, control);
    application.otherUrls = {kUrlA};
    application.url = kInCarousel;
    return application;
}

class ATransport : public ATerminal {};

TEST_F(ATransport, MayBeACarousel) {
    SignalledApplication application = signalled(kA, ControlCode::autostart);
    application.url = kInCarousel;
    present(kOne, {application});
    EXPECT_THAT(host.news(), are("load 1 " + kInCarousel));
    EXPECT_TRUE(manager.mayGoOnTo(1, "dvb://1.401.1.20/other/page.html?a"));
    EXPECT_FALSE(manager.mayGoOnTo(1, "dvb://1.401.1.21/index.html")) << "another carousel";
    EXPECT_FALSE(manager.mayGoOnTo(1, "http://a.example/"));
}

TEST_F(ATransport, ThatFailsIsFollowedByTheNext) {
    present(kOne, {ofBoth(ControlCode::autostart)});
    manager.loadFailed(1, "no such file");
    EXPECT_THAT(host.news(), are("load 1 " + kInCarousel, "load 1 " + kUrlA));
    EXPECT_EQ(host.lines.back(),
              "application 190.1 is loaded from " + kUrlA + ": its page does not load: no such file");
    manager.pageLoaded(1);
    EXPECT_THAT(host.news(), are("started"));
}

TEST_F(ATransport, ThatFailsAsTheLastEndsTheApplication) {
    present(kOne, {ofBoth(ControlCode::autostart)});
    manager.loadFailed(1, "no such file");
    manager.loadFailed(1, "refused");
    EXPECT_THAT(host.news(), are("load 1 " + kInCarousel, "load 1 " + kUrlA, "not started", "unload"));
}

TEST_F(ATransport, IsNotChangedOnceThePageIsThere) {
    present(kOne, {ofBoth(ControlCode::autostart)});
    manager.pageLoaded(1);
    manager.loadFailed(1, "refused");
    EXPECT_THAT(host.news(), are("load 1 " + kInCarousel, "started"));
}

TEST_F(ATransport, GetsTheQueryOfTheStart) {
    present(kOne, {ofBoth(ControlCode::present), signalled(kB, ControlCode::autostart)});
    EXPECT_TRUE(manager.createApplication(1, "dvb://current.ait/190.1?a#b"));
    manager.loadFailed(2, "no such file");
    EXPECT_THAT(host.news(), are("load 1 " + kUrlB, "load 2 " + kInCarousel + "?a#b", "load 2 " + kUrlA + "?a#b"));
}

TEST_F(ATransport, OfAnyRankMakesAnApplicationBroadcastRelated) {
    runIndependent(kUrlA);
    manager.tuneRequested(1, kOne);
    present(kOne, {ofBoth(ControlCode::present)});
    EXPECT_TRUE(manager.running()->isBroadcastRelated);
}

TEST_F(ATransport, ByACarouselNeedsASignalledApplication) {
    EXPECT_FALSE(manager.startIndependent(kInCarousel));
    EXPECT_THAT(host.news(), are());
    EXPECT_EQ(host.lines.back(), "not started: " + kInCarousel + ": only a signalled application can be in a carousel");
}

}  // namespace

}  // namespace tvbrowser
