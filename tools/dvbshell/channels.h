// ChannelScan: the services of the presented multiplex, read from PAT, SDT and NIT through section filters, because the
// interface has no operation for them.
// Threads: one.
// Blocks:  the construction until the filters are open; wait() until its end.
// Fails:   what has not come is missing: names, or the network.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "filter.h"
#include "si/tables.h"

namespace dvbshell {

struct Channel {
    Triplet triplet;   ///< original_network_id 65535 if unknown
    std::string name;  ///< empty if unknown
};

/// Collects the sections of PAT, SDT and NIT.
class ChannelList {
public:
    void add(const std::string& section);
    /// Tells the network of a transport stream, which the DTV service may know from a table that is not read here.
    void addNetwork(const Triplet& channel) { networks.emplace(channel.tsid, channel.onid); }
    /// In the order of the PAT.
    std::vector<Channel> channels() const;
    std::string nameOf(const Triplet& channel) const;
    bool hasPat() const { return pat.isComplete(); }
    /// PAT and SDT are whole.
    bool isComplete() const { return pat.isComplete() && sdt.isComplete(); }
    bool hasNames() const { return sdt.isComplete(); }

private:
    /// Which sections of the newest version have come.
    template <typename Table>
    struct Sections {
        std::map<unsigned int, Table> byNumber;
        bool isComplete() const {
            return !byNumber.empty() && byNumber.size() == byNumber.begin()->second.lastSectionNumber + 1U;
        }
        void add(const Table& table) {
            if (!byNumber.empty() && byNumber.begin()->second.version != table.version) {
                byNumber.clear();
            }
            byNumber[table.sectionNumber] = table;
        }
    };
    std::uint16_t network() const;

    Sections<si::Pat> pat;
    Sections<si::Sdt> sdt;
    std::map<std::uint16_t, std::uint16_t> networks;  // by transport_stream_id
};

class ChannelScan {
public:
    explicit ChannelScan(Session& newSession);

    bool isOpen() const;
    /// Takes what has come.
    void take();
    /// Waits until the list is complete. False when it is not in time.
    bool wait(Clock::time_point until);
    const ChannelList& list() const { return channels; }

private:
    Session& session;
    EventQueue& queue = newSectionQueue();
    std::vector<std::unique_ptr<Filter>> filters;
    ChannelList channels;
};

}  // namespace dvbshell
