// Broadcasts with sections that tsmake does not make.
#pragma once

#include <functional>
#include <string>

#include "broadcasts.h"
#include "si/section.h"

namespace browser_tests {

/// Changes the sections of a table that fit into a packet; they keep their length. `change` gets a section without its
/// CRC.
inline std::string withChangedSections(std::string packets, std::uint8_t tableId,
                                       const std::function<void(std::string&)>& change) {
    constexpr std::size_t kBefore = 5;  // the packet's header and the pointer_field
    constexpr std::size_t kLengthEnd = 3;
    constexpr std::size_t kCrc = 4;
    const auto byte = [&packets](std::size_t at) { return static_cast<std::uint8_t>(packets[at]); };
    for (std::size_t at = 0; at < packets.size(); at += kPacketSize) {
        const bool isStart = (byte(at + 1) & 0x40U) != 0 && (byte(at + 3) & 0x30U) == 0x10 && byte(at + 4) == 0;
        const std::size_t start = at + kBefore;
        const std::size_t size = kLengthEnd + ((byte(start + 1) & 0x0FU) << 8U | byte(start + 2));
        if (!isStart || byte(start) != tableId || kBefore + size > kPacketSize) {
            continue;
        }
        std::string section = packets.substr(start, size - kCrc);
        change(section);
        const std::uint32_t crc = si::crc32({reinterpret_cast<const std::uint8_t*>(section.data()), section.size()});
        for (unsigned int shift = 32; shift > 0; shift -= 8) {
            section += static_cast<char>(crc >> (shift - 8) & 0xFFU);
        }
        packets.replace(start, size, section);
    }
    return packets;
}

/// Replaces the first place of a text in a section, if it is there.
inline void replaceIn(std::string& section, const std::string& text, const std::string& by) {
    const std::size_t at = section.find(text);
    if (at != std::string::npos) {
        section.replace(at, text.size(), by);
    }
}

}  // namespace browser_tests
