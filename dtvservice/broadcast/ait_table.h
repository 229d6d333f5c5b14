// AitTable: the HbbTV AITs of one service, on the PIDs that its PMT signals.
// Threads: one.
// Blocks:  never.
// Fails:   never; sections with another application_type are ignored.
#pragma once

#include <map>
#include <vector>

#include "section_subscription.h"
#include "si/tables.h"
#include "sub_table.h"

namespace broadcast {

class AitTable {
public:
    struct Listener {
        /// The result of isSignalled() has changed.
        std::function<void(bool signalled)> onSignalled;
        /// A section is new or has changed.
        std::function<void(si::Bytes section, Update update)> onSection;
    };

    /// The demultiplexer must outlive this.
    AitTable(SectionDemux& newDemux, Listener newListener) : demux(newDemux), listener(std::move(newListener)) {}
    AitTable(const AitTable&) = delete;
    AitTable& operator=(const AitTable&) = delete;

    /// Call this after each change of the PMT.
    void follow(const si::Pmt& pmt);
    /// Whether there is an HbbTV AIT: the PMT lists HbbTV's application_type or, if it does not, an HbbTV AIT section
    /// has arrived.
    bool isSignalled() const { return isListed || !tables.empty(); }
    /// By PID, then by number.
    std::vector<Section> sections() const;

private:
    void subscribe();
    void onSection(std::uint16_t pid, si::Bytes section);

    SectionDemux& demux;
    Listener listener;
    std::vector<std::uint16_t> pids;
    std::vector<SectionSubscription> subscriptions;
    std::map<std::uint16_t, SubTable> tables;  // by PID: each PID has its own version_number
    bool isListed = false;                     // the PMT lists HbbTV's application_type
};

}  // namespace broadcast
