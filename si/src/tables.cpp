// Reads PAT, PMT, NIT, SDT and EIT. libbitstream reads the fields after its own checks and ours.
#include "si/tables.h"

#include <bitstream/dvb/si.h>
#include <bitstream/mpeg/psi.h>

#include "checked_section.h"
#include "entries.h"
#include "si/text.h"
#include "times.h"

namespace si {

namespace {

constexpr std::uint8_t kServiceDescriptor = 0x48;
constexpr std::uint8_t kShortEventDescriptor = 0x4D;

Descriptors descriptorsOf(const std::uint8_t* loop, std::size_t length) {
    Descriptors descriptors;
    readDescriptors({loop, length}, descriptors);
    return descriptors;
}

/// The text at `at`, which has a length byte before it; moves `at` to the byte after the text. Empty if it does not
/// fit.
std::string lengthText(const std::vector<std::uint8_t>& bytes, std::size_t& at) {
    if (at >= bytes.size() || bytes.size() - at - 1 < bytes[at]) {
        at = bytes.size();
        return {};
    }
    std::string text = toUtf8({bytes.data() + at + 1, bytes[at]});
    at += std::size_t{1} + bytes[at];
    return text;
}

void readService(const Descriptors& descriptors, Sdt::Service& service) {
    for (const Descriptor& descriptor : descriptors) {
        if (descriptor.tag == kServiceDescriptor && !descriptor.bytes.empty()) {
            service.serviceType = descriptor.bytes[0];
            std::size_t at = 1;
            service.provider = lengthText(descriptor.bytes, at);
            service.name = lengthText(descriptor.bytes, at);
            return;
        }
    }
}

void readShortEvent(Eit::Event& event) {
    constexpr std::size_t kLanguage = 3;
    for (const Descriptor& descriptor : event.descriptors) {
        if (descriptor.tag == kShortEventDescriptor && descriptor.bytes.size() > kLanguage) {
            event.language.assign(descriptor.bytes.begin(), descriptor.bytes.begin() + kLanguage);
            std::size_t at = kLanguage;
            event.name = lengthText(descriptor.bytes, at);
            event.text = lengthText(descriptor.bytes, at);
            return;
        }
    }
}

}  // namespace

std::optional<Pat> parsePat(Bytes section, std::string& error) {
    std::vector<std::uint8_t> bytes = checkedSection(section, "PAT", error);
    if (bytes.empty()) {
        return std::nullopt;
    }
    if (!pat_validate(bytes.data())) {
        error = "PAT section: fields do not fit";
        return std::nullopt;
    }
    Pat pat;
    pat.transportStreamId = psi_get_tableidext(bytes.data());
    pat.version = psi_get_version(bytes.data());
    pat.sectionNumber = psi_get_section(bytes.data());
    pat.lastSectionNumber = psi_get_lastsection(bytes.data());
    forEachEntry([&bytes](std::uint8_t index) { return pat_get_program(bytes.data(), index); },
                 [&pat](const std::uint8_t* program) {
                     if (patn_get_program(program) != 0) {
                         pat.programs.push_back({patn_get_program(program), patn_get_pid(program)});
                     }
                 });
    return pat;
}

std::optional<Pmt> parsePmt(Bytes section, std::string& error) {
    std::vector<std::uint8_t> bytes = checkedSection(section, "PMT", error);
    if (bytes.empty()) {
        return std::nullopt;
    }
    if (!pmtFits(bytes)) {
        error = "PMT section: fields do not fit";
        return std::nullopt;
    }
    Pmt pmt;
    pmt.serviceId = psi_get_tableidext(bytes.data());
    pmt.version = psi_get_version(bytes.data());
    pmt.pcrPid = pmt_get_pcrpid(bytes.data());
    pmt.descriptors = descriptorsOf(pmt_get_descs(bytes.data()) + DESCS_HEADER_SIZE, pmt_get_desclength(bytes.data()));
    forEachEntryWithLoop(bytes, PMT_ES_SIZE, pmt_get_es, [&](std::uint8_t* stream) {
        pmt.streams.push_back({pmtn_get_streamtype(stream), pmtn_get_pid(stream),
                               descriptorsOf(pmtn_get_descs(stream) + DESCS_HEADER_SIZE, pmtn_get_desclength(stream))});
    });
    return pmt;
}

std::optional<Nit> parseNit(Bytes section, std::string& error) {
    std::vector<std::uint8_t> bytes = checkedSection(section, "NIT", error);
    if (bytes.empty()) {
        return std::nullopt;
    }
    if (!nitFits(bytes)) {
        error = "NIT section: fields do not fit";
        return std::nullopt;
    }
    Nit nit;
    nit.networkId = nit_get_nid(bytes.data());
    nit.version = psi_get_version(bytes.data());
    nit.sectionNumber = psi_get_section(bytes.data());
    nit.lastSectionNumber = psi_get_lastsection(bytes.data());
    nit.descriptors = descriptorsOf(nit_get_descs(bytes.data()) + DESCS_HEADER_SIZE, nit_get_desclength(bytes.data()));
    forEachEntryWithLoop(bytes, NIT_TS_SIZE, nit_get_ts, [&nit](std::uint8_t* stream) {
        nit.transportStreams.push_back(
            {nitn_get_tsid(stream), nitn_get_onid(stream),
             descriptorsOf(nitn_get_descs(stream) + DESCS_HEADER_SIZE, nitn_get_desclength(stream))});
    });
    return nit;
}

std::optional<Sdt> parseSdt(Bytes section, std::string& error) {
    std::vector<std::uint8_t> bytes = checkedSection(section, "SDT", error);
    if (bytes.empty()) {
        return std::nullopt;
    }
    if (!sdtFits(bytes)) {
        error = "SDT section: fields do not fit";
        return std::nullopt;
    }
    Sdt sdt;
    sdt.actual = psi_get_tableid(bytes.data()) == SDT_TABLE_ID_ACTUAL;
    sdt.transportStreamId = psi_get_tableidext(bytes.data());
    sdt.originalNetworkId = sdt_get_onid(bytes.data());
    sdt.version = psi_get_version(bytes.data());
    sdt.sectionNumber = psi_get_section(bytes.data());
    sdt.lastSectionNumber = psi_get_lastsection(bytes.data());
    forEachEntryWithLoop(bytes, SDT_SERVICE_SIZE, sdt_get_service, [&](std::uint8_t* entry) {
        Sdt::Service service;
        service.serviceId = sdtn_get_sid(entry);
        readService(descriptorsOf(sdtn_get_descs(entry) + DESCS_HEADER_SIZE, sdtn_get_desclength(entry)), service);
        sdt.services.push_back(service);
    });
    return sdt;
}

std::optional<Eit> parseEit(Bytes section, std::string& error) {
    std::vector<std::uint8_t> bytes = checkedSection(section, "EIT", error);
    if (bytes.empty()) {
        return std::nullopt;
    }
    if (!eitFits(bytes)) {
        error = "EIT section: fields do not fit";
        return std::nullopt;
    }
    Eit eit;
    eit.tableId = psi_get_tableid(bytes.data());
    eit.serviceId = psi_get_tableidext(bytes.data());
    eit.transportStreamId = eit_get_tsid(bytes.data());
    eit.originalNetworkId = eit_get_onid(bytes.data());
    eit.version = psi_get_version(bytes.data());
    eit.sectionNumber = psi_get_section(bytes.data());
    eit.lastSectionNumber = psi_get_lastsection(bytes.data());
    eit.segmentLastSectionNumber = eit_get_segment_last_sec_number(bytes.data());
    forEachEntryWithLoop(bytes, EIT_EVENT_SIZE, eit_get_event, [&](std::uint8_t* entry) {
        constexpr std::size_t kStartAt = 2;
        constexpr std::size_t kDurationAt = 7;
        Eit::Event event;
        event.eventId = eitn_get_event_id(entry);
        event.start = startTime(entry + kStartAt);
        event.durationSeconds = fromBcd(entry[kDurationAt]) * 3600U + fromBcd(entry[kDurationAt + 1]) * 60U +
                                fromBcd(entry[kDurationAt + 2]);
        event.runningStatus = eitn_get_running(entry);
        event.descriptors = descriptorsOf(eitn_get_descs(entry) + DESCS_HEADER_SIZE, eitn_get_desclength(entry));
        readShortEvent(event);
        eit.events.push_back(std::move(event));
    });
    return eit;
}

}  // namespace si
