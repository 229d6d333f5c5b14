// Counts of records by name.
// Threads: one.
// Blocks:  while writing.
// Fails:   never; an output that cannot be written shows in its stream.
#pragma once

#include <map>
#include <nlohmann/json_fwd.hpp>

#include "sink.h"

namespace dtvmon {

class Statistics : public Sink {
public:
    explicit Statistics(bool newAsJson) : asJson(newAsJson) {}
    void add(const Seen& seen) override;
    /// Prints the counts.
    void end() override;

    /// A line for each name, the most frequent first, with a head.
    std::string text() const;
    /// An object for each name in the same order.
    std::vector<nlohmann::ordered_json> objects() const;

private:
    struct Count {
        std::uint64_t records = 0;
        std::uint64_t bytes = 0;
    };
    using Row = std::pair<std::string, Count>;

    std::vector<Row> rows() const;
    double rateOf(const Count& count) const;

    bool asJson;
    std::map<std::string, Count> counts;
    std::uint64_t first = 0;  // times of the first and the last record
    std::uint64_t last = 0;
};

}  // namespace dtvmon
