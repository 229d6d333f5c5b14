// SectionFilter: a section filter or PMT request of DVBSectionInterface that closes itself at its end. It passes on
// each section, each that has changed, or only the first. Header only; not part of the library's binary interface.
// Threads: the receiver runs on the delivery thread. The other operations run on any thread but the transport thread,
//          for one object one at a time.
// Blocks:  as startSection() and stopSection(), about 10 seconds each at most, and both when the filter is refused.
//          Closing also waits for a running receiver, so hold no lock that the receiver takes.
// Fails:   isOpen() is false when the DTV service has refused the filter. An exception of the receiver ends the process.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "dvb_helpers/section_session.h"
#include "dvb_section_interface.h"

namespace velmora::dtv::helpers {

/// The bytes that a section must begin with, without the two that hold section_length: table_id first, then
/// table_id_extension and so on. No bytes: every section.
class SectionPattern {
public:
    static SectionPattern any() { return {}; }
    /// A 1 in `bits` selects a bit to compare.
    static SectionPattern table(unsigned char tableId, unsigned char bits = 0xFF) {
        return SectionPattern().then(tableId, bits);
    }
    SectionPattern& then(unsigned char value, unsigned char valueBits = 0xFF) {
        bytes.push_back(value);
        bits.push_back(valueBits);
        return *this;
    }
    /// Directly after the table_id: a service_id in EIT and PMT, a transport_stream_id in PAT and SDT.
    SectionPattern& extension(std::uint16_t value) {
        return then(static_cast<unsigned char>(value >> 8U)).then(static_cast<unsigned char>(value & 0xFFU));
    }

private:
    friend class SectionFilter;
    std::vector<unsigned char> bytes;
    std::vector<unsigned char> bits;
};

class SectionFilter {
public:
    /// No filter.
    SectionFilter() = default;
    /// Opens a filter on a PID.
    SectionFilter(DVBSectionInterface& filters, unsigned int pid, const SectionPattern& pattern,
                  SectionReceiver receiver, SectionDelivery delivery = SectionDelivery::every)
        : session(std::make_shared<SectionSession>(filters, SectionSession::Request::filter, std::move(receiver),
                                                   delivery)) {
        SectionRouter::theOne().add(session);
        opened = filters.startSection(&SectionRouter::theOne(), session->name(), pid, pattern.bytes.data(),
                                      pattern.bits.data(), static_cast<int>(pattern.bytes.size()));
        if (!opened) {
            close();
        }
    }
    /// Requests the PMT of a service: the known one at once, then every change.
    static SectionFilter onPmtOf(DVBSectionInterface& filters, unsigned int serviceId, SectionReceiver receiver,
                                 SectionDelivery delivery = SectionDelivery::every) {
        SectionFilter filter;
        filter.session =
            std::make_shared<SectionSession>(filters, SectionSession::Request::pmt, std::move(receiver), delivery);
        SectionRouter::theOne().add(filter.session);
        filter.opened = filters.startPMTRequest(&SectionRouter::theOne(), filter.session->name(), serviceId) == 0;
        return filter;
    }
    SectionFilter(SectionFilter&& other) noexcept = default;
    SectionFilter& operator=(SectionFilter&& other) noexcept {
        if (this != &other) {
            close();
            session = std::move(other.session);
            opened = other.opened;
        }
        return *this;
    }
    SectionFilter(const SectionFilter&) = delete;
    SectionFilter& operator=(const SectionFilter&) = delete;
    ~SectionFilter() { close(); }

    /// False for no filter, a refused or closed one, and one that has delivered its only section.
    bool isOpen() const { return opened && session && !session->isClosed(); }

    /// Closes the filter. Afterwards the receiver does not run and is not called again. Inside of the receiver itself:
    /// it is not called again.
    void close() {
        if (session) {
            session->close();
            session.reset();
        }
    }

private:
    std::shared_ptr<SectionSession> session;
    bool opened = false;
};

}  // namespace velmora::dtv::helpers
