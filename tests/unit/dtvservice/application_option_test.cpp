// Tests of the option --application.
#include "application_option.h"

#include <gmock/gmock.h>

namespace {

using testing::HasSubstr;

si::Ait::Application parsed(const std::string& text) {
    std::string error;
    const std::optional<si::Ait::Application> application = dtvservice::parseApplication(text, error);
    EXPECT_TRUE(application) << error;
    return application.value_or(si::Ait::Application());
}

std::string errorOf(const std::string& text) {
    std::string error;
    EXPECT_FALSE(dtvservice::parseApplication(text, error)) << text;
    return error;
}

/// URL base and initial path.
std::vector<std::string> partsOf(const std::string& text) {
    const si::Ait::Application application = parsed(text);
    return {application.urlBase(), application.initialPath};
}

std::vector<std::uint32_t> idOf(const std::string& text) {
    const si::Ait::Application application = parsed(text);
    return {application.organisationId, application.applicationId};
}

}  // namespace

TEST(TheApplicationOption, DividesTheUrlAfterTheLastSlashOfItsPath) {
    EXPECT_THAT(partsOf("http://one.example/a/b/index.html?x=/1#y/z"),
                testing::ElementsAre("http://one.example/a/b/", "index.html?x=/1#y/z"));
    EXPECT_THAT(partsOf("HTTPS://one.example:8443/"), testing::ElementsAre("HTTPS://one.example:8443/", ""));
    EXPECT_THAT(partsOf("http://one.example"), testing::ElementsAre("http://one.example/", ""));
    EXPECT_THAT(partsOf("http://one.example?x=/1"), testing::ElementsAre("http://one.example/", "?x=/1"));
}

TEST(TheApplicationOption, MakesAnApplicationThatStartsByItself) {
    const si::Ait::Application application = parsed("http://one.example:80/index.html");
    EXPECT_EQ(application.controlCode, 1U);
    EXPECT_EQ(application.names.at(0).text, "one.example:80");
    EXPECT_EQ(application.transports.at(0).protocolId, 3U);
    EXPECT_EQ(application.visibility, 3U);
    EXPECT_FALSE(application.isServiceBound);
    const si::Ait::Profile& profile = application.profiles.at(0);
    EXPECT_THAT((std::vector<unsigned int>{profile.profile, profile.major, profile.minor, profile.micro}),
                testing::ElementsAre(0, 1, 1, 1));
}

TEST(TheApplicationOption, TakesTheIdAfterTheLastComma) {
    EXPECT_THAT(idOf("http://one.example/"), testing::ElementsAre(0xFFFFFF, 1));
    EXPECT_THAT(idOf("http://one.example/,190.2A"), testing::ElementsAre(0x190, 0x2A));
    EXPECT_THAT(idOf("http://one.example/,ffffffff.ffff"), testing::ElementsAre(0xFFFFFFFF, 0xFFFF));
    EXPECT_THAT(idOf("http://one.example/?a=1,2.3,4.5"), testing::ElementsAre(4, 5));
}

TEST(TheApplicationOption, LeavesOtherCommasInTheUrl) {
    EXPECT_EQ(parsed("http://one.example/a,index.html").initialPath, "a,index.html");
    EXPECT_EQ(parsed("http://one.example/?a=1,2.3,4.5").initialPath, "?a=1,2.3");
}

TEST(TheApplicationOption, NamesWhatIsWrong) {
    EXPECT_EQ(errorOf("ftp://one.example/"),
              "\"ftp://one.example/\" is not a URL that begins with http:// or https://");
    EXPECT_THAT(errorOf("one.example/index.html"), HasSubstr("http:// or https://"));
    EXPECT_THAT(errorOf("http:one"), HasSubstr("http:// or https://"));
    EXPECT_THAT(errorOf(""), HasSubstr("http:// or https://"));
    EXPECT_EQ(errorOf("https:///index.html"), "\"https:///index.html\" has no host");
    EXPECT_THAT(errorOf("http://one.example/a\nb"), HasSubstr("at byte 21;"));
    EXPECT_THAT(errorOf("http://one.example/f\xC3\xB6hn"), HasSubstr("at byte 21;"));
    EXPECT_EQ(errorOf("http://one.example/,1"), "\"1\" is not ORG.APP: hexadecimal numbers up to ffffffff and ffff");
    EXPECT_THAT(errorOf("http://one.example/,1.10000"), HasSubstr("\"1.10000\""));
    EXPECT_THAT(errorOf("http://one.example/,"), HasSubstr("\"\""));
}

TEST(TheApplicationOption, RefusesPartsThatNoDescriptorHolds) {
    const std::string host = "http://one.example/";
    const std::string longest = host + std::string(250 - host.size() - 1, 'a') + "/";
    EXPECT_THAT(partsOf(longest + std::string(255, 'b')), testing::ElementsAre(longest, std::string(255, 'b')));
    EXPECT_EQ(errorOf("http://one.example/" + std::string(232, 'a') + "/"),
              "the URL's part up to the last slash of the path has 252 bytes; an AIT has room for 250");
    EXPECT_EQ(errorOf(host + std::string(256, 'b')),
              "the URL's part after the last slash of the path has 256 bytes; an AIT has room for 255");
}
