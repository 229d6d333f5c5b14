// Keeps and counts.
#include "bus/backlog.h"

#include <limits>
#include <utility>

#include "bus/origin.h"
#include "bus/pcapng.h"

namespace bus {

Backlog::Backlog(Side newSide) : side(newSide), bytes(pcapngStart()) {}

void Backlog::add(const std::string& block) {
    if (lost == 0 && bytes.size() + block.size() <= kMost) {
        bytes += block;
    } else if (lost != std::numeric_limits<std::uint32_t>::max()) {
        ++lost;
    }
}

std::string Backlog::take() {
    std::string taken = std::exchange(bytes, std::string());
    if (const std::uint32_t missing = std::exchange(lost, 0); missing != 0) {
        Record record;
        record.time = timeNow();
        record.kind = Kind::lost;
        record.side = side;
        record.count = missing;
        taken += pcapngBlock(record);
    }
    return taken;
}

}  // namespace bus
