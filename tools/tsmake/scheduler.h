// The packet scheduler: a multiplex as packets at a constant bit rate. Tables repeat at their intervals, elementary
// streams carry PES packets with time stamps, a PCR says the time of its own place in the file, the rest is null
// packets.
// Threads: one.
// Blocks:  never.
// Fails:   std::length_error when a table is too long, or the bit rate too low.
#pragma once

#include <functional>

#include "multiplex.h"

namespace tsmake {

using PacketSink = std::function<void(const std::uint8_t* packet)>;

/// When the packet of that number begins, the first at 0, in ticks of 27 MHz.
std::uint64_t packetTicks(std::uint64_t number, std::uint64_t bitRate);

/// Hands `seconds` of the multiplex to the sink. The same multiplex gives the same bytes.
void writeMultiplex(const Multiplex& multiplex, unsigned int seconds, const PacketSink& sink);

}  // namespace tsmake
