// AITSection: one received AIT section and the header values that distinguish a new section from a repetition. A plain
// value.
// Threads: one at a time.
// Blocks:  never.
// Fails:   only for lack of memory, with std::bad_alloc and the like; bad bytes make an invalid record.
#pragma once

#include <cstdint>
#include <vector>

namespace velmora::dvbservice {

class AITSection {
public:
    AITSection();
    AITSection(const AITSection& other);
    explicit AITSection(std::vector<std::uint8_t>& bytes);
    AITSection(const std::uint8_t* bytes, int length);
    AITSection& operator=(const AITSection& other);
    ~AITSection();

    /// Reads version_number, section_number, last_section_number and CRC_32 (TS 102 809, clause 5.3.4.6) from at least
    /// 8 bytes; reads nothing from fewer. Changes neither `data` nor `valid`.
    void calculateParameters(const std::uint8_t* bytes, int length);
    /// Replaces the bytes and reads their header. With fewer than 8 bytes, version, number and CRC keep their old
    /// values.
    void replaceData(std::vector<std::uint8_t> bytes);
    void replaceData(const std::uint8_t* bytes, int length);
    /// Writes the header values to the log, with the bytes on request.
    void dump(bool withData) const;

    std::vector<std::uint8_t> data;  ///< table_id to CRC_32, as received
    std::int32_t version = 0;
    std::int32_t sectionNumber = 0;
    std::int32_t sectionCount = 0;  ///< last_section_number + 1
    std::uint32_t crc = 0;          ///< as received: a fingerprint, never computed
    bool valid = false;             ///< the values were read from the bytes

private:
    void parse();
};

}  // namespace velmora::dvbservice
