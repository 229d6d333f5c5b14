// Tests of the description of tables as trees: the generator's tables, and tables that it does not make.
#include "si/description.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "described.h"
#include "packets.h"
#include "tables.h"

namespace {

using si::describeSection;
using si::Node;
using testing::ElementsAre;

const tsmake::Multiplex kSample = tsmake::sampleMultiplex();

}  // namespace

TEST(ADescription, OfAPatNamesTheNetworkAndThePrograms) {
    const Node pat = describeSection(tsmake::patSection(kSample));
    EXPECT_EQ(pat.name, "PAT");
    EXPECT_THAT(fields(pat), ElementsAre("table_id=0x00", "transport_stream_id=1025", "version_number=0",
                                         "current_next_indicator=1", "section_number=0", "last_section_number=0"));
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
    EXPECT_EQ(value(pmt.nodes[0], "stream_type"), "0x1B (H.264/14496-10 video (MPEG-4/AVC))");
    EXPECT_THAT(fields(pmt.nodes[0]),
                ElementsAre("stream_type=0x1B (H.264/14496-10 video (MPEG-4/AVC))", "elementary_PID=257"));
    EXPECT_EQ(value(pmt.nodes[2], "carries"), "AIT (HbbTV)");
    EXPECT_THAT(fields(descriptor(pmt.nodes[0], "stream_identifier")),
                ElementsAre("tag=0x52", "length=1", "is=stream_identifier", "component_tag=0x01"));
    EXPECT_EQ(line(descriptor(pmt.nodes[1], "ISO_639_language")),
              "ISO_639_language: {language: ISO_639_language_code=eng, audio_type=0x00 (undefined)}");
    EXPECT_EQ(line(descriptor(pmt.nodes[2], "application_signalling")),
              "application_signalling: {application: application_type=0x0010 (HbbTV), AIT_version_number=0}");
}

TEST(ADescription, OfANitSaysWhereItsMultiplexesAre) {
    const Node nit = describeSection(tsmake::nitSection(kSample));
    EXPECT_EQ(nit.name, "NIT actual");
    EXPECT_EQ(value(nit, "network_id"), "1");
    EXPECT_EQ(value(descriptor(nit, "network_name"), "network_name"), "Velmora Network");
    ASSERT_EQ(nit.nodes.size(), 2U);
    EXPECT_EQ(value(nit.nodes[1], "transport_stream_id"), "1025");
    EXPECT_EQ(value(descriptor(nit.nodes[1], "cable_delivery_system"), "frequency"), "346000000");
}

TEST(ADescription, OfAnSdtHasNamesInTheirCharacterTables) {
    const Node sdt = describeSection(tsmake::sdtSection(kSample));
    EXPECT_EQ(sdt.name, "SDT actual");
    ASSERT_EQ(sdt.nodes.size(), 4U);
    EXPECT_THAT(fields(sdt.nodes[0]),
                ElementsAre("service_id=28106", "EIT_schedule_flag=0", "EIT_present_following_flag=1",
                            "running_status=4 (running)", "free_CA_mode=0"));
    EXPECT_EQ(line(descriptor(sdt.nodes[1], "service")),
              "service: service_type=0x19 (H.264/AVC HD digital television), service_provider_name=Velmora, "
              "service_name=Velmora Zwei Föhn");
    EXPECT_EQ(value(descriptor(sdt.nodes[2], "service"), "service_name"), "Velmora Τρία");
}

TEST(ADescription, OfAnEitHasTimesAndTexts) {
    const Node eit = describeSection(tsmake::eitSection(kSample, kSample.services[1], false));
    EXPECT_EQ(eit.name, "EIT present/following actual");
    EXPECT_EQ(value(eit, "service_id"), "28107");
    ASSERT_EQ(eit.nodes.size(), 1U);
    EXPECT_THAT(fields(eit.nodes[0]), ElementsAre("event_id=2001", "start_time=2026-01-01T09:00:00Z",
                                                  "duration=01:00:00", "running_status=4 (running)", "free_CA_mode=0"));
    EXPECT_EQ(value(descriptor(eit.nodes[0], "short_event"), "event_name"), "Die große Küche");
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
    EXPECT_EQ(line(descriptor(node, "local_time_offset")),
              "local_time_offset: {offset: country_code=DEU, country_region_id=0, local_time_offset_polarity=0, "
              "local_time_offset=01:00, time_of_change=2010-09-19T01:00:00Z, next_time_offset=02:00}");
}

