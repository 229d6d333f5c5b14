// Fields of a transport stream packet (ISO/IEC 13818-1, clause 2.4.3). The packet has 188 bytes and begins with 0x47.
// Threads: any.
// Blocks:  never.
// Fails:   never; with a malformed adaptation field, hasPayload() is false.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>

namespace broadcast {

constexpr std::size_t kPacketSize = 188;
constexpr std::uint8_t kSyncByte = 0x47;
constexpr std::size_t kPidCount = 8192;
constexpr std::uint16_t kNullPid = 0x1FFF;

struct TsPacket {
    const std::uint8_t* bytes;

    bool transportError() const { return (bytes[1] & 0x80) != 0; }
    bool unitStart() const { return (bytes[1] & 0x40) != 0; }
    std::uint16_t pid() const { return static_cast<std::uint16_t>((bytes[1] & 0x1F) << 8 | bytes[2]); }
    bool scrambled() const { return (bytes[3] & 0xC0) != 0; }
    bool hasAdaptation() const { return (bytes[3] & 0x20) != 0; }
    bool hasPayload() const { return (bytes[3] & 0x10) != 0 && payloadOffset() < kPacketSize; }
    std::uint8_t continuityCounter() const { return bytes[3] & 0x0F; }

    std::size_t payloadOffset() const {
        constexpr std::size_t kHeader = 4;
        return hasAdaptation() ? kHeader + 1 + bytes[4] : kHeader;
    }
    bool discontinuity() const { return hasAdaptation() && bytes[4] != 0 && (bytes[5] & 0x80) != 0; }
    bool hasPcr() const {
        constexpr std::uint8_t kFlagsAndPcr = 7;
        return hasAdaptation() && bytes[4] >= kFlagsAndPcr && (bytes[5] & 0x10) != 0;
    }
    /// program_clock_reference in ticks of 27 MHz. hasPcr() must be true.
    std::uint64_t pcr() const {
        const std::uint64_t base = std::uint64_t{bytes[6]} << 25U | std::uint64_t{bytes[7]} << 17U |
                                   std::uint64_t{bytes[8]} << 9U | std::uint64_t{bytes[9]} << 1U | bytes[10] >> 7U;
        const std::uint64_t extension = (bytes[10] & 0x01U) << 8U | bytes[11];
        return base * 300 + extension;
    }
};

/// Whether a packet is the previous one of its PID again, bit for bit except for the PCR, which may differ.
inline bool isRepetition(TsPacket packet, TsPacket previous) {
    constexpr std::size_t kHeader = 4;  // mostly differs, and is compared without a call
    constexpr std::size_t kPcrAt = 6;
    constexpr std::size_t kBehindPcr = 12;
    if (std::memcmp(packet.bytes, previous.bytes, kHeader) != 0) {
        return false;
    }
    const std::size_t same = packet.hasPcr() ? kPcrAt : kPacketSize;
    return std::memcmp(packet.bytes, previous.bytes, same) == 0 &&
           (!packet.hasPcr() ||
            std::memcmp(packet.bytes + kBehindPcr, previous.bytes + kBehindPcr, kPacketSize - kBehindPcr) == 0);
}

/// program_clock_reference wraps to 0 at this value: 33 bits at 90 kHz, times 300.
constexpr std::uint64_t kPcrWrap = (std::uint64_t{1} << 33U) * 300;
constexpr std::uint64_t kPcrFrequency = 27000000;

}  // namespace broadcast
