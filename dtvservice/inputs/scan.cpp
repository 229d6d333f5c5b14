// Reads a file from its beginning, as often as its tables need it.
#include "scan.h"

#include <limits>

namespace dtvservice {

/// A section may come before the table that announces its PID or its service. So the file's beginning is read first for
/// what it announces. If the whole file then announces more, it is read once more.
Scan::Scan(PacketFile& file, std::uint64_t lookAhead) {
    constexpr std::uint64_t kAll = std::numeric_limits<std::uint64_t>::max();
    read(file, lookAhead);
    const bool wasAll = file.isAtEnd();
    const std::uint64_t announced = announcements();
    read(file, kAll);
    if (!wasAll && announcements() != announced) {
        read(file, kAll);
    }
}

void Scan::read(PacketFile& file, std::uint64_t most) {
    file.rewind();
    demux.discontinuity();
    for (std::uint64_t count = 0; count < most; ++count) {
        const std::uint8_t* const packet = file.next();
        if (packet == nullptr) {
            return;
        }
        ++packets_;
        demux.feed(broadcast::TsPacket{packet});
    }
}

}  // namespace dtvservice