TEST(ADescription, OfACatNamesTheCaSystems) {
    const Node cat = describeSection(longSection(0x01, 0xFFFF, "0904 0500 f68a"));
    EXPECT_EQ(cat.name, "CAT");
    EXPECT_EQ(line(descriptor(cat, "CA")), "CA: CA_system_id=0x0500, CA_PID=5770");
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
    EXPECT_EQ(value(ait, "application_type"), "0x0010 (HbbTV)");
    ASSERT_EQ(ait.nodes.size(), 3U);
    EXPECT_THAT(fields(ait.nodes[0].nodes[0]),
                ElementsAre("organisation_id=400 (0x190)", "application_id=7 (0x7)", "application_priority=3"));
    EXPECT_THAT(fields(ait.nodes[1]),
                ElementsAre("tag=0x5F", "length=4", "is=private_data_specifier", "private_data_specifier=0x00000040"));
    const Node& application = ait.nodes[2];
    EXPECT_THAT(fields(application), ElementsAre("organisation_id=400 (0x190)", "application_id=1 (0x1)",
                                                 "application_control_code=0x01 (AUTOSTART)"));
    ASSERT_EQ(application.nodes.size(), 11U);
    const Node& described = application.nodes[0];
    EXPECT_THAT(fields(described), ElementsAre("tag=0x00", "length=15", "is=application", "service_bound_flag=1",
                                               "visibility=3 (VISIBLE_ALL)", "application_priority=9",
                                               "transport_protocol_label=1", "transport_protocol_label=2"));
    EXPECT_THAT(fields(described.nodes[1]),
                ElementsAre("application_profile=0x0002", "version.major=1", "version.minor=3", "version.micro=1"));
    EXPECT_THAT(fields(application.nodes[1].nodes[0]),
                ElementsAre("ISO_639_language_code=deu", "application_name=Start"));
    EXPECT_THAT(fields(application.nodes[2].nodes[0]),
                ElementsAre("URL_base=http://a/", "URL_extension=x", "URL_extension=y"));
    EXPECT_THAT(fields(application.nodes[3]),
                ElementsAre("tag=0x02", "length=11", "is=transport_protocol", "protocol_id=0x0001 (object carousel)",
                            "transport_protocol_label=2", "remote_connection=1", "original_network_id=1",
                            "transport_stream_id=1025", "service_id=28106", "component_tag=0x0A"));
    EXPECT_EQ(value(application.nodes[4], "icon_locator"), "icons/");
    EXPECT_EQ(value(application.nodes[5], "handles_externally_controlled_video"), "1");
    EXPECT_EQ(value(application.nodes[6], "initial_path"), "i.html");
    EXPECT_EQ(value(application.nodes[7], "usage_type"), "0x01");
    EXPECT_THAT(fields(application.nodes[8]),
                ElementsAre("tag=0x17", "length=20", "is=simple_application_boundary", "boundary_extension=http://a",
                            "boundary_extension=https://b"));
    EXPECT_THAT(fields(application.nodes[9]), ElementsAre("tag=0x99", "length=2", "bytes=01AB"));
    EXPECT_THAT(fields(application.nodes[10]),
                ElementsAre("tag=0x16", "length=0", "is=application_usage", "wrong=usage_type is missing", "bytes="));
}

