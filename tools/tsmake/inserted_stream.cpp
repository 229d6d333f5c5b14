// Sends packets with the broadcast's PID and time stamps.
#include "inserted_stream.h"

namespace tsmake {

namespace {

/// Byte `place` of a time stamp; its other bits, such as the markers, stay.
std::uint8_t timeByteOf(std::uint8_t old, unsigned int place, std::uint64_t value) {
    constexpr std::array<unsigned int, 5> kShifts{29, 22, 14, 7, 0};
    constexpr std::array<std::uint8_t, 5> kBits{0x0E, 0xFF, 0xFE, 0xFF, 0xFE};
    const unsigned int shift = kShifts[place];
    const std::uint64_t bits = shift == 0 ? value << 1U : value >> shift;
    return static_cast<std::uint8_t>((old & ~static_cast<unsigned int>(kBits[place])) | (bits & kBits[place]));
}

}  // namespace

TsPacketBytes InsertedSender::next() {
    constexpr std::uint64_t kTicksOfTimeStamp = 300;
    TsPacketBytes packet = stream.packets[index].bytes;
    packet[1] = static_cast<std::uint8_t>((packet[1] & 0xE0U) | pid_ >> 8U);
    packet[2] = static_cast<std::uint8_t>(pid_ & 0xFFU);
    const std::uint64_t later = round * stream.length / kTicksOfTimeStamp;
    for (; timeByte < stream.timeBytes.size() && stream.timeBytes[timeByte].packet == index; ++timeByte) {
        const InsertedStream::TimeByte& byte = stream.timeBytes[timeByte];
        packet[byte.offset] = timeByteOf(packet[byte.offset], byte.place, byte.value + later);
    }
    if (++index == stream.packets.size()) {
        index = 0;
        timeByte = 0;
        ++round;
    }
    return packet;
}

}  // namespace tsmake
