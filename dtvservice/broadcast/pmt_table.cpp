// Reads PMT sections.
#include "pmt_table.h"

namespace broadcast {

PmtTable::PmtTable(Demux& demux, std::uint16_t newPid, std::uint16_t newServiceId, Listener newListener)
    : pid_(newPid),
      serviceId(newServiceId),
      listener(std::move(newListener)),
      subscription(demux, newPid, [this](si::Bytes section) { onSection(section); }) {}

Section PmtTable::section() const {
    return table.sections().empty() ? Section() : table.sections().begin()->second;
}

/// Checks program_number, because several services may have their PMTs on one PID.
void PmtTable::onSection(si::Bytes section) {
    constexpr std::uint8_t kTableId = 0x02;
    if (!isCurrent(section, kTableId) || si::tableIdExtension(section) != serviceId) {
        return;
    }
    std::string error;
    const std::optional<si::Pmt> parsed = si::parsePmt(section, error);
    if (!parsed) {
        return;
    }
    const Update update = table.file(section);
    if (update != Update::none) {
        listener(*parsed, section, update);
    }
}

}  // namespace broadcast
