// Tests of what the descriptors of events, components, applications and transport streams say.
#include "si/event.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hex_bytes.h"
#include "si/ait.h"
#include "si/components.h"
#include "si/delivery_system.h"
#include "si/tables.h"
#include "tables.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

si::Descriptors descriptorsOf(const std::string& digits) {
    si::Descriptors descriptors;
    si::readDescriptors(hexBytes(digits), descriptors);
    return descriptors;
}

std::string textOf(const std::string& digits) {
    const std::vector<std::uint8_t> bytes = hexBytes(digits);
    return {bytes.begin(), bytes.end()};
}

/// A stream of this type with these descriptors, alone in a PMT.
std::vector<si::Component> componentsOf(std::uint8_t streamType, const std::string& descriptors) {
    si::Pmt pmt;
    pmt.streams.push_back({streamType, 0x101, descriptorsOf(descriptors)});
    return si::components(pmt, {});
}

}  // namespace

TEST(AnEvent, HasTheLongTextOfItsFirstLanguageInOrder) {
    // Part 1 before part 0, then a part in German. "Dir" has its second half in the next part.
    const std::string second = "4E0E11656E67050003426F6203777879";
    const std::string first = "4E0F01656E67080344697203416E6E0175";
    const std::string german =
        "4E0700646575"
        "00"
        "0161";
    EXPECT_EQ(si::extendedText(descriptorsOf(second + first + german)), "Dir: AnnBob\nuwxy");
    EXPECT_EQ(si::extendedText(descriptorsOf("4E0700656E6700"
                                             "0161")),
              "a");
    EXPECT_EQ(si::extendedText(descriptorsOf("4D05656E670000")), "");
}

TEST(AnEvent, KeepsWhatFitsOfABadDescriptor) {
    EXPECT_EQ(si::extendedText(descriptorsOf("4E0700656E67"
                                             "00"
                                             "0961")),
              "");
    EXPECT_EQ(si::extendedText(descriptorsOf("4E00")), "");
    EXPECT_THAT(si::contentNibbles(descriptorsOf("540311 00 22")), ElementsAre(0x11));
    EXPECT_THAT(si::parentalRatings(descriptorsOf("5503444555")), IsEmpty());
}

TEST(AnEvent, HasRatingsAndGenres) {
    const std::vector<si::ParentalRating> ratings = si::parentalRatings(descriptorsOf("550844455509465241FF"));
    ASSERT_EQ(ratings.size(), 2U);
    EXPECT_EQ(ratings[0].country, "DEU");
    EXPECT_EQ(ratings[0].rating, 9);
    EXPECT_EQ(ratings[1].country, "FRA");
    EXPECT_EQ(ratings[1].rating, 255);
    EXPECT_THAT(si::contentNibbles(descriptorsOf("540413001400")), ElementsAre(0x13, 0x14));
}

TEST(AnEvent, HasAllOfItsDescriptorsInTheTable) {
    tsmake::Multiplex multiplex = tsmake::sampleMultiplex();
    multiplex.services[0].events[0].descriptors = textOf("9001AA");
    std::string error;
    const auto eit = si::parseEit(tsmake::eitSection(multiplex, multiplex.services[0], false), error);
    ASSERT_TRUE(eit) << error;
    EXPECT_EQ(eit->lastSectionNumber, 1);
    EXPECT_EQ(eit->segmentLastSectionNumber, 1);
    ASSERT_EQ(eit->events[0].descriptors.size(), 2U);
    EXPECT_EQ(eit->events[0].descriptors[0].tag, 0x4D);
    EXPECT_EQ(eit->events[0].descriptors[1].tag, 0x90);
    EXPECT_THAT(eit->events[0].descriptors[1].bytes, ElementsAre(0xAA));
}

TEST(ANit, HasVersionAndNumbers) {
    tsmake::SectionWriter writer(0x40, 7, 3, 1, 2);
    writer.open12().close().open12().close();
    std::string error;
    const auto nit = si::parseNit(writer.finish(), error);
    ASSERT_TRUE(nit) << error;
    EXPECT_EQ(nit->version, 3);
    EXPECT_EQ(nit->sectionNumber, 1);
    EXPECT_EQ(nit->lastSectionNumber, 2);
}

TEST(AComponent, MayDescribeThePicture) {
    EXPECT_FALSE(componentsOf(0x03, "0A04656E6700")[0].audioDescription);
    EXPECT_TRUE(componentsOf(0x03, "0A04656E6703")[0].audioDescription);
    EXPECT_TRUE(componentsOf(0x03, "7F020685")[0].audioDescription);
    EXPECT_FALSE(componentsOf(0x03, "7F020681")[0].audioDescription);
    EXPECT_FALSE(componentsOf(0x03, "7F0106")[0].audioDescription);
}

