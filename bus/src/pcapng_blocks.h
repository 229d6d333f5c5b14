// What writer and reader of pcapng have in common: the numbers of its blocks and options.
#pragma once

#include <cstddef>
#include <cstdint>

namespace bus::pcapng {

constexpr std::uint32_t kSectionHeader = 0x0A0D0D0A;
constexpr std::uint32_t kInterfaceDescription = 1;
constexpr std::uint32_t kEnhancedPacket = 6;
constexpr std::uint32_t kByteOrderMark = 0x1A2B3C4D;
constexpr std::uint16_t kMajorVersion = 1;
constexpr std::uint16_t kInterfaceName = 2;        // option if_name
constexpr std::uint16_t kInterfaceResolution = 9;  // option if_tsresol
constexpr unsigned int kNanoseconds = 9;           // its value: the negative power of ten
constexpr std::uint64_t kNanosecondsOfASecond = 1000000000;

// Lengths in bytes.
constexpr std::size_t kAlignment = 4;
constexpr std::size_t kHead = 8;  // type and length
constexpr std::size_t kLeastBlock = 12;
constexpr std::size_t kLeastSectionHeader = 28;
constexpr std::size_t kLeastInterface = 20;
constexpr std::size_t kLeastPacket = 32;

constexpr std::size_t aligned(std::size_t length) {
    return (length + kAlignment - 1) / kAlignment * kAlignment;
}

}  // namespace bus::pcapng
