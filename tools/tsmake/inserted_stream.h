// InsertedStream: an elementary stream of another transport stream, as packets with the times at which they were sent.
// InsertedSender sends it in a broadcast, with the time stamps of the broadcast's clock; at its end it begins again.
// Threads: one for a sender; a stream never changes and belongs to any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tsmake {

constexpr std::size_t kTsPacketSize = 188;
using TsPacketBytes = std::array<std::uint8_t, kTsPacketSize>;

/// What a component of a service has (ISO/IEC 13818-1, table 2-34; EN 300 468, clause 6.2).
enum class ComponentKind { video, audio, subtitle, teletext };

struct InsertedStream {
    struct Packet {
        std::uint64_t ticks = 0;  ///< from the beginning, 27 MHz
        TsPacketBytes bytes = {};
    };
    /// A byte of a PTS or DTS (ISO/IEC 13818-1, clause 2.4.3.7), which has five. A time stamp may go over the end of a
    /// packet.
    struct TimeByte {
        std::size_t packet = 0;
        std::size_t offset = 0;
        unsigned int place = 0;   ///< 0 to 4
        std::uint64_t value = 0;  ///< of the time stamp, from the beginning, 90 kHz
    };

    ComponentKind kind = ComponentKind::video;
    std::uint8_t streamType = 0;
    std::string descriptors;          ///< of its PMT, without a stream_identifier_descriptor
    std::uint64_t length = 0;         ///< ticks; then it begins again
    std::vector<Packet> packets;      ///< whole PES packets; in order, at least one
    std::vector<TimeByte> timeBytes;  ///< in order of their packets
};

class InsertedSender {
public:
    /// The stream must outlive the sender.
    InsertedSender(const InsertedStream& newStream, std::uint16_t newPid) : stream(newStream), pid_(newPid) {}

    std::uint16_t pid() const { return pid_; }

    /// When the next packet is to be sent, in ticks of the broadcast's clock.
    std::uint64_t due() const { return round * stream.length + stream.packets[index].ticks; }
    /// The next packet, without a PCR, and with the continuity_counter of the other transport stream.
    TsPacketBytes next();

private:
    const InsertedStream& stream;
    const std::uint16_t pid_;
    std::uint64_t round = 0;  // how often it has begun again
    std::size_t index = 0;    // of the next packet
    std::size_t timeByte = 0;
};

}  // namespace tsmake
