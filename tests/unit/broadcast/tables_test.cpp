// Tests of the table readers: they return what the generator wrote, and refuse malformed sections.
#include "tables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "packets.h"
#include "si/ait.h"
#include "si/tables.h"
#include "si/text.h"

namespace {

const tsmake::Multiplex kSample = tsmake::sampleMultiplex();
constexpr std::uint8_t kTellingBytes[] = {0x00, 0x7F, 0xFF};

std::string utf8(const std::string& bytes) {
    return si::toUtf8(bytes);
}

template <typename Parse>
void expectNothingBrokenIsTaken(const tsmake::Section& good, Parse parse) {
    std::string error;
    ASSERT_TRUE(parse(good, error)) << error;
    for (std::size_t length = 0; length < good.size(); ++length) {
        error.clear();
        EXPECT_FALSE(parse(tsmake::Section(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(length)), error));
        EXPECT_FALSE(error.empty());
    }
    // With a correct CRC_32 any byte may have any value. Then either the fields fit or the section is refused. The
    // sanitizers check that nothing beyond the section is read.
    for (std::size_t at = 3; at + 4 < good.size(); ++at) {
        for (const std::uint8_t value : kTellingBytes) {
            tsmake::Section changed = good;
            changed[at] = value;
            parse(withCrc(changed), error);
        }
    }
}

}  // namespace

TEST(APat, ListsItsProgramsWithoutTheNetworkPid) {
    std::string error;
    const auto pat = si::parsePat(tsmake::patSection(kSample), error);
    ASSERT_TRUE(pat) << error;
    EXPECT_EQ(pat->transportStreamId, 1025);
    ASSERT_EQ(pat->programs.size(), 4U);
    EXPECT_EQ(pat->programs[0].serviceId, 28106);
    EXPECT_EQ(pat->programs[0].pmtPid, 0x100);
    EXPECT_EQ(pat->programs[3].serviceId, 28120);
    expectNothingBrokenIsTaken(tsmake::patSection(kSample), si::parsePat);
}

TEST(APmt, TellsItsStreamsApart) {
    std::string error;
    const auto pmt = si::parsePmt(tsmake::pmtSection(kSample.services[0]), error);
    ASSERT_TRUE(pmt) << error;
    EXPECT_EQ(pmt->serviceId, 28106);
    EXPECT_EQ(pmt->pcrPid, 0x101);
    ASSERT_EQ(pmt->streams.size(), 3U);
    EXPECT_EQ(pmt->streams[0].streamType, 0x1B);
    EXPECT_EQ(si::language(pmt->streams[1]), "eng");
    EXPECT_EQ(si::componentTag(pmt->streams[1]), 2);
    EXPECT_EQ(si::streamName(pmt->streams[2]), "AIT (HbbTV)");
    EXPECT_THAT(si::hbbtvAitPids(*pmt), testing::ElementsAre(0x105));
    expectNothingBrokenIsTaken(tsmake::pmtSection(kSample.services[0]), si::parsePmt);
}

TEST(APmt, SignalsNoHbbTvWithAnotherAitOrNone) {
    si::Pmt pmt;
    pmt.streams = {{0x05, 300, {{0x6F, {0x80, 0x01, 0xE0}}}},
                   {0x05, 301, {{0x6F, {}}}},
                   {0x06, 302, {{0x6F, {0x80, 0x10, 0xE0}}}}};
    EXPECT_TRUE(si::hbbtvAitPids(pmt).empty());
    EXPECT_EQ(si::streamName(pmt.streams[0]), "AIT (not HbbTV)");
    pmt.streams.push_back({0x05, 303, {{0x6F, {0x80, 0x01, 0xE0, 0x80, 0x10, 0xE1}}}});
    EXPECT_THAT(si::hbbtvAitPids(pmt), testing::ElementsAre(303));
}

TEST(APmt, WithOneAitStreamNeedNotListItsType) {
    for (const Bytes& list : {Bytes{}, Bytes{0x80, 0x01, 0xE0}}) {
        si::Pmt pmt;
        pmt.streams = {{0x1B, 300, {}}, {0x05, 301, {}}, {0x05, 302, {{0x6F, list}}}};
        EXPECT_THAT(si::hbbtvAitPids(pmt), testing::ElementsAre(302));
    }
    EXPECT_EQ(si::streamName({0x05, 302, {{0x6F, {}}}}), "AIT");
}

namespace {

/// Writes a loop with this descriptor and another one whose length exceeds the loop.
void writeLoopWithWrongLength(tsmake::SectionWriter& writer, std::uint8_t tag, const std::string& contents) {
    writer.open12().openDescriptor(tag).text(contents).close().text("\x52\xFF\x01").close();
}

void writeService(tsmake::SectionWriter& writer, unsigned int id, const std::string& name) {
    writer.u16(id).u8(0xFC).open12().openDescriptor(0x48).u8(1).lengthText("").lengthText(name).close().close();
}

}  // namespace

