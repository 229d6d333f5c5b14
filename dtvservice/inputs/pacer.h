// Pacer: says when each packet is due, so that a file plays as fast as it was broadcast.
//
//  1. The first PID that carries a PCR sets the pace. Packets between two of its PCRs are due with the one before.
//     Where it has none for about a second's worth of packets, the next PID that has one takes its place.
//  2. A PCR that goes back, or on by more than a second, begins a new time base at the moment that it comes.
//  3. Where no PCR comes for about a second's worth of packets, packets are due at kDefaultBitRate.
//
// Threads: one.   Blocks: never: waiting is the caller's.   Fails: never.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "ts_packet.h"

namespace dtvservice {

class Pacer {
public:
    using Clock = std::chrono::steady_clock;
    static constexpr std::uint64_t kDefaultBitRate = 5000000;

    /// When the packet is due; `now` is the time of the call.
    Clock::time_point due(broadcast::TsPacket packet, Clock::time_point now);
    /// The packets that follow belong to another time base.
    void discontinuity();

private:
    static constexpr std::uint64_t kFewestPerSecond = kDefaultBitRate / (broadcast::kPacketSize * 8);

    void onPcr(broadcast::TsPacket packet, Clock::time_point now);

    std::optional<std::uint16_t> pcrPid;
    std::optional<std::uint64_t> lastPcr;
    std::uint64_t packetsSincePcr = 0;
    std::uint64_t packetsPerSecond = kFewestPerSecond;  // as the last two PCRs tell, or more
    std::optional<Clock::time_point> dueNow;            // of the last packet
};

}  // namespace dtvservice
