// Tests of the description of descriptors: one row for each descriptor with its bytes and its fields.
#include <gtest/gtest.h>

#include "described.h"

namespace {

struct Row {
    const char* bytes;
    const char* shown;
};

/// Expects each loop's last descriptor to be shown with these fields.
template <std::size_t count>
void expectInNit(const Row (&rows)[count]) {
    for (const Row& row : rows) {
        const si::Node nit = nitWith(bytesOfHex(row.bytes));
        ASSERT_FALSE(nit.nodes.empty()) << row.bytes;
        EXPECT_EQ(line(nit.nodes.back()), row.shown) << row.bytes;
    }
}

}  // namespace

TEST(ADescriptor, OfMpegHasItsFields) {
    expectInNit({
        {"0203 1a 8141",
         "video_stream: multiple_frame_rate_flag=0, frame_rate_code=3, MPEG_1_only_flag=0, "
         "constrained_parameter_flag=1, still_picture_flag=0, profile_and_level_indication=0x81, "
         "chroma_format=1, frame_rate_extension_flag=0"},
        {"0201 1c",
         "video_stream: multiple_frame_rate_flag=0, frame_rate_code=3, MPEG_1_only_flag=1, "
         "constrained_parameter_flag=0, still_picture_flag=0"},
        {"0505 48455643 01", "registration: format_identifier=0x48455643, additional_identification_info=01"},
        {"0906 0500 f68a 1301", "CA: CA_system_id=0x0500, CA_PID=5770, private_data_byte=1301"},
        {"0a08 646575 00 656e67 03",
         "ISO_639_language: {language: ISO_639_language_code=deu, audio_type=0x00 (undefined)} "
         "{language: ISO_639_language_code=eng, audio_type=0x03 (visual impaired commentary)}"},
        {"0e03 c00400", "maximum_bitrate: maximum_bitrate=1024"},
        {"1305 000000b9 00", "carousel_identifier: carousel_id=0x000000B9, FormatId=0"},
        {"1404 000b 1000",
         "association_tag: association_tag=0x000B, use=0x1000, wrong=selector_length is missing, bytes=000B1000"},
        {"140d 000b 0000 08 80000000 ffffffff",
         "association_tag: association_tag=0x000B, use=0x0000, transaction_id=0x80000000, timeout=4294967295"},
        {"2804 4d40 28 3f",
         "AVC_video: profile_idc=77, constraint_set0_flag=0, constraint_set1_flag=1, constraint_set2_flag=0, "
         "constraint_set3_flag=0, constraint_set4_flag=0, constraint_set5_flag=0, AVC_compatible_flags=0, "
         "level_idc=40, AVC_still_present=0, AVC_24_hour_picture_flag=0, Frame_Packing_SEI_not_present_flag=1"},
    });
}

TEST(ADescriptor, OfADeliverySystemHasItsFrequencyInHertz) {
    expectInNit({
        {"430b 01197475 0192 a1 0220000 3",
         "satellite_delivery_system: frequency=11974750000, orbital_position=19.2, west_east_flag=1 (east), "
         "polarization=1 (linear vertical), modulation_system=0 (DVB-S), modulation_type=1 (QPSK), "
         "symbol_rate=22000000, FEC_inner=3 (3/4)"},
        {"430b 01197475 0050 0e 0220000 9",
         "satellite_delivery_system: frequency=11974750000, orbital_position=5.0, west_east_flag=0 (west), "
         "polarization=0 (linear horizontal), roll_off=1 (0.25), modulation_system=1 (DVB-S2), "
         "modulation_type=2 (8PSK), symbol_rate=22000000, FEC_inner=9 (9/10)"},
        {"440b 03460000 fff2 03 0069000 f",
         "cable_delivery_system: frequency=346000000, FEC_outer=2 (RS(204/188)), modulation=0x03 (64-QAM), "
         "symbol_rate=6900000, FEC_inner=15 (none)"},
        {"5a0b 02d4cae0 1f 8a 21 ffffffff",
         "terrestrial_delivery_system: centre_frequency=475000000, bandwidth=0 (8 MHz), priority=1, "
         "Time_Slicing_indicator=1, MPE-FEC_indicator=1, constellation=2 (64-QAM), hierarchy_information=1, "
         "code_rate-HP_stream=2 (3/4), code_rate-LP_stream=1 (2/3), guard_interval=0 (1/32), "
         "transmission_mode=0 (2k), other_frequency_flag=1"},
        {"7f04 04 00 8001", "T2_delivery_system: descriptor_tag_extension=0x04, plp_id=0, T2_system_id=32769"},
        {"7f12 04 01 0002 4150 0003 02d4cae0 05 01 02d4cae0",
         "T2_delivery_system: descriptor_tag_extension=0x04, plp_id=1, T2_system_id=2, SISO_MISO=1 (MISO), "
         "bandwidth=0 (8 MHz), guard_interval=2 (1/8), transmission_mode=4 (16k), other_frequency_flag=0, tfs_flag=0 "
         "{cell: cell_id=3, centre_frequency=475000000, cell_id_extension=1, transposer_frequency=475000000}"},
        {"7f17 04 01 0002 0051 0003 08 02d4cae0 02d4cae0 05 01 02d4cae0",
         "T2_delivery_system: descriptor_tag_extension=0x04, plp_id=1, T2_system_id=2, SISO_MISO=0 (SISO), "
         "bandwidth=0 (8 MHz), guard_interval=2 (1/8), transmission_mode=4 (16k), other_frequency_flag=0, tfs_flag=1 "
         "{cell: cell_id=3, centre_frequency=475000000, centre_frequency=475000000, cell_id_extension=1, "
         "transposer_frequency=475000000}"},
        {"6209 ff 02d4cae0 02d4cae1",
         "frequency_list: coding_type=3 (terrestrial), centre_frequency=475000000, "
         "centre_frequency=475000010"},
    });
}

