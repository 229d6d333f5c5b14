// Types of files out of carousels.
#include "content_type.h"

#include <gtest/gtest.h>

namespace tvbrowser {

TEST(TheTypeOfAFile, IsThatOfItsEnding) {
    EXPECT_EQ(contentTypeOf("/index.html", ""), "text/html");
    EXPECT_EQ(contentTypeOf("/a.b/INDEX.HTM", ""), "text/html");
    EXPECT_EQ(contentTypeOf("/page.hbbtv", ""), "application/xhtml+xml");
    EXPECT_EQ(contentTypeOf("/page.xhtml", ""), "application/xhtml+xml");
    EXPECT_EQ(contentTypeOf("style.css", ""), "text/css");
    EXPECT_EQ(contentTypeOf("/lib/a.min.js", ""), "text/javascript");
    EXPECT_EQ(contentTypeOf("/dot.png", ""), "image/png");
    EXPECT_EQ(contentTypeOf("/font.woff2", ""), "font/woff2");
}

TEST(TheTypeOfAFile, WithoutAKnownEndingIsNotGuessedFromItsFolder) {
    EXPECT_EQ(contentTypeOf("/a.html/data", ""), "application/octet-stream");
    EXPECT_EQ(contentTypeOf("/data.of-no-kind", ""), "application/octet-stream");
    EXPECT_EQ(contentTypeOf("/html", ""), "application/octet-stream");
    EXPECT_EQ(contentTypeOf("", ""), "application/octet-stream");
}

TEST(TheTypeOfAFile, IsWhatTheCarouselSays) {
    EXPECT_EQ(contentTypeOf("/index.html", "text/plain;charset=utf-8"), "text/plain;charset=utf-8");
    EXPECT_EQ(contentTypeOf("/data", "image/png"), "image/png");
    EXPECT_EQ(contentTypeOf("/index.html", "application/vnd.hbbtv.xhtml+xml"), "application/vnd.hbbtv.xhtml+xml");
}

TEST(TheTypeOfAFile, IsNotWhatTheCarouselSaysIfThatIsNoText) {
    EXPECT_EQ(contentTypeOf("/index.html", "image/png\r\nX: y"), "text/html");
    EXPECT_EQ(contentTypeOf("/index.html", "\xFF"), "text/html");
}

}  // namespace tvbrowser
