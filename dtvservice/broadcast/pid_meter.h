// PidMeter: counts the packets of one PID and their errors.
// Threads: one.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

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
    /// Counts all but sections and their errors. Counts continuity errors only if nothing assembles the PID's sections,
    /// because an assembler compares repeated packets and so knows better.
    void count(TsPacket packet, Clock::time_point now, bool isAssembled) {
        ++counts_.packets;
        counts_.lastPacket = now;
        if (packet.transportError()) {
            ++counts_.transportErrors;  // any bit of the header may be wrong
            return;
        }
        counts_.scrambled += packet.scrambled() ? 1 : 0;
        const bool isContinuous = continues(packet);
        counts_.continuityErrors += isContinuous || isAssembled ? 0 : 1;
    }
    void discontinuity() { lastCounter = kNone; }
    /// Takes the packets since the last call for the bit rate.
    void measure(std::chrono::nanoseconds passed) {
        const auto bits = static_cast<double>((counts_.packets - measuredPackets) * kPacketSize * 8);
        counts_.bitRate = static_cast<std::uint64_t>(bits / std::chrono::duration<double>(passed).count());
        measuredPackets = counts_.packets;
    }
    const PidCounts& counts() const { return counts_; }
    PidCounts& counts() { return counts_; }

private:
    static constexpr std::uint8_t kNone = 0xFF;

    /// A packet without payload does not count. A counter may repeat once.
    bool continues(TsPacket packet) {
        if (packet.pid() == kNullPid || !packet.hasPayload()) {
            lastCounter = packet.discontinuity() ? kNone : lastCounter;
            return true;
        }
        const std::uint8_t previous = lastCounter;
        const std::uint8_t counter = packet.continuityCounter();
        const bool isRepeated = counter == previous && !hasRepeated;
        hasRepeated = isRepeated;
        lastCounter = counter;
        return isRepeated || previous == kNone || counter == ((previous + 1) & 0x0F) || packet.discontinuity();
    }

    PidCounts counts_;
    std::uint64_t measuredPackets = 0;
    std::uint8_t lastCounter = kNone;
    bool hasRepeated = false;
};

}  // namespace broadcast
