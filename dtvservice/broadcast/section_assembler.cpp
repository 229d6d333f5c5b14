// Assembles sections.
#include "section_assembler.h"

#include <algorithm>
#include <cstring>

namespace broadcast {

namespace {

constexpr std::uint8_t kStuffing = 0xFF;

}  // namespace

SectionAssembler::SectionAssembler(Handler newHandler) : handler(std::move(newHandler)), section(si::kLongestSection) {}

void SectionAssembler::discontinuity() {
    filled = 0;
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
    } else if (filled != 0) {
        append({payload, size});
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
    if (filled != 0) {
        append({payload + 1, start - 1});
        dropInProgress();
    }
    std::size_t at = start;
    while (at < size && payload[at] != kStuffing) {
        at += begin({payload + at, size - at});
    }
}

/// Takes the section that begins here: without a copy if it ends here, too. Returns the number of bytes used.
std::size_t SectionAssembler::begin(si::Bytes bytes) {
    if (bytes.size >= si::kSectionHeaderSize) {
        const std::size_t wanted = si::announcedSize(bytes.data);
        if (wanted <= bytes.size) {
            finish({bytes.data, wanted});
            return wanted;
        }
    }
    return append(bytes);
}

/// Adds bytes to the section in progress until it is complete. Returns the number of bytes used.
std::size_t SectionAssembler::append(si::Bytes bytes) {
    std::size_t used = 0;
    if (filled < si::kSectionHeaderSize) {
        used = take(bytes, si::kSectionHeaderSize - filled);
        if (filled < si::kSectionHeaderSize) {
            return used;
        }
        if (si::announcedSize(section.data()) > si::kLongestSection) {
            dropInProgress();
            return bytes.size;
        }
    }
    const std::size_t wanted = si::announcedSize(section.data());
    used += take({bytes.data + used, bytes.size - used}, wanted - filled);
    if (filled == wanted) {
        filled = 0;
        finish({section.data(), wanted});
    }
    return used;
}

std::size_t SectionAssembler::take(si::Bytes bytes, std::size_t most) {
    const std::size_t count = std::min(bytes.size, most);
    std::memcpy(section.data() + filled, bytes.data, count);
    filled += count;
    return count;
}

void SectionAssembler::dropInProgress() {
    counts_.cut += filled == 0 ? 0 : 1;
    filled = 0;
}

void SectionAssembler::finish(si::Bytes complete) {
    if (si::crcIsRight(complete)) {
        ++counts_.sections;
        handler(complete);
    } else {
        ++counts_.crcErrors;
    }
}

}  // namespace broadcast
