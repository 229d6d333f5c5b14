// What the page of an application asks for.
#include "a_terminal.h"

namespace tvbrowser {

class ARequest : public ATerminal {
protected:
    ARequest() {
        runA();
        manager.aitReceived({signalled(kA, ControlCode::autostart), signalled(kB, ControlCode::present)});
    }
};

TEST_F(ARequest, StartsAnApplicationOfTheAitInPlaceOfTheCaller) {
    EXPECT_TRUE(manager.createApplication(1, "dvb://current.ait/190.2?a=1#top"));
    EXPECT_THAT(host.news(), are("load 2 " + kUrlB + "?a=1#top"));
    EXPECT_EQ(manager.running()->id, kB);
    EXPECT_TRUE(manager.running()->isBroadcastRelated);
    EXPECT_FALSE(manager.running()->isVisible);
    manager.pageLoaded(2);
    EXPECT_THAT(host.news(), are("started"));
}

TEST_F(ARequest, StartsTheCallersOwnApplicationAnew) {
    EXPECT_TRUE(manager.createApplication(1, "dvb://current.ait/190.1"));
    EXPECT_THAT(host.news(), are("load 2 " + kUrlA));
}

TEST_F(ARequest, LeavesTheCallerWhenTheAitDoesNotHaveTheApplication) {
    EXPECT_FALSE(manager.createApplication(1, "dvb://current.ait/190.3"));
    EXPECT_FALSE(manager.createApplication(1, "dvb://1.2.3/file"));
    EXPECT_THAT(host.news(), are());
    EXPECT_EQ(instance(), 1U);
    EXPECT_EQ(host.lines.at(host.lines.size() - 2),
              "not started: dvb://current.ait/190.3: the application is not signalled, or may not run");
    EXPECT_EQ(host.lines.back(), "not started: dvb://1.2.3/file: does not begin with dvb://current.ait/");
}

TEST_F(ARequest, DoesNotStartAnApplicationThatMayNotRun) {
    manager.aitReceived({signalled(kA, ControlCode::autostart), signalled(kB, ControlCode::disabled)});
    EXPECT_FALSE(manager.createApplication(1, "dvb://current.ait/190.2"));
    EXPECT_THAT(host.news(), are());
}

TEST_F(ARequest, FindsNoApplicationWhileTheNewChannelsAitIsUnknown) {
    manager.channelChanged(true, kTwo);
    EXPECT_FALSE(manager.createApplication(1, "dvb://current.ait/190.2"));
    EXPECT_THAT(host.news(), are());
}

TEST_F(ARequest, StartsABroadcastIndependentApplicationByItsUrl) {
    EXPECT_TRUE(manager.createApplication(1, "http://a.example/other.html"));
    EXPECT_THAT(host.news(), are("load 2 http://a.example/other.html"));
    EXPECT_FALSE(manager.running()->isBroadcastRelated);
    EXPECT_EQ(manager.running()->id, std::nullopt);
    manager.pageLoaded(2);
    EXPECT_THAT(host.news(), are());
}

TEST_F(ARequest, StartsASignalledApplicationByTheUrlOfItsEntryPoint) {
    EXPECT_TRUE(manager.createApplication(1, kUrlB + "?from=a"));
    EXPECT_THAT(host.news(), are("load 2 " + kUrlB + "?from=a"));
    EXPECT_TRUE(manager.running()->isBroadcastRelated);
    EXPECT_EQ(manager.running()->id, kB);
}

TEST_F(ARequest, RefusesUrlsOfOtherKinds) {
    for (const char* url : {"", "page.html", "file:///etc/passwd", "javascript:1", "about:blank"}) {
        EXPECT_FALSE(manager.createApplication(1, url)) << url;
        EXPECT_EQ(host.lines.back(),
                  std::string("not started: \"") + url + "\" is neither an HTTP URL nor one of the current AIT");
    }
    EXPECT_THAT(host.news(), are());
}

TEST_F(ARequest, ToEndItsApplicationRightAfterStartingAnotherEndsOnlyTheCaller) {
    EXPECT_TRUE(manager.createApplication(1, "dvb://current.ait/190.2"));
    manager.destroyApplication(1);
    EXPECT_THAT(host.news(), are("load 2 " + kUrlB));
    EXPECT_EQ(instance(), 2U);
}

TEST_F(ARequest, EndsItsApplication) {
    manager.destroyApplication(1);
    EXPECT_THAT(host.news(), are("unload"));
    EXPECT_EQ(host.lines.back(), "application 190.1 ends: it ended itself");
}

TEST_F(ARequest, OfAnApplicationThatHasEndedChangesNothing) {
    manager.start(kB);
    host.news();
    EXPECT_FALSE(manager.createApplication(1, "http://b.example/"));
    manager.show(1);
    manager.hide(1);
    manager.becomeIndependent(1);
    EXPECT_EQ(manager.setKeyset(1, keyset::kRed), 0U);
    EXPECT_THAT(host.news(), are());
    manager.exit();
    host.news();
    EXPECT_FALSE(manager.createApplication(2, "http://b.example/"));
    manager.destroyApplication(2);
    manager.show(2);
    EXPECT_THAT(host.news(), are());
    EXPECT_EQ(host.lines.back(), "not started: http://b.example/: the application that asks has ended");
}

TEST_F(ARequest, ShowsAndHidesOnce) {
    manager.hide(1);
    manager.hide(1);
    EXPECT_THAT(host.news(), are("hide", "changed hidden related"));
    manager.show(1);
    manager.show(1);
    EXPECT_THAT(host.news(), are("show", "changed visible related"));
}

}  // namespace tvbrowser