TEST(APmt, KeepsTheRestBesideABadDescriptor) {
    tsmake::SectionWriter writer(0x02, 7, 0);
    writer.u16(0xE101);
    writeLoopWithWrongLength(writer, 0x0C, "abcd");
    writer.u8(0x1B).u16(0xE101);
    writeLoopWithWrongLength(writer, 0x52, "\x05");
    writer.u8(0x03).u16(0xE102).open12().openDescriptor(0x0A).text("deu").u8(0).close().close();
    std::string error;
    const auto pmt = si::parsePmt(writer.finish(), error);
    ASSERT_TRUE(pmt) << error;
    EXPECT_EQ(pmt->pcrPid, 0x101);
    ASSERT_EQ(pmt->descriptors.size(), 1U);
    EXPECT_EQ(pmt->descriptors[0].tag, 0x0C);
    ASSERT_EQ(pmt->streams.size(), 2U);
    EXPECT_EQ(pmt->streams[0].descriptors.size(), 1U);
    EXPECT_EQ(si::componentTag(pmt->streams[0]), 5);
    EXPECT_EQ(si::language(pmt->streams[1]), "deu");
}

TEST(ANit, KeepsTheRestBesideABadDescriptor) {
    tsmake::SectionWriter writer(0x40, 9, 0);
    writeLoopWithWrongLength(writer, 0x40, "Net");
    writer.open12().u16(1).u16(2);
    writeLoopWithWrongLength(writer, 0x44, "cable");
    writer.u16(3).u16(4).open12().openDescriptor(0x44).text("other").close().close().close();
    std::string error;
    const auto nit = si::parseNit(writer.finish(), error);
    ASSERT_TRUE(nit) << error;
    EXPECT_EQ(nit->networkId, 9);
    EXPECT_EQ(nit->descriptors.size(), 1U);
    ASSERT_EQ(nit->transportStreams.size(), 2U);
    EXPECT_EQ(nit->transportStreams[0].descriptors.at(0).tag, 0x44);
    EXPECT_EQ(nit->transportStreams[0].descriptors.size(), 1U);
    EXPECT_EQ(nit->transportStreams[1].transportStreamId, 3);
    EXPECT_EQ(nit->transportStreams[1].descriptors.size(), 1U);
}

TEST(AnSdt, KeepsTheRestBesideABadDescriptor) {
    tsmake::SectionWriter writer(0x42, 1025, 0);
    writer.u16(8468).u8(0xFF);
    writeService(writer, 1, "One");
    writer.u16(2).u8(0xFC);
    writeLoopWithWrongLength(writer, 0x5D, "");
    writeService(writer, 3, "Three");
    std::string error;
    const auto sdt = si::parseSdt(writer.finish(), error);
    ASSERT_TRUE(sdt) << error;
    EXPECT_EQ(sdt->originalNetworkId, 8468);
    ASSERT_EQ(sdt->services.size(), 3U);
    EXPECT_EQ(sdt->services[0].name, "One");
    EXPECT_EQ(sdt->services[1].serviceId, 2);
    EXPECT_EQ(sdt->services[1].name, "");
    EXPECT_EQ(sdt->services[2].name, "Three");
}

TEST(AnSdt, KeepsTheServicesBeforeABadOne) {
    tsmake::SectionWriter writer(0x42, 1025, 0);
    writer.u16(8468).u8(0xFF);
    writeService(writer, 1, "One");
    writer.u16(2).u8(0xFC).u16(0xF003).u16(0x4800);
    std::string error;
    const auto sdt = si::parseSdt(writer.finish(), error);
    ASSERT_TRUE(sdt) << error;
    EXPECT_EQ(sdt->originalNetworkId, 8468);
    ASSERT_EQ(sdt->services.size(), 1U);
    EXPECT_EQ(sdt->services[0].name, "One");
}

TEST(AnEit, KeepsTheRestBesideABadDescriptor) {
    tsmake::SectionWriter writer(0x4E, 1, 0);
    writer.u16(2).u16(3).u8(0).u8(0x4E);
    writer.u16(10).text(std::string(8, '\xFF'));
    writeLoopWithWrongLength(writer, 0x4D,
                             std::string("deu\x03"
                                         "Now\x00",
                                         8));
    writer.u16(11).text(std::string(8, '\xFF')).open12();
    writer.openDescriptor(0x4D).text("deu").lengthText("Next").lengthText("").close().close();
    std::string error;
    const auto eit = si::parseEit(writer.finish(), error);
    ASSERT_TRUE(eit) << error;
    ASSERT_EQ(eit->events.size(), 2U);
    EXPECT_EQ(eit->events[0].name, "Now");
    EXPECT_EQ(eit->events[1].name, "Next");
}

