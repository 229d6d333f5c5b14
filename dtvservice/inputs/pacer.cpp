// Computes due times from PCRs.
#include "pacer.h"

#include <algorithm>

namespace dtvservice {

namespace {

constexpr std::uint64_t kPacketBits = broadcast::kPacketSize * 8;
/// No real stream is faster. PCRs that give a higher rate are damaged.
constexpr std::uint64_t kMostPerSecond = 100 * Pacer::kDefaultBitRate / kPacketBits;
constexpr std::chrono::nanoseconds kPacketTime{std::uint64_t{1000000000} * kPacketBits / Pacer::kDefaultBitRate};

}  // namespace

void Pacer::discontinuity() {
    pcrPid.reset();
    lastPcr.reset();
    packetsSincePcr = 0;
    packetsPerSecond = kFewestPerSecond;
}

Pacer::Clock::time_point Pacer::due(broadcast::TsPacket packet, Clock::time_point now) {
    if (!dueNow) {
        dueNow = now;
    }
    const bool hasEnded = ++packetsSincePcr > packetsPerSecond;
    const bool carriesPcr = packet.hasPcr() && !packet.transportError();
    if (carriesPcr && (!pcrPid || pcrPid == packet.pid() || hasEnded)) {
        onPcr(packet, now);
    } else if (hasEnded || !lastPcr) {
        // There is no PCR to follow. This includes the packets before the first PCR.
        *dueNow += kPacketTime;
    }
    return *dueNow;
}

void Pacer::onPcr(broadcast::TsPacket packet, Clock::time_point now) {
    if (pcrPid != packet.pid()) {
        discontinuity();
        pcrPid = packet.pid();
    }
    const std::uint64_t pcr = packet.pcr();
    const std::uint64_t passed =
        lastPcr ? (pcr + broadcast::kPcrWrap - *lastPcr) % broadcast::kPcrWrap : broadcast::kPcrWrap;
    if (passed <= broadcast::kPcrFrequency) {
        *dueNow += std::chrono::nanoseconds(passed * 1000 / 27);
        const std::uint64_t rate = passed == 0 ? 0 : packetsSincePcr * broadcast::kPcrFrequency / passed;
        packetsPerSecond = std::clamp(rate, kFewestPerSecond, kMostPerSecond);
    } else {
        dueNow = now;
    }
    lastPcr = pcr;
    packetsSincePcr = 0;
}

}  // namespace dtvservice