TEST(ADescription, OfDsmccMessagesHasTheirHeaders) {
    const Node info = describeSection(longSection(0x3B, 2,
                                                  "1103 1002 80000002 ff 00 0024"
                                                  "000000f1 0fe2 0000 00000000 00000000 0000 0001"
                                                  "0007 000000b9 05 02 abcd 0000"));
    EXPECT_EQ(value(info, "messageId"), "0x1002 (DownloadInfoIndication)");
    EXPECT_EQ(value(info, "downloadId"), "0x000000F1");
    EXPECT_EQ(value(info, "blockSize"), "4066");
    ASSERT_EQ(info.nodes.size(), 1U);
    EXPECT_THAT(fields(info.nodes[0]),
                ElementsAre("moduleId=0x0007", "moduleSize=185", "moduleVersion=5", "moduleInfo=ABCD"));
    const Node block = describeSection(longSection(0x3C, 1, "1103 1003 0000000c ff 00 0009 0001 02 ff 0003 aabbcc"));
    EXPECT_EQ(value(block, "messageId"), "0x1003 (DownloadDataBlock)");
    EXPECT_EQ(value(block, "moduleId"), "0x0001");
    EXPECT_EQ(value(block, "blockNumber"), "3");
    EXPECT_EQ(value(block, "blockDataBytes"), "3");
    const Node initiate = describeSection(
        longSection(0x3B, 0, "1103 1006 80000000 ff 00 001a ffffffffffffffffffffffffffffffffffffffff 0000 0002 beef"));
    EXPECT_EQ(value(initiate, "messageId"), "0x1006 (DownloadServerInitiate)");
    EXPECT_EQ(value(initiate, "privateData"), "BEEF");
}

TEST(ADescription, OfAStreamEventHasItsIdAndPrivateData) {
    const Node node = describeSection(longSection(0x3D, 7, "1a0d 0007 fffffffe00000000 414243 8001ff"));
    ASSERT_EQ(node.nodes.size(), 2U);
    EXPECT_THAT(fields(node.nodes[0]), ElementsAre("tag=0x1A", "length=13", "is=stream_event", "eventId=7",
                                                   "eventNPT=0", "privateData=414243"));
    EXPECT_THAT(fields(node.nodes[1]), ElementsAre("tag=0x80", "length=1", "bytes=FF"));
}

TEST(ADescription, OfABatNamesItsBouquetAndServices) {
    const Node bat = describeSection(longSection(0x4A, 0x1001,
                                                 "f0 0b 4704 48616c6c 4903 80 4445 f0 0f 0401 2114 f0 09"
                                                 "5f04 00000028 4101 00"));
    EXPECT_EQ(bat.name, "BAT");
    EXPECT_EQ(value(bat, "bouquet_id"), "4097");
    EXPECT_EQ(value(descriptor(bat, "bouquet_name"), "bouquet_name"), "Hall");
    ASSERT_EQ(bat.nodes.size(), 3U);
    EXPECT_THAT(fields(bat.nodes[2]), ElementsAre("transport_stream_id=1025", "original_network_id=8468"));
    EXPECT_EQ(value(bat.nodes[2].nodes.at(0), "private_data_specifier"), "0x00000028");
}

TEST(ADescription, OfShortTablesHasTheirFields) {
    const Node rst = describeSection(bytesOfHex("717012 0401 2114 6dca 07d1 fc 0401 2114 6dcb 07d2 f9"));
    EXPECT_EQ(rst.name, "RST");
    ASSERT_EQ(rst.nodes.size(), 2U);
    EXPECT_EQ(line(rst.nodes[0]),
              " transport_stream_id=1025, original_network_id=8468, service_id=28106, event_id=2001, "
              "running_status=4 (running)");
    EXPECT_EQ(value(rst.nodes[1], "running_status"), "1 (not running)");
    EXPECT_EQ(line(describeSection(bytesOfHex("727002 abcd"))), " table_id=0x72, data_byte=ABCD");
    EXPECT_EQ(line(describeSection(bytesOfHex("7e7001 ff"))), " table_id=0x7E, transition_flag=1");
}

