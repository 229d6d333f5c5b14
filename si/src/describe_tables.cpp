// Describes tables of PSI and SI. libbitstream reads the fields after our own checks.
#include <bitstream/dvb/si.h>
#include <bitstream/mpeg/psi.h>

#include <array>

#include "checked_section.h"
#include "describe.h"
#include "entries.h"
#include "si/tables.h"
#include "times.h"

namespace si {

namespace {

void describeHeader(const std::uint8_t* section, Node& node) {
    node.number("version_number", psi_get_version(section)).number("current_next", psi_get_current(section) ? 1 : 0);
    node.number("section_number", psi_get_section(section)).number("last_section_number", psi_get_lastsection(section));
}

std::string timeText(std::optional<UtcSeconds> time) {
    return time ? dateText(*time) + "T" + clockText(*time) + "Z" : "undefined";
}

std::string durationText(std::uint32_t seconds) {
    std::array<char, 32> text{};
    const int length =
        std::snprintf(text.data(), text.size(), "%02u:%02u:%02u", seconds / 3600, seconds / 60 % 60, seconds % 60);
    return {text.data(), static_cast<std::size_t>(length)};
}

/// A descriptor loop with its length in two bytes before it.
void describeLoop(std::uint8_t* loop, Node& node) {
    describeDescriptors({loop + DESCS_HEADER_SIZE, descs_get_length(loop)}, node);
}

using Section = std::vector<std::uint8_t>;

/// The section's bytes if the section is correct and `fits` accepts its lengths; else empty, with the reason.
Section readable(Bytes section, const Node& node, bool (*fits)(const Section&), std::string& error) {
    Section bytes = checkedSection(section, node.name.c_str(), error);
    if (!bytes.empty() && !fits(bytes)) {
        error = node.name + " section: fields do not fit";
        bytes.clear();
    }
    return bytes;
}

/// Entries with a loop of descriptors. Bytes at the end that do not fit become a node "unreadable".
template <typename Get, typename Describe>
void describeEntries(Section& section, std::size_t header, Get get, Node& node, Describe describe) {
    const Bytes rest = forEachEntryWithLoop(section, header, get, describe);
    if (rest.size != 0) {
        node.add("unreadable").bytes("bytes", rest);
    }
}

bool patFits(const Section& section) {
    return pat_validate(section.data());
}

bool describePat(Bytes section, Node& node, std::string& error) {
    Section bytes = readable(section, node, patFits, error);
    if (bytes.empty()) {
        return false;
    }
    node.number("transport_stream_id", psi_get_tableidext(bytes.data()));
    describeHeader(bytes.data(), node);
    forEachEntry([&bytes](std::uint8_t index) { return pat_get_program(bytes.data(), index); },
                 [&node](const std::uint8_t* program) {
                     const bool network = patn_get_program(program) == 0;
                     Node& entry = node.add(network ? "network" : "program");
                     entry.number("program_number", patn_get_program(program));
                     entry.number(network ? "network_PID" : "program_map_PID", patn_get_pid(program));
                 });
    return true;
}

bool describeCat(Bytes section, Node& node, std::string& error) {
    Section bytes = readable(section, node, catFits, error);
    if (bytes.empty()) {
        return false;
    }
    describeHeader(bytes.data(), node);
    describeDescriptors({cat_get_descl(bytes.data()), cat_get_desclength(bytes.data())}, node);
    return true;
}

bool describePmt(Bytes section, Node& node, std::string& error) {
    Section bytes = readable(section, node, pmtFits, error);
    if (bytes.empty()) {
        return false;
    }
    node.number("program_number", psi_get_tableidext(bytes.data()));
    describeHeader(bytes.data(), node);
    node.number("PCR_PID", pmt_get_pcrpid(bytes.data()));
    describeLoop(pmt_get_descs(bytes.data()), node);
    const std::optional<Pmt> pmt = parsePmt(section, error);
    std::size_t stream = 0;
    describeEntries(bytes, PMT_ES_SIZE, pmt_get_es, node, [&](std::uint8_t* entry) {
        Node& added = node.add("stream");
        added.hex("stream_type", pmtn_get_streamtype(entry), 2);
        added.number("elementary_PID", pmtn_get_pid(entry));
        if (pmt && stream < pmt->streams.size()) {
            added.text("carries", streamName(pmt->streams[stream++]));
        }
        describeLoop(pmtn_get_descs(entry), added);
    });
    return true;
}

bool describeNit(Bytes section, Node& node, std::string& error) {
    Section bytes = readable(section, node, nitFits, error);
    if (bytes.empty()) {
        return false;
    }
    node.number("network_id", psi_get_tableidext(bytes.data()));
    describeHeader(bytes.data(), node);
    describeLoop(nit_get_descs(bytes.data()), node);
    describeEntries(bytes, NIT_TS_SIZE, nit_get_ts, node, [&node](std::uint8_t* entry) {
        Node& added = node.add("transport_stream");
        added.number("transport_stream_id", nitn_get_tsid(entry));
        added.number("original_network_id", nitn_get_onid(entry));
        describeLoop(nitn_get_descs(entry), added);
    });
    return true;
}

bool describeSdt(Bytes section, Node& node, std::string& error) {
    Section bytes = readable(section, node, sdtFits, error);
    if (bytes.empty()) {
        return false;
    }
    node.number("transport_stream_id", psi_get_tableidext(bytes.data()));
    node.number("original_network_id", sdt_get_onid(bytes.data()));
    describeHeader(bytes.data(), node);
    describeEntries(bytes, SDT_SERVICE_SIZE, sdt_get_service, node, [&node](std::uint8_t* entry) {
        Node& added = node.add("service");
        added.number("service_id", sdtn_get_sid(entry));
        added.number("EIT_schedule", sdtn_get_eitschedule(entry) ? 1 : 0);
        added.number("EIT_present_following", sdtn_get_eitpresent(entry) ? 1 : 0);
        added.number("running_status", sdtn_get_running(entry));
        added.number("free_CA_mode", sdtn_get_ca(entry) ? 1 : 0);
        describeLoop(sdtn_get_descs(entry), added);
    });
    return true;
}

void describeEvent(std::uint8_t* entry, Node& added) {
    constexpr std::size_t kStartAt = 2;
    constexpr std::size_t kDurationAt = 7;
    const std::uint8_t* const duration = entry + kDurationAt;
    added.number("event_id", eitn_get_event_id(entry));
    added.text("start_time", timeText(startTime(entry + kStartAt)));
    added.text("duration",
               durationText(fromBcd(duration[0]) * 3600U + fromBcd(duration[1]) * 60U + fromBcd(duration[2])));
    added.number("running_status", eitn_get_running(entry));
    added.number("free_CA_mode", eitn_get_ca(entry) ? 1 : 0);
    describeLoop(eitn_get_descs(entry), added);
}

bool describeEit(Bytes section, Node& node, std::string& error) {
    Section bytes = readable(section, node, eitFits, error);
    if (bytes.empty()) {
        return false;
    }
    node.number("service_id", psi_get_tableidext(bytes.data()));
    node.number("transport_stream_id", eit_get_tsid(bytes.data()));
    node.number("original_network_id", eit_get_onid(bytes.data()));
    describeHeader(bytes.data(), node);
    describeEntries(bytes, EIT_EVENT_SIZE, eit_get_event, node,
                    [&node](std::uint8_t* entry) { describeEvent(entry, node.add("event")); });
    return true;
}

/// TDT and TOT do not have the long form: they have a time, and the TOT also has descriptors and a CRC_32.
bool describeTime(Bytes section, Node& node, std::string& error) {
    constexpr std::size_t kUtc = 5;
    const bool tot = section.data[0] == TOT_TABLE_ID;
    const std::size_t shortest = tot ? std::size_t{TOT_HEADER_SIZE} + PSI_CRC_SIZE : std::size_t{TDT_HEADER_SIZE};
    if (section.size < shortest || announcedSize(section.data) != section.size) {
        error = node.name + " section: the length is wrong";
        return false;
    }
    if (!crcIsRight(section)) {
        error = node.name + " section: wrong CRC_32";
        return false;
    }
    node.text("UTC_time", timeText(startTime(section.data + kSectionHeaderSize)));
    if (tot) {
        Section bytes(section.data, section.data + section.size);
        const std::size_t room = bytes.size() - kSectionHeaderSize - kUtc - DESCS_HEADER_SIZE - PSI_CRC_SIZE;
        const std::size_t length = std::min<std::size_t>(tot_get_desclength(bytes.data()), room);
        describeDescriptors({bytes.data() + kSectionHeaderSize + kUtc + DESCS_HEADER_SIZE, length}, node);
    }
    return true;
}

/// A known table and its range of table_id.
struct KnownTable {
    std::uint8_t first;
    std::uint8_t last;
    const char* name;
    bool (*describe)(Bytes, Node&, std::string&);
};

constexpr KnownTable kKnownTables[] = {
    {0x00, 0x00, "PAT", describePat},
    {0x01, 0x01, "CAT", describeCat},
    {0x02, 0x02, "PMT", describePmt},
    {0x3B, 0x3C, "DSM-CC", describeDsmccMessage},
    {0x3D, 0x3D, "DSM-CC stream descriptors", describeStreamDescriptors},
    {0x40, 0x40, "NIT actual", describeNit},
    {0x41, 0x41, "NIT other", describeNit},
    {0x42, 0x42, "SDT actual", describeSdt},
    {0x46, 0x46, "SDT other", describeSdt},
    {0x4E, 0x4E, "EIT present/following actual", describeEit},
    {0x4F, 0x4F, "EIT present/following other", describeEit},
    {0x50, 0x5F, "EIT schedule actual", describeEit},
    {0x60, 0x6F, "EIT schedule other", describeEit},
    {0x70, 0x70, "TDT", describeTime},
    {0x73, 0x73, "TOT", describeTime},
    {0x74, 0x74, "AIT", describeAit},
};

}  // namespace

Node describeSection(Bytes section) {
    std::string error;
    if (section.size < kSectionHeaderSize) {
        error = "only " + std::to_string(section.size) + " bytes";
    }
    for (const KnownTable& table : kKnownTables) {
        if (error.empty() && section.data[0] >= table.first && section.data[0] <= table.last) {
            Node node;
            node.name = table.name;
            node.hex("table_id", section.data[0], 2);
            if (table.describe(section, node, error)) {
                return node;
            }
        }
    }
    Node raw;
    raw.name = "section";
    if (section.size != 0) {
        raw.hex("table_id", section.data[0], 2).number("size", section.size);
    }
    if (!error.empty()) {
        raw.text("unreadable", error);
    }
    return raw.bytes("bytes", section);
}

}  // namespace si
