// URLs of files in carousels.
#include "carousel_url.h"

#include <gtest/gtest.h>

namespace tvbrowser {

namespace {

std::string errorOf(const std::string& url) {
    std::string error;
    EXPECT_FALSE(parseCarouselUrl(url, error)) << url;
    return error;
}

CarouselPlace placeOf(const std::string& url) {
    std::string error;
    const std::optional<CarouselPlace> place = parseCarouselUrl(url, error);
    EXPECT_TRUE(place) << error;
    return place.value_or(CarouselPlace());
}

constexpr si::Triplet kService{1, 0x401, 0x6DCA};

TEST(TheUrlOfACarousel, NamesServiceComponentAndPath) {
    const CarouselPlace place = placeOf("dvb://1.401.6dca.20/images/dot.png");
    EXPECT_TRUE(place.isOf(kService));
    EXPECT_EQ(place.componentTag, 0x20);
    EXPECT_EQ(place.path, "/images/dot.png");
}

TEST(TheUrlOfACarousel, MayHaveCapitalLettersAndZeros) {
    const CarouselPlace place = placeOf("DVB://0001.0401.6DCA.02/a");
    EXPECT_TRUE(place.isOf(kService));
    EXPECT_EQ(place.componentTag, 2);
}

TEST(TheUrlOfACarousel, MayLeaveTransportStreamAndComponentOut) {
    const CarouselPlace place = placeOf("dvb://1..6dca/a");
    EXPECT_TRUE(place.isOf(kService));
    EXPECT_TRUE(place.isOf({1, 7, 0x6DCA}));
    EXPECT_FALSE(place.componentTag);
}

TEST(TheUrlOfACarousel, HasItsPathWithoutQueryAndFragment) {
    EXPECT_EQ(placeOf("dvb://1.401.6dca.20/a.html?b/c#d").path, "/a.html");
    EXPECT_EQ(placeOf("dvb://1.401.6dca.20/a.html#d?e").path, "/a.html");
    EXPECT_EQ(placeOf("dvb://1.401.6dca.20?b").path, "");
    EXPECT_EQ(placeOf("dvb://1.401.6dca.20").path, "");
}

TEST(TheUrlOfACarousel, HasItsPathDecoded) {
    EXPECT_EQ(placeOf("dvb://1.401.6dca.20/more%20steps%C3%A4%3F.js").path, "/more steps\u00e4?.js");
    EXPECT_EQ(placeOf("dvb://1.401.6dca.20/100%/%2/%zz/%").path, "/100%/%2/%zz/%");
}

TEST(TheUrlOfACarousel, IsOfItsServiceAlone) {
    const CarouselPlace place = placeOf("dvb://1.401.6dca.20/a");
    EXPECT_FALSE(place.isOf({2, 0x401, 0x6DCA}));
    EXPECT_FALSE(place.isOf({1, 0x402, 0x6DCA}));
    EXPECT_FALSE(place.isOf({1, 0x401, 0x6DCB}));
    EXPECT_TRUE(place.isOf({0xFFFF, 0x401, 0x6DCA})) << "the service's network is not known";
}

TEST(TheUrlOfACarousel, IsRefusedWithTheReason) {
    EXPECT_EQ(errorOf("http://a.example/a"), "http://a.example/a: does not begin with dvb://");
    EXPECT_EQ(errorOf("dvb:/1"), "dvb:/1: does not begin with dvb://");
    for (const char* const host : {"", "current.ait", "1.401.6dca.20.1", "1.401", "10000.401.6dca.20", "1.401.6dca.100",
                                   "1.401.6dca.", ".401.6dca.20", "1.401..20", "1.0x401.6dca.20", "-1.401.6dca.20"}) {
        const std::string url = "dvb://" + std::string(host) + "/a";
        EXPECT_EQ(errorOf(url), url + ": \"" + host + "\" is not ONID.TSID.SID.TAG in hexadecimal digits");
    }
}

TEST(TheUrlOfACarousel, IsMadeInItsShortestForm) {
    EXPECT_EQ(carouselUrl(kService, 0x0A, "index.html?b#c"), "dvb://1.401.6dca.a/index.html?b#c");
    EXPECT_EQ(carouselUrl(kService, 0, "/index.html"), "dvb://1.401.6dca.0/index.html");
    EXPECT_EQ(carouselUrl(kService, 0xFF, ""), "dvb://1.401.6dca.ff/");
}

}  // namespace

}  // namespace tvbrowser
