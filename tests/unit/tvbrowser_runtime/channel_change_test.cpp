// What a channel change does to the application that runs.
#include "a_terminal.h"

namespace tvbrowser {

class AChannelChange : public ATerminal {
protected:
    using ATerminal::ATerminal;
};

TEST_F(AChannelChange, LeavesTheApplicationUntilTheNewAitIsKnown) {
    runA();
    manager.channelChanged(true, kTwo);
    EXPECT_THAT(host.news(), are());
    EXPECT_EQ(instance(), 1U);
    EXPECT_THAT(manager.signalled(), testing::IsEmpty());
}

TEST_F(AChannelChange, KeepsAnApplicationThatTheNewChannelAutostarts) {
    runA();
    present(kTwo, {signalled(kA, ControlCode::autostart)});
    EXPECT_THAT(host.news(), are());
    EXPECT_EQ(instance(), 1U);
}

TEST_F(AChannelChange, KeepsAnApplicationThatTheNewChannelHasAsPresent) {
    runA();
    present(kTwo, {signalled(kB, ControlCode::autostart, 9), signalled(kA, ControlCode::present)});
    EXPECT_THAT(host.news(), are());
    EXPECT_EQ(instance(), 1U);
}

TEST_F(AChannelChange, KeepsAServiceBoundApplicationThatTheNewChannelSignals) {
    SignalledApplication bound = signalled(kA, ControlCode::autostart);
    bound.isServiceBound = true;
    present(kOne, {bound});
    host.news();
    present(kTwo, {bound});
    EXPECT_THAT(host.news(), are());
}

TEST_F(AChannelChange, EndsAnApplicationThatTheNewChannelDoesNotSignal) {
    for (const bool isServiceBound : {false, true}) {
        SignalledApplication left = signalled(kA, ControlCode::autostart);
        left.isServiceBound = isServiceBound;
        present(kOne, {left});
        host.news();
        present(kTwo, {signalled(kB, ControlCode::present)});
        EXPECT_THAT(host.news(), are("unload"));
        EXPECT_EQ(manager.running(), nullptr);
    }
}

TEST_F(AChannelChange, StartsTheNewChannelsApplicationAfterTheOldOneHasEnded) {
    runA();
    present(kTwo, {signalled(kB, ControlCode::autostart)});
    EXPECT_THAT(host.news(), are("unload", "load 2 " + kUrlB));
}

TEST_F(AChannelChange, EndsAnApplicationThatTheNewChannelDoesNotLetRun) {
    for (const ControlCode control :
         {ControlCode::kill, ControlCode::destroy, ControlCode::disabled, ControlCode::remote, ControlCode::prefetch}) {
        runA();
        present(kTwo, {signalled(kA, control)});
        EXPECT_THAT(host.news(), are("unload"));
    }
}

TEST_F(AChannelChange, KeepsAnApplicationThatIsKilledAndPresentAtOnce) {
    runA();
    present(kTwo, {signalled(kA, ControlCode::kill), signalled(kA, ControlCode::present)});
    EXPECT_THAT(host.news(), are());
}

TEST_F(AChannelChange, ToAChannelWithoutAitEndsTheApplication) {
    runA();
    manager.channelChanged(true, kTwo);
    manager.aitAbsent();
    EXPECT_THAT(host.news(), are("unload"));
    EXPECT_THAT(host.lines.back(), "application 190.1 ends: the channel does not signal it, or no longer lets it run");
}

TEST_F(AChannelChange, TakesTheBoundariesOfTheNewChannel) {
    runA();
    SignalledApplication wider = signalled(kA, ControlCode::present);
    wider.boundaries = {"http://b.example"};
    present(kTwo, {wider});
    EXPECT_THAT(manager.running()->boundaries, testing::ElementsAre("http://b.example"));
}

TEST_F(AChannelChange, ThatFailsChangesNothing) {
    runA();
    manager.channelChanged(false, kOne);
    manager.aitReceived({signalled(kA, ControlCode::autostart)});
    EXPECT_THAT(host.news(), are());
    EXPECT_EQ(instance(), 1U);
    EXPECT_THAT(manager.signalled(), testing::SizeIs(1));
}

TEST_F(AChannelChange, ThatFailsWithNothingPresentedChangesNothing) {
    runA();
    manager.channelChanged(false, std::nullopt);
    EXPECT_THAT(host.news(), are());
    EXPECT_THAT(manager.signalled(), testing::SizeIs(1));
}

TEST_F(AChannelChange, IsNoneWhenTheNetworkBecomesKnown) {
    present({0xFFFF, 1025, 1}, {signalled(kA, ControlCode::autostart)});
    host.news();
    manager.channelChanged(true, kOne);
    EXPECT_THAT(manager.signalled(), testing::SizeIs(1));
    manager.channelChanged(true, si::Triplet{2, 1025, 1});
    EXPECT_THAT(manager.signalled(), testing::IsEmpty());
}

TEST_F(AChannelChange, ToTheSameChannelChangesNothing) {
    // So it is when the DTV service was killed and has come back.
    runA();
    present(kOne, {signalled(kA, ControlCode::autostart)});
    EXPECT_THAT(host.news(), are());
    manager.exit();
    host.news();
    present(kOne, {signalled(kA, ControlCode::autostart)});
    EXPECT_THAT(host.news(), are());
}

TEST_F(AChannelChange, BackStartsTheAutostartAgain) {
    runA();
    manager.exit();
    manager.channelChanged(true, kTwo);
    manager.aitAbsent();
    host.news();
    present(kOne, {signalled(kA, ControlCode::autostart)});
    EXPECT_THAT(host.news(), are("load 2 " + kUrlA));
}

class AChannelChangeOfAStrictTerminal : public AChannelChange {
protected:
    AChannelChangeOfAStrictTerminal() : AChannelChange(strict()) {}

    static Terminal strict() {
        Terminal terminal;
        terminal.endsServiceBound = true;
        return terminal;
    }
};

TEST_F(AChannelChangeOfAStrictTerminal, EndsAServiceBoundApplicationAtOnceAndStartsItAnew) {
    SignalledApplication bound = signalled(kA, ControlCode::autostart);
    bound.isServiceBound = true;
    present(kOne, {bound});
    host.news();
    manager.channelChanged(true, kTwo);
    EXPECT_THAT(host.news(), are("unload"));
    manager.aitReceived({bound});
    EXPECT_THAT(host.news(), are("load 2 " + kUrlA));
}

TEST_F(AChannelChangeOfAStrictTerminal, KeepsAnApplicationThatIsNotServiceBound) {
    runA();
    present(kTwo, {signalled(kA, ControlCode::autostart)});
    EXPECT_THAT(host.news(), are());
}

}  // namespace tvbrowser
