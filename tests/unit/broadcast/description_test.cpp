// Tests of the description of sections as trees: fields of the generator's tables, known descriptors, and bytes for
// everything else.
#include "si/description.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "hex_bytes.h"
#include "packets.h"
#include "tables.h"

namespace {

using si::describeSection;
using si::Node;
using testing::ElementsAre;

const tsmake::Multiplex kSample = tsmake::sampleMultiplex();

/// "name=text" of every field, in order.
std::vector<std::string> fields(const Node& node) {
    std::vector<std::string> all;
    for (const Node::Field& field : node.fields) {
        all.push_back(field.name + "=" + field.text);
    }
    return all;
}

std::string value(const Node& node, const std::string& name) {
    for (const Node::Field& field : node.fields) {
        if (field.name == name) {
            return field.text;
        }
    }
    return "(no " + name + ")";
}

std::vector<std::uint8_t> bytesOfHex(std::string digits) {
    digits.erase(std::remove(digits.begin(), digits.end(), ' '), digits.end());
    return hexBytes(digits);
}

/// The child descriptor with this name.
const Node& descriptor(const Node& parent, const std::string& is) {
    static const Node kNone;
    for (const Node& node : parent.nodes) {
        if (value(node, "is").rfind(is, 0) == 0) {
            return node;
        }
    }
    ADD_FAILURE() << "no " << is;
    return kNone;
}

tsmake::Section longSection(std::uint8_t tableId, std::uint16_t extension, const std::string& hex) {
    tsmake::SectionWriter writer(tableId, extension, 3);
    const std::vector<std::uint8_t> body = bytesOfHex(hex);
    writer.text(std::string(body.begin(), body.end()));
    return writer.finish();
}

/// Describes a NIT with this loop of descriptors. Its memory ends with the section, so that sanitizers detect reads
/// beyond it.
Node nitWith(const std::vector<std::uint8_t>& loop) {
    tsmake::SectionWriter writer(0x40, 1, 0);
    writer.open12().text(std::string(loop.begin(), loop.end())).close().open12().close();
    tsmake::Section section = writer.finish();
    section.shrink_to_fit();
    return describeSection(section);
}

std::string hexOf(const std::vector<std::uint8_t>& bytes) {
    Node node;
    node.bytes("bytes", bytes);
    return node.fields[0].text;
}

/// Expects a description of every tag with these contents: tag and length, then its fields or bytes.
void expectEveryTagIsDescribed(const std::vector<std::uint8_t>& contents) {
    constexpr unsigned int kTags = 256;
    for (unsigned int tag = 0; tag < kTags; ++tag) {
        std::vector<std::uint8_t> loop = {static_cast<std::uint8_t>(tag), static_cast<std::uint8_t>(contents.size())};
        loop.insert(loop.end(), contents.begin(), contents.end());
        const Node nit = nitWith(loop);
        ASSERT_EQ(nit.nodes.size(), 1U) << "tag " << tag << " contents " << hexOf(contents);
        EXPECT_EQ(value(nit.nodes[0], "tag"), "0x" + hexOf({static_cast<std::uint8_t>(tag)}));
        EXPECT_EQ(value(nit.nodes[0], "length"), std::to_string(contents.size()));
        if (value(nit.nodes[0], "bytes") != hexOf(contents)) {
            EXPECT_EQ(nit.nodes[0].fields.at(2).name, std::string("is")) << "tag " << tag << " " << hexOf(contents);
        }
    }
}

}  // namespace

TEST(ADescription, OfAPatNamesTheNetworkAndThePrograms) {
    const Node pat = describeSection(tsmake::patSection(kSample));
    EXPECT_EQ(pat.name, "PAT");
    EXPECT_THAT(fields(pat), ElementsAre("table_id=0x00", "transport_stream_id=1025", "version_number=0",
                                         "current_next=1", "section_number=0", "last_section_number=0"));
    ASSERT_EQ(pat.nodes.size(), 5U);
    EXPECT_EQ(pat.nodes[0].name, "network");
    EXPECT_THAT(fields(pat.nodes[0]), ElementsAre("program_number=0", "network_PID=16"));
    EXPECT_THAT(fields(pat.nodes[1]), ElementsAre("program_number=28106", "program_map_PID=256"));
}

