// Checks a long-form section before its fields are read.
#pragma once

#include <string>
#include <vector>

#include "si/section.h"

namespace si {

/// The reason against a section whose size is not the announced one.
inline std::string lengthError(Bytes section, const char* table) {
    return std::string(table) + " section: section_length announces " + std::to_string(announcedSize(section.data)) +
           " bytes, there are " + std::to_string(section.size);
}

/// A copy of the section if it is complete, in the long form, and has a correct CRC_32; else empty, with the reason. A
/// copy, because the field library needs writable bytes.
inline std::vector<std::uint8_t> checkedSection(Bytes section, const char* table, std::string& error) {
    constexpr std::size_t kShortest = 12;  // eight bytes of header and CRC_32
    const auto fail = [&](const std::string& reason) {
        error = std::string(table) + " section: " + reason;
        return std::vector<std::uint8_t>();
    };
    if (section.size < kShortest) {
        return fail("only " + std::to_string(section.size) + " bytes");
    }
    if (announcedSize(section.data) != section.size) {
        error = lengthError(section, table);
        return {};
    }
    if ((section.data[1] & 0x80U) == 0) {
        return fail("section_syntax_indicator is 0");
    }
    if (!crcIsRight(section)) {
        return fail("wrong CRC_32");
    }
    return {section.data, section.data + section.size};
}

}  // namespace si
