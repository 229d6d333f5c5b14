// PidMeter: counts the packets of one PID and their errors.
// Threads: one.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <memory>

#include "ts_packet.h"

namespace broadcast {

using Clock = std::chrono::steady_clock;

struct PidCounts {
    std::uint64_t packets = 0;
    std::uint64_t continuityErrors = 0;
    std::uint64_t transportErrors = 0;  ///< packets with transport_error_indicator
    std::uint64_t scrambled = 0;        ///< packets
    std::uint64_t sections = 0;         ///< complete and correct
    std::uint64_t cutSections = 0;
    std::uint64_t crcErrors = 0;
    std::uint64_t bitRate = 0;     ///< bit/s between the latest two measurements
    Clock::time_point lastPacket;  ///< if there are packets
};

class PidMeter {
public:
    /// Counts all but sections and their errors.
    void count(TsPacket packet, Clock::time_point now) {
        ++counts_.packets;
        counts_.lastPacket = now;
        if (packet.transportError()) {
            ++counts_.transportErrors;  // any bit of the header may be wrong
            return;
        }
        counts_.scrambled += packet.scrambled() ? 1 : 0;
        if (packet.pid() != kNullPid) {
            counts_.continuityErrors += continues(packet) ? 0 : 1;
        }
    }
    void discontinuity() { hasLast = false; }
    /// Takes the packets since the last call for the bit rate.
    void measure(std::chrono::nanoseconds passed) {
        const auto bits = static_cast<double>((counts_.packets - measuredPackets) * kPacketSize * 8);
        counts_.bitRate = static_cast<std::uint64_t>(bits / std::chrono::duration<double>(passed).count());
        measuredPackets = counts_.packets;
    }
    const PidCounts& counts() const { return counts_; }

private:
    using Packet = std::array<std::uint8_t, kPacketSize>;

    /// A packet without payload does not count. A packet may be repeated once.
    bool continues(TsPacket packet) {
        if (!packet.hasPayload()) {
            hasLast = hasLast && !packet.discontinuity();
            return true;
        }
        if (!last) {
            last = std::make_unique<Packet>();
        }
        const TsPacket previous{last->data()};
        const bool isFirst = !hasLast || packet.discontinuity();
        if (!isFirst && !hasRepeated && isRepetition(packet, previous)) {
            hasRepeated = true;
            return true;
        }
        const bool follows = isFirst || packet.continuityCounter() == ((previous.continuityCounter() + 1) & 0x0F);
        std::memcpy(last->data(), packet.bytes, kPacketSize);
        hasLast = true;
        hasRepeated = false;
        return follows;
    }

    PidCounts counts_;
    std::uint64_t measuredPackets = 0;
    std::unique_ptr<Packet> last;  // the latest with payload that was no repetition
    bool hasLast = false;
    bool hasRepeated = false;
};

}  // namespace broadcast
