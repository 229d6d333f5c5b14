// When applications start and end in the engine: the signalling of a real broadcast, keys, requests of pages.
#include "tv_browser.h"

namespace browser_tests {

namespace {

using tsmake::Multiplex;

class AnApplication : public ATvBrowser {
protected:
    Multiplex broadcastWithVersions(const std::vector<tsmake::AitVersion>& versions) const {
        Multiplex broadcast = broadcastWithoutApplications();
        broadcast.services[0].ait.versions = versions;
        return broadcast;
    }
    static std::string tune(const std::string& channel) {
        ChildProcess dtvctl(DTVCTL, {"tune", channel}, "dtvctl");
        return dtvctl.wait() == 0 ? "done" : dtvctl.output();
    }
};

constexpr std::uint8_t kKill = 4;
const std::string kFirstService = "1:1025:28106";
const std::string kSecondService = "1:1025:28107";
const std::string kServiceWithoutApplications = "1:1025:28108";

TEST_F(AnApplication, StartsByItsAutostartAndTheSetIsTold) {
    page("life.html?first");
    EXPECT_EQ(reported("running"), "first");
    EXPECT_TRUE(says("application: started"));
    EXPECT_TRUE(eventually([this] { return service->log().find("application start status 0") != std::string::npos; }));
}

TEST_F(AnApplication, GetsTheKeysOfItsKeysetAlone) {
    page("life.html?first");
    EXPECT_EQ(reported("keyset"), std::to_string(0x10F));
    reported("running");  // by then it is visible; before, keys are not for it
    press("RED");
    EXPECT_EQ(reported("key", 1), "403");
    press("LEFT");
    press("INFO");
    press("7");
    EXPECT_EQ(reported("key", 2), "55");
}

TEST_F(AnApplication, IsHiddenFirstAndGetsNoKeysWhileItIsHidden) {
    page("life.html?first#dvb%3A%2F%2Fcurrent.ait%2F190.7");
    EXPECT_EQ(reported("visible", 1), "true");
    press("BLUE");
    EXPECT_EQ(reported("visible", 2), "false");
    EXPECT_TRUE(says("application: hidden"));
    press("RED");
    browser->command("applications");
    EXPECT_TRUE(says("applications: running"));
    pages.release("show");
    EXPECT_EQ(reported("visible", 3), "true");
    EXPECT_TRUE(says("application: shown"));
    press("GREEN");
    EXPECT_EQ(reported("created"), "null");
    EXPECT_EQ(browser->reports("key"), (std::vector<std::string>{"406", "404"}));
}

TEST_F(AnApplication, EndsByTheExitKey) {
    page("life.html?first");
    reported("running");
    press("EXIT");
    EXPECT_TRUE(says("application: none"));
}

TEST_F(AnApplication, EndsWhenItAsksForThat) {
    page("life.html?first");
    reported("running");
    press("YELLOW");
    EXPECT_TRUE(says("application: none"));
}

TEST_F(AnApplication, EndsWhereTheNextServiceHasNoApplications) {
    page("life.html?first");
    reported("running");
    EXPECT_EQ(tune(kServiceWithoutApplications), "done");
    EXPECT_TRUE(says("application: none"));
}

TEST_F(AnApplication, IsReplacedByTheAutostartOfTheNextService) {
    Multiplex broadcast = broadcastWith("life.html?first");
    broadcast.services[1].ait.versions = {{0, 1, {application("life.html?second", 2)}}};
    start(broadcast);
    EXPECT_EQ(reported("running", 1), "first");
    EXPECT_EQ(tune(kSecondService), "done");
    EXPECT_EQ(reported("running", 2), "second");
}

TEST_F(AnApplication, GoesOnWhereTheNextServiceSignalsItToo) {
    Multiplex broadcast = broadcastWith("life.html?first");
    broadcast.services[1].ait.versions = {{0, 1, {application("life.html?first")}}};
    start(broadcast);
    reported("running");
    EXPECT_EQ(tune(kSecondService), "done");
    EXPECT_TRUE(says("channel: " + kSecondService));
    press("RED");
    EXPECT_EQ(reported("key"), "403");
    EXPECT_EQ(browser->count("application: load"), 1U);
}

TEST_F(AnApplication, EndsWhenItsAitSaysKill) {
    startFed(broadcastWithVersions({{0, 1, {application("life.html?first")}},
                                    {FedBroadcast::kSecondState, 2, {application("life.html?first", 1, kKill)}}}));
    reported("running");
    change();
    EXPECT_TRUE(says("application: none"));
}

TEST_F(AnApplication, EndsWhenItsAitDisappears) {
    Multiplex broadcast = broadcastWith("life.html?first");
    broadcast.services[0].ait.end = FedBroadcast::kSecondState;
    startFed(broadcast);
    reported("running");
    change();
    EXPECT_TRUE(says("application: none"));
}

TEST_F(AnApplication, IsStartedByTheRedButtonWhereItIsPresent) {
    Multiplex broadcast = broadcastWithVersions({{0, 1, {application("life.html?first", 1, kPresent)}}});
    start(broadcast);
    EXPECT_TRUE(says("channel: " + kFirstService));
    EXPECT_TRUE(eventually([this] {
        press("RED");
        return browser->count("application: load") > 0;
    }));
    EXPECT_EQ(reported("running"), "first");
}

TEST_F(AnApplication, CreatesAnotherOfTheCurrentAitWithItsQuery) {
    Multiplex broadcast =
        broadcastWithVersions({{0,
                                1,
                                {application("life.html?first#dvb%3A%2F%2Fcurrent.ait%2F190.2%3Fmore"),
                                 application("life.html?second", 2, kPresent)}}});
    start(broadcast);
    reported("running");
    press("GREEN");
    EXPECT_EQ(reported("created"), "{}");
    EXPECT_EQ(reported("running", 2), "second&more");
}

TEST_F(AnApplication, CannotCreateOneThatIsNotSignalled) {
    start(broadcastWith("life.html?first#dvb%3A%2F%2Fcurrent.ait%2F190.7"));
    reported("running");
    press("GREEN");
    EXPECT_EQ(reported("created"), "null");
    EXPECT_EQ(browser->count("application: load"), 1U);
}

TEST_F(AnApplication, ThatEndsItselfAfterCreatingAnotherEndsItselfAlone) {
    Multiplex broadcast = broadcastWithVersions({{0,
                                                  1,
                                                  {application("life.html?first#dvb%3A%2F%2Fcurrent.ait%2F190.2"),
                                                   application("life.html?second", 2, kPresent)}}});
    start(broadcast);
    reported("running");
    press("1");
    EXPECT_EQ(reported("running", 2), "second");
    press("RED");
    EXPECT_TRUE(browser->reports("key", "403"));
}

TEST_F(AnApplication, OfHbbTvsOwnDocumentTypeIsShown) {
    page("life.xhtml?first");
    EXPECT_EQ(reported("running"), "first");
    EXPECT_EQ(reported("place"), pages.url() + "life.xhtml?first");
}

TEST_F(AnApplication, WhosePageIsMissingIsReportedToTheSet) {
    page("nothing.html");
    EXPECT_TRUE(says("application: not started"));
}

TEST_F(AnApplication, FromOutsideOfTheBroadcastRunsWithoutSignalling) {
    start(broadcastWithoutApplications(), {"--application", pages.url() + "life.html?alone"});
    EXPECT_EQ(reported("running"), "alone");
    EXPECT_TRUE(says("channel: " + kFirstService));
    // What a PMT says is known before the channel after it.
    EXPECT_EQ(tune(kSecondService), "done");
    EXPECT_TRUE(says("channel: " + kSecondService));
    EXPECT_EQ(tune(kServiceWithoutApplications), "done");
    EXPECT_TRUE(says("channel: " + kServiceWithoutApplications));
    press("RED");
    EXPECT_EQ(reported("key"), "403");
    EXPECT_EQ(browser->count("application: none"), 0U);
}

TEST_F(AnApplication, RunsWhereNoBroadcastIs) {
    browser =
        std::make_unique<Browser>(std::vector<std::string>{"--application", pages.url() + "without_broadcast.html"});
    EXPECT_EQ(reported("channel"), "null");
    EXPECT_EQ(reported("config"), "SecurityError");
    EXPECT_EQ(reported("bind"), "SecurityError");
    EXPECT_EQ(reported("state"), "0");
    EXPECT_EQ(reported("tune"), "ChannelChangeError 5");
    EXPECT_EQ(reported("keyset"), "1");
    press("RED");
    EXPECT_EQ(reported("key"), "403");
}

TEST_F(AnApplication, OfTwoBrowsersRunsInBoth) {
    page("life.html?first");
    const Browser second({}, "second");
    EXPECT_EQ(reported("running"), "first");
    EXPECT_EQ(second.reported("running"), "first");
}

TEST_F(AnApplication, WhoseWebProcessIsKilledIsLoadedAgainOnce) {
    page("life.html?first");
    reported("running");
    browser->killWebProcess();
    EXPECT_TRUE(browser->says("the web process has ended", 1));
    EXPECT_EQ(reported("running", 2), "first");
    browser->killWebProcess();
    EXPECT_TRUE(browser->says("the web process has ended", 2));
    EXPECT_TRUE(says("application: none"));
}

}  // namespace

}  // namespace browser_tests
