// What the browser keeps for its pages while it runs, and what is left of it.
#include <gmock/gmock.h>

#include <filesystem>

#include "tv_browser.h"

namespace browser_tests {

namespace {

class TheFolderForPages : public ATvBrowser {
protected:
    TheFolderForPages() {
        std::filesystem::create_directories(kTemporary);
        setenv("TMPDIR", kTemporary.c_str(), 1);
    }
    std::vector<std::string> folders() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(kTemporary)) {
            if (entry.path().filename().string().rfind("tvbrowser", 0) == 0) {
                names.push_back(entry.path().filename().string());
            }
        }
        return names;
    }
    /// Starts with a page that stores something.
    void storePage() {
        page("documents.xhtml?first");
        reported("loaded");
        EXPECT_EQ(folders().size(), 1U);
    }

    const std::string kTemporary = kRunDirectory + "/temporary";
};

TEST_F(TheFolderForPages, IsGoneAfterAnOrderlyEnd) {
    storePage();
    EXPECT_EQ(browser->end(SIGTERM), 0);
    // Every process that could write to it anew has ended before.
    EXPECT_THAT(folders(), testing::IsEmpty());
}

TEST_F(TheFolderForPages, IsGoneAfterAnInterrupt) {
    storePage();
    EXPECT_EQ(browser->end(SIGINT), 0);
    EXPECT_THAT(folders(), testing::IsEmpty());
}

TEST_F(TheFolderForPages, IsGoneAfterTheCommandToQuit) {
    storePage();
    browser->command("quit");
    EXPECT_EQ(browser->wait(), 0);
    EXPECT_THAT(folders(), testing::IsEmpty());
}

TEST_F(TheFolderForPages, OfAKilledBrowserIsGoneWithTheNextOne) {
    storePage();
    browser->end(SIGKILL);
    const std::vector<std::string> left = folders();
    ASSERT_EQ(left.size(), 1U);
    browser = std::make_unique<Browser>();
    EXPECT_TRUE(says("tvbrowser: running"));
    EXPECT_THAT(folders(), testing::Not(testing::Contains(left[0])));
}

}  // namespace

}  // namespace browser_tests
