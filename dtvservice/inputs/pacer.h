// Pacer: computes when each packet is due, so that a file plays as fast as it was broadcast.
//
//  1. The first PID that carries a PCR sets the pace. Packets between two of its PCRs are due together with the
//     first of the two. If the PID has no PCR for about a second's worth of packets, the next PID with a PCR replaces
//     it.
//  2. A PCR belongs to the time base that it continues by at most a second. If several fit, it is the one that it
//     continues by the least. So two time bases may alternate on one PID.
//  3. A PCR that continues none starts a new time base. Its packet is due after the time that the packets before it
//     took at the latest measured rate, at most a second, but not before the present.
//  4. If no PCR arrives for about a second's worth of packets, packets are due at the given bit rate.
//
// Threads: one.
// Blocks:  never; the caller waits.
// Fails:   never.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

#include "ts_packet.h"

namespace dtvservice {

class Pacer {
public:
    using Clock = std::chrono::steady_clock;
    static constexpr std::uint64_t kDefaultBitRate = 5000000;

    /// `bitRate`: of packets that follow no PCR; above 0.
    explicit Pacer(std::uint64_t bitRate = kDefaultBitRate);

    /// When the packet is due; `now` is the time of the call.
    Clock::time_point due(broadcast::TsPacket packet, Clock::time_point now);
    /// The next packets have another time base.
    void discontinuity();

private:
    static constexpr std::uint64_t kFewestPerSecond = kDefaultBitRate / (broadcast::kPacketSize * 8);

    struct TimeBase {
        std::uint64_t pcr;           // the latest one
        Clock::time_point due;       // when its packet was due
        std::uint64_t packetNumber;  // of its packet
    };

    void onPcr(broadcast::TsPacket packet, Clock::time_point now);
    TimeBase* continuedBy(std::uint64_t pcr);
    void measureRate(const TimeBase& base, std::uint64_t passed);
    Clock::time_point afterPackets() const;
    void advanceTo(Clock::time_point time);

    std::chrono::nanoseconds unpacedTime;  // of a packet that follows no PCR
    std::optional<std::uint16_t> pcrPid;
    std::vector<TimeBase> bases;  // the one with the latest PCR is the last
    std::uint64_t packetNumber = 0;
    std::uint64_t packetsSincePcr = 0;
    std::uint64_t packetsPerSecond = kFewestPerSecond;  // the latest measured rate, limited to sane values
    std::chrono::nanoseconds packetTime;                // by the latest measured rate
    unsigned int alternations = 0;                      // PCRs in a row of another time base than the one before
    std::optional<Clock::time_point> dueNow;            // due time of the last packet
    std::uint64_t packetsAtDueNow = 0;                  // number of the first packet with this due time
};

}  // namespace dtvservice
