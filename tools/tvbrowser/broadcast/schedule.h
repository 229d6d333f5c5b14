// Schedule: the events of EIT schedule, of all services of all transport streams that the broadcast describes.
// Threads: one.
// Blocks:  never.
// Fails:   bad sections are left out; so is what would exceed the limit.
#pragma once

#include <map>
#include <tuple>
#include <utility>
#include <vector>

#include "programme.h"

namespace tvbrowser {

class Schedule {
public:
    /// Events and sections together: about ten days of a hundred services.
    static constexpr std::size_t kMost = 50000;

    void clear() { *this = Schedule(); }
    void add(si::Bytes section);
    /// Whether a section has changed since the last call.
    bool takeNews() { return std::exchange(isChanged, false); }
    /// By start; those without a time first. An event that several sections have counts once, and `present` (tables of
    /// EIT present/following) before the schedule.
    json value(const std::optional<si::Triplet>& service, const std::vector<si::Eit>& present) const;

private:
    using ServiceKey = std::tuple<std::uint16_t, std::uint16_t, std::uint16_t>;
    /// One table_id of one service.
    using SubTable = std::map<std::uint8_t, si::Eit>;  // by section number

    void forgetOld(SubTable& table, const si::Eit& newest);

    std::map<std::pair<ServiceKey, std::uint8_t>, SubTable> tables;  // by service and table_id
    std::size_t held = 0;                                            // events and sections
    bool isChanged = false;
};

}  // namespace tvbrowser
