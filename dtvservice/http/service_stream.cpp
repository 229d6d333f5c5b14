// Picks the packets of a service.
#include "service_stream.h"

#include <algorithm>

#include "si/section_writer.h"

namespace dtvservice {

using broadcast::TsPacket;

namespace {

constexpr std::uint16_t kPatPid = 0x0000;
constexpr std::uint8_t kVersions = 32;
constexpr std::uint8_t kCounterBits = 0x0F;

}  // namespace

void ServiceStream::present(const broadcast::Channel& channel) {
    const Program next = {channel.transportStreamId, channel.serviceId, channel.pmtPid};
    if (presented == next) {
        return;
    }
    streams.reset();
    presented = next;
    hasPat = false;
    patVersion = static_cast<std::uint8_t>((patVersion + 1) % kVersions);
    makePat();
}

void ServiceStream::setStreams(const si::Pmt& pmt) {
    streams.reset();
    streams.set(pmt.pcrPid);
    for (const si::Pmt::Stream& stream : pmt.streams) {
        streams.set(stream.pid);
    }
    // Null packets are no component, and a PCR_PID of this number means that there is no PCR.
    streams.reset(broadcast::kNullPid);
}

void ServiceStream::feed(TsPacket packet) {
    const std::uint16_t pid = packet.pid();
    if (!presented) {
        return;
    }
    if (pid == kPatPid) {
        if (packet.unitStart()) {
            sendPat();
        }
    } else if (hasPat && (pid == presented->pmtPid || streams.test(pid))) {
        sink(packet.bytes, false);
    }
}

/// One packet: header, pointer_field, the section, stuffing.
void ServiceStream::makePat() {
    constexpr std::uint8_t kTableId = 0x00;
    constexpr unsigned int kReservedPidBits = 0xE000;
    constexpr std::uint8_t kUnitStart = 0x40;
    constexpr std::uint8_t kStuffing = 0xFF;
    constexpr std::size_t kSectionAt = 5;
    si::SectionWriter writer(kTableId, presented->transportStreamId, patVersion);
    const si::Section section = writer.u16(presented->serviceId).u16(kReservedPidBits | presented->pmtPid).finish();
    pat.fill(kStuffing);
    pat[0] = broadcast::kSyncByte;
    pat[1] = kUnitStart;
    pat[2] = kPatPid;
    pat[4] = 0;
    std::copy(section.begin(), section.end(), pat.begin() + kSectionAt);
}

void ServiceStream::sendPat() {
    constexpr std::uint8_t kHasPayload = 0x10;
    pat[3] = kHasPayload | patCounter;
    patCounter = (patCounter + 1U) & kCounterBits;
    hasPat = true;
    sink(pat.data(), true);
}

}  // namespace dtvservice
