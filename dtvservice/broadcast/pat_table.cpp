// Reads the PAT once all of its sections have arrived.
#include "pat_table.h"

namespace broadcast {

PatTable::Outcome PatTable::onSection(si::Bytes section) {
    constexpr std::uint8_t kTableId = 0x00;
    if (!isCurrent(section, kTableId)) {
        return Outcome::none;
    }
    if (table.file(section) == Update::none) {
        ++repetitions_;
        return Outcome::repetition;
    }
    if (!table.isWhole(section)) {
        return Outcome::none;
    }
    readList();
    return Outcome::list;
}

void PatTable::readList() {
    channels_.clear();
    passedOver_ = 0;
    for (const auto& entry : table.sections()) {
        std::string error;
        const std::optional<si::Pat> parsed = si::parsePat(entry.second, error);
        if (!parsed) {
            continue;
        }
        transportStreamId_ = parsed->transportStreamId;
        for (const si::Pat::Program& program : parsed->programs) {
            if (channels_.size() == kMostServices) {
                ++passedOver_;
                continue;
            }
            channels_.push_back({std::nullopt, parsed->transportStreamId, program.serviceId, program.pmtPid, {}});
        }
    }
}

}  // namespace broadcast
