// Describes tables of PSI and SI: the layouts of the known tables (ISO/IEC 13818-1, clause 2.4.4; ISO/IEC 13818-6; EN
// 300 468, clause 5; TS 102 809, clause 5.3.4; TS 102 006, clause 9.4; EN 301 192, clause 8.4; TS 102 323, clause 5.2).
#include "checked_section.h"
#include "layout.h"
#include "notation.h"
#include "si/tables.h"

namespace si {

namespace {

/// What a section has besides its fields. The short form has no CRC_32.
enum class Form { longForm, shortForm, shortFormWithCrc };

constexpr std::size_t kCrcSize = 4;

/// The header of the long form, behind the identifier of 16 bits.
#define HEADER " -:2 version_number:5 current_next_indicator:1 section_number:8 last_section_number:8 "
/// The end of NIT and BAT.
#define TRANSPORT_STREAMS                                             \
    "-:4 transport_stream_loop_length:12("                            \
    "transport_stream{transport_stream_id:16 original_network_id:16 " \
    "-:4 transport_descriptors_length:12(descriptors)})"
/// The loops of UNT and INT.
#define DEVICES                                                         \
    "device{-:4 target_descriptor_loop_length:12(target[descriptors]) " \
    "-:4 operational_descriptor_loop_length:12(operational[descriptors])}"

constexpr const char* kPat =
    "transport_stream_id:16" HEADER
    "program{program_number:16 -:3 ?program_number=0(network_PID:13) ?program_number(program_map_PID:13)}";
constexpr const char* kOnlyDescriptors = "-:16" HEADER "descriptors";
constexpr const char* kPmt = "program_number:16" HEADER
                             "-:3 PCR_PID:13 -:4 program_info_length:12(descriptors) "
                             "stream{stream_type:8 -:3 elementary_PID:13 -:4 ES_info_length:12(descriptors)}";
constexpr const char* kMessage =
    "table_id_extension:16" HEADER
    "protocolDiscriminator:8 dsmccType:8 messageId:16 ?messageId=0x1003(downloadId:32) "
    "?messageId!0x1003(transactionId:32) -:8 .adaptationLength:8 messageLength:16 "
    "dsmccAdaptation:bytes@adaptationLength "
    "?messageId=0x1002(downloadId:32 blockSize:16 -:80 compatibilityDescriptorLength:16(compatibilityDescriptor:rest) "
    "numberOfModules:16#(module[moduleId:16 moduleSize:32 moduleVersion:8 moduleInfo:bytes]) "
    "privateDataLength:16(privateData:rest)) "
    "?messageId=0x1006(serverId:bytes20 compatibilityDescriptorLength:16(compatibilityDescriptor:rest) "
    "privateDataLength:16(privateData:rest)) "
    "?messageId=0x1003(moduleId:16 moduleVersion:8 -:8 blockNumber:16 blockDataBytes:size)";
constexpr const char* kStreamDescriptors = "table_id_extension:16" HEADER "descriptors";
constexpr const char* kNit = "network_id:16" HEADER "-:4 network_descriptors_length:12(descriptors) " TRANSPORT_STREAMS;
constexpr const char* kBat = "bouquet_id:16" HEADER "-:4 bouquet_descriptors_length:12(descriptors) " TRANSPORT_STREAMS;
constexpr const char* kSdt =
    "transport_stream_id:16" HEADER
    "original_network_id:16 -:8 "
    "service{service_id:16 -:6 EIT_schedule_flag:1 EIT_present_following_flag:1 running_status:3 free_CA_mode:1 "
    "descriptors_loop_length:12(descriptors)}";
constexpr const char* kUnt =
    "action_type:8 OUI_hash:8" HEADER
    "OUI:24 processing_order:8 -:4 common_descriptor_loop_length:12(descriptors) "
    "platform{compatibilityDescriptorLength:16(?(.descriptorCount:16 compatibility_descriptor{descriptorType:8 "
    "descriptorLength:8(specifierType:8 specifierData:24 model:16 version:16 "
    ".subDescriptorCount:8 +{subDescriptorType:8 subDescriptor:bytes})})) platform_loop_length:16(" DEVICES ")}";
constexpr const char* kInt =
    "action_type:8 platform_id_hash:8" HEADER
    "platform_id:24 processing_order:8 -:4 platform_descriptor_loop_length:12(descriptors) " DEVICES;
constexpr const char* kEit =
    "service_id:16" HEADER
    "transport_stream_id:16 original_network_id:16 segment_last_section_number:8 last_table_id:8 "
    "event{event_id:16 start_time:utc duration:duration running_status:3 free_CA_mode:1 "
    "descriptors_loop_length:12(descriptors)}";
constexpr const char* kTot = "UTC_time:utc -:4 descriptors_loop_length:12(descriptors)";
constexpr const char* kRst =
    "event{transport_stream_id:16 original_network_id:16 service_id:16 event_id:16 -:5 running_status:3}";
constexpr const char* kAit =
    "test_application_flag:1 application_type:15" HEADER
    "-:4 common_descriptors_length:12(descriptors) "
    "-:4 application_loop_length:12(application{organisation_id:32 application_id:16 application_control_code:8 "
    "-:4 application_descriptors_loop_length:12(descriptors)})";
constexpr const char* kRnt =
    "context_id:16" HEADER
    "context_id_type:8 -:4 common_descriptors_length:12(descriptors) "
    "resolution_provider{-:4 resolution_provider_info_length:12(resolution_provider_name:string "
    "-:4 resolution_provider_descriptors_length:12(descriptors) "
    "CRID_authority{CRID_authority_name:string -:2 CRID_authority_policy:2 "
    "CRID_authority_descriptors_length:12(descriptors)})}";
constexpr const char* kSit = "-:16" HEADER
                             "-:4 transmission_info_loop_length:12(descriptors) "
                             "service{service_id:16 -:1 running_status:3 service_loop_length:12(descriptors)}";

#undef HEADER
#undef TRANSPORT_STREAMS
#undef DEVICES

/// A known table and its range of table_id.
struct KnownTable {
    std::uint8_t first;
    std::uint8_t last;
    const char* name;
    Form form;
    const char* layout;  ///< of what follows section_length; see layout.h
    Scope scope = Scope::general;
};

constexpr KnownTable kKnownTables[] = {
    {0x00, 0x00, "PAT", Form::longForm, kPat},
    {0x01, 0x01, "CAT", Form::longForm, kOnlyDescriptors},
    {0x02, 0x02, "PMT", Form::longForm, kPmt},
    {0x03, 0x03, "TSDT", Form::longForm, kOnlyDescriptors},
    {0x3B, 0x3C, "DSM-CC", Form::longForm, kMessage},
    {0x3D, 0x3D, "DSM-CC stream descriptors", Form::longForm, kStreamDescriptors},
    {0x40, 0x40, "NIT actual", Form::longForm, kNit},
    {0x41, 0x41, "NIT other", Form::longForm, kNit},
    {0x42, 0x42, "SDT actual", Form::longForm, kSdt},
    {0x46, 0x46, "SDT other", Form::longForm, kSdt},
    {0x4A, 0x4A, "BAT", Form::longForm, kBat},
    {0x4B, 0x4B, "UNT", Form::longForm, kUnt, Scope::update},
    {0x4C, 0x4C, "INT", Form::longForm, kInt, Scope::ipMac},
    {0x4E, 0x4E, "EIT present/following actual", Form::longForm, kEit},
    {0x4F, 0x4F, "EIT present/following other", Form::longForm, kEit},
    {0x50, 0x5F, "EIT schedule actual", Form::longForm, kEit},
    {0x60, 0x6F, "EIT schedule other", Form::longForm, kEit},
    {0x70, 0x70, "TDT", Form::shortForm, "UTC_time:utc"},
    {0x71, 0x71, "RST", Form::shortForm, kRst},
    {0x72, 0x72, "ST", Form::shortForm, "data_byte:rest"},
    {0x73, 0x73, "TOT", Form::shortFormWithCrc, kTot},
    {0x74, 0x74, "AIT", Form::longForm, kAit, Scope::application},
    {0x79, 0x79, "RNT", Form::longForm, kRnt, Scope::resolution},
    {0x7E, 0x7E, "DIT", Form::shortForm, "transition_flag:1 -:7"},
    {0x7F, 0x7F, "SIT", Form::longForm, kSit},
};

const KnownTable* knownTable(std::uint8_t tableId) {
    for (const KnownTable& table : kKnownTables) {
        if (tableId >= table.first && tableId <= table.last) {
            return &table;
        }
    }
    return nullptr;
}

/// Whether the section is complete and has its form; if not, the reason.
bool isReadable(Bytes section, const KnownTable& table, std::string& error) {
    if (table.form == Form::longForm) {
        return !checkedSection(section, table.name, error).empty();
    }
    const bool hasCrc = table.form == Form::shortFormWithCrc;
    if (announcedSize(section.data) != section.size) {
        error = lengthError(section, table.name);
    } else if (hasCrc && section.size < kSectionHeaderSize + kCrcSize) {
        error = std::string(table.name) + " section: only " + std::to_string(section.size) + " bytes";
    } else if (hasCrc && crc32(section) != 0) {
        error = std::string(table.name) + " section: wrong CRC_32";
    }
    return error.empty();
}

/// A PAT's first entry is often not a program but the network.
void nameNetworks(Node& pat) {
    for (Node& entry : pat.nodes) {
        if (!entry.fields.empty() && entry.fields[0].number == 0U) {
            entry.name = "network";
        }
    }
}

/// Says what a stream carries where its descriptors tell more than its stream_type.
void nameStreams(Bytes section, Node& node) {
    constexpr std::size_t kBehindPid = 2;
    std::string error;
    const std::optional<Pmt> pmt = parsePmt(section, error);
    std::size_t stream = 0;
    for (Node& entry : node.nodes) {
        if (!pmt || entry.name != "stream" || stream >= pmt->streams.size() || entry.fields.size() < kBehindPid) {
            continue;
        }
        const std::string name = streamName(pmt->streams[stream++]);
        if (entry.fields.front().text.find("(" + name + ")") == std::string::npos) {
            entry.fields.insert(entry.fields.begin() + std::ptrdiff_t{kBehindPid}, {"carries", name, std::nullopt});
        }
    }
}

Node describeTable(Bytes section, const KnownTable& table) {
    constexpr std::uint8_t kPatId = 0x00;
    constexpr std::uint8_t kPmtId = 0x02;
    constexpr unsigned int kTableIdBits = 8;
    const std::size_t behind = table.form == Form::shortForm ? 0 : kCrcSize;
    FieldInput input({section.data + kSectionHeaderSize, section.size - kSectionHeaderSize - behind}, Kind::table,
                     table.scope);
    Node node;
    node.name = table.name;
    node.fields.push_back(numberField("table_id", section.data[0], kTableIdBits));
    readLayout(table.layout, input, node);
    if (table.first == kPatId) {
        nameNetworks(node);
    } else if (table.first == kPmtId) {
        nameStreams(section, node);
    }
    return node;
}

}  // namespace

Node describeSection(Bytes section) {
    std::string error;
    const bool hasHeader = section.size >= kSectionHeaderSize;
    const KnownTable* const table = hasHeader ? knownTable(section.data[0]) : nullptr;
    if (table != nullptr && isReadable(section, *table, error)) {
        return describeTable(section, *table);
    }
    Node raw;
    raw.name = "section";
    if (section.size != 0) {
        raw.hex("table_id", section.data[0], 2).number("size", section.size);
    }
    if (!hasHeader) {
        error = "only " + std::to_string(section.size) + " bytes";
    }
    if (!error.empty()) {
        raw.text("unreadable", error);
    }
    return raw.bytes("bytes", section);
}

}  // namespace si
