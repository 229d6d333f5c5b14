// Counts.
#include "statistics.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "bus/origin.h"

namespace dtvmon {

using Json = nlohmann::ordered_json;

void Statistics::add(const Seen& seen) {
    const bus::Record& record = seen.record;
    Count& count = counts[seen.record.kind == bus::Kind::refused ? "refused " + seen.name : seen.name];
    count.records += record.kind == bus::Kind::lost ? record.count : 1;
    count.bytes += record.bytes.size();
    first = first == 0 ? record.time : std::min(first, record.time);
    last = std::max(last, record.time);
}

std::vector<Statistics::Row> Statistics::rows() const {
    std::vector<Row> sorted(counts.begin(), counts.end());
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const Row& one, const Row& other) { return one.second.records > other.second.records; });
    return sorted;
}

/// In less than a second a rate says nothing, so the second is taken.
double Statistics::secondsOf(Span span) const {
    constexpr double kNanosecondsOfASecond = 1e9;
    return span == Span::lastSecond ? 1.0 : std::max(1.0, static_cast<double>(last - first) / kNanosecondsOfASecond);
}

/// Records a second.
double Statistics::rateOf(const Count& count, Span span) const {
    constexpr double kTenths = 10;
    const std::uint64_t records = count.records - (span == Span::lastSecond ? count.recordsBefore : 0);
    return std::round(static_cast<double>(records) / secondsOf(span) * kTenths) / kTenths;
}

std::string Statistics::text(Span span) const {
    constexpr std::size_t kLongest = 160;
    std::array<char, kLongest> line{};
    std::snprintf(line.data(), line.size(), "%-40s %10s %12s %10s\n", "name", "records", "bytes", "a second");
    std::string all = line.data();
    for (const auto& [name, count] : rows()) {
        std::snprintf(line.data(), line.size(), "%-40s %10" PRIu64 " %12" PRIu64 " %10.1f\n", name.c_str(),
                      count.records, count.bytes, rateOf(count, span));
        all += line.data();
    }
    return all;
}

Json Statistics::object(Span span) const {
    constexpr double kThousandths = 1000;
    constexpr double kNanosecondsOfASecond = 1e9;
    Json all = {{"time", static_cast<double>(bus::timeNow()) / kNanosecondsOfASecond},
                {"seconds", std::round(secondsOf(span) * kThousandths) / kThousandths},
                {"statistics", Json::array()}};
    for (const auto& [name, count] : rows()) {
        all["statistics"].push_back(
            {{"name", name}, {"records", count.records}, {"byte_count", count.bytes}, {"rate", rateOf(count, span)}});
    }
    return all;
}

void Statistics::print(Span span) const {
    std::fputs((asJson ? object(span).dump() + "\n" : text(span)).c_str(), stdout);
    std::fflush(stdout);
}

void Statistics::second() {
    print(Span::lastSecond);
    std::fputs(asJson ? "" : "\n", stdout);
    for (auto& named : counts) {
        named.second.recordsBefore = named.second.records;
    }
}

void Statistics::end() {
    print(Span::all);
}

}  // namespace dtvmon
