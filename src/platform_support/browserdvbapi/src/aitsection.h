// AITSection: one received AIT section with the header values that tell a new one from a repetition. A plain value.
// Threads: one at a time.
// Blocks:  never.
// Fails:   std::bad_alloc and the like only; bad bytes make an invalid record.
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

    /// Reads version_number, section_number, last_section_number and CRC_32 (TS 102 809, clause 5.3.4.6) from bytes of
    /// at least 8; from fewer it reads nothing. Neither the bytes nor `valid` are touched.
    void calculateParameters(const std::uint8_t* bytes, int length);
    /// Replaces the bytes and reads them. From fewer than 8 bytes version, number and CRC stay those of the old
    /// content.
    void replaceData(std::vector<std::uint8_t> bytes);
    void replaceData(const std::uint8_t* bytes, int length);
    /// Writes the header values to the log, on request with the bytes.
    void dump(bool withData) const;

    std::vector<std::uint8_t> data;  ///< table_id to CRC_32, as received
    std::int32_t version = 0;
    std::int32_t sectionNumber = 0;
    std::int32_t sectionCount = 0;  ///< last_section_number + 1
    std::uint32_t crc = 0;          ///< as it stands in the section: a fingerprint, never computed
    bool valid = false;             ///< the values were read from the bytes

private:
    void parse();
};

}  // namespace velmora::dvbservice
