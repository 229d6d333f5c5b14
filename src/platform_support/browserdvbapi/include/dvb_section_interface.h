// DVBSectionInterface ("SectionFilterAPI"): filters on MPEG-2 sections and on the PMT of a service.
// Order of use: generateSessionName(), startSection() or startPMTRequest() under that name, sections arrive at the
// client, stopSection() or stopPMTRequest() with the same client and name.
// The binary rules at the top of idtv_unknown.h hold.
#pragma once

#include <string>

#include "idtv_unknown.h"

namespace velmora::dtv {

/// Implemented by the browser, which owns it. Stopping a filter does not wait for the delivery thread: a section that
/// it had taken from the queue before may reach the client after stopSection() or stopPMTRequest() has returned, in one
/// call at most. A client may be deleted
/// - after its filters were stopped from inside an onSectionData(), its own or another client's: calls of one process
///   come one after the other, and none for it follows the one that runs;
/// - after its filters were stopped on another thread, once an onSectionData() of another client began later.
/// Otherwise it has to live as long as the process.
class SectionFilterClient {
public:
    /// One whole section of an open filter, on the delivery thread, with no lock held: filters may be opened and closed
    /// from inside. `data` is valid during the call only. `pid` is the filter's PID, or its service_id for a PMT
    /// request.
    virtual void onSectionData(const std::string& sessionName, unsigned int pid, const unsigned char* data,
                               unsigned int length) = 0;

protected:
    // Not virtual: onSectionData is the first entry of the table, and the library never deletes a client.
    ~SectionFilterClient() = default;
};

class DVBSectionInterface : public IDTVUnknown {
public:
    /// Asks for the PMT of a service. Returns at once: 0 always.
    virtual int startPMTRequest(SectionFilterClient* client, const std::string& sessionName,
                                unsigned int serviceId) = 0;
    /// 0, or -1 for a null client, an empty or an unknown session name.
    virtual int stopPMTRequest(SectionFilterClient* client, const std::string& sessionName) = 0;
    /// A new name, 45 characters, that no other call of any process gives.
    virtual std::string generateSessionName() = 0;
    /// Opens a filter on a PID. `mask` holds `length` bytes to match and `maskBits` as many bytes that say which bits
    /// count. Waits until the DTV service has answered, about 10 seconds at most; not to be called on the transport
    /// thread. True when the filter is open. After false it still has to be stopped.
    virtual bool startSection(SectionFilterClient* client, const std::string& sessionName, unsigned int pid,
                              const unsigned char* mask, const unsigned char* maskBits, int length) = 0;
    /// Closes a filter; waits as startSection(). False when it was unknown or the closing was not confirmed.
    virtual bool stopSection(SectionFilterClient* client, const std::string& sessionName) = 0;
};

}  // namespace velmora::dtv
