// Which application the AIT of a channel starts.
#include "a_terminal.h"

namespace tvbrowser {

class AnAutostart : public ATerminal {};
class APresentApplication : public ATerminal {};
class TheTerminal : public ATerminal {};

TEST_F(AnAutostart, IsLoadedWhenTheAitIsComplete) {
    manager.channelChanged(true, kOne);
    EXPECT_THAT(host.news(), are());
    manager.aitReceived({signalled(kA, ControlCode::autostart)});
    EXPECT_THAT(host.news(), are("load 1 " + kUrlA));
    const RunningApplication& loaded = host.loaded.at(0);
    EXPECT_EQ(loaded.id, kA);
    EXPECT_EQ(loaded.name, "190.1");
    EXPECT_TRUE(loaded.isBroadcastRelated);
    EXPECT_FALSE(loaded.isVisible);
    EXPECT_THAT(host.lines, are("application 190.1 starts: " + kUrlA));
}

TEST_F(AnAutostart, OfAnAitBeforeTheFirstChannelIsKnownStays) {
    manager.aitReceived({signalled(kA, ControlCode::autostart)});
    manager.channelChanged(true, kOne);
    EXPECT_THAT(host.news(), are("load 1 " + kUrlA));
    manager.aitReceived({signalled(kA, ControlCode::autostart)});
    EXPECT_THAT(host.news(), are());
}

TEST_F(AnAutostart, HasTheHighestPriority) {
    present(kOne, {signalled(kA, ControlCode::autostart, 3), signalled(kB, ControlCode::autostart, 7)});
    EXPECT_THAT(host.news(), are("load 1 " + kUrlB));
}

TEST_F(AnAutostart, IsTheFirstOfEqualPriority) {
    present(kOne, {signalled(kB, ControlCode::autostart, 3), signalled(kA, ControlCode::autostart, 3)});
    EXPECT_THAT(host.news(), are("load 1 " + kUrlB));
}

TEST_F(AnAutostart, HasTheBoundariesAndTheBindingOfItsAit) {
    SignalledApplication application = signalled(kA, ControlCode::autostart);
    application.boundaries = {"http://b.example"};
    application.isServiceBound = true;
    present(kOne, {application});
    EXPECT_THAT(host.loaded.at(0).boundaries, testing::ElementsAre("http://b.example"));
    EXPECT_TRUE(host.loaded.at(0).isServiceBound);
}

TEST_F(TheTerminal, StartsNoOtherCodeByItself) {
    for (const ControlCode control :
         {ControlCode::present, ControlCode::destroy, ControlCode::kill, ControlCode::prefetch, ControlCode::remote,
          ControlCode::disabled, ControlCode::playbackAutostart, static_cast<ControlCode>(0),
          static_cast<ControlCode>(255)}) {
        manager.aitReceived({signalled(kA, control)});
    }
    EXPECT_THAT(host.news(), are());
}

TEST_F(TheTerminal, DoesNotStartWhatNeedsANewerVersion) {
    SignalledApplication newer = signalled(kA, ControlCode::autostart, 9);
    newer.profiles = {{0, 1, 7, 1}};
    present(kOne, {newer, signalled(kB, ControlCode::autostart, 1)});
    EXPECT_THAT(host.news(), are("load 1 " + kUrlB));
    EXPECT_THAT(host.lines, testing::Contains("not started: application 190.1: it needs version 1.7.1 with profile 0; "
                                              "here is 1.6.1 with profile 0"));
}

TEST_F(TheTerminal, DoesNotStartWhatNeedsARecorder) {
    SignalledApplication recording = signalled(kA, ControlCode::autostart);
    recording.profiles = {{2, 1, 1, 1}, {1, 1, 1, 1}};
    present(kOne, {recording});
    EXPECT_THAT(host.news(), are());
    EXPECT_THAT(host.lines, are("not started: application 190.1: it needs version 1.1.1 with profile 2, or 1.1.1 with "
                                "profile 1; here is 1.6.1 with profile 0"));
    EXPECT_FALSE(manager.start(kA));
    EXPECT_THAT(host.news(), are());
}

TEST_F(TheTerminal, NeedsOneOfTheProfiles) {
    SignalledApplication either = signalled(kA, ControlCode::autostart);
    either.profiles = {{2, 1, 1, 1}, {0, 1, 6, 1}};
    present(kOne, {either});
    EXPECT_THAT(host.news(), are("load 1 " + kUrlA));
}

TEST_F(TheTerminal, ComparesVersionsNumberByNumber) {
    for (const Profile& profile : {Profile{0, 0, 9, 9}, Profile{0, 1, 5, 9}, Profile{0, 1, 6, 0}}) {
        SignalledApplication older = signalled(kA, ControlCode::present);
        older.profiles = {profile};
        present(kOne, {older});
        EXPECT_TRUE(manager.start(kA));
    }
    for (const Profile& profile : {Profile{0, 2, 0, 0}, Profile{0, 1, 6, 2}}) {
        SignalledApplication newer = signalled(kB, ControlCode::present);
        newer.profiles = {profile};
        present(kTwo, {newer});
        EXPECT_FALSE(manager.start(kB));
    }
}

TEST_F(TheTerminal, StartsNothingWithoutAnAddress) {
    SignalledApplication carousel = signalled(kA, ControlCode::autostart);
    carousel.url.clear();
    present(kOne, {carousel});
    EXPECT_THAT(host.news(), are());
    EXPECT_THAT(host.lines,
                are("not started: application 190.1: it has no address by HTTP or in a carousel of the service"));
}

TEST_F(TheTerminal, StartsNothingFromAnAddressOfAnotherScheme) {
    SignalledApplication local = signalled(kA, ControlCode::autostart, 2);
    local.url = "file:///etc/index.html";
    present(kOne, {local, signalled(kB, ControlCode::autostart, 1)});
    EXPECT_THAT(host.news(), are("load 1 " + kUrlB));
    EXPECT_FALSE(manager.start(kA));
    EXPECT_THAT(host.news(), are());
    EXPECT_THAT(host.lines, testing::Contains("not started: application 190.1: its address "
                                              "\"file:///etc/index.html\" is none of http, https or dvb")
                                .Times(2));
    for (const char* url : {"data:text/html,x", "HTTPX://a.example/", "a.example/index.html", "ftp://a.example/"}) {
        local.url = url;
        present(kTwo, {local});
        EXPECT_FALSE(manager.start(kA)) << url;
    }
    local.url = "HTTPS://a.example/";
    present(kOne, {local});
    EXPECT_TRUE(manager.start(kA));
}

TEST_F(APresentApplication, IsStartedByTheRedKey) {
    present(kOne, {signalled(kA, ControlCode::present, 1), signalled(kB, ControlCode::present, 2)});
    EXPECT_THAT(host.news(), are());
    EXPECT_EQ(press("RED"), KeyAction::Kind::none);
    EXPECT_THAT(host.news(), are("load 1 " + kUrlB));
    EXPECT_EQ(release("RED"), KeyAction::Kind::none);
    EXPECT_THAT(host.news(), are());
}

TEST_F(APresentApplication, IsNotStartedByTheRedKeyIfHiddenFromUsers) {
    SignalledApplication hidden = signalled(kA, ControlCode::present);
    hidden.visibility = 1;
    present(kOne, {hidden});
    press("RED");
    EXPECT_THAT(host.news(), are());
}

TEST_F(APresentApplication, IsNotStartedByTheRedKeyWhileAnotherRuns) {
    present(kOne, {signalled(kA, ControlCode::autostart), signalled(kB, ControlCode::present)});
    host.news();
    EXPECT_EQ(press("RED"), KeyAction::Kind::none);
    EXPECT_THAT(host.news(), are());
}

TEST_F(APresentApplication, IsStartedByTheOperatorInPlaceOfAnother) {
    present(kOne, {signalled(kA, ControlCode::autostart), signalled(kB, ControlCode::present)});
    EXPECT_TRUE(manager.start(kB));
    EXPECT_THAT(host.news(), are("load 1 " + kUrlA, "load 2 " + kUrlB));
    EXPECT_EQ(manager.running()->id, kB);
}

TEST_F(TheTerminal, RefusesTheOperatorWhatIsNotSignalled) {
    present(kOne, {signalled(kA, ControlCode::kill)});
    EXPECT_FALSE(manager.start(kA));
    EXPECT_FALSE(manager.start({0xAB, 0xC}));
    EXPECT_THAT(host.news(), are());
    EXPECT_THAT(host.lines, are("not started: application 190.1 is not signalled, or may not run",
                                "not started: application ab.c is not signalled, or may not run"));
}

}  // namespace tvbrowser
