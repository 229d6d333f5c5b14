// Origins, and which URLs are inside of an application's boundary.
#include <gtest/gtest.h>

#include "application_url.h"

namespace tvbrowser {

TEST(AnOrigin, IsSchemeHostAndPort) {
    EXPECT_EQ(originOf("HTTP://A.Example/Path"), "http://a.example:80");
    EXPECT_EQ(originOf("https://a.example"), "https://a.example:443");
    EXPECT_EQ(originOf("http://a.example:8080?q"), "http://a.example:8080");
    EXPECT_EQ(originOf("http://[::1]/"), "http://[::1]:80");
    EXPECT_EQ(originOf("http://[::1]:81#f"), "http://[::1]:81");
    EXPECT_EQ(originOf("file:///tmp/page.html"), "file://");
}

TEST(AnOrigin, HasNoUser) {
    EXPECT_EQ(originOf("http://a.example:80@b.example/"), "http://b.example:80");
    EXPECT_EQ(originOf("http://b.example/@a.example"), "http://b.example:80");
}

TEST(AnOrigin, EndsAtABackslashAsForEngines) {
    EXPECT_EQ(originOf("http://b.example\\@a.example/"), "http://b.example:80");
}

TEST(AnOrigin, IsOfACompleteUrlOnly) {
    for (const char* text : {"", "page.html", "/page.html", "://a", "a b://c", "http:", "about:blank"}) {
        EXPECT_FALSE(originOf(text)) << text;
    }
}

RunningApplication withBoundaries(const std::vector<std::string>& boundaries) {
    RunningApplication application;
    application.url = "http://a.example/app/index.html?x";
    application.boundaries = boundaries;
    return application;
}

TEST(ABoundary, IsTheOriginOfTheEntryPoint) {
    const RunningApplication application = withBoundaries({});
    EXPECT_TRUE(isWithinBoundary("http://a.example/elsewhere", application));
    EXPECT_TRUE(isWithinBoundary("http://A.EXAMPLE:80/", application));
    EXPECT_FALSE(isWithinBoundary("https://a.example/app/index.html", application));
    EXPECT_FALSE(isWithinBoundary("http://a.example:8080/app/index.html", application));
    EXPECT_FALSE(isWithinBoundary("http://a.example.org/", application));
    EXPECT_FALSE(isWithinBoundary("page.html", application));
}

TEST(ABoundary, ReachesWhatBeginsWithAPrefix) {
    const RunningApplication application = withBoundaries({"http://b.example", "https://c.example/dir/"});
    EXPECT_TRUE(isWithinBoundary("http://b.example/any", application));
    EXPECT_TRUE(isWithinBoundary("http://b.example", application));
    EXPECT_FALSE(isWithinBoundary("http://b.example.org/any", application));
    EXPECT_FALSE(isWithinBoundary("http://b.example:81/any", application));
    EXPECT_TRUE(isWithinBoundary("https://c.example/dir/page?q", application));
    EXPECT_FALSE(isWithinBoundary("https://c.example/other", application));
    EXPECT_FALSE(isWithinBoundary("http://c.example/dir/page", application));
}

TEST(ABoundary, IsNotWidenedByAPrefixThatIsNoUrl) {
    const RunningApplication application = withBoundaries({"", "http", "b.example", "/"});
    EXPECT_FALSE(isWithinBoundary("http://b.example/", application));
}

}  // namespace tvbrowser
