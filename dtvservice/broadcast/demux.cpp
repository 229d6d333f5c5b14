// Counts and shows packets before their sections are assembled.
#include "demux.h"

#include <algorithm>

namespace broadcast {

void Demux::watch(std::uint16_t pid, Watcher watcher) {
    if (watcher) {
        watchers[pid] = std::move(watcher);
    } else {
        watchers.erase(pid);
    }
}

void Demux::feed(TsPacket packet, Clock::time_point now) {
    if (disturbance) {
        packet.bytes = disturbance(packet);
        if (packet.bytes == nullptr) {
            return;
        }
    }
    const std::uint16_t pid = packet.pid();
    ++packets_;
    meters[pid].count(packet, now);
    if (tap_) {
        tap_(packet);
    }
    if (!watchers.empty()) {
        show(packet, pid);
    }
    SectionDemux::feed(packet);
}

void Demux::show(TsPacket packet, std::uint16_t pid) {
    const auto watcher = watchers.find(pid);
    if (watcher != watchers.end()) {
        watcher->second(packet);
    }
}

void Demux::discontinuity() {
    SectionDemux::discontinuity();
    for (PidMeter& meter : meters) {
        meter.discontinuity();
    }
}

PidCounts Demux::countsOf(std::uint16_t pid) const {
    PidCounts counts = meters[pid].counts();
    const SectionCounts ofSections = SectionDemux::countsOf(pid);
    counts.sections = ofSections.sections;
    counts.cutSections = ofSections.cut;
    counts.crcErrors = ofSections.crcErrors;
    return counts;
}

PidCounts Demux::total() const {
    PidCounts sum;
    for (std::uint16_t pid = 0; pid < kPidCount; ++pid) {
        if (meters[pid].counts().packets != 0) {
            const PidCounts counts = countsOf(pid);
            sum.packets += counts.packets;
            sum.continuityErrors += counts.continuityErrors;
            sum.transportErrors += counts.transportErrors;
            sum.scrambled += counts.scrambled;
            sum.sections += counts.sections;
            sum.cutSections += counts.cutSections;
            sum.crcErrors += counts.crcErrors;
            sum.bitRate += counts.bitRate;
            sum.lastPacket = std::max(sum.lastPacket, counts.lastPacket);
        }
    }
    return sum;
}

void Demux::measureRates(Clock::time_point now) {
    if (now <= measuredAt) {
        return;
    }
    for (PidMeter& meter : meters) {
        meter.measure(now - measuredAt);
    }
    measuredAt = now;
}

}  // namespace broadcast