TEST(ADescription, OfAPmtNamesItsStreamsAndTheirDescriptors) {
    const Node pmt = describeSection(tsmake::pmtSection(kSample.services[0]));
    EXPECT_EQ(pmt.name, "PMT");
    EXPECT_EQ(value(pmt, "program_number"), "28106");
    EXPECT_EQ(value(pmt, "PCR_PID"), "257");
    ASSERT_EQ(pmt.nodes.size(), 3U);
    EXPECT_EQ(value(pmt.nodes[0], "stream_type"), "0x1b");
    EXPECT_EQ(value(pmt.nodes[2], "carries"), "AIT (HbbTV)");
    EXPECT_EQ(value(descriptor(pmt.nodes[0], "stream_identifier"), "tag"), "0x52");
    EXPECT_THAT(value(descriptor(pmt.nodes[1], "audio_language"), "is"), testing::HasSubstr("language=eng"));
}

TEST(ADescription, OfANitSaysWhereItsMultiplexesAre) {
    const Node nit = describeSection(tsmake::nitSection(kSample));
    EXPECT_EQ(nit.name, "NIT actual");
    EXPECT_EQ(value(nit, "network_id"), "1");
    EXPECT_EQ(value(descriptor(nit, "networkname"), "is"), "networkname=\"Velmora Network\"");
    ASSERT_EQ(nit.nodes.size(), 2U);
    EXPECT_EQ(value(nit.nodes[1], "transport_stream_id"), "1025");
    EXPECT_THAT(value(descriptor(nit.nodes[1], "dvb-c"), "is"), testing::HasSubstr("frequency=346000000"));
}

TEST(ADescription, OfAnSdtHasNamesInTheirCharacterTables) {
    const Node sdt = describeSection(tsmake::sdtSection(kSample));
    EXPECT_EQ(sdt.name, "SDT actual");
    ASSERT_EQ(sdt.nodes.size(), 4U);
    EXPECT_EQ(value(sdt.nodes[0], "running_status"), "4");
    EXPECT_EQ(value(descriptor(sdt.nodes[1], "service"), "is"),
              "service type=0x19 provider=\"Velmora\" service=\"Velmora Zwei Föhn\"");
    EXPECT_THAT(value(descriptor(sdt.nodes[2], "service"), "is"), testing::HasSubstr("Velmora Τρία"));
}

TEST(ADescription, OfAnEitHasTimesAndTexts) {
    const Node eit = describeSection(tsmake::eitSection(kSample, kSample.services[1], false));
    EXPECT_EQ(eit.name, "EIT present/following actual");
    EXPECT_EQ(value(eit, "service_id"), "28107");
    ASSERT_EQ(eit.nodes.size(), 1U);
    EXPECT_THAT(fields(eit.nodes[0]), ElementsAre("event_id=2001", "start_time=2026-01-01T09:00:00Z",
                                                  "duration=01:00:00", "running_status=4", "free_CA_mode=0"));
    EXPECT_THAT(value(descriptor(eit.nodes[0], "short_event"), "is"), testing::HasSubstr("Die große Küche"));
}

TEST(ADescription, OfATdtAndATotIsTheTime) {
    EXPECT_THAT(fields(describeSection(tsmake::tdtSection(kSample, 61))),
                ElementsAre("table_id=0x70", "UTC_time=2026-01-01T09:01:01Z"));
    EXPECT_EQ(value(describeSection(bytesOfHex("707005 ffaf010203")), "UTC_time"), "2038-02-01T01:02:03Z");
    EXPECT_EQ(value(describeSection(bytesOfHex("707005 0000000000")), "UTC_time"), "1858-11-17T00:00:00Z");
    // 12:45:00 on 13 October 1993, the example in the standard's annex, and a local_time_offset of +01:00 for Germany.
    std::vector<std::uint8_t> tot = bytesOfHex("73701ac079124500f00f580d4445550201 00d8a2010000 0200");
    tot[2] = static_cast<std::uint8_t>(tot.size() + 4 - 3);
    tot.resize(tot.size() + 4);
    const Node node = describeSection(withCrc(tot));
    EXPECT_EQ(node.name, "TOT");
    EXPECT_EQ(value(node, "UTC_time"), "1993-10-13T12:45:00Z");
    EXPECT_THAT(value(descriptor(node, "local_time_offset"), "is"), testing::HasSubstr("DEU"));
}