TEST(ATable, IsRefusedIfItsFirstLoopDoesNotFit) {
    std::string error;
    tsmake::Section pmt = tsmake::pmtSection(kSample.services[0]);
    pmt[10] |= 0x0FU;
    EXPECT_FALSE(si::parsePmt(withCrc(pmt), error));
    EXPECT_EQ(error, "PMT section: fields do not fit");
    tsmake::Section nit = tsmake::nitSection(kSample);
    nit[8] |= 0x0FU;
    EXPECT_FALSE(si::parseNit(withCrc(nit), error));
    EXPECT_EQ(error, "NIT section: fields do not fit");
    nit = tsmake::nitSection(kSample);
    const std::size_t streamsAt = 10 + std::size_t{nit[9]};
    --nit[streamsAt + 1];
    EXPECT_FALSE(si::parseNit(withCrc(nit), error)) << "something is behind the streams";
}

TEST(AnSdt, NamesItsServicesInUtf8) {
    std::string error;
    const auto sdt = si::parseSdt(tsmake::sdtSection(kSample), error);
    ASSERT_TRUE(sdt) << error;
    EXPECT_TRUE(sdt->actual);
    EXPECT_EQ(sdt->originalNetworkId, 1);
    ASSERT_EQ(sdt->services.size(), 4U);
    EXPECT_EQ(sdt->services[0].name, "Velmora One HD");
    EXPECT_EQ(sdt->services[0].serviceType, 0x19);
    EXPECT_EQ(sdt->services[1].name, "Velmora Zwei Föhn");
    EXPECT_EQ(sdt->services[2].name, "Velmora Τρία");
    EXPECT_EQ(sdt->services[2].provider, "Velmora");
    expectNothingBrokenIsTaken(tsmake::sdtSection(kSample), si::parseSdt);
}

TEST(AnEit, GivesTimesInUtcAndTextsInUtf8) {
    std::string error;
    const auto eit = si::parseEit(tsmake::eitSection(kSample, kSample.services[1], false), error);
    ASSERT_TRUE(eit) << error;
    EXPECT_EQ(eit->tableId, 0x4E);
    EXPECT_EQ(eit->serviceId, 28107);
    ASSERT_EQ(eit->events.size(), 1U);
    EXPECT_EQ(eit->events[0].start, kSample.start);
    EXPECT_EQ(eit->events[0].durationSeconds, 3600U);
    EXPECT_EQ(eit->events[0].runningStatus, 4);
    EXPECT_EQ(eit->events[0].name, "Die große Küche");
    EXPECT_EQ(eit->events[0].text, "Heute: Käsespätzle.");
    expectNothingBrokenIsTaken(tsmake::eitSection(kSample, kSample.services[1], false), si::parseEit);
}

namespace {

/// The start time of an event with these five bytes.
std::optional<si::UtcSeconds> startOf(const std::string& field) {
    tsmake::SectionWriter writer(0x4E, 1, 0);
    writer.u16(1).u16(1).u8(0).u8(0x4E).u16(1).text(field).u8(0).u8(0).u8(0).open12().close();
    std::string error;
    const std::optional<si::Eit> eit = si::parseEit(writer.finish(), error);
    EXPECT_TRUE(eit) << error;
    return eit ? eit->events.at(0).start : std::nullopt;
}

}  // namespace

TEST(AnEit, HasDatesOfAllOfItsSixteenBits) {
    EXPECT_EQ(startOf(std::string("\x00\x00\x00\x00\x00", 5)), -3506716800);
    EXPECT_EQ(startOf(std::string("\x3B\x70\x00\x00\x00", 5)), -2192054400) << "before 1901";
    EXPECT_EQ(startOf("\xFF\xAF\x01\x02\x03"), 2148598923) << "2038-02-01";
    EXPECT_EQ(startOf(std::string("\xFF\xFF\x00\x00\x00", 5)), 2155507200);
    EXPECT_EQ(startOf("\xFF\xFF\xFF\xFF\xFF"), std::nullopt);
}

TEST(ACalendar, KnowsEveryDate) {
    const std::pair<si::UtcSeconds, const char*> dates[] = {
        {-3506716800, "1858-11-17"}, {-2203891200, "1900-03-01"}, {-1, "1969-12-31"},
        {0, "1970-01-01"},           {951782400, "2000-02-29"},   {2148595200, "2038-02-01"},
        {2155507200, "2038-04-22"},  {4107456000, "2100-02-28"},  {4107542400, "2100-03-01"},
        {4133894400, "2100-12-31"},  {13574563200, "2400-02-29"}, {13574649600, "2400-03-01"}};
    for (const auto& [time, text] : dates) {
        EXPECT_EQ(si::dateText(time), text);
    }
    EXPECT_EQ(si::clockText(-1), "23:59:59");
    EXPECT_EQ(si::clockText(2148598923), "01:02:03");
    EXPECT_EQ(si::utcSeconds(2100, 3, 1), 4107542400);
    EXPECT_EQ(si::utcSeconds(1858, 11, 17), -3506716800);
    EXPECT_EQ(si::utcSeconds(2026, 2, 29), si::utcSeconds(2026, 3, 1));
}

