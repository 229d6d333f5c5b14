// Documents of HbbTV's own type behave like any other page.
#include "tv_browser.h"

namespace browser_tests {

namespace {

class ADocumentOfHbbTvsType : public ATvBrowser {
protected:
    std::string place(const std::string& query) const { return pages.url() + "documents.xhtml?" + query; }
    /// The first place, and then the second.
    void goOn() {
        page("documents.xhtml?first");
        EXPECT_EQ(reported("loaded"), place("first"));
        press("1");
        EXPECT_EQ(reported("loaded", 2), place("second"));
    }
};

TEST_F(ADocumentOfHbbTvsType, HasAHistory) {
    goOn();
    EXPECT_EQ(reported("length"), "1");
    EXPECT_EQ(reported("length", 2), "2");
    press("2");
    EXPECT_EQ(reported("loaded", 3), place("first"));
    press("3");
    EXPECT_EQ(reported("loaded", 4), place("second"));
    EXPECT_EQ(reported("length", 4), "2");
}

TEST_F(ADocumentOfHbbTvsType, NamesThePageBeforeIt) {
    goOn();
    EXPECT_EQ(reported("referrer"), "");
    EXPECT_EQ(reported("referrer", 2), place("first"));
}

TEST_F(ADocumentOfHbbTvsType, IsReloadedAtItsFragment) {
    goOn();
    press("4");
    EXPECT_EQ(reported("hash"), place("second#part"));
    press("5");
    EXPECT_EQ(reported("loaded", 3), place("second#part"));
    EXPECT_EQ(browser->count("application: load"), 1U);
}

TEST_F(ADocumentOfHbbTvsType, IsPostedTo) {
    page("documents.xhtml?first");
    reported("loaded");
    press("6");
    EXPECT_EQ(reported("loaded", 2), place("posted"));
    EXPECT_NE(pages.output().find("posted field=some+value\n"), std::string::npos) << pages.output();
}

TEST_F(ADocumentOfHbbTvsType, IsRequestedWithItsType) {
    page("documents.xhtml?first");
    reported("loaded");
    press("8");
    EXPECT_EQ(reported("type"), "application/vnd.hbbtv.xhtml+xml; charset=utf-8");
    EXPECT_EQ(reported("requested"), "1");
}

TEST_F(ADocumentOfHbbTvsType, MakesElementsOfHtml) {
    page("documents.xhtml?first");
    EXPECT_EQ(reported("made"), "function DIV");
}

TEST_F(ADocumentOfHbbTvsType, MayBeThatOfAnError) {
    page("documents.xhtml?first");
    reported("loaded");
    press("9");
    EXPECT_EQ(reported("loaded", 2), pages.url() + "missing/documents.xhtml");
}

TEST_F(ADocumentOfHbbTvsType, ThatIsMissingDoesNotStart) {
    page("missing/documents.xhtml");
    EXPECT_TRUE(says("HTTP status 404"));
    EXPECT_TRUE(says("application: not started"));
    EXPECT_EQ(browser->reports("loaded").size(), 0U);
}

}  // namespace

}  // namespace browser_tests
