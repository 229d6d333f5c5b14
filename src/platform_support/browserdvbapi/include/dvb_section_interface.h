// DVBSectionInterface ("SectionFilterAPI"): filters on MPEG-2 sections and on the PMT of a service.
// Order of use: generateSessionName(), then startSection() or startPMTRequest() with that name. The client receives the
// sections. End with stopSection() or stopPMTRequest() with the same client and name. dvb_helpers/section_filter.h has
// a filter that keeps these rules and the client's lifetime itself. The binary rules at the top of idtv_unknown.h
// apply.
#pragma once

#include <string>

#include "idtv_unknown.h"

namespace velmora::dtv {

/// Implemented by the browser, which owns it. Stopping a filter does not wait for the delivery thread: if that thread
/// has already taken a section from the queue, the client gets it after stopSection() or stopPMTRequest() has returned,
/// in one call at most. You may delete a client
/// - after you stopped its filters from inside an onSectionData() call, of this or another client: the calls of one
///   process never overlap, and no call for this client follows the running one;
/// - after you stopped its filters on another thread, once an onSectionData() call of another client has begun later.
/// Otherwise keep the client until the process ends.
class SectionFilterClient {
public:
    /// Receives one whole section of an open filter, on the delivery thread. No lock is held, so filters may be opened
    /// and closed from here. `data` is valid during the call only. `pid` is the filter's PID, or its service_id for a
    /// PMT request.
    virtual void onSectionData(const std::string& sessionName, unsigned int pid, const unsigned char* data,
                               unsigned int length) = 0;

protected:
    // Not virtual, so that onSectionData is the first virtual-table entry. The library never deletes a client.
    ~SectionFilterClient() = default;
};

class DVBSectionInterface : public IDTVUnknown {
public:
    /// Requests the PMT of a service: the TV sends the known one, then each change. Returns 0 at once.
    virtual int startPMTRequest(SectionFilterClient* client, const std::string& sessionName,
                                unsigned int serviceId) = 0;
    /// 0, or -1 for a null client, an empty or an unknown session name.
    virtual int stopPMTRequest(SectionFilterClient* client, const std::string& sessionName) = 0;
    /// A new name of 45 characters, unique across all processes.
    virtual std::string generateSessionName() = 0;
    /// Opens a filter on a PID. `mask` holds `length` bytes to match; as many bytes in `maskBits` select the bits to
    /// compare. The reference service compares byte 0 with table_id and byte 1 with the section's byte 3, behind
    /// section_length. Waits for the DTV service's answer, about 10 seconds at most; do not call it on the transport
    /// thread. True when the filter is open. After false, still call stopSection().
    virtual bool startSection(SectionFilterClient* client, const std::string& sessionName, unsigned int pid,
                              const unsigned char* mask, const unsigned char* maskBits, int length) = 0;
    /// Closes a filter; waits like startSection(). False when the filter is unknown or the service did not confirm.
    virtual bool stopSection(SectionFilterClient* client, const std::string& sessionName) = 0;
};

}  // namespace velmora::dtv