TEST(ADescription, OfATsdtAndASitHasTheirDescriptors) {
    EXPECT_EQ(line(describeSection(longSection(0x03, 0xFFFF, "0504 48455643")).nodes.at(0)),
              "registration: format_identifier=0x48455643");
    const Node sit = describeSection(longSection(0x7F, 0xFFFF, "f00a 6308 c00001 c00002 c003 6dca c003 5201 09"));
    EXPECT_EQ(sit.name, "SIT");
    EXPECT_EQ(value(descriptor(sit, "partial_transport_stream"), "peak_rate"), "1");
    EXPECT_EQ(line(sit.nodes.at(1)),
              " service_id=28106, running_status=4 (running) {descriptor:stream_identifier: component_tag=0x09}");
}

TEST(ADescription, OfAnRntHasItsProvidersAndAuthorities) {
    const Node rnt = describeSection(longSection(0x79, 0x0102,
                                                 "01 f0 06 7304 612e6465"
                                                 "f0 21 03 782e79 f0 07 4205 0401 2114 05"
                                                 "03 622e63 d0 0e 410c c079 000000 c07a 000000 02 00"));
    EXPECT_EQ(rnt.name, "RNT");
    EXPECT_EQ(value(rnt, "context_id_type"), "0x01");
    EXPECT_EQ(value(descriptor(rnt, "default_authority"), "default_authority"), "a.de");
    const Node& provider = rnt.nodes.at(1);
    EXPECT_EQ(value(provider, "resolution_provider_name"), "x.y");
    EXPECT_EQ(line(descriptor(provider, "RNT_scan")),
              "RNT_scan: {stream: transport_stream_id=1025, original_network_id=8468, scan_weighting=5}");
    EXPECT_THAT(fields(provider.nodes.at(1)), ElementsAre("CRID_authority_name=b.c", "CRID_authority_policy=1"));
    EXPECT_EQ(value(provider.nodes[1].nodes.at(0), "is"), "RAR_over_IP");
}

TEST(ADescription, OfAUntHasItsPlatformsDownToTheirLoops) {
    const Node unt = describeSection(longSection(0x4B, 0x015A,
                                                 "00015a 00 f003 020155"
                                                 "0010 0001 01 0c 01 00015a 0007 0002 01 80 01 ff"
                                                 "0010 f005 0803 414243 f007 0305 000a 0102 77"));
    EXPECT_EQ(unt.name, "UNT");
    EXPECT_EQ(value(unt, "OUI"), "0x00015A");
    EXPECT_EQ(line(unt.nodes.at(0)), "update: update_flag=1, update_method=5, update_priority=1");
    const Node& platform = unt.nodes.at(1);
    EXPECT_EQ(line(platform.nodes.at(0)),
              " descriptorType=0x01, specifierType=0x01, specifierData=0x00015A, model=7, version=2, "
              "subDescriptorType=0x80, subDescriptor=FF");
    const Node& device = platform.nodes.at(1);
    EXPECT_EQ(device.nodes.at(0).name, "target");
    EXPECT_EQ(line(device.nodes[0].nodes.at(0)), "target_serial_number: serial_data=414243");
    EXPECT_EQ(line(device.nodes.at(1).nodes.at(0)),
              "ssu_location: data_broadcast_id=0x000A (SSU), association_tag=0x0102, private_data_byte=77");
}

TEST(ADescription, OfAnIntHasItsPlatformAndItsTargets) {
    const Node table = describeSection(longSection(0x4C, 0x01AB,
                                                   "123456 00 f007 0605 646575 4142"
                                                   "f007 0905 e0000101 20 f00b 0d09 0001 2114 0401 6dca 0b"));
    EXPECT_EQ(table.name, "INT");
    EXPECT_EQ(value(table, "platform_id"), "0x123456");
    EXPECT_EQ(value(descriptor(table, "IP/MAC_platform_name"), "platform_name"), "AB");
    const Node& device = table.nodes.at(1);
    EXPECT_EQ(line(device.nodes.at(0).nodes.at(0)),
              "target_IP_slash: {subnet: IPv4_addr=224.0.1.1, IPv4_slash_mask=32}");
    EXPECT_EQ(line(device.nodes.at(1).nodes.at(0)),
              "IP/MAC_stream_location: network_id=1, original_network_id=8468, transport_stream_id=1025, "
              "service_id=28106, component_tag=0x0B");
}
