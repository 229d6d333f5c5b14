// Computes due times from PCRs.
#include "pacer.h"

#include <algorithm>

namespace dtvservice {

namespace {

constexpr std::uint64_t kPacketBits = broadcast::kPacketSize * 8;
/// No real stream is faster. PCRs that give a higher rate are damaged.
constexpr std::uint64_t kMostPerSecond = 100 * Pacer::kDefaultBitRate / kPacketBits;
/// PCRs of a time base are no further apart.
constexpr std::chrono::seconds kLongestStep{1};
/// The number of time bases to remember. More than a few are damaged PCRs.
constexpr std::size_t kMostBases = 4;

constexpr std::chrono::nanoseconds timeOf(std::uint64_t ticks) {
    return std::chrono::nanoseconds(ticks * 1000 / 27);
}

constexpr std::uint64_t ticksBetween(std::uint64_t earlier, std::uint64_t later) {
    return (later + broadcast::kPcrWrap - earlier) % broadcast::kPcrWrap;
}

}  // namespace

Pacer::Pacer(std::uint64_t bitRate)
    : unpacedTime(std::uint64_t{1000000000} * kPacketBits / bitRate), packetTime(unpacedTime) {}

void Pacer::discontinuity() {
    pcrPid.reset();
    bases.clear();
    packetsSincePcr = 0;
    packetsPerSecond = kFewestPerSecond;
    packetTime = unpacedTime;
    alternations = 0;
}

Pacer::Clock::time_point Pacer::due(broadcast::TsPacket packet, Clock::time_point now) {
    ++packetNumber;
    if (!dueNow) {
        advanceTo(now);
    }
    const bool hasEnded = ++packetsSincePcr > packetsPerSecond;
    const bool carriesPcr = packet.hasPcr() && !packet.transportError();
    if (carriesPcr && (!pcrPid || pcrPid == packet.pid() || hasEnded)) {
        onPcr(packet, now);
    } else if (hasEnded || bases.empty()) {
        // There is no PCR to follow. This includes the packets before the first PCR.
        advanceTo(*dueNow + unpacedTime);
    }
    return *dueNow;
}

void Pacer::onPcr(broadcast::TsPacket packet, Clock::time_point now) {
    if (pcrPid != packet.pid()) {
        discontinuity();
        pcrPid = packet.pid();
    }
    const std::uint64_t pcr = packet.pcr();
    TimeBase* const base = continuedBy(pcr);
    if (base != nullptr) {
        const std::uint64_t passed = ticksBetween(base->pcr, pcr);
        measureRate(*base, passed);
        const Clock::time_point due = base->due + timeOf(passed);
        // A time base that has stood still while another one ran is due in the past.
        advanceTo(due >= *dueNow ? due : afterPackets());
        bases.erase(bases.begin() + (base - bases.data()));
    } else {
        advanceTo(std::max(now, bases.empty() ? *dueNow : afterPackets()));
        ++alternations;
        if (bases.size() == kMostBases) {
            bases.erase(bases.begin());
        }
    }
    bases.push_back({pcr, *dueNow, packetNumber});
    packetsSincePcr = 0;
}

/// The time base that the PCR continues; null if there is none.
Pacer::TimeBase* Pacer::continuedBy(std::uint64_t pcr) {
    const auto nearest =
        std::min_element(bases.begin(), bases.end(), [pcr](const TimeBase& one, const TimeBase& other) {
            return ticksBetween(one.pcr, pcr) < ticksBetween(other.pcr, pcr);
        });
    const bool fits = nearest != bases.end() && ticksBetween(nearest->pcr, pcr) <= broadcast::kPcrFrequency;
    return fits ? &*nearest : nullptr;
}

/// Between two successive PCRs of a time base all packets are its own. Across PCRs of another one they may not be, so
/// that rate is used only where the time bases alternate all the time.
void Pacer::measureRate(const TimeBase& base, std::uint64_t passed) {
    constexpr unsigned int kAlternating = 2;
    alternations = &base == &bases.back() ? 0 : alternations + 1;
    if (passed == 0 || (alternations != 0 && alternations < kAlternating)) {
        return;
    }
    const std::uint64_t packets = packetNumber - base.packetNumber;
    packetsPerSecond = std::clamp(packets * broadcast::kPcrFrequency / passed, kFewestPerSecond, kMostPerSecond);
    packetTime = timeOf(passed / packets);
}

/// When the packet is due by the packets since the last due time and their rate. A damaged PCR right behind a good one
/// gives a rate of one packet in almost a second, hence the limit.
Pacer::Clock::time_point Pacer::afterPackets() const {
    const auto taken = packetTime * static_cast<std::int64_t>(packetNumber - packetsAtDueNow);
    return *dueNow + std::min<std::chrono::nanoseconds>(taken, kLongestStep);
}

void Pacer::advanceTo(Clock::time_point time) {
    dueNow = time;
    packetsAtDueNow = packetNumber;
}

}  // namespace dtvservice
