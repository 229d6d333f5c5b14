// CRC_32 of sections: by carry-less multiplication where the processor has it, else by tables, sixteen bytes a step.
#include <algorithm>
#include <array>
#include <iterator>

#include "si/section.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace si {

namespace {

constexpr std::uint32_t kPolynomial = 0x04C11DB7;
constexpr std::uint32_t kInitial = 0xFFFFFFFF;
constexpr std::size_t kStep = 16;

constexpr std::uint32_t timesX(std::uint32_t remainder) {
    return (remainder & 0x80000000U) != 0 ? (remainder << 1U) ^ kPolynomial : remainder << 1U;
}

using Table = std::array<std::uint32_t, 256>;

/// Table n has the remainders of a byte that n more bytes follow.
constexpr std::array<Table, kStep> makeTables() {
    std::array<Table, kStep> tables{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t remainder = byte << 24U;
        for (int bit = 0; bit < 8; ++bit) {
            remainder = timesX(remainder);
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

std::uint32_t byTables(std::uint32_t crc, Bytes bytes) {
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

#if defined(__x86_64__)

#define BY_MULTIPLICATION __attribute__((target("pclmul,ssse3")))

/// x to this power, as a remainder.
constexpr long long power(unsigned int exponent) {
    std::uint32_t remainder = 1;
    for (; exponent > 0; --exponent) {
        remainder = timesX(remainder);
    }
    return remainder;
}

/// The bytes as one number of 128 bits, the first byte on top.
BY_MULTIPLICATION __m128i numberAt(const std::uint8_t* at) {
    const __m128i order = _mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
    return _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(at)), order);
}

/// A number with the same remainder as `number` with `behind` after it. `powers` are those of the distance: for the
/// upper half and for the lower.
BY_MULTIPLICATION __m128i fold(__m128i number, __m128i powers, __m128i behind) {
    const __m128i upper = _mm_clmulepi64_si128(number, powers, 0x11);
    const __m128i lower = _mm_clmulepi64_si128(number, powers, 0x00);
    return _mm_xor_si128(_mm_xor_si128(upper, lower), behind);
}

/// Needs 64 bytes. Folds four numbers side by side, because a multiplication takes longer than the next one waits.
BY_MULTIPLICATION std::uint32_t byMultiplication(std::uint32_t crc, Bytes bytes) {
    constexpr std::size_t kLanes = 4;
    constexpr long long kFar[] = {power(4 * 128 + 64), power(4 * 128)};
    constexpr long long kNear[] = {power(128 + 64), power(128)};
    const __m128i farPowers = _mm_set_epi64x(kFar[0], kFar[1]);
    const __m128i nearPowers = _mm_set_epi64x(kNear[0], kNear[1]);
    const std::uint8_t* at = bytes.data;
    std::size_t left = bytes.size;
    __m128i lanes[kLanes];
    for (__m128i& lane : lanes) {
        lane = numberAt(at);
        at += kStep;
        left -= kStep;
    }
    lanes[0] = _mm_xor_si128(lanes[0], _mm_set_epi32(static_cast<int>(crc), 0, 0, 0));
    for (; left >= kLanes * kStep; left -= kLanes * kStep) {
        for (__m128i& lane : lanes) {
            lane = fold(lane, farPowers, numberAt(at));
            at += kStep;
        }
    }
    __m128i number = lanes[0];
    for (std::size_t lane = 1; lane < kLanes; ++lane) {
        number = fold(number, nearPowers, lanes[lane]);
    }
    for (; left >= kStep; left -= kStep, at += kStep) {
        number = fold(number, nearPowers, numberAt(at));
    }
    alignas(__m128i) std::uint8_t folded[kStep];
    _mm_store_si128(reinterpret_cast<__m128i*>(folded), number);
    std::reverse(std::begin(folded), std::end(folded));
    return byTables(byTables(0, {folded, kStep}), {at, left});
}

bool canMultiply() {
    static const bool can = __builtin_cpu_supports("pclmul") != 0 && __builtin_cpu_supports("ssse3") != 0;
    return can;
}

#endif

}  // namespace

std::uint32_t crc32ByTables(Bytes bytes) {
    return byTables(kInitial, bytes);
}

std::uint32_t crc32(Bytes bytes) {
#if defined(__x86_64__)
    constexpr std::size_t kWorthIt = 64;
    if (bytes.size >= kWorthIt && canMultiply()) {
        return byMultiplication(kInitial, bytes);
    }
#endif
    return crc32ByTables(bytes);
}

}  // namespace si
