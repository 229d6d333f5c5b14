// The notation of fields, and the names of their values (EN 300 468, ISO/IEC 13818-1, ISO/IEC 13818-6, TS 102 809).
#include "notation.h"

#include <bitstream/mpeg/psi.h>

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <map>
#include <string_view>

#include "si/ait.h"

namespace si {

namespace {

enum class Base { decimal, hexadecimal, both };

using Names = std::map<std::uint64_t, std::string>;

struct Notation {
    Base base = Base::decimal;
    Names names;
};

/// Names of the values from `first` on.
Names listed(std::initializer_list<const char*> names, std::uint64_t first = 0) {
    Names result;
    for (const char* const name : names) {
        result[first++] = name;
    }
    return result;
}

Names controlCodes() {
    constexpr std::uint8_t kLast = 8;
    Names names;
    for (std::uint8_t code = 1; code <= kLast; ++code) {
        names[code] = controlCodeName(code);
    }
    return names;
}

Names streamTypes() {
    constexpr unsigned int kTypes = 256;
    Names names = {{0x1F, "SVC video"}, {0x20, "MVC video"}, {0x33, "H.266 video (VVC)"}};
    for (unsigned int type = 0; type < kTypes; ++type) {
        const char* const name = pmt_get_streamtype_txt(static_cast<std::uint8_t>(type));
        if (std::strcmp(name, "Unknown") != 0) {
            names[type] = name;
        }
    }
    return names;
}

/// 1 to 15 are minimum ages, which begin with four years.
Names ages() {
    constexpr std::uint64_t kLast = 15;
    Names names = {{0, "undefined"}};
    for (std::uint64_t rating = 1; rating <= kLast; ++rating) {
        names[rating] = std::to_string(rating + 3) + " years";
    }
    return names;
}

Names serviceTypes() {
    return {{0x01, "digital television"},
            {0x02, "digital radio sound"},
            {0x03, "teletext"},
            {0x04, "NVOD reference"},
            {0x05, "NVOD time-shifted"},
            {0x06, "mosaic"},
            {0x07, "FM radio"},
            {0x08, "DVB SRM"},
            {0x0A, "advanced codec digital radio sound"},
            {0x0B, "advanced codec mosaic"},
            {0x0C, "data broadcast"},
            {0x0E, "RCS map"},
            {0x0F, "RCS FLS"},
            {0x10, "DVB MHP"},
            {0x11, "MPEG-2 HD digital television"},
            {0x16, "H.264/AVC SD digital television"},
            {0x17, "H.264/AVC SD NVOD time-shifted"},
            {0x18, "H.264/AVC SD NVOD reference"},
            {0x19, "H.264/AVC HD digital television"},
            {0x1A, "H.264/AVC HD NVOD time-shifted"},
            {0x1B, "H.264/AVC HD NVOD reference"},
            {0x1C, "H.264/AVC stereoscopic HD digital television"},
            {0x1F, "HEVC digital television"},
            {0x20, "HEVC UHD digital television"}};
}

Names linkageTypes() {
    return {{0x01, "information"},
            {0x02, "EPG"},
            {0x03, "CA replacement"},
            {0x04, "complete SI"},
            {0x05, "replacement"},
            {0x06, "data broadcast"},
            {0x07, "RCS map"},
            {0x08, "mobile hand-over"},
            {0x09, "SSU"},
            {0x0A, "SSU scan"},
            {0x0B, "IP/MAC notification"},
            {0x0C, "scan for IP/MAC notification"},
            {0x0D, "event"},
            {0x0E, "extended event"}};
}

Names dataBroadcastIds() {
    return {{0x0001, "data pipe"},
            {0x0002, "asynchronous data stream"},
            {0x0003, "synchronous data stream"},
            {0x0004, "synchronised data stream"},
            {0x0005, "multiprotocol encapsulation"},
            {0x0006, "data carousel"},
            {0x0007, "object carousel"},
            {0x000A, "SSU"},
            {0x000B, "IP/MAC notification"},
            {0x00F0, "MHP object carousel"},
            {0x0123, "HbbTV carousel"}};
}

Names subtitlingTypes() {
    return {{0x01, "EBU teletext subtitles"},
            {0x02, "associated EBU teletext"},
            {0x03, "VBI data"},
            {0x10, "DVB subtitles"},
            {0x11, "DVB subtitles for 4:3"},
            {0x12, "DVB subtitles for 16:9"},
            {0x13, "DVB subtitles for 2.21:1"},
            {0x14, "DVB subtitles for HD"},
            {0x20, "DVB subtitles for the hard of hearing"},
            {0x21, "DVB subtitles for the hard of hearing, 4:3"},
            {0x22, "DVB subtitles for the hard of hearing, 16:9"},
            {0x23, "DVB subtitles for the hard of hearing, 2.21:1"},
            {0x24, "DVB subtitles for the hard of hearing, HD"}};
}

Names contents() {
    return {{1, "movie/drama"},
            {2, "news/current affairs"},
            {3, "show/game show"},
            {4, "sports"},
            {5, "children/youth"},
            {6, "music/ballet/dance"},
            {7, "arts/culture"},
            {8, "social/political/economics"},
            {9, "education/science/factual"},
            {10, "leisure hobbies"},
            {11, "special characteristics"}};
}

/// Hexadecimal fields without names of values.
constexpr const char* kHexadecimal[] = {"table_id",
                                        "last_table_id",
                                        "tag",
                                        "descriptor_tag_extension",
                                        "CA_system_id",
                                        "super_CA_system_id",
                                        "private_data_specifier",
                                        "private_data_indicator",
                                        "application_profile",
                                        "component_tag",
                                        "association_tag",
                                        "carousel_id",
                                        "format_identifier",
                                        "copyright_identifier",
                                        "stream_content_ext",
                                        "stream_content",
                                        "component_type",
                                        "content_nibble_level_2",
                                        "user_byte",
                                        "user_defined_id",
                                        "table_id_extension",
                                        "protocolDiscriminator",
                                        "dsmccType",
                                        "downloadId",
                                        "transactionId",
                                        "transaction_id",
                                        "moduleId",
                                        "use",
                                        "icon_flags",
                                        "usage_type",
                                        "graphics_configuration",
                                        "OUI",
                                        "OUI_hash",
                                        "platform_id",
                                        "platform_id_hash",
                                        "action_type",
                                        "processing_order",
                                        "descriptorType",
                                        "subDescriptorType",
                                        "specifierType",
                                        "specifierData",
                                        "subgroup_tag",
                                        "access_mode",
                                        "scrambling_mode",
                                        "teletext_page_number",
                                        "announcement_support_indicator",
                                        "ancillary_data_identifier",
                                        "adaptation_field_data_identifier",
                                        "data_service_id",
                                        "context_id_type",
                                        "crid_type",
                                        "profile_and_level",
                                        "profile_and_level_indication",
                                        "AAC_type",
                                        "cell_latitude",
                                        "cell_longitude",
                                        "subcell_latitude",
                                        "subcell_longitude",
                                        "uri_linkage_type",
                                        "programme_identification_label",
                                        "general_profile_compatibility_flags"};

std::map<std::string, Notation, std::less<>> makeNotations() {
    const Names fec = {{1, "1/2"}, {2, "2/3"}, {3, "3/4"}, {4, "5/6"},  {5, "7/8"},
                       {6, "8/9"}, {7, "3/5"}, {8, "4/5"}, {9, "9/10"}, {15, "none"}};
    const Names codeRates = listed({"1/2", "2/3", "3/4", "5/6", "7/8"});
    std::map<std::string, Notation, std::less<>> all = {
        {"organisation_id", {Base::both, {}}},
        {"application_id", {Base::both, {}}},
        {"application_control_code", {Base::hexadecimal, controlCodes()}},
        {"application_type", {Base::hexadecimal, {{0x0001, "DVB-J"}, {0x0002, "DVB-HTML"}, {0x0010, "HbbTV"}}}},
        {"protocol_id", {Base::hexadecimal, {{0x0001, "object carousel"}, {0x0002, "IP via DVB"}, {0x0003, "HTTP"}}}},
        {"visibility", {Base::decimal, {{0, "NOT_VISIBLE_ALL"}, {1, "NOT_VISIBLE_USERS"}, {3, "VISIBLE_ALL"}}}},
        {"running_status",
         {Base::decimal,
          listed({"undefined", "not running", "starts in a few seconds", "pausing", "running", "service off-air"})}},
        {"stream_type", {Base::hexadecimal, streamTypes()}},
        {"service_type", {Base::hexadecimal, serviceTypes()}},
        {"linkage_type", {Base::hexadecimal, linkageTypes()}},
        {"data_broadcast_id", {Base::hexadecimal, dataBroadcastIds()}},
        {"subtitling_type", {Base::hexadecimal, subtitlingTypes()}},
        {"teletext_type",
         {Base::hexadecimal,
          listed({"initial page", "subtitles", "additional information", "programme schedule", "hard of hearing"}, 1)}},
        {"content_nibble_level_1", {Base::hexadecimal, contents()}},
        {"rating", {Base::hexadecimal, ages()}},
        {"audio_type",
         {Base::hexadecimal, listed({"undefined", "clean effects", "hearing impaired", "visual impaired commentary"})}},
        {"messageId",
         {Base::hexadecimal,
          {{0x1002, "DownloadInfoIndication"}, {0x1003, "DownloadDataBlock"}, {0x1006, "DownloadServerInitiate"}}}},
        {"polarization",
         {Base::decimal, listed({"linear horizontal", "linear vertical", "circular left", "circular right"})}},
        {"west_east_flag", {Base::decimal, listed({"west", "east"})}},
        {"modulation_system", {Base::decimal, listed({"DVB-S", "DVB-S2"})}},
        {"modulation_type", {Base::decimal, listed({"auto", "QPSK", "8PSK", "16-QAM"})}},
        {"modulation",
         {Base::hexadecimal, listed({"not defined", "16-QAM", "32-QAM", "64-QAM", "128-QAM", "256-QAM"})}},
        {"roll_off", {Base::decimal, listed({"0.35", "0.25", "0.20"})}},
        {"FEC_inner", {Base::decimal, fec}},
        {"FEC_outer", {Base::decimal, listed({"not defined", "none", "RS(204/188)"})}},
        {"bandwidth", {Base::decimal, listed({"8 MHz", "7 MHz", "6 MHz", "5 MHz", "10 MHz", "1.712 MHz"})}},
        {"constellation", {Base::decimal, listed({"QPSK", "16-QAM", "64-QAM"})}},
        {"code_rate-HP_stream", {Base::decimal, codeRates}},
        {"code_rate-LP_stream", {Base::decimal, codeRates}},
        {"guard_interval", {Base::decimal, listed({"1/32", "1/16", "1/8", "1/4", "1/128", "19/128", "19/256"})}},
        {"transmission_mode", {Base::decimal, listed({"2k", "8k", "4k", "1k", "16k", "32k"})}},
        {"SISO_MISO", {Base::decimal, listed({"SISO", "MISO"})}},
        {"coding_type", {Base::decimal, listed({"satellite", "cable", "terrestrial"}, 1)}},
    };
    for (const char* const name : kHexadecimal) {
        all[name].base = Base::hexadecimal;
    }
    return all;
}

std::string hexadecimal(std::uint64_t value, unsigned int bits) {
    constexpr unsigned int kBitsOfDigit = 4;
    char text[24];
    std::snprintf(text, sizeof text, "0x%0*" PRIX64, static_cast<int>((bits + kBitsOfDigit - 1) / kBitsOfDigit), value);
    return text;
}

std::string shown(std::uint64_t value, unsigned int bits, Base base) {
    switch (base) {
        case Base::hexadecimal:
            return hexadecimal(value, bits);
        case Base::both:
            return std::to_string(value) + " (" + hexadecimal(value, 1) + ")";
        default:
            return std::to_string(value);
    }
}

}  // namespace

Node::Field numberField(const std::string& name, std::uint64_t value, unsigned int bits) {
    static const auto kNotations = makeNotations();
    const auto notation = kNotations.find(name);
    if (notation == kNotations.end()) {
        return {name, std::to_string(value), value};
    }
    std::string text = shown(value, bits, notation->second.base);
    const auto known = notation->second.names.find(value);
    if (known != notation->second.names.end()) {
        text += " (" + known->second + ")";
    }
    return {name, text, value};
}

}  // namespace si
