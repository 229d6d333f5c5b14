// SectionFilters: the section filters and PMT requests of all browsers, and the queues that carry their sections.
// Threads: the loop's.
// Blocks:  never: if a browser does not read, its sections are dropped, counted and logged.
// Fails:   open() gives the reason.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "bus_tap.h"
#include "demux.h"
#include "repeated_messages.h"
#include "section_queue.h"

namespace dtvservice {

/// Whether a section passes a filter, as DVB demultiplexers apply it: pattern byte 0 is compared with section byte 0
/// (table_id), pattern bytes 1, 2, … with section bytes 3, 4, …. The two bytes with section_length are skipped. Only
/// bits that are 1 in the mask are compared. A section that is shorter than the pattern does not pass.
bool passesFilter(si::Bytes section, const std::vector<std::uint8_t>& match, const std::vector<std::uint8_t>& mask);

class SectionFilters {
public:
    using Peer = std::uint32_t;

    /// Limits per browser. Demultiplexers of TVs have far fewer filters.
    static constexpr std::size_t kMostFilters = 256;  // filters and PMT requests
    static constexpr std::size_t kLongestSession = 255;

    /// Identifies a filter or PMT request: browser and session.
    using Name = std::pair<Peer, std::string>;

    /// Whether a section for a filter is lost on its way to the queue.
    using Loss = std::function<bool(Peer browser, const std::string& session)>;

    /// The tap must outlive this object, and so must the loss; one that is not set loses nothing.
    explicit SectionFilters(BusTap& newTap, const Loss* newLoss = nullptr) : tap(newTap), loss(newLoss) {}
    SectionFilters(const SectionFilters&) = delete;
    SectionFilters& operator=(const SectionFilters&) = delete;
    ~SectionFilters();

    /// Changes to another demultiplexer, which must outlive the filters. Closes all filters and PMT requests of the old
    /// one and returns them.
    std::vector<Name> follow(broadcast::Demux& newDemux);
    /// Opens the browser's queue; false if the browser has none of this name. An empty name closes the queue.
    bool setQueue(Peer browser, const std::string& name);
    /// False with the reason, for example for an invalid PID or a session that is already open.
    bool open(Peer browser, const std::string& session, unsigned int pid, const std::vector<std::uint8_t>& match,
              const std::vector<std::uint8_t>& mask, std::string& error);
    /// From now on pmtChanged() sends the service's PMT sections to the session. False with the reason.
    bool openPmt(Peer browser, const std::string& session, unsigned int serviceId, std::string& error);
    /// Closes a filter or PMT request; false if the browser has none with this session.
    bool close(Peer browser, const std::string& session);
    /// Removes everything of a browser that has disconnected.
    void forget(Peer browser);

    struct Totals {
        std::size_t filters = 0;    ///< open filters and PMT requests
        std::uint64_t dropped = 0;  ///< sections that the connected browsers did not read in time
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
        SectionQueue queue;
        std::map<std::string, Filter> filters;
        std::uint64_t dropped = 0;
        RepeatedMessages messages;
    };

    static bool mayOpen(Peer peer, Browser& browser, const std::string& session, std::string& error);
    void noteDropped(Peer peer, Browser& browser);

    BusTap& tap;
    const Loss* loss;
    broadcast::Demux* demux = nullptr;
    std::map<Peer, Browser> browsers;
};

}  // namespace dtvservice
