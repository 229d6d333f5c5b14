// AitTable: the HbbTV AITs of one service, on the PIDs that its PMT signals.
// Threads: one.
// Blocks: never.
// Fails: never; sections of other application types are passed over.
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
        /// What isSignalled() says has changed.
        std::function<void(bool signalled)> onSignalled;
        /// A section is new or has changed.
        std::function<void(si::Bytes section, Update update)> onSection;
    };

    /// The demultiplexer must outlive this.
    AitTable(Demux& newDemux, Listener newListener) : demux(newDemux), listener(std::move(newListener)) {}
    AitTable(const AitTable&) = delete;
    AitTable& operator=(const AitTable&) = delete;

    /// After each change of the PMT.
    void follow(const si::Pmt& pmt);
    /// Whether there is an HbbTV AIT: the PMT lists the application_type, or lists none and a section has come.
    bool isSignalled() const { return isListed || !tables.empty(); }
    /// By PID, then by number.
    std::vector<Section> sections() const;

private:
    void subscribe();
    void onSection(std::uint16_t pid, si::Bytes section);

    Demux& demux;
    Listener listener;
    std::vector<std::uint16_t> pids;
    std::vector<SectionSubscription> subscriptions;
    std::map<std::uint16_t, SubTable> tables;  // by PID: each has versions of its own
    bool isListed = false;                     // HbbTV's application_type, in the PMT
};

}  // namespace broadcast
