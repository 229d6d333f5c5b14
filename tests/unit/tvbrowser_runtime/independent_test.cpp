// Broadcast-independent applications, and those that join or leave the broadcast.
#include "a_terminal.h"

namespace tvbrowser {

class AnIndependentApplication : public ATerminal {};

TEST_F(AnIndependentApplication, StaysOverChannelChanges) {
    runIndependent();
    present(kOne, {signalled(kA, ControlCode::autostart)});
    present(kTwo, {});
    EXPECT_THAT(host.news(), are());
    EXPECT_EQ(instance(), 1U);
}

TEST_F(AnIndependentApplication, BecomesRelatedByATuneToAChannelThatSignalsItsUrl) {
    runIndependent(kUrlA + "?from=portal");
    manager.tuneRequested(1, kOne);
    manager.channelChanged(true, kOne);
    EXPECT_THAT(host.news(), are());
    SignalledApplication entry = signalled(kA, ControlCode::present);
    entry.boundaries = {"http://b.example"};
    manager.aitReceived({signalled(kB, ControlCode::autostart), entry});
    EXPECT_THAT(host.news(), are("changed visible related"));
    EXPECT_EQ(manager.running()->id, kA);
    EXPECT_EQ(manager.running()->name, "190.1");
    EXPECT_THAT(manager.running()->boundaries, testing::ElementsAre("http://b.example"));
    manager.aitReceived({signalled(kA, ControlCode::kill)});
    EXPECT_THAT(host.news(), are("unload"));
}

TEST_F(AnIndependentApplication, BecomesRelatedByItsIdWhereverItComesFrom) {
    EXPECT_TRUE(manager.startIndependent("http://b.example/dev.html", kA));
    manager.tuneRequested(1, kOne);
    host.news();
    present(kOne, {signalled(kA, ControlCode::autostart)});
    EXPECT_THAT(host.news(), are("changed hidden related"));
    EXPECT_EQ(manager.running()->url, "http://b.example/dev.html");
}

TEST_F(AnIndependentApplication, StaysIndependentWhenTheIdIsAnother) {
    manager.startIndependent(kUrlA, kB);
    manager.tuneRequested(1, kOne);
    host.news();
    present(kOne, {signalled(kA, ControlCode::autostart)});
    EXPECT_THAT(host.news(), are());
}

TEST_F(AnIndependentApplication, StaysIndependentWhereItIsNotSignalledOrMayNotRun) {
    runIndependent(kUrlA);
    manager.tuneRequested(1, kOne);
    present(kOne, {signalled(kA, ControlCode::kill), signalled(kB, ControlCode::autostart)});
    manager.aitReceived({signalled(kA, ControlCode::present)});
    EXPECT_THAT(host.news(), are());
    EXPECT_FALSE(manager.running()->isBroadcastRelated);
}

TEST_F(AnIndependentApplication, StaysIndependentWhenTheUserTunes) {
    runIndependent(kUrlA);
    present(kOne, {signalled(kA, ControlCode::autostart)});
    EXPECT_THAT(host.news(), are());
}

TEST_F(AnIndependentApplication, StaysIndependentWhenItsTuneFails) {
    present(kTwo, {});
    runIndependent(kUrlA);
    manager.tuneRequested(1, kOne);
    manager.channelChanged(false, kTwo);
    present(kOne, {signalled(kA, ControlCode::autostart)});
    EXPECT_THAT(host.news(), are());
}

TEST_F(AnIndependentApplication, StaysIndependentWhenItsTuneLeadsNowhere) {
    present(kOne, {signalled(kA, ControlCode::present)});
    runIndependent(kUrlA);
    manager.tuneRequested(1, kTwo);
    manager.channelChanged(true, std::nullopt);
    EXPECT_THAT(host.news(), are());
}

TEST_F(AnIndependentApplication, IsNotJoinedToTheChannelThatItsTuneLeaves) {
    present(kOne, {});
    runIndependent(kUrlA);
    manager.tuneRequested(1, kTwo);
    manager.aitReceived({signalled(kA, ControlCode::autostart)});
    EXPECT_THAT(host.news(), are());
}

TEST_F(AnIndependentApplication, BecomesRelatedByATuneToTheChannelThatIsPresented) {
    present(kOne, {signalled(kA, ControlCode::present)});
    runIndependent(kUrlA);
    manager.tuneRequested(1, kOne);
    manager.channelChanged(true, kOne);
    EXPECT_THAT(host.news(), are("changed visible related"));
}

TEST_F(AnIndependentApplication, EndsByItself) {
    present(kOne, {signalled(kA, ControlCode::autostart)});
    EXPECT_TRUE(manager.createApplication(1, "http://b.example/"));
    manager.destroyApplication(2);
    EXPECT_THAT(host.news(), are("load 1 " + kUrlA, "load 2 http://b.example/", "unload"));
    manager.aitReceived({signalled(kA, ControlCode::autostart, 9)});
    EXPECT_THAT(host.news(), are());
}

TEST_F(AnIndependentApplication, NeedsACompleteUrl) {
    EXPECT_FALSE(manager.startIndependent("page.html"));
    EXPECT_THAT(host.news(), are());
    EXPECT_THAT(host.lines, are("not started: \"page.html\" is no complete URL"));
}

class ARelatedApplication : public ATerminal {};

TEST_F(ARelatedApplication, BecomesIndependentWhenItLeavesTheBroadcast) {
    runA();
    manager.becomeIndependent(1);
    EXPECT_THAT(host.news(), are("changed visible independent"));
    manager.becomeIndependent(1);
    present(kTwo, {signalled(kB, ControlCode::autostart)});
    manager.aitAbsent();
    EXPECT_THAT(host.news(), are());
    EXPECT_EQ(instance(), 1U);
}

TEST_F(ARelatedApplication, ThatLeftTheBroadcastComesBackByATune) {
    runA();
    manager.becomeIndependent(1);
    manager.tuneRequested(1, kTwo);
    host.news();
    present(kTwo, {signalled(kA, ControlCode::present)});
    EXPECT_THAT(host.news(), are("changed visible related"));
}

TEST_F(ARelatedApplication, IsToldNothingWhenItTunesToWhereItGoesOn) {
    runA();
    manager.tuneRequested(1, kTwo);
    present(kTwo, {signalled(kA, ControlCode::present)});
    EXPECT_THAT(host.news(), are());
}

TEST_F(ARelatedApplication, EndsWhenItsOwnTuneLeadsWhereItIsNotSignalled) {
    runA();
    manager.tuneRequested(1, kTwo);
    present(kTwo, {signalled(kB, ControlCode::autostart)});
    EXPECT_THAT(host.news(), are("unload", "load 2 " + kUrlB));
}

TEST_F(AnIndependentApplication, TakesThePlaceOfOneThatLeavesItsBoundary) {
    runA();
    EXPECT_TRUE(manager.mayGoOnTo(1, kUrlA + "?more"));
    EXPECT_FALSE(manager.mayGoOnTo(1, "http://elsewhere.example/"));
    EXPECT_FALSE(manager.mayGoOnTo(2, kUrlA)) << "another application";
    manager.leftBoundary(1, "http://elsewhere.example/");
    EXPECT_THAT(host.news(), are("load 2 http://elsewhere.example/"));
    EXPECT_FALSE(manager.running()->isBroadcastRelated);
    EXPECT_THAT(host.lines,
                testing::Contains("application 190.1 goes on to http://elsewhere.example/, outside of its boundary"));
    manager.leftBoundary(1, "http://third.example/");
    EXPECT_EQ(instance(), 2U) << "the one that left has ended";
}

TEST_F(AnIndependentApplication, IsNotStartedByAUrlThatIsNone) {
    runA();
    manager.leftBoundary(1, "about:blank");
    EXPECT_THAT(host.news(), are());
    EXPECT_EQ(instance(), 1U);
}

class AnXmlAit : public ATerminal {
protected:
    AnXmlAit() { manager.startIndependent("http://b.example/start.aitx"); }
};

TEST_F(AnXmlAit, StartsItsAutostartApplicationOfTheHighestPriority) {
    host.news();
    SignalledApplication best = signalled(kB, ControlCode::autostart, 2);
    best.boundaries = {"http://c.example"};
    manager.xmlAitReceived(1, {signalled(kA, ControlCode::autostart, 1), best, signalled(kA, ControlCode::present, 9)});
    EXPECT_THAT(host.news(), are("load 1 " + kUrlB));
    manager.pageLoaded(1);
    EXPECT_THAT(host.news(), are());
    EXPECT_EQ(manager.running()->id, kB);
    EXPECT_FALSE(manager.running()->isBroadcastRelated);
    EXPECT_TRUE(manager.mayGoOnTo(1, "http://c.example/next.html"));
    EXPECT_FALSE(manager.mayGoOnTo(1, "http://b.example/next.html"));
}

TEST_F(AnXmlAit, LeavesOutWhatTheTerminalCannotStart) {
    host.news();
    SignalledApplication newer = signalled(kA, ControlCode::autostart, 2);
    newer.profiles = {{0, 9, 1, 1}};
    manager.xmlAitReceived(1, {newer, signalled(kB, ControlCode::autostart, 1)});
    EXPECT_THAT(host.news(), are("load 1 " + kUrlB));
}

TEST_F(AnXmlAit, WithoutAnApplicationToStartEndsTheOneThatItWasToStart) {
    host.news();
    manager.xmlAitReceived(1, {signalled(kA, ControlCode::present)});
    EXPECT_THAT(host.news(), are("unload"));
    EXPECT_THAT(host.lines, testing::Contains(testing::HasSubstr("has no AUTOSTART application")));
}

TEST_F(AnXmlAit, LeadsToAPageAndNotToAnotherXmlAit) {
    manager.xmlAitReceived(1, {signalled(kA, ControlCode::autostart)});
    host.news();
    manager.xmlAitReceived(1, {signalled(kB, ControlCode::autostart)});
    EXPECT_THAT(host.news(), are("unload"));
}

TEST_F(AnXmlAit, LeadsToItsPageAgainWhenTheWebProcessDies) {
    manager.xmlAitReceived(1, {signalled(kA, ControlCode::autostart)});
    host.news();
    manager.webProcessDied(1);
    EXPECT_THAT(host.news(), are("load 1 " + kUrlA));
}

TEST_F(AnXmlAit, IsNoPageOfABroadcastRelatedApplication) {
    present(kOne, {signalled(kA, ControlCode::autostart)});
    manager.start(kA);
    host.news();
    manager.xmlAitReceived(instance(), {signalled(kB, ControlCode::autostart)});
    EXPECT_THAT(host.news(), are("not started", "unload"));
}

TEST_F(AnXmlAit, ThatComesTooLateChangesNothing) {
    manager.pageLoaded(1);
    host.news();
    manager.xmlAitReceived(1, {signalled(kA, ControlCode::autostart)});
    manager.xmlAitReceived(0, {signalled(kA, ControlCode::autostart)});
    EXPECT_THAT(host.news(), are());
}

}  // namespace tvbrowser
