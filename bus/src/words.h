// Words of several bytes in texts of bytes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace bus {

constexpr unsigned int kBitsOfAByte = 8;

enum class ByteOrder { network, little };

inline void addWord(std::string& bytes, std::uint64_t word, unsigned int width, ByteOrder order) {
    for (unsigned int index = 0; index < width; ++index) {
        const unsigned int place = order == ByteOrder::little ? index : width - 1 - index;
        bytes += static_cast<char>(word >> (place * kBitsOfAByte) & 0xFFU);
    }
}

/// The bytes must be there.
inline std::uint64_t wordAt(std::string_view bytes, std::size_t at, unsigned int width, ByteOrder order) {
    std::uint64_t word = 0;
    for (unsigned int index = 0; index < width; ++index) {
        const unsigned int place = order == ByteOrder::little ? width - 1 - index : index;
        word = word << kBitsOfAByte | static_cast<unsigned char>(bytes[at + place]);
    }
    return word;
}

}  // namespace bus
