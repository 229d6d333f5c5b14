// Writes sections.
#include "si/section_writer.h"

#include <stdexcept>

#include "si/section.h"

namespace si {

SectionWriter::SectionWriter(std::uint8_t tableId, std::uint16_t tableIdExtension, std::uint8_t version,
                             std::uint8_t sectionNumber, std::uint8_t lastSectionNumber) {
    constexpr unsigned int kLongForm = 0xB0;
    constexpr unsigned int kCurrent = 0xC1;
    u8(tableId).u8(kLongForm).u8(0).u16(tableIdExtension).u8(kCurrent | static_cast<unsigned int>(version) << 1U);
    u8(sectionNumber).u8(lastSectionNumber);
}

SectionWriter& SectionWriter::u8(unsigned int value) {
    bytes.push_back(static_cast<std::uint8_t>(value));
    return *this;
}

SectionWriter& SectionWriter::u16(unsigned int value) {
    return u8(value >> 8U & 0xFFU).u8(value & 0xFFU);
}

SectionWriter& SectionWriter::u32(std::uint32_t value) {
    return u16(value >> 16U).u16(value & 0xFFFFU);
}

SectionWriter& SectionWriter::text(const std::string& added) {
    bytes.insert(bytes.end(), added.begin(), added.end());
    return *this;
}

SectionWriter& SectionWriter::lengthText(const std::string& added) {
    return u8(static_cast<unsigned int>(added.size())).text(added);
}

SectionWriter& SectionWriter::open12(unsigned int high) {
    opened.push_back({bytes.size(), 2});
    return u16(high << 12U);
}

SectionWriter& SectionWriter::openDescriptor(std::uint8_t tag) {
    u8(tag);
    opened.push_back({bytes.size(), 1});
    return u8(0);
}

SectionWriter& SectionWriter::close() {
    const Open last = opened.back();
    opened.pop_back();
    const std::size_t length = bytes.size() - last.at - last.width;
    if (length > (last.width == 1 ? 0xFFU : 0xFFFU)) {
        throw std::length_error("a field of a section is too long");
    }
    if (last.width == 2) {
        bytes[last.at] = static_cast<std::uint8_t>((bytes[last.at] & 0xF0U) | length >> 8U);
    }
    bytes[last.at + last.width - 1] = static_cast<std::uint8_t>(length & 0xFFU);
    return *this;
}

Section SectionWriter::finish() {
    constexpr std::size_t kCrc = 4;
    const std::size_t length = bytes.size() + kCrc - kSectionHeaderSize;
    if (length + kSectionHeaderSize > kLongestSection) {
        throw std::length_error("a section is too long");
    }
    bytes[1] = static_cast<std::uint8_t>((bytes[1] & 0xF0U) | length >> 8U);
    bytes[2] = static_cast<std::uint8_t>(length & 0xFFU);
    u32(crc32(bytes));
    return bytes;
}

}  // namespace si