TEST(ADescription, OfACatNamesTheCaSystems) {
    const Node cat = describeSection(longSection(0x01, 0xFFFF, "0904 0500 f68a"));
    EXPECT_EQ(cat.name, "CAT");
    EXPECT_EQ(value(descriptor(cat, "ca"), "is"), "ca sysid=0x500 pid=5770");
}

TEST(ADescription, OfAnAitHasEveryDescriptorOfItsTable) {
    tsmake::SectionWriter writer(0x74, 0x0010, 5);
    writer.open12();
    writer.openDescriptor(0x05).u32(0x190).u16(7).u8(3).close();
    writer.openDescriptor(0x5F).u32(0x00000040).close();
    writer.close().open12();
    writer.u32(0x190).u16(1).u8(1).open12();
    writer.openDescriptor(0x00).u8(10).u16(0).u8(1).u8(2).u8(1).u16(2).u8(1).u8(3).u8(1).u8(0xFF).u8(9).u16(0x0102);
    writer.close();
    writer.openDescriptor(0x01)
        .text("deu")
        .lengthText("Start")
        .text("fra")
        .lengthText(
            "D\xC9"
            "but")
        .close();
    writer.openDescriptor(0x02).u16(3).u8(1).lengthText("http://a/").u8(2).lengthText("x").lengthText("y").close();
    writer.openDescriptor(0x02).u16(1).u8(2).u8(0xFF).u16(1).u16(1025).u16(28106).u8(0x0A).close();
    writer.openDescriptor(0x0B).lengthText("icons/").u16(0x0101).close();
    writer.openDescriptor(0x14).u8(0x05).text("\x01\x02").close();
    writer.openDescriptor(0x15).text("i.html").close();
    writer.openDescriptor(0x16).u8(1).close();
    writer.openDescriptor(0x17).u8(2).lengthText("http://a").lengthText("https://b").close();
    writer.openDescriptor(0x99).text("\x01\xAB").close();
    writer.openDescriptor(0x16).close();  // a known descriptor that is too short
    writer.close().close();
    const Node ait = describeSection(writer.finish());

    EXPECT_EQ(ait.name, "AIT");
    EXPECT_EQ(value(ait, "application_type"), "0x0010");
    ASSERT_EQ(ait.nodes.size(), 3U);
    EXPECT_THAT(fields(ait.nodes[0].nodes[0]),
                ElementsAre("organisation_id=0x190", "application_id=0x7", "application_priority=3"));
    EXPECT_THAT(fields(ait.nodes[1]), ElementsAre("tag=0x5f", "length=4", "bytes=00000040"));
    const Node& application = ait.nodes[2];
    EXPECT_THAT(fields(application),
                ElementsAre("organisation_id=0x190", "application_id=0x1", "application_control_code=AUTOSTART"));
    ASSERT_EQ(application.nodes.size(), 11U);
    const Node& described = application.nodes[0];
    EXPECT_THAT(fields(described),
                ElementsAre("tag=0x00", "length=15", "is=application", "service_bound_flag=1", "visibility=3",
                            "application_priority=9", "transport_protocol_labels=0102"));
    EXPECT_THAT(fields(described.nodes[1]), ElementsAre("application_profile=0x0002", "version=1.3.1"));
    EXPECT_THAT(fields(application.nodes[1].nodes[0]), ElementsAre("language=deu", "application_name=Start"));
    EXPECT_THAT(fields(application.nodes[2].nodes[0]),
                ElementsAre("URL_base=http://a/", "URL_extension=x", "URL_extension=y"));
    EXPECT_THAT(fields(application.nodes[3]),
                ElementsAre("tag=0x02", "length=11", "is=transport_protocol", "protocol_id=0x0001",
                            "transport_protocol_label=2", "protocol=object carousel", "original_network_id=1",
                            "transport_stream_id=1025", "service_id=28106", "component_tag=0x0a"));
    EXPECT_EQ(value(application.nodes[4], "icon_locator"), "icons/");
    EXPECT_EQ(value(application.nodes[5], "handles_externally_controlled_video"), "1");
    EXPECT_EQ(value(application.nodes[6], "initial_path"), "i.html");
    EXPECT_EQ(value(application.nodes[7], "usage_type"), "0x01");
    EXPECT_THAT(fields(application.nodes[8]),
                ElementsAre("tag=0x17", "length=20", "is=simple_application_boundary", "boundary_extension=http://a",
                            "boundary_extension=https://b"));
    EXPECT_THAT(fields(application.nodes[9]), ElementsAre("tag=0x99", "length=2", "bytes=01ab"));
    EXPECT_THAT(fields(application.nodes[10]), ElementsAre("tag=0x16", "length=0", "bytes="));
}

