// Pacer: computes when each packet is due, so that a file plays as fast as it was broadcast.
//
//  1. The first PID that carries a PCR sets the pace. Packets between two of its PCRs are due together with the first
//  of
//     the two. If the PID has no PCR for about a second's worth of packets, the next PID with a PCR replaces it.
//  2. A PCR that jumps back, or forward by more than a second, starts a new time base: its packet is due at once.
//  3. If no PCR arrives for about a second's worth of packets, packets are due at kDefaultBitRate.
//
// Threads: one.
// Blocks:  never; the caller waits.
// Fails:   never.
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
    /// The next packets have another time base.
    void discontinuity();

private:
    static constexpr std::uint64_t kFewestPerSecond = kDefaultBitRate / (broadcast::kPacketSize * 8);

    void onPcr(broadcast::TsPacket packet, Clock::time_point now);

    std::optional<std::uint16_t> pcrPid;
    std::optional<std::uint64_t> lastPcr;
    std::uint64_t packetsSincePcr = 0;
    std::uint64_t packetsPerSecond = kFewestPerSecond;  // rate between the last two PCRs, limited to sane values
    std::optional<Clock::time_point> dueNow;            // due time of the last packet
};

}  // namespace dtvservice