TEST(ADescriptor, OfNetworksBouquetsAndServicesHasItsFields) {
    expectInNit({
        {"4003 c24144", "network_name: network_name=ÁD"},
        {"4106 6dca 19 6dcb 02",
         "service_list: {service: service_id=28106, service_type=0x19 (H.264/AVC HD digital television)} "
         "{service: service_id=28107, service_type=0x02 (digital radio sound)}"},
        {"4702 4142", "bouquet_name: bouquet_name=AB"},
        {"4805 0c 00 024142", "service: service_type=0x0C (data broadcast), service_provider_name=, service_name=AB"},
        {"4904 ff 444555", "country_availability: country_availability_flag=1, country_code=DEU"},
        {"5304 0500 1811", "CA_identifier: CA_system_id=0x0500, CA_system_id=0x1811"},
        {"5b06 646575 02 4142", "multilingual_network_name: {network: ISO_639_language_code=deu, network_name=AB}"},
        {"5c06 646575 02 4142", "multilingual_bouquet_name: {bouquet: ISO_639_language_code=deu, bouquet_name=AB}"},
        {"5d07 646575 01 41 01 42",
         "multilingual_service_name: {service: ISO_639_language_code=deu, service_provider_name=A, service_name=B}"},
        {"5e07 01 646575 02 4142",
         "multilingual_component: component_tag=0x01 {component: ISO_639_language_code=deu, text_description=AB}"},
        {"7305 622e636f6d", "default_authority: default_authority=b.com"},
        {"6f03 8010 e5",
         "application_signalling: {application: application_type=0x0010 (HbbTV), AIT_version_number=5}"},
        {"7e01 f9",
         "FTA_content_management: user_defined=1, do_not_scramble=1, "
         "control_remote_access_over_internet=0, do_not_apply_revocation=1"},
    });
}

TEST(ADescriptor, OfALinkageHasTheFieldsOfItsType) {
    constexpr const char* kTo = "linkage: transport_stream_id=1025, original_network_id=8468, service_id=28106, ";
    const auto shown = [&](const std::string& fields) { return kTo + fields; };
    const auto linkage = [](const std::string& content) {
        const std::size_t size = 6 + bytesOfHex(content).size();
        const auto nit =
            nitWith(bytesOfHex("4a" + hexOf({static_cast<std::uint8_t>(size)}) + "0401 2114 6dca" + content));
        return line(nit.nodes.at(0));
    };
    EXPECT_EQ(linkage("02 ab"), shown("linkage_type=0x02 (EPG), private_data_byte=AB"));
    EXPECT_EQ(linkage("08 11 0001"),
              shown("linkage_type=0x08 (mobile hand-over), hand-over_type=1, origin_type=1, network_id=1"));
    EXPECT_EQ(linkage("08 30 0001 0002"),
              shown("linkage_type=0x08 (mobile hand-over), hand-over_type=3, origin_type=0, "
                    "network_id=1, initial_service_id=2"));
    EXPECT_EQ(linkage("09 06 00015a 02 abcd"), shown("linkage_type=0x09 (SSU), OUI=0x00015A, selector=ABCD"));
    EXPECT_EQ(linkage("0d 0007 bf"),
              shown("linkage_type=0x0D (event), target_event_id=7, target_listed=1, event_simulcast=0"));
    EXPECT_EQ(linkage("0e 07 0007 56 0401 6dcb"),
              shown("linkage_type=0x0E (extended event) {event: target_event_id=7, target_listed=0, event_simulcast=1, "
                    "link_type=1, target_id_type=1, target_transport_stream_id=1025, "
                    "target_original_network_id=28107}"));
}

