// The XML document that signals an application outside of a broadcast.
#include "xml_ait.h"

#include <gmock/gmock.h>

namespace tvbrowser {

namespace {

constexpr const char* kStart =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
    "<mhp:ServiceDiscovery xmlns:mhp=\"urn:dvb:mhp:2009\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">\n"
    " <mhp:ApplicationDiscovery DomainName=\"a.example\"><mhp:ApplicationList>\n";
constexpr const char* kEnd = " </mhp:ApplicationList></mhp:ApplicationDiscovery></mhp:ServiceDiscovery>\n";
constexpr const char* kApplication =
    "<mhp:Application>\n"
    "  <mhp:appName Language=\"eng\"> News &amp; more </mhp:appName>\n"
    "  <mhp:applicationIdentifier><mhp:orgId>400</mhp:orgId><mhp:appId>31</mhp:appId></mhp:applicationIdentifier>\n"
    "  <mhp:applicationDescriptor>\n"
    "    <mhp:type><mhp:OtherApp>application/vnd.hbbtv.xhtml+xml</mhp:OtherApp></mhp:type>\n"
    "    <mhp:controlCode>AUTOSTART</mhp:controlCode><mhp:visibility>NOT_VISIBLE_USERS</mhp:visibility>\n"
    "    <mhp:serviceBound>false</mhp:serviceBound><mhp:priority>0A</mhp:priority><mhp:version>01</mhp:version>\n"
    "    <mhp:mhpVersion><mhp:profile>1</mhp:profile><mhp:versionMajor>1</mhp:versionMajor>\n"
    "      <mhp:versionMinor>2</mhp:versionMinor><mhp:versionMicro>3</mhp:versionMicro></mhp:mhpVersion>\n"
    "  </mhp:applicationDescriptor>\n"
    "  <mhp:applicationBoundary><mhp:BoundaryExtension>http://b.example/</mhp:BoundaryExtension>\n"
    "    <mhp:BoundaryExtension>http://c.example</mhp:BoundaryExtension></mhp:applicationBoundary>\n"
    "  <mhp:applicationTransport xsi:type=\"mhp:OCTransportType\"><mhp:URLBase>dvb:</mhp:URLBase>\n"
    "  </mhp:applicationTransport>\n"
    "  <mhp:applicationTransport xsi:type=\"mhp:HTTPTransportType\"><mhp:URLBase>http://a.example/</mhp:URLBase>\n"
    "  </mhp:applicationTransport>\n"
    "  <mhp:applicationLocation>index.php?a=1&amp;b=2</mhp:applicationLocation>\n"
    "</mhp:Application>\n";

std::string document(const std::string& applications) {
    return kStart + applications + kEnd;
}

/// The application above with one text in place of another.
std::string changed(const std::string& from, const std::string& to) {
    std::string text = kApplication;
    text.replace(text.find(from), from.size(), to);
    return document(text);
}

std::string errorOf(const std::string& text) {
    std::string error;
    EXPECT_FALSE(parseXmlAit(text, error)) << text;
    return error;
}

Applications applicationsOf(const std::string& text) {
    std::string error;
    const std::optional<Applications> applications = parseXmlAit(text, error);
    EXPECT_TRUE(applications) << error;
    return applications.value_or(Applications());
}

}  // namespace

TEST(AnXmlAitDocument, HasApplicationsWithAllThatTheTerminalUses) {
    SignalledApplication expected;
    expected.id = {400, 31};
    expected.control = ControlCode::autostart;
    expected.name = "News & more";
    expected.url = "http://a.example/index.php?a=1&b=2";
    expected.priority = 10;
    expected.visibility = 1;
    expected.profiles = {{1, 1, 2, 3}};
    expected.boundaries = {"http://b.example/", "http://c.example"};
    EXPECT_EQ(applicationsOf(document(kApplication)), Applications{expected});
}

TEST(AnXmlAitDocument, MayHaveAnyPrefixAndAByteOrderMark) {
    std::string text = document(kApplication);
    for (std::size_t at = text.find("mhp:"); at != std::string::npos; at = text.find("mhp:", at)) {
        text.erase(at, std::string("mhp:").size());
    }
    EXPECT_EQ(applicationsOf("\xEF\xBB\xBF" + text), applicationsOf(document(kApplication)));
}

TEST(AnXmlAitDocument, KeepsTheOrderOfItsApplications) {
    const Applications applications =
        applicationsOf(document(kApplication + std::string("<Application/>") + kApplication));
    ASSERT_EQ(applications.size(), 2U);
    EXPECT_EQ(applications[0], applications[1]);
}

TEST(AnXmlAitDocument, MayLackWhatHasAUsualValue) {
    const Applications applications = applicationsOf(changed("<mhp:visibility>NOT_VISIBLE_USERS</mhp:visibility>", ""));
    ASSERT_EQ(applications.size(), 1U);
    EXPECT_EQ(applications[0].visibility, kVisibleToAll);
}

TEST(AnXmlAitDocument, HasNoApplicationOfAnotherType) {
    EXPECT_THAT(applicationsOf(changed("application/vnd.hbbtv.xhtml+xml", "application/other")), testing::IsEmpty());
}

TEST(AnXmlAitDocument, IsRefusedByTheNameOfWhatIsWrong) {
    EXPECT_EQ(errorOf(changed("<mhp:orgId>400</mhp:orgId>", "")),
              "Application 1: applicationIdentifier/orgId is missing");
    EXPECT_EQ(errorOf(changed(">31<", ">65536<")),
              "Application 1: applicationIdentifier/appId: \"65536\" is no number up to 65535");
    EXPECT_EQ(errorOf(changed("AUTOSTART", "AUTO")),
              "Application 1: applicationDescriptor/controlCode: \"AUTO\" is no control code");
    EXPECT_EQ(errorOf(changed("NOT_VISIBLE_USERS", "2")),
              "Application 1: applicationDescriptor/visibility: \"2\" is no visibility");
    EXPECT_EQ(errorOf(changed("mhp:HTTPTransportType", "mhp:OCTransportType")),
              "Application 1: applicationTransport/URLBase is missing");
    EXPECT_EQ(errorOf(document("")), "it has no Application");
}

TEST(AnXmlAitDocument, IsRefusedWithTheLineIfItIsNoXml) {
    EXPECT_THAT(errorOf(document("<open>")), testing::HasSubstr("line 4"));
    EXPECT_THAT(errorOf(document("\xFF")), testing::HasSubstr("UTF-8"));
    EXPECT_THAT(errorOf(""), testing::Not(testing::IsEmpty()));
}

TEST(AnXmlAitDocument, IsRefusedIfItsElementsAreTooDeepOrTooMany) {
    std::string deep;
    for (int level = 0; level < 40; ++level) {
        deep += "<a>";
    }
    EXPECT_THAT(errorOf(deep), testing::HasSubstr("more than 32 deep"));
    std::string many;
    for (int count = 0; count < 257; ++count) {
        many += kApplication;
    }
    EXPECT_EQ(errorOf(document(many)), "Application 257: there are more than 256");
}

}  // namespace tvbrowser
