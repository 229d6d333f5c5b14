// EitSections: the latest sections of EIT present/following and schedule, of all services that any input describes.
// Threads: one; the sections belong to any.
// Blocks:  never.
// Fails:   add() refuses a section beyond the limits.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <tuple>
#include <vector>

#include "si/section.h"

namespace dtvservice {

class EitSections {
public:
    /// Together: about ten days of a hundred services.
    static constexpr std::size_t kMostBytes = std::size_t{8} << 20U;
    static constexpr std::size_t kMostEvents = 50000;

    /// A section, and the number of the input that it is from.
    struct Kept {
        std::size_t input = 0;
        std::shared_ptr<const std::vector<std::uint8_t>> section;
    };

    /// A section of the EIT's PID; one of another table is ignored, and so is a repetition. False if there is no room.
    bool add(std::size_t input, si::Bytes section);
    /// Those of present/following first.
    std::vector<Kept> all() const;

private:
    /// table_id, input, original_network_id, transport_stream_id, service_id.
    using Key = std::tuple<std::uint8_t, std::size_t, std::uint16_t, std::uint16_t, std::uint16_t>;
    struct Entry {
        std::shared_ptr<const std::vector<std::uint8_t>> section;
        std::size_t events = 0;
    };
    using SubTable = std::map<std::uint8_t, Entry>;  // by section_number

    void forgetOld(Key key, si::Bytes newest);
    void forget(SubTable& table, SubTable::iterator entry);

    std::map<Key, SubTable> tables;
    std::size_t bytes = 0;
    std::size_t events = 0;
};

}  // namespace dtvservice