TEST(ADescription, OfDsmccMessagesHasTheirHeaders) {
    const Node info = describeSection(longSection(0x3B, 2,
                                                  "1103 1002 80000002 ff 00 0024"
                                                  "000000f1 0fe2 0000 00000000 00000000 0000 0001"
                                                  "0007 000000b9 05 02 abcd 0000"));
    EXPECT_EQ(value(info, "message"), "DownloadInfoIndication");
    EXPECT_EQ(value(info, "downloadId"), "0x000000f1");
    EXPECT_EQ(value(info, "blockSize"), "4066");
    ASSERT_EQ(info.nodes.size(), 1U);
    EXPECT_THAT(fields(info.nodes[0]),
                ElementsAre("moduleId=0x0007", "moduleSize=185", "moduleVersion=5", "moduleInfo=abcd"));
    const Node block = describeSection(longSection(0x3C, 1, "1103 1003 0000000c ff 00 0009 0001 02 ff 0003 aabbcc"));
    EXPECT_EQ(value(block, "message"), "DownloadDataBlock");
    EXPECT_EQ(value(block, "moduleId"), "0x0001");
    EXPECT_EQ(value(block, "blockNumber"), "3");
    EXPECT_EQ(value(block, "blockDataBytes"), "3");
    const Node initiate = describeSection(
        longSection(0x3B, 0, "1103 1006 80000000 ff 00 001a ffffffffffffffffffffffffffffffffffffffff 0000 0002 beef"));
    EXPECT_EQ(value(initiate, "message"), "DownloadServerInitiate");
    EXPECT_EQ(value(initiate, "privateData"), "beef");
}

TEST(ADescription, OfAStreamEventHasItsIdAndPrivateData) {
    const Node node = describeSection(longSection(0x3D, 7, "1a0d 0007 fffffffe00000000 414243 8001ff"));
    ASSERT_EQ(node.nodes.size(), 2U);
    EXPECT_THAT(fields(node.nodes[0]), ElementsAre("tag=0x1a", "length=13", "is=stream_event", "eventId=7",
                                                   "eventNPT=0", "privateData=414243"));
    EXPECT_THAT(fields(node.nodes[1]), ElementsAre("tag=0x80", "length=1", "bytes=ff"));
}

TEST(ADescription, KeepsTheRestBesideAWrongLength) {
    tsmake::SectionWriter writer(0x42, 1025, 0);
    writer.u16(8468).u8(0xFF);
    writer.u16(1).u8(0xFC).open12().openDescriptor(0x52).u8(7).close().text("\x48\x05\x01").close();
    writer.u16(2).u8(0xFC).open12().openDescriptor(0x52).u8(8).close().close();
    writer.u16(3).u8(0xFC).u16(0xF002).u8(0x52);
    const Node sdt = describeSection(writer.finish());
    EXPECT_EQ(value(sdt, "original_network_id"), "8468");
    ASSERT_EQ(sdt.nodes.size(), 3U);
    ASSERT_EQ(sdt.nodes[0].nodes.size(), 2U);
    EXPECT_EQ(sdt.nodes[0].nodes[1].name, "unreadable");
    EXPECT_EQ(value(sdt.nodes[0].nodes[1], "bytes"), "480501");
    EXPECT_EQ(value(sdt.nodes[1].nodes.at(0), "tag"), "0x52");
    EXPECT_EQ(sdt.nodes[2].name, "unreadable");
    EXPECT_EQ(value(sdt.nodes[2], "bytes"), "0003fcf00252");
}

TEST(ADescription, ReadsPrivateDescriptorsByTheirSpecifier) {
    const Node known = nitWith(bytesOfHex("5f04 00000028 8304 6dca fc01"));
    ASSERT_EQ(known.nodes.size(), 2U);
    EXPECT_EQ(value(known.nodes[1], "is"), "lcn sid=28106 visible lcn=1");
    const Node unknown = nitWith(bytesOfHex("8304 6dca fc01"));
    EXPECT_EQ(value(unknown.nodes[0], "bytes"), "6dcafc01");
}

