// ChangedSections: tells which sections are new, so that the repetitions of a broadcast can be skipped.
// Header only; not part of the library's binary interface.
// Threads: one at a time.
// Fails:   never for wrong sections; they count as new.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>

namespace velmora::dtv::helpers {

class ChangedSections {
public:
    /// Whether the section differs from the last one with the same table_id, table_id_extension, section_number and
    /// current_next_indicator, and in SDT and EIT the same transport stream and network. Their CRC_32 is compared,
    /// which covers the version_number too. Always true for sections without these fields (section_syntax_indicator 0,
    /// such as TDT and TOT), and for bytes that are too short.
    bool isNew(const unsigned char* section, std::size_t length) {
        if (length < kShortest || (section[1] & kSyntaxIndicator) == 0) {
            return true;
        }
        if (checksums.size() >= kMost) {
            checksums.clear();
        }
        const std::uint32_t checksum = number(section + length - kChecksumBytes, kChecksumBytes);
        const auto [known, added] = checksums.emplace(keyOf(section, length), checksum);
        const bool changed = added || known->second != checksum;
        known->second = checksum;
        return changed;
    }

private:
    using Key = std::pair<std::uint64_t, std::uint32_t>;

    static constexpr std::size_t kHeaderBytes = 8;
    static constexpr std::size_t kChecksumBytes = 4;
    static constexpr std::size_t kShortest = kHeaderBytes + kChecksumBytes;
    static constexpr unsigned int kSyntaxIndicator = 0x80;
    static constexpr unsigned int kCurrentNext = 0x01;
    /// More than a full multiplex has. A broadcast with still more sections gets each of them delivered again.
    static constexpr std::size_t kMost = 100000;

    /// Up to four bytes, most significant first.
    static std::uint32_t number(const unsigned char* bytes, std::size_t count) {
        std::uint32_t value = 0;
        for (std::size_t index = 0; index < count; ++index) {
            value = value << 8U | bytes[index];
        }
        return value;
    }

    /// The bytes behind the header that, with table_id_extension, identify a sub-table (EN 300 468, clause 5.2): the
    /// SDT's original_network_id, the EIT's transport_stream_id and original_network_id.
    static std::size_t identifyingBytes(unsigned int tableId) {
        if (tableId == 0x42 || tableId == 0x46) {
            return 2;
        }
        return tableId >= 0x4E && tableId <= 0x6F ? 4 : 0;
    }

    static Key keyOf(const unsigned char* section, std::size_t length) {
        const std::size_t more = identifyingBytes(section[0]);
        const std::uint64_t fields = std::uint64_t{section[0]} << 32U | number(section + 3, 2) << 16U |
                                     (section[5] & kCurrentNext) << 8U | section[6];
        return {fields, length >= kShortest + more ? number(section + kHeaderBytes, more) : 0};
    }

    std::map<Key, std::uint32_t> checksums;
};

}  // namespace velmora::dtv::helpers