TEST(AComponent, MayBeSubtitlesForTheHardOfHearing) {
    EXPECT_FALSE(componentsOf(0x06, "5908656E671000010001")[0].hearingImpaired);
    EXPECT_TRUE(componentsOf(0x06, "5908656E672000010001")[0].hearingImpaired);
    EXPECT_FALSE(componentsOf(0x06, "5903656E67")[0].hearingImpaired);
    const std::vector<si::Component> pages = componentsOf(0x06,
                                                          "560A656E671150"
                                                          "6465752951");
    ASSERT_EQ(pages.size(), 2U);
    EXPECT_FALSE(pages[0].hearingImpaired);
    EXPECT_TRUE(pages[1].hearingImpaired);
}

TEST(AnApplication, HasFlagsUsageAndCarousel) {
    tsmake::SectionWriter writer(0x74, 0x10, 1);
    writer.open12().close().open12().u32(7).u16(9).u8(1).open12();
    writer
        .text(textOf("00090500000102018002"
                     "01"))
        .text(textOf("160101"));
    writer.text(textOf("02050001017F20"))
        .text(textOf("020B000102FF000104010001"
                     "30"))
        .close()
        .close();
    std::string error;
    const auto ait = si::parseAit(writer.finish(), error);
    ASSERT_TRUE(ait) << error;
    const si::Ait::Application& application = ait->applications.at(0);
    EXPECT_TRUE(application.isServiceBound);
    EXPECT_EQ(application.visibility, 0);
    EXPECT_EQ(application.usage, 1);
    ASSERT_EQ(application.transports.size(), 2U);
    EXPECT_EQ(application.transports[0].componentTag, 0x20);
    EXPECT_EQ(application.transports[1].componentTag, std::nullopt);
}

TEST(AnApplication, HasTheCommonTransportsThatItLists) {
    tsmake::SectionWriter writer(0x74, 0x10, 1);
    writer.open12()
        .text(textOf("020700030102613A00"
                     "020700030202623A00"))
        .close()
        .open12();
    for (const char* const labels : {"02", "03"}) {
        writer.u32(7).u16(9).u8(1).open12();
        writer.openDescriptor(0x00).text(textOf("050000010201FF01")).text(textOf(labels)).close();
        writer.openDescriptor(0x15).text("c").close().close();
    }
    std::string error;
    const auto ait = si::parseAit(writer.close().finish(), error);
    ASSERT_TRUE(ait) << error;
    EXPECT_EQ(ait->applications.at(0).url(), "b:c");
    EXPECT_EQ(ait->applications.at(1).urlBase(), "");
}

TEST(AnApplication, HasItsTransportsInTheOrderOfItsLabels) {
    tsmake::SectionWriter writer(0x74, 0x10, 1);
    writer.open12().text(textOf("020700030402643A00")).close().open12();
    writer.u32(7).u16(9).u8(1).open12();
    writer.text(textOf("020700030102613A00020700030202623A00020700030302633A00"));
    writer.openDescriptor(0x00).text(textOf("050000010201FF01030204")).close().close();
    std::string error;
    const auto ait = si::parseAit(writer.close().finish(), error);
    ASSERT_TRUE(ait) << error;
    std::string bases;
    for (const si::Ait::Transport& transport : ait->applications.at(0).transports) {
        bases += transport.urlBase;
    }
    EXPECT_EQ(bases, "c:b:d:a:") << "what is not listed comes last";
}

TEST(ATransportStream, HasADeliverySystem) {
    struct Row {
        const char* descriptors;
        si::IdType type;
    };
    for (const Row& row : {Row{"4400", si::IdType::dvbC}, Row{"430B01197475019286022000 03", si::IdType::dvbS2},
                           Row{"430B0119747501928202200003", si::IdType::dvbS}, Row{"5A00", si::IdType::dvbT},
                           Row{"7F0104", si::IdType::dvbT2}, Row{"7F010D", si::IdType::dvbC2},
                           Row{"7F01054100", si::IdType::none}, Row{"", si::IdType::none}}) {
        EXPECT_EQ(si::deliverySystem(descriptorsOf(row.descriptors)).idType, row.type) << row.descriptors;
    }
    EXPECT_EQ(si::deliverySystem(descriptorsOf("4100"
                                               "44020102"
                                               "5A00"))
                  .descriptor,
              textOf("44020102"));
}

TEST(ATransportStream, ListsServices) {
    const std::vector<si::ListedService> services = si::serviceList(descriptorsOf("41070001190002027F"));
    ASSERT_EQ(services.size(), 2U);
    EXPECT_EQ(services[0].serviceId, 1);
    EXPECT_EQ(services[0].serviceType, 0x19);
    EXPECT_EQ(services[1].serviceId, 2);
}
