// Assembles sections.
#include "section_assembler.h"

#include <algorithm>
#include <cstring>

namespace broadcast {

namespace {

constexpr std::uint8_t kStuffing = 0xFF;

}  // namespace

SectionAssembler::SectionAssembler(Handler newHandler) : handler(std::move(newHandler)) {
    section.reserve(si::kLongestSection);
}

void SectionAssembler::discontinuity() {
    section.clear();
    haveLast = false;
}

void SectionAssembler::feed(TsPacket packet) {
    ++counts_.packets;
    if (packet.transportError() || packet.scrambled()) {
        ++counts_.unusable;
        return;
    }
    if (!packet.hasPayload()) {
        if (packet.discontinuity()) {
            discontinuity();
        }
        return;
    }
    const Order order = orderOf(packet);
    if (order == Order::duplicate) {
        ++counts_.duplicates;
        lastWasDuplicate = true;
        return;
    }
    if (order == Order::broken) {
        counts_.continuityErrors += packet.discontinuity() ? 0 : 1;
        dropInProgress();
    }
    remember(packet);
    const std::uint8_t* const payload = packet.bytes + packet.payloadOffset();
    const std::size_t size = kPacketSize - packet.payloadOffset();
    if (packet.unitStart()) {
        startUnit(payload, size);
    } else if (!section.empty()) {
        append(payload, size);
    }
}

SectionAssembler::Order SectionAssembler::orderOf(TsPacket packet) {
    if (!haveLast) {
        return Order::next;
    }
    const std::uint8_t previous = last[3] & 0x0F;
    if (packet.continuityCounter() == ((previous + 1) & 0x0F)) {
        return Order::next;
    }
    if (packet.continuityCounter() == previous && !lastWasDuplicate && isRepetition(packet, TsPacket{last.data()})) {
        return Order::duplicate;
    }
    return Order::broken;
}

void SectionAssembler::remember(TsPacket packet) {
    std::memcpy(last.data(), packet.bytes, kPacketSize);
    haveLast = true;
    lastWasDuplicate = false;
}

void SectionAssembler::startUnit(const std::uint8_t* payload, std::size_t size) {
    const std::size_t start = std::size_t{1} + payload[0];
    if (start > size) {
        dropInProgress();
        return;
    }
    if (!section.empty()) {
        append(payload + 1, start - 1);
        dropInProgress();
    }
    std::size_t at = start;
    while (at < size && payload[at] != kStuffing) {
        section.push_back(payload[at]);
        const std::size_t used = 1 + append(payload + at + 1, size - at - 1);
        at += used;
    }
}

/// Adds bytes to the section in progress until it is complete. Returns the number of bytes used.
std::size_t SectionAssembler::append(const std::uint8_t* bytes, std::size_t size) {
    std::size_t used = 0;
    while (used < size) {
        const bool lengthKnown = section.size() >= si::kSectionHeaderSize;
        const std::size_t wanted = lengthKnown ? si::announcedSize(section.data()) : si::kSectionHeaderSize;
        const std::size_t count = std::min(wanted - section.size(), size - used);
        section.insert(section.end(), bytes + used, bytes + used + count);
        used += count;
        if (section.size() < si::kSectionHeaderSize) {
            break;
        }
        if (si::announcedSize(section.data()) > si::kLongestSection) {
            dropInProgress();
            return size;
        }
        if (section.size() == si::announcedSize(section.data())) {
            finish();
            return used;
        }
    }
    return used;
}

void SectionAssembler::dropInProgress() {
    counts_.cut += section.empty() ? 0 : 1;
    section.clear();
}

void SectionAssembler::finish() {
    if (si::crcIsRight(section)) {
        ++counts_.sections;
        handler(section);
    } else {
        ++counts_.crcErrors;
    }
    section.clear();
}

}  // namespace broadcast
