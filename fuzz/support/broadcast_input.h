// Plays a fuzzer's bytes as a broadcast: records, each of which is a whole section or one packet.
//
//    0      1      3        5
//    +------+------+--------+-- - -
//    | kind | PID  | length | bytes
//    +------+------+--------+-- - -
//
// A section goes out in packets, whose counters continue. If the kind says so, its section_length and CRC_32 are put
// right first, so that an input need not guess them.
// Threads: one.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <cstring>
#include <map>

#include "demux.h"
#include "input.h"
#include "right_section.h"

namespace fuzz {

enum BroadcastKind : std::uint8_t { kBrokenSection = 0, kRightSection = 1, kPacket = 2, kGap = 3, kBroadcastKinds = 4 };

class BroadcastInput {
public:
    explicit BroadcastInput(broadcast::Demux& newDemux) : demux(newDemux) {}

    /// Plays the next record.
    void play(Input& input) {
        const unsigned int kind = input.u8() % kBroadcastKinds;
        const std::uint16_t pid = input.u16() & 0x1FFFU;
        std::vector<std::uint8_t> bytes = input.chunk();
        if (kind == kGap) {
            demux.discontinuity();
        } else if (kind == kPacket) {
            playPacket(pid, bytes);
        } else {
            if (kind == kRightSection) {
                putRight(bytes);
            }
            playSection(pid, bytes);
        }
    }

private:
    /// The bytes are those behind the PID.
    void playPacket(std::uint16_t pid, const std::vector<std::uint8_t>& bytes) {
        std::vector<std::uint8_t> packet(broadcast::kPacketSize, 0xFF);
        constexpr std::size_t kBehindPid = 3;
        fillHeader(packet, pid, false);
        std::copy_n(bytes.begin(), std::min(bytes.size(), packet.size() - kBehindPid), packet.begin() + kBehindPid);
        demux.feed(broadcast::TsPacket{packet.data()}, now);
    }

    void playSection(std::uint16_t pid, const std::vector<std::uint8_t>& section) {
        std::size_t at = 0;
        while (at < section.size()) {
            std::vector<std::uint8_t> packet(broadcast::kPacketSize, 0xFF);
            constexpr std::size_t kHeader = 4;
            const bool begins = at == 0;
            fillHeader(packet, pid, begins);
            packet[3] = static_cast<std::uint8_t>(0x10U | (counters[pid]++ & 0x0FU));
            if (begins) {
                packet[kHeader] = 0;  // pointer_field
            }
            const std::size_t from = kHeader + (begins ? 1 : 0);
            const std::size_t count = std::min(section.size() - at, packet.size() - from);
            std::memcpy(packet.data() + from, section.data() + at, count);
            demux.feed(broadcast::TsPacket{packet.data()}, now);
            at += count;
        }
    }

    static void fillHeader(std::vector<std::uint8_t>& packet, std::uint16_t pid, bool begins) {
        packet[0] = broadcast::kSyncByte;
        packet[1] = static_cast<std::uint8_t>((begins ? 0x40U : 0U) | pid >> 8U);
        packet[2] = static_cast<std::uint8_t>(pid);
    }

    broadcast::Demux& demux;
    std::map<std::uint16_t, unsigned int> counters;  // by PID
    const broadcast::Clock::time_point now{};
};

}  // namespace fuzz