TEST(ADescription, ShowsABadDescriptorByItsBytes) {
    for (const char* const loop : {
             "4502 01fe",                           // VBI data: 254 bytes, of none
             "4500 4800 5700 5e00",                 // nothing at all
             "4503 010204",                         // a service of two bytes, of one
             "4803 190100",                         // a provider, and no length of the name
             "4d05 6465750100",                     // likewise
             "4e06 00646575 0501",                  // items of five bytes, of none
             "5104 0000 00fc",                      // cells of 252 bytes
             "5b04 646575fc", "5c04 646575fc",      // names of 252 bytes
             "5d05 646575fb00", "5e05 01646575fc",  // likewise
             "5703 000001",                         // a core number of one byte
             "4a0a 0401000100010e 00010c",          // an extended event of five bytes, of three
             "6409 000a0100646575 0541",            // a text of five bytes, of one
             "6c0b 000100000000000000 0100",        // a subcell of one byte
             "6d08 000100000000 0100",              // likewise
             "2103 020001",                         // a multiplex code without its slots
         }) {
        const Node nit = nitWith(bytesOfHex(loop));
        ASSERT_FALSE(nit.nodes.empty());
        for (const Node& node : nit.nodes) {
            EXPECT_NE(value(node, "bytes"), "(no bytes)") << loop;
        }
    }
}

TEST(ADescription, EndsForEveryDescriptorContent) {
    constexpr std::uint8_t kBytes[] = {0x00, 0x01, 0x7F, 0xFE, 0xFF};
    constexpr std::size_t kMostShort = 12;
    for (const std::uint8_t first : kBytes) {
        for (const std::uint8_t other : kBytes) {
            for (std::size_t length = 0; length <= kMostShort; ++length) {
                std::vector<std::uint8_t> contents(length, other);
                std::vector<std::uint8_t> alternating = contents;
                for (std::size_t at = 0; at < length; at += 2) {
                    alternating[at] = first;
                }
                expectEveryTagIsDescribed(alternating);
                std::fill_n(contents.begin(), std::min<std::size_t>(length, 1), first);
                expectEveryTagIsDescribed(contents);
            }
            std::vector<std::uint8_t> longest(0xFF, other);
            longest[0] = first;
            expectEveryTagIsDescribed(longest);
            longest.pop_back();
            expectEveryTagIsDescribed(longest);
        }
    }
}

TEST(ADescription, ShowsUnreadableDataByBytesAndReason) {
    tsmake::Section broken = tsmake::patSection(kSample);
    broken.back() ^= 1U;
    const Node node = describeSection(broken);
    EXPECT_EQ(node.name, "section");
    EXPECT_EQ(value(node, "unreadable"), "PAT section: wrong CRC_32");
    EXPECT_EQ(value(node, "bytes").size(), 2 * broken.size());
    EXPECT_EQ(describeSection(bytesOfHex("c0")).name, "section");
    EXPECT_EQ(describeSection(bytesOfHex("")).name, "section");
    const Node unknown = describeSection(bytesOfHex("c0700100"));
    EXPECT_THAT(fields(unknown), ElementsAre("table_id=0xc0", "size=4", "bytes=c0700100"));
}

TEST(ADescription, NeverReadsBeyondTheSection) {
    std::vector<tsmake::Section> sections = {
        tsmake::patSection(kSample),
        tsmake::pmtSection(kSample.services[0]),
        tsmake::nitSection(kSample),
        tsmake::sdtSection(kSample),
        tsmake::eitSection(kSample, kSample.services[0], true),
        tsmake::aitSection(kSample.services[0]),
        longSection(0x3B, 2, "1103100280000002ff000024000000f10fe2000000000000000000000000000100070000"),
        longSection(0x3D, 7, "1a0d0007fffffffe000000004142438001ff"),
    };
    std::size_t changes = 0;
    std::size_t described = 0;
    for (const tsmake::Section& section : sections) {
        for (std::size_t at = 3; at + 4 < section.size(); ++at) {
            for (const unsigned int changed : {0x00U, 0x01U, 0x7FU, 0xFFU}) {
                tsmake::Section copy = section;
                copy[at] = static_cast<std::uint8_t>(changed);
                ++changes;
                described += describeSection(withCrc(copy)).fields.empty() ? 0 : 1;
            }
        }
        for (std::size_t length = 0; length < section.size(); ++length) {
            describeSection(tsmake::Section(section.begin(), section.begin() + static_cast<std::ptrdiff_t>(length)));
        }
    }
    EXPECT_EQ(described, changes);
    EXPECT_GT(changes, 2000U);
}
