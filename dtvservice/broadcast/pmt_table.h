// PmtTable: the PMT of one service, from the sections of the PID that the PAT gives it.
// Threads: one.
// Blocks:  never.
// Fails:   never; a malformed section is ignored.
#pragma once

#include <functional>

#include "si/tables.h"
#include "sub_table.h"

namespace broadcast {

class PmtTable {
public:
    /// A section that is new or has changed.
    using Listener = std::function<void(const si::Pmt& pmt, si::Bytes section, Update update)>;

    PmtTable(std::uint16_t newPid, std::uint16_t newServiceId, Listener newListener)
        : pid_(newPid), serviceId(newServiceId), listener(std::move(newListener)) {}

    PmtTable(const PmtTable&) = delete;
    PmtTable& operator=(const PmtTable&) = delete;

    /// A section of the PID; one of another service or table is ignored.
    void onSection(si::Bytes section);
    std::uint16_t pid() const { return pid_; }
    /// The latest section; empty if none has arrived.
    Section section() const;

private:
    std::uint16_t pid_;
    std::uint16_t serviceId;
    Listener listener;
    SubTable table;
};

}  // namespace broadcast