TEST(ADescriptor, OfAnEventHasItsFields) {
    expectInNit({
        {"4d08 646575 02 4142 01 43", "short_event: ISO_639_language_code=deu, event_name=AB, text=C"},
        {"4e0b 01 646575 04 0141 0142 01 43",
         "extended_event: descriptor_number=0, last_descriptor_number=1, ISO_639_language_code=deu, text=C "
         "{item: item_description=A, item=B}"},
        {"5007 f5 0b 01 646575 41",
         "component: stream_content_ext=0xF, stream_content=0x5, component_type=0x0B, component_tag=0x01, "
         "ISO_639_language_code=deu, text=A"},
        {"5402 14 00",
         "content: {content: content_nibble_level_1=0x1 (movie/drama), content_nibble_level_2=0x4, "
         "user_byte=0x00}"},
        {"5504 444555 09", "parental_rating: {rating: country_code=DEU, rating=0x09 (12 years)}"},
        {"7604 04 02 2f61", "content_identifier: {content: crid_type=0x01, crid=/a}"},
        {"7603 05 0102", "content_identifier: {content: crid_type=0x01, crid_ref=258}"},
    });
}

TEST(ADescriptor, OfAStreamHasItsFields) {
    expectInNit({
        {"5201 0b", "stream_identifier: component_tag=0x0B"},
        {"5605 646575 11 50",
         "teletext: {page: ISO_639_language_code=deu, teletext_type=0x02 (subtitles), "
         "teletext_magazine_number=1, teletext_page_number=0x50}"},
        {"5908 646575 10 0001 0002",
         "subtitling: {page: ISO_639_language_code=deu, subtitling_type=0x10 (DVB subtitles), composition_page_id=1, "
         "ancillary_page_id=2}"},
        {"6602 0123", "data_broadcast_id: data_broadcast_id=0x0123 (HbbTV carousel)"},
        {"6404 0006 05 00",
         "data_broadcast: data_broadcast_id=0x0006 (data carousel), component_tag=0x05, "
         "wrong=ISO_639_language_code is missing, bytes=00060500"},
        {"6a03 c0 42 08", "AC-3: component_type=0x42, bsid=8"},
        {"6a01 00", "AC-3:"},
        {"7a03 84 c2 01", "enhanced_AC-3: mixinfoexists=0, component_type=0xC2, substream1=1"},
        {"7c01 58", "AAC: profile_and_level=0x58"},
        {"7c03 58 80 03", "AAC: profile_and_level=0x58, SAOC_DE_flag=0, AAC_type=0x03"},
        {"7f05 06 85 666175",
         "supplementary_audio: descriptor_tag_extension=0x06, mix_type=1, editorial_classification=1, "
         "ISO_639_language_code=fau"},
        {"7f02 70 ab", "extension: descriptor_tag_extension=0x70, bytes=AB"},
        {"7f02 0e ab", "DTS-HD: descriptor_tag_extension=0x0E, bytes=AB"},
    });
}

TEST(ADescriptor, OfAPrivateTagDependsOnTheSpecifierBeforeIt) {
    expectInNit({
        {"8304 6dca fc01", " bytes=6DCAFC01"},
        {"5f04 00000028 8304 6dca fc01",
         "logical_channel: {service: service_id=28106, visible_service_flag=1, logical_channel_number=1}"},
        {"5f04 00000029 8304 6dca 4401",
         "logical_channel: {service: service_id=28106, visible_service_flag=0, logical_channel_number=1025}"},
        {"5f04 0000233a 8304 6dca fc01", "logical_channel: {service: service_id=28106, logical_channel_number=1}"},
        {"5f04 00000028 5f04 00000031 8304 6dca fc01", " bytes=6DCAFC01"},
        {"5f03 000028 8304 6dca fc01", " bytes=6DCAFC01"},
    });
}

TEST(ADescriptor, ShowsBytesBehindItsLastField) {
    expectInNit({{"5202 0b ab", "stream_identifier: component_tag=0x0B, additional_bytes=AB"}});
}

TEST(ADescriptor, NamesAWrongFieldAndKeepsTheOnesBesideIt) {
    expectInNit({
        {"4805 19 01 41 04 42",
         "service: service_type=0x19 (H.264/AVC HD digital television), "
         "service_provider_name=A, wrong=service_name_length is 4, bytes left: 1, "
         "bytes=1901410442"},
        {"440b 0346a000 fff2 03 0069000 f",
         "cable_delivery_system: FEC_outer=2 (RS(204/188)), modulation=0x03 (64-QAM), symbol_rate=6900000, "
         "FEC_inner=15 (none), wrong=frequency has a digit above 9, bytes=0346A000FFF2030069000F"},
        {"4e0c 01 646575 04 0141 0542 01 43 00",
         "extended_event: descriptor_number=0, last_descriptor_number=1, ISO_639_language_code=deu, text=C, "
         "additional_bytes=00, wrong=item_length is 5, bytes left: 1, bytes=01646575040141054201"
         "4300 {item: item_description=A}"},
    });
}
