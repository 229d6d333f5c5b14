// The objects are there in frames, and those of a page and of its frames belong to one application.
#include "object_test.h"

namespace browser_tests {

namespace {

class AFrame : public AnObject {};

TEST_F(AFrame, BelongsToTheApplicationOfItsPage) {
    page("framing.html?owner");
    EXPECT_EQ(reported("ofOwn"), "true");
    EXPECT_EQ(reported("window"), "true");
    EXPECT_EQ(reported("channel"), "ccid:1.1025.28106");
    EXPECT_EQ(reported("ofFrame"), "true");
    EXPECT_EQ(reported("others"), "[false,false,false,false]");
}

TEST_F(AFrame, GetsTheKeysWhileItHasTheFocus) {
    page("framing.html?keys");
    EXPECT_EQ(reported("keyset"), "257");
    EXPECT_EQ(reported("focused"), "frame");
    press("RED");
    EXPECT_EQ(reported("frameKey"), "403");
    press("GREEN");
    EXPECT_EQ(reported("frameKey", 2), "404");
    press("1");
    EXPECT_EQ(reported("frameKey", 3), "49");
    EXPECT_EQ(reported("focused", 2), "page");
    press("2");
    EXPECT_EQ(reported("key"), "50");
    press("GREEN");
    EXPECT_EQ(reported("key", 2), "404");
    EXPECT_EQ(browser->reports("frameKey").size(), 3U);
}

TEST_F(AFrame, FollowsTheBroadcast) {
    pageEverywhere("framing.html?bind");
    EXPECT_EQ(reported("bound"), "ccid:1.1025.28106");
    EXPECT_EQ(reported("state"), "1 undefined");
    EXPECT_EQ(reported("state", 2), "2 undefined");
    press("CHANNEL_UP");
    EXPECT_EQ(reported("changed"), "ccid:1.1025.28107");
}

TEST_F(AFrame, DoesNotControlTheBroadcastBesideItsPage) {
    page("framing.html?control");
    EXPECT_EQ(reported("state"), "0 2");
    EXPECT_EQ(reported("state", 2), "1 undefined");
    EXPECT_EQ(reported("state", 3), "2 undefined");
    EXPECT_EQ(reported("own"), "2");
    EXPECT_EQ(reported("done"), "control");
}

TEST_F(AFrame, HasTheObjectsWhereverItsDocumentComesFrom) {
    page("framing.html?names");
    EXPECT_EQ(reported("types"), R"(["function","function","function"])");
    EXPECT_EQ(reported("names"), "[]");
}

TEST_F(AFrame, OutsideOfTheBoundaryHasNoObjects) {
    const PageServer others("others");
    page("framing.html?outside#" + others.url());
    EXPECT_EQ(reported("outside"), "undefinedundefined");
    EXPECT_EQ(reported("made"), "HTMLUnknownElement");
    EXPECT_EQ(reported("running"), "page");
    EXPECT_EQ(browser->count("application: load"), 1U);
}

TEST_F(AFrame, InASandboxHasNoObjects) {
    page("framing.html?sandboxed");
    EXPECT_EQ(reported("outside"), "undefinedundefined");
}

}  // namespace

}  // namespace browser_tests
