// PAT, PMT, NIT, SDT and EIT sections as plain values (ISO/IEC 13818-1, clauses 2.4.4.3 and 2.4.4.8; EN 300 468,
// clauses 5.2.1, 5.2.3 and 5.2.4).
// Threads: any.
// Blocks:  never.
// Fails:   no value, and `error` gives the reason, if a section is incomplete or the loops before its entries do not fit.
//          If a descriptor of an entry (a stream, a service, an event) does not fit, this and all later descriptors of
//          the entry are left out. If an entry does not fit, this and all later entries are left out.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "si/calendar.h"
#include "si/section.h"

namespace si {

struct Pat {
    struct Program {
        std::uint16_t serviceId = 0;  ///< never 0, because the entry of the network PID is left out
        std::uint16_t pmtPid = 0;
    };
    std::uint16_t transportStreamId = 0;
    std::uint8_t version = 0;
    std::uint8_t sectionNumber = 0;
    std::uint8_t lastSectionNumber = 0;
    std::vector<Program> programs;
};

struct Pmt {
    struct Stream {
        std::uint8_t streamType = 0;
        std::uint16_t pid = 0;
        Descriptors descriptors;
    };
    std::uint16_t serviceId = 0;
    std::uint8_t version = 0;
    std::uint16_t pcrPid = 0;
    Descriptors descriptors;
    std::vector<Stream> streams;
};

struct Nit {
    struct TransportStream {
        std::uint16_t transportStreamId = 0;
        std::uint16_t originalNetworkId = 0;
        Descriptors descriptors;
    };
    std::uint16_t networkId = 0;
    std::uint8_t version = 0;
    std::uint8_t sectionNumber = 0;
    std::uint8_t lastSectionNumber = 0;
    Descriptors descriptors;
    std::vector<TransportStream> transportStreams;
};

struct Sdt {
    struct Service {
        std::uint16_t serviceId = 0;
        std::uint8_t serviceType = 0;  ///< 0 if there is no service descriptor
        std::string name;              ///< UTF-8
        std::string provider;
    };
    bool actual = false;
    std::uint16_t transportStreamId = 0;
    std::uint16_t originalNetworkId = 0;
    std::uint8_t version = 0;
    std::uint8_t sectionNumber = 0;
    std::uint8_t lastSectionNumber = 0;
    std::vector<Service> services;
};

struct Eit {
    struct Event {
        std::uint16_t eventId = 0;
        std::optional<UtcSeconds> start;  ///< absent if undefined
        std::uint32_t durationSeconds = 0;
        std::uint8_t runningStatus = 0;
        std::string language;  ///< ISO 639-2, of the first short event descriptor
        std::string name;      ///< UTF-8
        std::string text;
        Descriptors descriptors;  ///< all descriptors, unchanged
    };
    std::uint8_t tableId = 0;
    std::uint16_t serviceId = 0;
    std::uint16_t transportStreamId = 0;
    std::uint16_t originalNetworkId = 0;
    std::uint8_t version = 0;
    std::uint8_t sectionNumber = 0;
    std::uint8_t lastSectionNumber = 0;
    std::uint8_t segmentLastSectionNumber = 0;  ///< of the eight sections to which this one belongs
    std::vector<Event> events;
};

/// Stands for an unknown original_network_id. The value is one for private temporary use, so no operator's network has
/// it.
constexpr std::uint16_t kUnknownNetworkId = 0xFFFF;

std::optional<Pat> parsePat(Bytes section, std::string& error);
std::optional<Pmt> parsePmt(Bytes section, std::string& error);
std::optional<Nit> parseNit(Bytes section, std::string& error);
std::optional<Sdt> parseSdt(Bytes section, std::string& error);
std::optional<Eit> parseEit(Bytes section, std::string& error);

/// A short text for the content of a PMT's stream. Descriptors identify the content of private streams.
std::string streamName(const Pmt::Stream& stream);
/// component_tag of the stream_identifier_descriptor (EN 300 468, clause 6.2.39).
std::optional<std::uint8_t> componentTag(const Pmt::Stream& stream);
/// Whether the stream has the association_tag. A stream without association_tag_descriptors has one association_tag:
/// its component_tag, with 0 in the high byte (ISO/IEC 13818-6, clause 11.4.1; TS 102 809, Annex B.3.1).
bool hasAssociationTag(const Pmt::Stream& stream, std::uint16_t tag);
/// First language of the ISO 639, subtitling or teletext descriptor; empty if there is none.
std::string language(const Pmt::Stream& stream);
/// PIDs that may carry HbbTV's AIT. If only one stream has an application_signalling_descriptor, its PID, whatever the
/// descriptor lists. If several have one, the PIDs whose descriptor lists HbbTV's application_type (TS 102 809, clause
/// 5.3.5.1). The list is optional, so check the application_type of the AIT, too.
std::vector<std::uint16_t> hbbtvAitPids(const Pmt& pmt);
/// Whether an application_signalling_descriptor lists HbbTV's application_type.
bool listsHbbTvAit(const Pmt& pmt);

}  // namespace si
