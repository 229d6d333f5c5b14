// Section headers and descriptor loops.
#include "si/section.h"

namespace si {

namespace {

constexpr std::uint8_t kTotTableId = 0x73;

unsigned int byteAt(Bytes section, std::size_t index) {
    return index < section.size ? section.data[index] : 0U;
}

}  // namespace

std::uint16_t tableIdExtension(Bytes section) {
    return static_cast<std::uint16_t>(byteAt(section, 3) << 8U | byteAt(section, 4));
}

std::uint8_t sectionVersion(Bytes section) {
    return static_cast<std::uint8_t>(byteAt(section, 5) >> 1U & 0x1FU);
}

std::uint8_t sectionNumber(Bytes section) {
    return static_cast<std::uint8_t>(byteAt(section, 6));
}

std::uint8_t lastSectionNumber(Bytes section) {
    return static_cast<std::uint8_t>(byteAt(section, 7));
}

bool crcIsRight(Bytes section) {
    const bool hasCrc = section.size >= 2 && ((section.data[1] & 0x80U) != 0 || section.data[0] == kTotTableId);
    return !hasCrc || crc32(section) == 0;
}

bool readDescriptors(Bytes loop, Descriptors& descriptors) {
    std::size_t at = 0;
    while (at < loop.size) {
        if (loop.size - at < 2 || loop.size - at - 2 < loop.data[at + 1]) {
            return false;
        }
        const std::uint8_t* const first = loop.data + at + 2;
        descriptors.push_back({loop.data[at], std::vector<std::uint8_t>(first, first + loop.data[at + 1])});
        at += std::size_t{2} + loop.data[at + 1];
    }
    return true;
}

}  // namespace si
