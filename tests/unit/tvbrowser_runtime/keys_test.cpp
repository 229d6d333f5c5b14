// Who gets a key: the page, or the television.
#include "a_terminal.h"

namespace tvbrowser {

using Kind = KeyAction::Kind;

class AKey : public ATerminal {
protected:
    AKey() { runA(); }
};

TEST_F(AKey, GoesToAPageThatHasAskedForIt) {
    EXPECT_EQ(manager.setKeyset(1, keyset::kRed | keyset::kNavigation), keyset::kRed | keyset::kNavigation);
    const KeyAction action = manager.key(*findKey("LEFT"), true);
    EXPECT_EQ(action.kind, Kind::page);
    EXPECT_EQ(action.key, findKey("LEFT"));
    EXPECT_EQ(release("LEFT"), Kind::page);
    EXPECT_EQ(press("BACK"), Kind::page);
    EXPECT_EQ(press("GREEN"), Kind::none);
    EXPECT_EQ(press("1"), Kind::none);
    EXPECT_THAT(host.news(), are());
}

TEST_F(AKey, GoesToNoPageThatHasNotAsked) {
    for (const RemoteKey& key : kRemoteKeys) {
        EXPECT_NE(manager.key(key, true).kind, Kind::page) << key.name;
    }
}

TEST_F(AKey, GoesToNoHiddenPage) {
    manager.setKeyset(1, keyset::kRed);
    manager.hide(1);
    EXPECT_EQ(press("RED"), Kind::none);
    EXPECT_EQ(release("RED"), Kind::none);
    manager.show(1);
    EXPECT_EQ(press("RED"), Kind::page);
}

TEST_F(AKey, GoesUpWhereItWentDown) {
    manager.setKeyset(1, keyset::kRed);
    EXPECT_EQ(press("RED"), Kind::page);
    manager.setKeyset(1, 0);
    EXPECT_EQ(release("RED"), Kind::page);
    EXPECT_EQ(release("RED"), Kind::none);
    manager.setKeyset(1, keyset::kRed);
    EXPECT_EQ(release("RED"), Kind::none);
}

TEST_F(AKey, DoesNotGoUpInTheNextApplication) {
    manager.setKeyset(1, keyset::kRed);
    EXPECT_EQ(press("RED"), Kind::page);
    manager.start(kA);
    manager.show(2);
    manager.setKeyset(2, keyset::kRed);
    EXPECT_EQ(release("RED"), Kind::none);
}

TEST_F(AKey, IsNotInheritedByTheNextApplication) {
    manager.setKeyset(1, keyset::kRed);
    manager.start(kA);
    manager.show(2);
    EXPECT_EQ(press("RED"), Kind::none);
}

TEST_F(AKey, OfTheChannelsIsTheTelevisions) {
    manager.setKeyset(1, 0x7FF, {findKey("CHANNEL_UP")->code});
    EXPECT_EQ(press("CHANNEL_UP"), Kind::nextChannel);
    EXPECT_EQ(release("CHANNEL_UP"), Kind::none);
    EXPECT_EQ(press("CHANNEL_DOWN"), Kind::previousChannel);
    EXPECT_EQ(release("CHANNEL_DOWN"), Kind::none);
    EXPECT_THAT(host.news(), are());
}

TEST_F(AKey, ThatIsExitEndsTheApplication) {
    manager.setKeyset(1, 0x7FF, {findKey("EXIT")->code});
    EXPECT_EQ(press("EXIT"), Kind::none);
    EXPECT_THAT(host.news(), are("unload"));
    EXPECT_EQ(host.lines.back(), "application 190.1 ends: the user left it");
    EXPECT_EQ(release("EXIT"), Kind::none);
    EXPECT_EQ(press("EXIT"), Kind::none);
    EXPECT_THAT(host.news(), are());
}

TEST_F(AKey, OfABroadcastIndependentApplicationNeedsNoAsking) {
    runIndependent();
    EXPECT_EQ(press("RED"), Kind::page);
    EXPECT_EQ(press("5"), Kind::page);
    manager.setKeyset(2, keyset::kBlue);
    EXPECT_EQ(press("RED"), Kind::none);
    EXPECT_EQ(press("BLUE"), Kind::page);
}

}  // namespace tvbrowser
