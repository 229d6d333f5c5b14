// The page of an application: loaded, not loaded, lost with its process.
#include "a_terminal.h"

namespace tvbrowser {

class APage : public ATerminal {
protected:
    void startA() {
        present(kOne, {signalled(kA, ControlCode::autostart)});
        host.news();
    }
};

TEST_F(APage, ThatIsLoadedIsReportedOnce) {
    startA();
    manager.pageLoaded(1);
    EXPECT_THAT(host.news(), are("started"));
    manager.pageLoaded(1);
    EXPECT_THAT(host.news(), are());
    EXPECT_THAT(host.lines, are("application 190.1 starts: " + kUrlA, "application 190.1 is loaded"));
}

TEST_F(APage, ThatDoesNotLoadEndsItsApplication) {
    startA();
    manager.loadFailed(1, "404 Not Found");
    EXPECT_THAT(host.news(), are("not started", "unload"));
    EXPECT_EQ(manager.running(), nullptr);
    EXPECT_EQ(host.lines.back(), "application 190.1 ends: its page does not load: 404 Not Found");
}

TEST_F(APage, ThatDoesNotLoadIsNotTriedAgain) {
    startA();
    manager.loadFailed(1, "refused");
    host.news();
    manager.aitReceived({signalled(kA, ControlCode::autostart), signalled(kB, ControlCode::present)});
    EXPECT_THAT(host.news(), are());
}

TEST_F(APage, ThatDoesNotLoadDoesNotBringItsCallerBack) {
    runA();
    manager.aitReceived({signalled(kA, ControlCode::autostart), signalled(kB, ControlCode::present)});
    EXPECT_TRUE(manager.createApplication(1, "dvb://current.ait/190.2"));
    manager.loadFailed(2, "refused");
    EXPECT_THAT(host.news(), are("load 2 " + kUrlB, "not started", "unload"));
}

TEST_F(APage, OfTheSameApplicationMayFailLater) {
    runA();
    manager.loadFailed(1, "refused");
    EXPECT_THAT(host.news(), are());
    EXPECT_EQ(instance(), 1U);
    EXPECT_EQ(host.lines.back(), "application 190.1 stays, but a page of it does not load: refused");
}

TEST_F(APage, OfAnApplicationThatHasEndedSaysNothing) {
    startA();
    manager.exit();
    host.news();
    manager.pageLoaded(1);
    manager.loadFailed(1, "aborted");
    manager.webProcessDied(1);
    EXPECT_THAT(host.news(), are());
}

TEST_F(APage, OfABroadcastIndependentApplicationIsNotReported) {
    manager.startIndependent("http://b.example/");
    manager.pageLoaded(1);
    EXPECT_THAT(host.news(), are("load 1 http://b.example/"));
    manager.startIndependent("http://c.example/");
    manager.loadFailed(2, "refused");
    EXPECT_THAT(host.news(), are("load 2 http://c.example/", "unload"));
}

TEST_F(APage, IsLoadedAgainWhenItsProcessDied) {
    runA();
    manager.setKeyset(1, keyset::kRed);
    manager.webProcessDied(1);
    EXPECT_THAT(host.news(), are("load 1 " + kUrlA));
    EXPECT_FALSE(manager.running()->isVisible);
    manager.show(1);
    EXPECT_EQ(press("RED"), KeyAction::Kind::none);
    host.news();
    manager.pageLoaded(1);
    EXPECT_THAT(host.news(), are());
}

TEST_F(APage, WhoseProcessDiedBeforeItWasLoadedIsReportedAfterwards) {
    startA();
    manager.webProcessDied(1);
    manager.pageLoaded(1);
    EXPECT_THAT(host.news(), are("load 1 " + kUrlA, "started"));
}

TEST_F(APage, WhoseProcessDiesAgainEndsItsApplication) {
    runA();
    manager.webProcessDied(1);
    manager.pageLoaded(1);
    host.news();
    manager.webProcessDied(1);
    EXPECT_THAT(host.news(), are("unload"));
    EXPECT_EQ(host.lines.back(), "application 190.1 ends: its web process died again");
    manager.aitReceived({signalled(kA, ControlCode::autostart, 2)});
    EXPECT_THAT(host.news(), are());
}

TEST_F(APage, ThatDoesNotLoadAgainEndsItsApplication) {
    runA();
    manager.webProcessDied(1);
    host.news();
    manager.loadFailed(1, "refused");
    EXPECT_THAT(host.news(), are("unload"));
}

TEST_F(APage, WhoseProcessDiesTwiceBeforeItWasLoadedHasNotStarted) {
    startA();
    manager.webProcessDied(1);
    manager.webProcessDied(1);
    EXPECT_THAT(host.news(), are("load 1 " + kUrlA, "not started", "unload"));
}

TEST_F(APage, OfTheNextLifeMayLoseItsProcessOnceToo) {
    runA();
    manager.webProcessDied(1);
    manager.start(kA);
    host.news();
    manager.webProcessDied(2);
    EXPECT_THAT(host.news(), are("load 2 " + kUrlA));
}

}  // namespace tvbrowser
