// CRC_32 of sections, sixteen bytes a step.
#include <array>

#include "si/section.h"

namespace si {

namespace {

constexpr std::uint32_t kPolynomial = 0x04C11DB7;
constexpr std::size_t kStep = 16;

using Table = std::array<std::uint32_t, 256>;

/// Table n has the remainders of a byte that n more bytes follow.
constexpr std::array<Table, kStep> makeTables() {
    std::array<Table, kStep> tables{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t remainder = byte << 24U;
        for (int bit = 0; bit < 8; ++bit) {
            remainder = (remainder & 0x80000000U) != 0 ? (remainder << 1U) ^ kPolynomial : remainder << 1U;
        }
        tables[0][byte] = remainder;
    }
    for (std::size_t number = 1; number < kStep; ++number) {
        for (std::size_t byte = 0; byte < 256; ++byte) {
            const std::uint32_t before = tables[number - 1][byte];
            tables[number][byte] = before << 8U ^ tables[0][before >> 24U];
        }
    }
    return tables;
}

constexpr std::array<Table, kStep> kTables = makeTables();

std::uint32_t wordAt(const std::uint8_t* at) {
    return static_cast<std::uint32_t>(at[0]) << 24U | static_cast<std::uint32_t>(at[1]) << 16U |
           static_cast<std::uint32_t>(at[2]) << 8U | at[3];
}

/// The part of a word that `behind` more bytes follow.
std::uint32_t remainderOf(std::uint32_t word, std::size_t behind) {
    return kTables[behind + 3][word >> 24U] ^ kTables[behind + 2][word >> 16U & 0xFFU] ^
           kTables[behind + 1][word >> 8U & 0xFFU] ^ kTables[behind][word & 0xFFU];
}

}  // namespace

std::uint32_t crc32(Bytes bytes) {
    std::uint32_t crc = 0xFFFFFFFF;
    const std::uint8_t* at = bytes.data;
    std::size_t left = bytes.size;
    for (; left >= kStep; left -= kStep, at += kStep) {
        crc = remainderOf(crc ^ wordAt(at), 12) ^ remainderOf(wordAt(at + 4), 8) ^ remainderOf(wordAt(at + 8), 4) ^
              remainderOf(wordAt(at + 12), 0);
    }
    for (; left > 0; --left, ++at) {
        crc = crc << 8U ^ kTables[0][crc >> 24U ^ *at];
    }
    return crc;
}

}  // namespace si
