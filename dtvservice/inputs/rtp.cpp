// Reads and orders RTP packets.
#include "rtp.h"

namespace dtvservice {

namespace {

struct RtpPacket {
    std::uint16_t sequence = 0;
    std::vector<std::uint8_t> payload;
};

std::optional<RtpPacket> readPacket(const std::uint8_t* bytes, std::size_t size) {
    constexpr std::size_t kFixedHeader = 12;
    constexpr unsigned int kVersion = 2;
    if (size < kFixedHeader || bytes[0] >> 6U != kVersion) {
        return std::nullopt;
    }
    std::size_t header = kFixedHeader + std::size_t{4} * (bytes[0] & 0x0FU);
    if ((bytes[0] & 0x10) != 0) {  // a header extension: two bytes, its length in words
        if (size < header + 4) {
            return std::nullopt;
        }
        header += 4 + std::size_t{4} * (std::size_t{bytes[header + 2]} << 8U | bytes[header + 3]);
    }
    const std::size_t padding = (bytes[0] & 0x20) != 0 ? bytes[size - 1] : 0;
    if (header + padding > size) {
        return std::nullopt;
    }
    RtpPacket packet;
    packet.sequence = static_cast<std::uint16_t>(bytes[2] << 8U | bytes[3]);
    packet.payload.assign(bytes + header, bytes + size - padding);
    return packet;
}

/// The number with these low 16 bits that is closest to the expected one.
std::uint64_t extend(std::uint16_t sequence, std::uint64_t expected) {
    const auto distance = static_cast<std::int16_t>(sequence - static_cast<std::uint16_t>(expected));
    return expected + static_cast<std::uint64_t>(static_cast<std::int64_t>(distance));
}

/// Extended sequence numbers start here, so that a late packet from before the first one does not get a number below 0.
constexpr std::uint64_t kBegin = 0x10000;

}  // namespace

std::vector<std::uint8_t> RtpReorderer::take(const std::uint8_t* datagram, std::size_t size) {
    std::vector<std::uint8_t> inOrder;
    std::optional<RtpPacket> packet = readPacket(datagram, size);
    if (!packet) {
        ++unreadable_;
        return inOrder;
    }
    if (!next) {
        next = kBegin + packet->sequence;
    }
    const std::uint64_t number = extend(packet->sequence, *next);
    if (number + kWindow * 4 < *next) {
        // Far behind the expected number: the sender has restarted.
        waiting.clear();
        next = kBegin + packet->sequence;
        waiting[*next] = std::move(packet->payload);
    } else if (number < *next || !waiting.try_emplace(number, std::move(packet->payload)).second) {
        ++repeated_;
        return inOrder;
    }
    if (waiting.size() > kWindow) {
        skipGap();
    }
    for (auto first = waiting.begin(); first != waiting.end() && first->first == *next; first = waiting.begin()) {
        inOrder.insert(inOrder.end(), first->second.begin(), first->second.end());
        waiting.erase(first);
        ++*next;
    }
    return inOrder;
}

void RtpReorderer::skipGap() {
    lost_ += waiting.begin()->first - *next;
    next = waiting.begin()->first;
}

}  // namespace dtvservice
