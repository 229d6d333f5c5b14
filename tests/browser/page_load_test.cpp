// What the pages of an application load, and what that means for the application.
#include "tv_browser.h"

namespace browser_tests {

namespace {

using AnApplicationsPage = ATvBrowser;

tsmake::Multiplex withApplications(tsmake::Multiplex broadcast, const std::vector<tsmake::Application>& applications) {
    broadcast.services[0].ait.versions = {{0, 1, applications}};
    return broadcast;
}

TEST_F(AnApplicationsPage, GoesOnToAnotherOfItsApplication) {
    page("life.html?first#life.html%3Fnext");
    reported("running");
    press("3");
    EXPECT_EQ(reported("running", 2), "next");
    EXPECT_EQ(reported("related", 2), "true");
    press("RED");
    EXPECT_TRUE(browser->reports("key", "403"));
    EXPECT_EQ(browser->count("application: load"), 1U);
}

TEST_F(AnApplicationsPage, GoesOnToADocumentOfHbbTvsOwnType) {
    page("life.html?first#life.xhtml%3Fnext");
    reported("running");
    press("3");
    EXPECT_EQ(reported("running", 2), "next");
    EXPECT_EQ(reported("place"), pages.url() + "life.xhtml?next");
    EXPECT_EQ(browser->count("application: load"), 1U);
}

TEST_F(AnApplicationsPage, OutsideOfItsBoundaryIsAnotherApplication) {
    const PageServer others("others");
    const std::string other = others.url() + "life.html?other";
    page("life.html?first#" + other);
    EXPECT_EQ(reported("related"), "true");
    press("3");
    EXPECT_EQ(reported("running", 2), "other");
    EXPECT_EQ(reported("related", 2), "false");
    EXPECT_TRUE(says("application 190.1 goes on to " + other + ", outside of its boundary"));
    EXPECT_EQ(browser->count("application: load"), 2U);
}

TEST_F(AnApplicationsPage, RunsAnewWhenItIsGoneBackTo) {
    page("life.html?first#life.html%3Fnext");
    reported("running");
    press("3");
    EXPECT_EQ(reported("running", 2), "next");
    press("4");
    EXPECT_EQ(reported("running", 3), "first");
    press("RED");
    EXPECT_TRUE(browser->reports("key", "403"));
}

TEST_F(AnApplicationsPage, HasNoPageBeforeIt) {
    start(withApplications(broadcastWithoutApplications(),
                           {application("life.html?first#dvb%3A%2F%2Fcurrent.ait%2F190.2"),
                            application("life.html?second", 2, kPresent)}));
    reported("running");
    press("GREEN");
    EXPECT_EQ(reported("running", 2), "second");
    press("4");
    press("RED");
    EXPECT_TRUE(browser->reports("key", "403"));
    EXPECT_EQ(browser->reports("running").size(), 2U);
}

TEST_F(AnApplicationsPage, HasFramesOfItsOwn) {
    page("frames.html?first");
    EXPECT_EQ(reported("running"), "first");
    press("RED");
    EXPECT_EQ(reported("key"), "403");
    EXPECT_EQ(browser->reports("running").size(), 1U);
    EXPECT_TRUE(says("application: started"));
}

TEST_F(AnApplicationsPage, ThatComesAfterItsEndIsNotShown) {
    start(withApplications(broadcastWithoutApplications(),
                           {application("late/life.xhtml?first"), application("life.html?second", 2, kPresent)}));
    ASSERT_TRUE(eventually([this] { return pages.output().find("/late/life.xhtml") != std::string::npos; }));
    browser->command("start 190.2");
    EXPECT_EQ(reported("running"), "second");
    PageServer::release("late");
    EXPECT_TRUE(eventually([this] { return pages.output().find("late page") != std::string::npos; }));
    press("RED");
    EXPECT_TRUE(browser->reports("key", "403"));
    EXPECT_EQ(browser->reports("running").size(), 1U);
}

TEST_F(AnApplicationsPage, ThatIsNoPageIsReportedToTheSet) {
    page("no_page.bin");
    EXPECT_TRUE(says("application: not started"));
    EXPECT_TRUE(says("a document of type application/octet-stream is no page"));
}

TEST_F(AnApplicationsPage, IsLoadedAfterTheWebProcessDiedWithoutAny) {
    start(withApplications(broadcastWithoutApplications(), {application("life.html?first", 1, kPresent)}));
    EXPECT_TRUE(says("extension: "));
    browser->killWebProcess();
    EXPECT_TRUE(says("the web process has ended"));
    EXPECT_TRUE(browser->says("extension: ", 2));
    EXPECT_TRUE(eventually([this] {
        browser->command("applications");
        return browser->count("applications: 190.1") > 0;
    }));
    press("RED");
    EXPECT_EQ(reported("running"), "first");
}

TEST_F(AnApplicationsPage, MayBeNamedByAnXmlAit) {
    page("life.html?first#start.aitx");
    EXPECT_EQ(reported("running"), "first");
    press("GREEN");
    EXPECT_EQ(reported("running", 2), "second");
    EXPECT_EQ(reported("related", 2), "false");
    press("RED");
    EXPECT_TRUE(browser->reports("key", "403"));
    browser->command("applications");
    EXPECT_TRUE(says("running: 190.1f " + pages.url() + "life.html?second"));
}

TEST_F(AnApplicationsPage, ThatAWrongXmlAitNamesIsRefusedByWhatIsWrong) {
    page("life.html?first#wrong.aitx");
    EXPECT_EQ(reported("running"), "first");
    press("GREEN");
    EXPECT_TRUE(
        says("its XML AIT is wrong: Application 1: applicationIdentifier/orgId: \"a broadcaster\" is no number"));
}

TEST_F(AnApplicationsPage, ThatTheBroadcastSignalsIsNoXmlAit) {
    page("start.aitx");
    EXPECT_TRUE(says("application: not started"));
    EXPECT_TRUE(says("an XML AIT is not the page that an AIT leads to"));
}

}  // namespace

}  // namespace browser_tests
