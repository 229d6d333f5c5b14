// FilterParameter: one section filter or PMT request, from its opening to its closing.
// Threads: created on a browser thread; the transport thread sets its state; everything else never changes.
// Blocks:  never.
// Fails:   only the constructor, for lack of memory.
#pragma once

#include <atomic>
#include <boost/enable_shared_from_this.hpp>
#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

#include "dvb_section_interface.h"
#include "snapshot_text.h"

namespace velmora::dvbservice {

class FilterParameter : public boost::enable_shared_from_this<FilterParameter> {
public:
    /// Copies `length` bytes of both patterns. With a length of 0 or less the patterns are empty, and both pointers may
    /// be null.
    FilterParameter(dtv::SectionFilterClient* client, const std::string& sessionName, unsigned int pid,
                    const unsigned char* mask, const unsigned char* maskBits, int length);

    static boost::shared_ptr<FilterParameter> create(dtv::SectionFilterClient* client, const std::string& sessionName,
                                                     unsigned int pid, const unsigned char* mask,
                                                     const unsigned char* maskBits, int length);

    void setDataSlot(const std::string& newDataSlot) { dataSlot.set(newDataSlot); }
    /// Sets the failed bit and keeps the others.
    void setFailed() { state.fetch_or(kFailed, std::memory_order_relaxed); }
    /// Clears every other bit, a failure included.
    void closed() { state.store(kClosed, std::memory_order_relaxed); }

    unsigned int pid() const { return pid_; }
    const std::vector<unsigned char>& mask() const { return mask_; }
    const std::vector<unsigned char>& mask_bits() const { return maskBits; }
    dtv::SectionFilterClient* client() const { return client_; }
    std::string sessionName() const { return sessionName_; }
    /// The session name, without a copy.
    const std::string& name() const { return sessionName_; }

private:
    friend struct FilterParameterTestAccess;

    static constexpr unsigned int kRequested = 0x01;
    static constexpr unsigned int kClosed = 0x20;
    static constexpr unsigned int kFailed = 0x40;

    const std::string sessionName_;
    const unsigned int pid_;  // for a PMT request the service_id
    std::vector<unsigned char> mask_;
    std::vector<unsigned char> maskBits;
    // The state that the DTV service reported; this library never reads it.
    std::atomic<unsigned int> state{kRequested};
    SnapshotText dataSlot;
    dtv::SectionFilterClient* const client_;  // owned by the browser; never dereferenced here
};

}  // namespace velmora::dvbservice
