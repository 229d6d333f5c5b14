// The fields that sections of all tables share (ISO/IEC 13818-1, clause 2.4.4; EN 300 468, clause 5.1).
// Threads: any.
// Blocks:  never.
// Fails:   as each function says; never reads beyond the given bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace si {

/// A range of bytes. Does not own them.
struct Bytes {
    const std::uint8_t* data = nullptr;
    std::size_t size = 0;

    Bytes() = default;
    Bytes(const std::uint8_t* first, std::size_t count) : data(first), size(count) {}
    Bytes(const std::vector<std::uint8_t>& bytes) : data(bytes.data()), size(bytes.size()) {}
    Bytes(const std::string& bytes) : data(reinterpret_cast<const std::uint8_t*>(bytes.data())), size(bytes.size()) {}
};

constexpr std::size_t kSectionHeaderSize = 3;
constexpr std::size_t kLongestSection = 4096;

/// section_length + 3: the size of the whole section. Needs the section's first three bytes.
inline std::size_t announcedSize(const std::uint8_t* section) {
    return kSectionHeaderSize + ((static_cast<std::size_t>(section[1] & 0x0FU) << 8U) | section[2]);
}

/// Fields of the long form; 0 if the section is too short.
std::uint16_t tableIdExtension(Bytes section);
std::uint8_t sectionVersion(Bytes section);
std::uint8_t sectionNumber(Bytes section);
std::uint8_t lastSectionNumber(Bytes section);

/// Whether CRC_32 is correct. Sections with section_syntax_indicator and the TOT have one; true for all others.
bool crcIsRight(Bytes section);

/// Computes CRC_32 over bytes.
std::uint32_t crc32(Bytes bytes);
/// The same, as processors without carry-less multiplication do it.
std::uint32_t crc32ByTables(Bytes bytes);

struct Descriptor {
    std::uint8_t tag = 0;
    std::vector<std::uint8_t> bytes;  ///< the content, without tag and length
};
using Descriptors = std::vector<Descriptor>;

/// Reads a descriptor loop. False if the last descriptor does not fit; keeps those before it.
bool readDescriptors(Bytes loop, Descriptors& descriptors);

}  // namespace si
