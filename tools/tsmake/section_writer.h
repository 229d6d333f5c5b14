// SectionWriter: builds long-form sections field by field; lengths are filled in where they were left open, and CRC_32
// at the end.
// Threads: one.
// Blocks:  never.
// Fails:   std::length_error for a section or a field that grew too long.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tsmake {

using Section = std::vector<std::uint8_t>;

class SectionWriter {
public:
    /// The header up to last_section_number; one section, number 0, unless said otherwise.
    SectionWriter(std::uint8_t tableId, std::uint16_t tableIdExtension, std::uint8_t version,
                  std::uint8_t sectionNumber = 0, std::uint8_t lastSectionNumber = 0);

    SectionWriter& u8(unsigned int value);
    SectionWriter& u16(unsigned int value);
    SectionWriter& u32(std::uint32_t value);
    SectionWriter& text(const std::string& bytes);
    /// The bytes behind their length in one byte.
    SectionWriter& lengthText(const std::string& bytes);

    /// Opens a length of 12 bits, with `high` in the four bits before it; close() fills it in. May be nested.
    SectionWriter& open12(unsigned int high = 0xF);
    /// Opens a descriptor, or any length of one byte.
    SectionWriter& openDescriptor(std::uint8_t tag);
    SectionWriter& close();

    Section finish();

private:
    struct Open {
        std::size_t at;
        std::size_t width;
    };
    Section bytes;
    std::vector<Open> opened;
};

}  // namespace tsmake
