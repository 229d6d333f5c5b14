// What a changed AIT does to the application that runs.
#include "a_terminal.h"

namespace tvbrowser {

class AChangedAit : public ATerminal {};

TEST_F(AChangedAit, EndsAnApplicationThatItKills) {
    for (const ControlCode control : {ControlCode::kill, ControlCode::destroy}) {
        present(kTwo, {});
        runA();
        manager.aitReceived({signalled(kA, control)});
        EXPECT_THAT(host.news(), are("unload"));
    }
}

TEST_F(AChangedAit, EndsAnApplicationThatItDoesNotListAnyMore) {
    runA();
    manager.aitReceived({});
    EXPECT_THAT(host.news(), are("unload"));
}

TEST_F(AChangedAit, ThatDisappearsEndsTheApplication) {
    runA();
    manager.aitAbsent();
    EXPECT_THAT(host.news(), are("unload"));
    manager.aitAbsent();
    EXPECT_THAT(host.news(), are());
}

TEST_F(AChangedAit, LeavesAnApplicationThatBecomesPresent) {
    runA();
    manager.aitReceived({signalled(kA, ControlCode::present)});
    EXPECT_THAT(host.news(), are());
}

TEST_F(AChangedAit, StartsANewAutostartWhileNothingRuns) {
    present(kOne, {signalled(kA, ControlCode::present)});
    manager.aitReceived({signalled(kA, ControlCode::autostart)});
    EXPECT_THAT(host.news(), are("load 1 " + kUrlA));
}

TEST_F(AChangedAit, DoesNotStartANewAutostartWhileAnotherMayRun) {
    runA();
    manager.aitReceived({signalled(kB, ControlCode::autostart, 9), signalled(kA, ControlCode::autostart)});
    EXPECT_THAT(host.news(), are());
}

TEST_F(AChangedAit, StartsTheNextAutostartInPlaceOfOneThatItKills) {
    runA();
    manager.aitReceived({signalled(kA, ControlCode::kill), signalled(kB, ControlCode::autostart)});
    EXPECT_THAT(host.news(), are("unload", "load 2 " + kUrlB));
}

TEST_F(AChangedAit, StartsAKilledApplicationAgainWhenItIsAutostartAgain) {
    runA();
    manager.aitReceived({signalled(kA, ControlCode::kill)});
    manager.aitReceived({signalled(kA, ControlCode::autostart)});
    EXPECT_THAT(host.news(), are("unload", "load 2 " + kUrlA));
}

TEST_F(AChangedAit, DoesNotStartAgainWhatTheUserHasLeft) {
    runA();
    manager.exit();
    host.news();
    manager.aitReceived({signalled(kA, ControlCode::autostart)});
    manager.aitReceived({signalled(kA, ControlCode::autostart), signalled(kB, ControlCode::present)});
    EXPECT_THAT(host.news(), are());
}

TEST_F(AChangedAit, DoesNotStartAgainWhatHasEndedItself) {
    runA();
    manager.destroyApplication(instance());
    manager.aitReceived({signalled(kA, ControlCode::autostart, 5)});
    EXPECT_THAT(host.news(), are("unload"));
}

TEST_F(AChangedAit, DoesNotStartTheNextOneInPlaceOfOneThatTheUserHasLeft) {
    present(kOne, {signalled(kA, ControlCode::autostart, 2), signalled(kB, ControlCode::autostart, 1)});
    manager.exit();
    host.news();
    manager.aitReceived({signalled(kA, ControlCode::autostart, 1), signalled(kB, ControlCode::autostart, 2)});
    EXPECT_THAT(host.news(), are());
}

TEST_F(AChangedAit, ThatComesBackStartsItsAutostartAgain) {
    runA();
    manager.exit();
    manager.aitAbsent();
    manager.aitReceived({signalled(kA, ControlCode::autostart)});
    EXPECT_THAT(host.news(), are("unload", "load 2 " + kUrlA));
}

TEST_F(AChangedAit, StartsAnAutostartThatIsNewAfterTheUserHasLeftAnother) {
    runA();
    manager.exit();
    manager.aitReceived({signalled(kA, ControlCode::autostart), signalled(kB, ControlCode::autostart)});
    EXPECT_THAT(host.news(), are("unload", "load 2 " + kUrlB));
}

TEST_F(AChangedAit, DoesNotEndABroadcastIndependentApplication) {
    runIndependent();
    present(kOne, {signalled(kA, ControlCode::autostart)});
    manager.aitAbsent();
    EXPECT_THAT(host.news(), are());
    EXPECT_EQ(instance(), 1U);
}

}  // namespace tvbrowser
