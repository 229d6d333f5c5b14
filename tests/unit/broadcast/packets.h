// Builders of packets and sections for tests.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <vector>

#include "section_writer.h"
#include "si/section.h"
#include "ts_packet.h"

using Bytes = std::vector<std::uint8_t>;
using Packet = std::array<std::uint8_t, broadcast::kPacketSize>;

/// A private section of `size` bytes, filled with a pattern and with a correct CRC_32.
inline Bytes sectionOf(std::size_t size, std::uint8_t seed = 1, std::uint8_t tableId = 0x80) {
    constexpr std::size_t kFrame = 12;
    tsmake::SectionWriter writer(tableId, seed, 0);
    for (std::size_t count = 0; count + kFrame < size; ++count) {
        writer.u8((seed + count) & 0x7FU);
    }
    return writer.finish();
}

/// Gives changed bytes a correct CRC_32.
inline Bytes withCrc(Bytes section) {
    section.resize(section.size() - 4);
    const std::uint32_t crc = si::crc32(section);
    for (int shift = 24; shift >= 0; shift -= 8) {
        section.push_back(static_cast<std::uint8_t>(crc >> shift));
    }
    return section;
}

/// Makes packets of one PID and counts their continuity counter.
class PacketMaker {
public:
    explicit PacketMaker(std::uint16_t newPid = 100) : pid(newPid) {}

    /// A packet with these bytes at the start of its payload, filled with stuffing bytes.
    Packet packet(const Bytes& payload, bool unitStart) {
        Packet bytes;
        bytes.fill(0xFF);
        bytes[0] = 0x47;
        bytes[1] = static_cast<std::uint8_t>((unitStart ? 0x40 : 0x00) | pid >> 8);
        bytes[2] = static_cast<std::uint8_t>(pid & 0xFF);
        bytes[3] = static_cast<std::uint8_t>(0x10 | (counter++ & 0x0F));
        std::copy_n(payload.begin(), std::min(payload.size(), kRoom), bytes.begin() + 4);
        return bytes;
    }

    /// Packets with consecutive sections and no stuffing between them.
    std::vector<Packet> packets(const std::vector<Bytes>& sections) {
        std::vector<Packet> result;
        Bytes stream;
        std::vector<std::size_t> starts;
        for (const Bytes& section : sections) {
            starts.push_back(stream.size());
            stream.insert(stream.end(), section.begin(), section.end());
        }
        std::size_t at = 0;
        while (at < stream.size()) {
            std::size_t pointer = kRoom;
            for (const std::size_t start : starts) {
                if (start >= at && start < at + kRoom - 1) {
                    pointer = start - at;
                    break;
                }
            }
            const bool unitStart = pointer != kRoom;
            const std::size_t count = std::min(stream.size() - at, unitStart ? kRoom - 1 : kRoom);
            Bytes payload;
            if (unitStart) {
                payload.push_back(static_cast<std::uint8_t>(pointer));
            }
            std::copy_n(stream.begin() + static_cast<std::ptrdiff_t>(at), count, std::back_inserter(payload));
            result.push_back(packet(payload, unitStart));
            at += count;
        }
        return result;
    }

    void skipOne() { ++counter; }

private:
    static constexpr std::size_t kRoom = broadcast::kPacketSize - 4;
    std::uint16_t pid;
    unsigned int counter = 0;
};