TEST(ACalendar, GivesBackTheDayOfEveryDate) {
    constexpr std::int64_t kLast = 200000;
    for (std::int64_t mjd = 0; mjd < kLast; ++mjd) {
        const si::UtcSeconds time = (mjd - si::kEpochMjd) * si::kSecondsOfDay;
        const std::string text = si::dateText(time);
        ASSERT_EQ(si::mjdOf(time + si::kSecondsOfDay - 1), mjd);
        ASSERT_EQ(si::utcSeconds(std::stoi(text.substr(0, 4)), static_cast<unsigned int>(std::stoi(text.substr(5, 2))),
                                 std::stoi(text.substr(8))),
                  time)
            << text;
    }
}

TEST(AnAit, GivesItsApplicationsWithTheirUrls) {
    std::string error;
    const auto ait = si::parseAit(tsmake::aitSection(kSample.services[0]), error);
    ASSERT_TRUE(ait) << error;
    EXPECT_EQ(ait->applicationType, 0x0010);
    EXPECT_EQ(ait->version, 1);
    ASSERT_EQ(ait->applications.size(), 2U);
    EXPECT_EQ(ait->applications[0].organisationId, 0x190U);
    EXPECT_EQ(ait->applications[0].applicationId, 1);
    EXPECT_EQ(si::controlCodeName(ait->applications[0].controlCode), "AUTOSTART");
    EXPECT_EQ(ait->applications[0].names.at(0).text, "Red Button");
    EXPECT_EQ(ait->applications[0].url(), "http://hbbtv.one.example/redbutton/index.html?lang=en");
    EXPECT_EQ(si::controlCodeName(ait->applications[1].controlCode), "PRESENT");
    expectNothingBrokenIsTaken(tsmake::aitSection(kSample.services[0]), si::parseAit);
}

TEST(AText, IsReadInItsAnnouncedCharacterTable) {
    EXPECT_EQ(utf8(""), "");
    EXPECT_EQ(utf8("plain"), "plain");
    for (char byte = ' '; byte < '\x7F'; ++byte) {
        EXPECT_EQ(utf8({byte}), std::string(1, byte)) << "alone";
        EXPECT_EQ(utf8({byte, '\xA3'}), std::string(1, byte) + "£") << "in a text that is converted";
    }
    EXPECT_EQ(utf8("\x7F"), "");
    EXPECT_EQ(utf8("\xC8"
                   "u"),
              "ü");
    EXPECT_EQ(utf8("\x01"
                   "\xB0"),
              "А");
    EXPECT_EQ(utf8(std::string("\x10\x00\x02"
                               "\xE8",
                               4)),
              "č");
    EXPECT_EQ(utf8(std::string("\x11\x83\xEF\x89\x96", 5)), "華視");
    EXPECT_EQ(utf8(std::string("\x14\x83\xEF\x89\x96", 5)), "華視");
    EXPECT_EQ(utf8("\x15"
                   "F\xC3\xB6hn"),
              "Föhn");
}

TEST(AText, HasNoEmphasisMarksAndBlanksForLineBreaks) {
    EXPECT_EQ(utf8("a\x86"
                   "b\x87"
                   "c\x8A"
                   "d"),
              "abc d");
    EXPECT_EQ(utf8("\x15"
                   "a\xEE\x82\x86"
                   "b\xEE\x82\x8A"
                   "c"),
              "ab c");
}

TEST(AText, KeepsTheRestBesideABadWideUnit) {
    const std::string replacement = "\xEF\xBF\xBD";
    EXPECT_EQ(utf8(std::string("\x11\x00"
                               "a\xDC\x00\x00"
                               "b\x00"
                               "c",
                               9)),
              "a" + replacement + "bc")
        << "half of a pair";
    EXPECT_EQ(utf8(std::string("\x14\xD8\x00\x00"
                               "b",
                               5)),
              replacement + "b");
    EXPECT_EQ(utf8(std::string("\x11\x00"
                               "a\x00",
                               4)),
              "a" + replacement)
        << "half of a unit";
    EXPECT_EQ(utf8("\x11\xD8"), replacement);
}

TEST(AText, KeepsTheRestBesideBadBytes) {
    EXPECT_EQ(utf8("\x15"
                   "a\xFF"
                   "b"),
              "a\xEF\xBF\xBD"
              "b");
}
