// URLs that name an application of the current AIT.
#include "application_url.h"

#include <gtest/gtest.h>

namespace tvbrowser {

TEST(ACurrentAitUrl, NamesAnApplicationByHexadecimalNumbers) {
    std::string error;
    const std::optional<CurrentAitUrl> url = parseCurrentAitUrl("dvb://current.ait/190.1F", error);
    ASSERT_TRUE(url) << error;
    EXPECT_EQ(url->id, (ApplicationId{0x190, 0x1F}));
    EXPECT_EQ(url->query, "");
    EXPECT_EQ(url->fragment, "");
}

TEST(ACurrentAitUrl, CarriesQueryAndFragment) {
    std::string error;
    const std::optional<CurrentAitUrl> url = parseCurrentAitUrl("DVB://Current.AIT/1.2?a=1&b=?#c?d#", error);
    ASSERT_TRUE(url) << error;
    EXPECT_EQ(url->query, "?a=1&b=?");
    EXPECT_EQ(url->fragment, "#c?d#");
}

TEST(ACurrentAitUrl, ThatIsWrongIsNamedWithItsFault) {
    std::string error;
    EXPECT_FALSE(parseCurrentAitUrl("dvb://1.2.3", error));
    EXPECT_EQ(error, "dvb://1.2.3: does not begin with dvb://current.ait/");
    EXPECT_FALSE(parseCurrentAitUrl("dvb://current.ait/1.2/a?b", error));
    EXPECT_EQ(error, "dvb://current.ait/1.2/a?b: \"1.2/a\" is not ORGANISATION.APPLICATION in hexadecimal digits");
    EXPECT_FALSE(parseCurrentAitUrl("dvb://current.ait/", error));
    EXPECT_EQ(error, "dvb://current.ait/: \"\" is not ORGANISATION.APPLICATION in hexadecimal digits");
}

TEST(ADvbUrl, IsOneWithItsScheme) {
    EXPECT_TRUE(isDvbUrl("dvb://current.ait/1.2"));
    EXPECT_TRUE(isDvbUrl("DVB:anything"));
    EXPECT_FALSE(isDvbUrl("http://a.example/dvb:"));
    EXPECT_FALSE(isDvbUrl("dvb"));
}

TEST(AnHttpUrl, IsCompleteAndHasItsScheme) {
    EXPECT_TRUE(isHttpUrl("http://a.example/b"));
    EXPECT_TRUE(isHttpUrl("HTTPS://a.example"));
    EXPECT_FALSE(isHttpUrl("file:///b"));
    EXPECT_FALSE(isHttpUrl("http:b"));
    EXPECT_FALSE(isHttpUrl("httpx://a.example"));
    EXPECT_FALSE(isHttpUrl(""));
}

TEST(AnApplicationsUrl, GetsQueryAndFragment) {
    EXPECT_EQ(urlWith("http://a/b", "", ""), "http://a/b");
    EXPECT_EQ(urlWith("http://a/b", "?c=1", "#d"), "http://a/b?c=1#d");
}

TEST(AnApplicationsUrl, KeepsItsOwnQueryBeforeTheNewOne) {
    EXPECT_EQ(urlWith("http://a/b?x=1", "?c=1", ""), "http://a/b?x=1&c=1");
    EXPECT_EQ(urlWith("http://a/b?x=1#y", "?c=1", ""), "http://a/b?x=1&c=1#y");
    EXPECT_EQ(urlWith("http://a/b?x=1#y", "", "#d"), "http://a/b?x=1#d");
    EXPECT_EQ(urlWith("http://a/b#y?z", "?c=1", ""), "http://a/b?c=1#y?z");
}

TEST(ADocument, IsTheSameWhateverQueryAndFragment) {
    EXPECT_TRUE(isSameDocument("http://a/b", "HTTP://A:80/b?c#d"));
    EXPECT_TRUE(isSameDocument("http://a", "http://a/"));
    EXPECT_FALSE(isSameDocument("http://a/b", "http://a/B"));
    EXPECT_FALSE(isSameDocument("http://a/b", "https://a/b"));
    EXPECT_FALSE(isSameDocument("", ""));
}

}  // namespace tvbrowser
