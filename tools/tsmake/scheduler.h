// The packet scheduler: writes a multiplex as packets at a constant bit rate. Tables repeat at their intervals, and
// elementary streams carry PES packets with time stamps. Each PCR is the time of its own position in the file. Null
// packets fill the rest.
// Threads: one.
// Blocks:  never.
// Fails:   std::length_error when a table is too long or the bit rate is too low.
#pragma once

#include <functional>

#include "multiplex.h"

namespace tsmake {

using PacketSink = std::function<void(const std::uint8_t* packet)>;

/// The start time of packet `number` in 27 MHz ticks; packet 0 starts at 0.
std::uint64_t packetTicks(std::uint64_t number, std::uint64_t bitRate);

/// Passes the packets of `seconds` of the multiplex to the sink. The same multiplex gives the same bytes.
void writeMultiplex(const Multiplex& multiplex, unsigned int seconds, const PacketSink& sink);

}  // namespace tsmake
