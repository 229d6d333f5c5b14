// SectionWriter: builds long-form sections field by field. close() fills in the length that was opened last, finish()
// the section_length and the CRC_32.
// Threads: one.
// Blocks:  never.
// Fails:   std::length_error when a section or a field is too long.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace si {

using Section = std::vector<std::uint8_t>;

class SectionWriter {
public:
    /// Writes the header up to last_section_number. By default the table has one section, number 0.
    SectionWriter(std::uint8_t tableId, std::uint16_t tableIdExtension, std::uint8_t version,
                  std::uint8_t sectionNumber = 0, std::uint8_t lastSectionNumber = 0);

    SectionWriter& u8(unsigned int value);
    SectionWriter& u16(unsigned int value);
    SectionWriter& u32(std::uint32_t value);
    SectionWriter& text(const std::string& bytes);
    /// Writes a length byte, then the bytes.
    SectionWriter& lengthText(const std::string& bytes);

    /// Opens a length of 12 bits, with `high` in the four bits before it. close() fills it in. Lengths may be nested.
    SectionWriter& open12(unsigned int high = 0xF);
    /// Opens a descriptor, or any other byte that a length byte follows.
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

}  // namespace si
