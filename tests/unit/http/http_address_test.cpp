// Tests of the HTTP server's address and of the requests that are meant for it.
#include "http_address.h"

#include <gmock/gmock.h>

namespace {

using dtvservice::HttpAddress;

HttpAddress parsed(const std::string& text) {
    std::string error;
    const std::optional<HttpAddress> address = dtvservice::parseHttpAddress(text, error);
    EXPECT_TRUE(address) << error;
    return address.value_or(HttpAddress());
}

std::string errorOf(const std::string& text) {
    std::string error;
    EXPECT_FALSE(dtvservice::parseHttpAddress(text, error)) << text;
    return error;
}

}  // namespace

TEST(AnHttpAddress, IsTheLoopbackUnlessItSaysOtherwise) {
    EXPECT_EQ(parsed("8080").text(), "127.0.0.1:8080");
    EXPECT_TRUE(parsed("8080").isLoopback());
    EXPECT_EQ(parsed("0").port, 0);
    EXPECT_EQ(parsed("192.0.2.1:80").text(), "192.0.2.1:80");
    EXPECT_FALSE(parsed("192.0.2.1:80").isLoopback());
    EXPECT_EQ(parsed("[::1]:80").host, "::1");
    EXPECT_EQ(parsed("[::1]:80").text(), "[::1]:80");
    EXPECT_TRUE(parsed("[::1]:80").isLoopback());
    EXPECT_TRUE(parsed("127.8.0.1:80").isLoopback());
    EXPECT_FALSE(parsed("[2001:db8::1]:80").isLoopback());
    EXPECT_FALSE(parsed("0.0.0.0:80").isLoopback());
}

TEST(AnHttpAddress, ThatIsWrongIsNamed) {
    EXPECT_EQ(errorOf(""), "port \"\" is not a number from 0 to 65535");
    EXPECT_EQ(errorOf("65536"), "port \"65536\" is not a number from 0 to 65535");
    EXPECT_EQ(errorOf("127.0.0.1:"), "port \"\" is not a number from 0 to 65535");
    EXPECT_EQ(errorOf("-1"), "port \"-1\" is not a number from 0 to 65535");
    EXPECT_EQ(errorOf("80x"), "port \"80x\" is not a number from 0 to 65535");
    EXPECT_EQ(errorOf("localhost:80"), "\"localhost\" is not a numeric address; one of IPv6 stands in brackets");
    EXPECT_EQ(errorOf(":80"), "\"\" is not a numeric address; one of IPv6 stands in brackets");
}

TEST(AnHttpAddress, TakesRequestsForTheLoopbackByItsNames) {
    const HttpAddress address = parsed("8080");
    for (const char* const host : {"127.0.0.1", "127.0.0.1:8080", "localhost", "LocalHost:9", "[::1]", "[::1]:8080"}) {
        EXPECT_TRUE(address.isMeant(host)) << host;
    }
    for (const char* const host :
         {"", "evil.example", "evil.example:8080", "localhost.evil.example", "127.0.0.1.evil.example", "192.0.2.1",
          "127.0.0.2", "[::2]:8080", "localhost:80:80", "evil.example:[::1]"}) {
        EXPECT_FALSE(address.isMeant(host)) << host;
    }
}

TEST(AnHttpAddress, TakesRequestsForItself) {
    const HttpAddress address = parsed("192.0.2.1:80");
    EXPECT_TRUE(address.isMeant("192.0.2.1"));
    EXPECT_TRUE(address.isMeant("localhost:80"));
    EXPECT_FALSE(address.isMeant("192.0.2.2"));
    EXPECT_TRUE(parsed("[2001:db8::1]:80").isMeant("[2001:DB8:0::1]:80"));
}

TEST(AnHttpAddress, OfAllTakesRequestsForAnyNumericOne) {
    for (const char* const all : {"0.0.0.0:80", "[::]:80"}) {
        EXPECT_TRUE(parsed(all).isMeant("192.0.2.1:80"));
        EXPECT_TRUE(parsed(all).isMeant("[2001:db8::1]:80"));
        EXPECT_FALSE(parsed(all).isMeant("evil.example"));
    }
}
