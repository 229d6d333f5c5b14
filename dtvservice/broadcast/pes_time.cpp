// Reading PES headers and adaptation fields.
#include "pes_time.h"

namespace broadcast {

namespace {

constexpr std::uint8_t kTimelineTag = 0x04;

/// Reads the bytes of a packet from an offset. A read beyond the end gives 0 and marks the reader as failed.
class PacketReader {
public:
    PacketReader(const std::uint8_t* newBytes, std::size_t newSize) : bytes(newBytes), size(newSize) {}

    std::uint64_t number(std::size_t width) {
        std::uint64_t value = 0;
        for (; width != 0; --width) {
            value = value << 8U | (at < size ? bytes[at] : 0U);
            ++at;
        }
        return value;
    }
    void skip(std::size_t count) { at += count; }
    std::size_t position() const { return at; }
    bool good() const { return at <= size; }
    /// A reader for the next `count` bytes. There must be as many.
    PacketReader take(std::size_t count) {
        at += count;
        return {bytes + at - count, count};
    }
    std::size_t left() const { return at < size ? size - at : 0; }

private:
    const std::uint8_t* bytes;
    std::size_t size;
    std::size_t at = 0;
};

/// The descriptors of the adaptation field's extension, after the optional fields that its flags announce. Empty if
/// there are none.
PacketReader descriptorsOf(TsPacket packet) {
    constexpr std::size_t kLengthAt = 4;
    const PacketReader none(nullptr, 0);
    if (!packet.hasAdaptation() || packet.bytes[kLengthAt] == 0 || packet.payloadOffset() > kPacketSize) {
        return none;
    }
    PacketReader field(packet.bytes + kLengthAt + 1, packet.bytes[kLengthAt]);
    const auto flags = static_cast<std::uint8_t>(field.number(1));
    field.skip((flags & 0x10) != 0 ? 6 : 0);                                          // PCR
    field.skip((flags & 0x08) != 0 ? 6 : 0);                                          // OPCR
    field.skip((flags & 0x04) != 0 ? 1 : 0);                                          // splice_countdown
    field.skip((flags & 0x02) != 0 ? static_cast<std::size_t>(field.number(1)) : 0);  // private data
    if ((flags & 0x01) == 0 || field.left() == 0) {
        return none;
    }
    const auto length = static_cast<std::size_t>(field.number(1));
    if (length == 0 || length > field.left()) {
        return none;
    }
    PacketReader extension(packet.bytes + kLengthAt + 1 + field.position(), length);
    const auto parts = static_cast<std::uint8_t>(extension.number(1));
    extension.skip((parts & 0x80) != 0 ? 2 : 0);  // legal time window
    extension.skip((parts & 0x40) != 0 ? 3 : 0);  // piecewise rate
    extension.skip((parts & 0x20) != 0 ? 5 : 0);  // seamless splice
    if ((parts & 0x10) != 0 || extension.left() == 0) {
        return none;
    }
    return {packet.bytes + kLengthAt + 1 + field.position() + extension.position(), extension.left()};
}

std::optional<TemiTimeline> readTimeline(PacketReader fields) {
    const auto first = static_cast<std::uint8_t>(fields.number(1));
    const auto second = static_cast<std::uint8_t>(fields.number(1));
    const unsigned int timestamp = first >> 6U;
    TemiTimeline timeline;
    timeline.forceReload = (first & 0x02) != 0;
    timeline.paused = (first & 0x01) != 0;
    timeline.discontinuity = (second & 0x80) != 0;
    timeline.id = static_cast<std::uint8_t>(fields.number(1));
    if (timestamp == 1 || timestamp == 2) {
        timeline.timescale = static_cast<std::uint32_t>(fields.number(4));
        timeline.mediaTimestamp = fields.number(timestamp == 1 ? 4 : 8);
    } else if ((first & 0x20) != 0) {
        timeline.mediaTimestamp = fields.number(8);
    } else {
        return std::nullopt;
    }
    return fields.good() ? std::optional<TemiTimeline>(timeline) : std::nullopt;
}

}  // namespace

std::optional<std::uint64_t> ptsOf(TsPacket packet) {
    if (!packet.unitStart() || packet.scrambled() || packet.transportError() || !packet.hasPayload()) {
        return std::nullopt;
    }
    constexpr std::size_t kFixedHeader = 9;
    constexpr std::uint8_t kPtsFlag = 0x80;
    const std::uint8_t* const pes = packet.bytes + packet.payloadOffset();
    const std::size_t size = kPacketSize - packet.payloadOffset();
    if (size < kFixedHeader + 5 || pes[0] != 0 || pes[1] != 0 || pes[2] != 1 || (pes[6] & 0xC0) != 0x80 ||
        (pes[7] & kPtsFlag) == 0 || pes[8] < 5) {
        return std::nullopt;
    }
    const std::uint8_t* const pts = pes + kFixedHeader;
    return std::uint64_t{pts[0] & 0x0EU} << 29U | std::uint64_t{pts[1]} << 22U | std::uint64_t{pts[2] & 0xFEU} << 14U |
           std::uint64_t{pts[3]} << 7U | std::uint64_t{pts[4] & 0xFEU} >> 1U;
}

std::vector<TemiTimeline> temiTimelinesOf(TsPacket packet) {
    std::vector<TemiTimeline> timelines;
    if (packet.transportError()) {
        return timelines;
    }
    PacketReader descriptors = descriptorsOf(packet);
    while (descriptors.left() >= 2) {
        const auto tag = static_cast<std::uint8_t>(descriptors.number(1));
        const auto length = static_cast<std::size_t>(descriptors.number(1));
        if (length > descriptors.left()) {
            break;
        }
        PacketReader content = descriptors.take(length);
        if (tag == kTimelineTag) {
            if (const std::optional<TemiTimeline> timeline = readTimeline(content)) {
                timelines.push_back(*timeline);
            }
        }
    }
    return timelines;
}

}  // namespace broadcast
