// PmtTable: the PMT of one service, on the PID that the PAT gives it.
// Threads: one.
// Blocks:  never.
// Fails:   never; a malformed section is ignored.
#pragma once

#include "section_subscription.h"
#include "si/tables.h"
#include "sub_table.h"

namespace broadcast {

class PmtTable {
public:
    /// A section that is new or has changed.
    using Listener = std::function<void(const si::Pmt& pmt, si::Bytes section, Update update)>;

    /// The demultiplexer must outlive this.
    PmtTable(Demux& demux, std::uint16_t newPid, std::uint16_t newServiceId, Listener newListener);

    PmtTable(const PmtTable&) = delete;
    PmtTable& operator=(const PmtTable&) = delete;

    std::uint16_t pid() const { return pid_; }
    /// The latest section; empty if none has arrived.
    Section section() const;

private:
    void onSection(si::Bytes section);

    std::uint16_t pid_;
    std::uint16_t serviceId;
    Listener listener;
    SubTable table;
    SectionSubscription subscription;
};

}  // namespace broadcast
