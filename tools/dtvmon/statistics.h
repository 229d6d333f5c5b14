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
    /// Prints the counts so far with the rates of the last second.
    void second() override;
    /// Prints the counts with the rates of all the time.
    void end() override;

    /// What the rates are of.
    enum class Span { lastSecond, all };

    /// A line for each name, the most frequent first, with a head.
    std::string text(Span span) const;
    /// The same as an object.
    nlohmann::ordered_json object(Span span) const;

private:
    struct Count {
        std::uint64_t records = 0;
        std::uint64_t bytes = 0;
        std::uint64_t recordsBefore = 0;  // the last second
    };
    using Row = std::pair<std::string, Count>;

    std::vector<Row> rows() const;
    double secondsOf(Span span) const;
    double rateOf(const Count& count, Span span) const;
    void print(Span span) const;

    bool asJson;
    std::map<std::string, Count> counts;
    std::uint64_t first = 0;  // times of the first and the last record
    std::uint64_t last = 0;
};

}  // namespace dtvmon
