// Packets of a transport stream in a file (ISO/IEC 13818-1, clause 2.4.3), and the PMTs in it.
// Threads: any.
// Blocks:  while it reads the file.
// Fails:   ReadError, with the number of the packet, from 1 on.
#pragma once

#include <algorithm>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

#include "inserted_stream.h"
#include "si/tables.h"

namespace tsmake {

struct ReadError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

constexpr std::size_t kPacketHeaderSize = 4;

inline std::uint16_t pidOf(const TsPacketBytes& packet) {
    return static_cast<std::uint16_t>((packet[1] & 0x1FU) << 8U | packet[2]);
}

inline bool startsUnit(const TsPacketBytes& packet) {
    return (packet[1] & 0x40U) != 0;
}

inline bool hasAdaptation(const TsPacketBytes& packet) {
    return (packet[3] & 0x20U) != 0;
}

/// The offset of the payload; the packet's size if there is none, or an adaptation field that does not fit.
inline std::size_t payloadOf(const TsPacketBytes& packet) {
    const std::size_t offset =
        hasAdaptation(packet) ? kPacketHeaderSize + 1 + packet[kPacketHeaderSize] : kPacketHeaderSize;
    return (packet[3] & 0x10U) == 0 ? kTsPacketSize : std::min(offset, kTsPacketSize);
}

/// Calls `take` for each packet without a transport error, with its number from 0 on, until it returns false.
void forEachPacket(const std::string& file, const std::function<bool(std::size_t, const TsPacketBytes&)>& take);

/// The first PMT that lists the PID.
si::Pmt pmtOf(const std::string& file, std::uint16_t pid);

}  // namespace tsmake
