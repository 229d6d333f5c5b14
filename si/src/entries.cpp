// Checks the lengths of tables.
#include "entries.h"

#include <bitstream/dvb/si.h>
#include <bitstream/mpeg/psi.h>

namespace si {

namespace {

/// Whether there is a length field at `at` and its loop ends before the CRC_32.
bool loopFits(const std::vector<std::uint8_t>& section, std::size_t at) {
    const std::size_t behind = at + DESCS_HEADER_SIZE + kCrcSize;
    return section.size() >= behind && section.size() - behind >= loopLength(&section[at]);
}

bool isSingle(const std::vector<std::uint8_t>& section) {
    return psi_get_section(section.data()) == 0 && psi_get_lastsection(section.data()) == 0;
}

bool isEit(std::uint8_t tableId) {
    return tableId >= EIT_TABLE_ID_PF_ACTUAL && tableId <= EIT_TABLE_ID_SCHED_OTHER_LAST;
}

}  // namespace

bool pmtFits(const std::vector<std::uint8_t>& section) {
    constexpr std::size_t kLoopAt = PMT_HEADER_SIZE - DESCS_HEADER_SIZE;
    return loopFits(section, kLoopAt) && section[0] == PMT_TABLE_ID && isSingle(section);
}

bool nitFits(const std::vector<std::uint8_t>& section) {
    constexpr std::size_t kLoopAt = NIT_HEADER_SIZE - DESCS_HEADER_SIZE;
    if (!loopFits(section, kLoopAt)) {
        return false;
    }
    const std::size_t streamsAt = NIT_HEADER_SIZE + loopLength(&section[kLoopAt]);
    return loopFits(section, streamsAt) && (section[0] == NIT_TABLE_ID_ACTUAL || section[0] == NIT_TABLE_ID_OTHER) &&
           streamsAt + NIT_HEADER2_SIZE + loopLength(&section[streamsAt]) + kCrcSize == section.size();
}

bool sdtFits(const std::vector<std::uint8_t>& section) {
    return section.size() >= SDT_HEADER_SIZE + kCrcSize &&
           (section[0] == SDT_TABLE_ID_ACTUAL || section[0] == SDT_TABLE_ID_OTHER);
}

bool eitFits(const std::vector<std::uint8_t>& section) {
    return section.size() >= EIT_HEADER_SIZE + kCrcSize && isEit(section[0]);
}

}  // namespace si
