// Reads PMT sections.
#include "pmt_table.h"

namespace broadcast {

Section PmtTable::section() const {
    return table.sections().empty() ? Section() : table.sections().begin()->second;
}

/// Checks program_number, because several services may have their PMTs on one PID. A PMT has one section.
void PmtTable::onSection(si::Bytes section) {
    constexpr std::uint8_t kTableId = 0x02;
    if (!isCurrent(section, kTableId) || si::tableIdExtension(section) != serviceId ||
        si::sectionNumber(section) != 0) {
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
