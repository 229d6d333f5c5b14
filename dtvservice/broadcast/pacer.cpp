// Keeping time.
#include "pacer.h"

namespace broadcast {

namespace {

constexpr std::uint64_t kPacketBits = kPacketSize * 8;
constexpr std::uint64_t kPacketsPerSecond = Pacer::kDefaultBitRate / kPacketBits;
constexpr std::chrono::nanoseconds kPacketTime{std::uint64_t{1000000000} * kPacketBits / Pacer::kDefaultBitRate};

}  // namespace

void Pacer::discontinuity() {
    pcrPid.reset();
    lastPcr.reset();
    packetsSincePcr = 0;
}

Pacer::Clock::time_point Pacer::due(TsPacket packet, Clock::time_point now) {
    if (!dueNow) {
        dueNow = now;
    }
    const bool carriesPcr = packet.hasPcr() && !packet.transportError();
    if (carriesPcr && pcrPid.value_or(packet.pid()) == packet.pid()) {
        pcrPid = packet.pid();
        const std::uint64_t pcr = packet.pcr();
        const std::uint64_t passed = lastPcr ? (pcr + kPcrWrap - *lastPcr) % kPcrWrap : kPcrWrap;
        if (passed <= kPcrFrequency) {
            *dueNow += std::chrono::nanoseconds(passed * 1000 / 27);
        } else {
            dueNow = now;
        }
        lastPcr = pcr;
        packetsSincePcr = 0;
    } else if (++packetsSincePcr > kPacketsPerSecond || !lastPcr) {
        // Nothing to go by: also what comes before the first PCR.
        *dueNow += kPacketTime;
    }
    return *dueNow;
}

}  // namespace broadcast
