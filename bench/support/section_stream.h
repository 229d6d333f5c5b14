// A transport stream of sections and nothing else.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <vector>

#include "si/section.h"
#include "ts_packet.h"

namespace bench {

using Packet = std::array<std::uint8_t, broadcast::kPacketSize>;
constexpr std::uint16_t kSectionPid = 18;
constexpr std::size_t kSections = 1000;

/// An EIT section of random events.
inline std::vector<std::uint8_t> randomSection(std::size_t size, std::mt19937& random) {
    std::vector<std::uint8_t> bytes(size);
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(random());
    }
    const std::size_t length = size - 3;
    bytes[0] = 0x50;
    bytes[1] = static_cast<std::uint8_t>(0xF0U | length >> 8U);
    bytes[2] = static_cast<std::uint8_t>(length);
    bytes[5] = 0xC1;
    const std::uint32_t crc = si::crc32({bytes.data(), size - 4});
    for (std::size_t index = 0; index < 4; ++index) {
        bytes[size - 4 + index] = static_cast<std::uint8_t>(crc >> (24U - 8U * index));
    }
    return bytes;
}

/// Sections behind each other, as multiplexers send them, and the payload_unit_start where one begins.
inline std::vector<Packet> packetsOfSections() {
    std::mt19937 random(1);
    std::vector<std::uint8_t> all;
    std::vector<std::size_t> begins;
    for (std::size_t count = 0; count < kSections; ++count) {
        constexpr std::size_t kShortest = 100;
        constexpr std::size_t kLongest = 4093;  // libbitstream takes no longer ones
        begins.push_back(all.size());
        const std::vector<std::uint8_t> one = randomSection(kShortest + random() % (kLongest - kShortest), random);
        all.insert(all.end(), one.begin(), one.end());
    }
    std::vector<Packet> stream;
    auto begin = begins.begin();
    for (std::size_t at = 0; at < all.size();) {
        Packet packet;
        packet.fill(0xFF);
        std::size_t room = packet.size() - 4;
        const bool starts = begin != begins.end() && *begin < at + room - 1;
        packet[0] = 0x47;
        packet[1] = static_cast<std::uint8_t>((starts ? 0x40U : 0U) | kSectionPid >> 8U);
        packet[2] = static_cast<std::uint8_t>(kSectionPid);
        packet[3] = static_cast<std::uint8_t>(0x10U | (stream.size() & 0xFU));
        if (starts) {
            packet[4] = static_cast<std::uint8_t>(*begin - at);
            --room;
        } else if (begin != begins.end() && *begin == at + room - 1) {
            // The section would begin in the last byte, where no pointer_field can say so: an empty adaptation field.
            packet[3] |= 0x20U;
            packet[4] = 0;
            --room;
        }
        const std::size_t count = std::min(room, all.size() - at);
        std::copy_n(all.begin() + static_cast<std::ptrdiff_t>(at), count,
                    packet.end() - static_cast<std::ptrdiff_t>(room));
        at += count;
        while (begin != begins.end() && *begin < at) {
            ++begin;
        }
        stream.push_back(packet);
    }
    return stream;
}

inline const std::vector<Packet>& sectionStream() {
    static const std::vector<Packet> theOne = packetsOfSections();
    return theOne;
}

}  // namespace bench
