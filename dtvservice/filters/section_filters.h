// SectionFilters: the section filters and PMT requests of all browsers, and the queues that their sections go to.
// Threads: the loop's.   Blocks: never: a browser that does not read loses sections, which is counted and logged once a
//          second at most.
// Fails:   opening a filter with a text that says why.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "demux.h"
#include "velmora/msgqueue/ipc_message_queue.h"

namespace dtvservice {

/// Whether a section passes a filter as DVB demultiplexers apply it: the pattern's byte 0 stands for section byte 0
/// (table_id), its bytes 1, 2, … for section bytes 3, 4, …; the two bytes of the length are no part of it. A bit counts
/// where the mask has a 1. A section that is shorter than the pattern does not pass.
bool passesFilter(si::Bytes section, const std::vector<std::uint8_t>& match, const std::vector<std::uint8_t>& mask);

class SectionFilters {
public:
    using Peer = std::uint32_t;

    /// A filter or PMT request by its browser and session.
    using Name = std::pair<Peer, std::string>;

    SectionFilters() = default;
    SectionFilters(const SectionFilters&) = delete;
    SectionFilters& operator=(const SectionFilters&) = delete;
    ~SectionFilters();

    /// Filters are opened on this demultiplexer from now on, which must outlive them. Those that are open on another
    /// one end, PMT requests too; which they were.
    std::vector<Name> follow(broadcast::Demux& newDemux);
    /// Opens the browser's queue; false when there is none of that name. An empty name closes it.
    bool setQueue(Peer browser, const std::string& name);
    /// False, with the reason, for a PID or patterns that are none, or a session that is open.
    bool open(Peer browser, const std::string& session, unsigned int pid, const std::vector<std::uint8_t>& match,
              const std::vector<std::uint8_t>& mask, std::string& error);
    /// Sections of a service's PMT go to the session as they are told to pmtChanged().
    void openPmt(Peer browser, const std::string& session, unsigned int serviceId);
    /// Ends a filter or PMT request; false when the browser has none of that name.
    bool close(Peer browser, const std::string& session);
    /// Everything of a browser that is gone.
    void forget(Peer browser);

    struct Totals {
        std::size_t filters = 0;    ///< open, PMT requests included
        std::uint64_t dropped = 0;  ///< sections that connected browsers did not read in time
    };
    Totals totals() const;

    void pmtChanged(unsigned int serviceId, si::Bytes section);
    void sendTo(Peer browser, const std::string& session, si::Bytes section);

private:
    struct Filter {
        broadcast::Demux::Subscription subscription = 0;  // 0 for a PMT request
        unsigned int serviceId = 0;                       // of a PMT request
    };
    struct Browser {
        std::unique_ptr<velmora::msgqueue::IPCMessageQueue> queue;
        std::map<std::string, Filter> filters;
        std::uint64_t dropped = 0;
        std::chrono::steady_clock::time_point lastLine;
    };

    void noteDropped(Peer peer, Browser& browser);

    broadcast::Demux* demux = nullptr;
    std::map<Peer, Browser> browsers;
};

}  // namespace dtvservice
