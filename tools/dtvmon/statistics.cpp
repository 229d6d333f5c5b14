// Counts.
#include "statistics.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

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

/// Records a second. In less than a second a rate says nothing, so the second is taken.
double Statistics::rateOf(const Count& count) const {
    constexpr double kNanosecondsOfASecond = 1e9;
    constexpr double kTenths = 10;
    const double seconds = std::max(1.0, static_cast<double>(last - first) / kNanosecondsOfASecond);
    return std::round(static_cast<double>(count.records) / seconds * kTenths) / kTenths;
}

std::string Statistics::text() const {
    constexpr std::size_t kLongest = 160;
    std::array<char, kLongest> line{};
    std::snprintf(line.data(), line.size(), "%-40s %10s %12s %10s\n", "name", "records", "bytes", "a second");
    std::string all = line.data();
    for (const auto& [name, count] : rows()) {
        std::snprintf(line.data(), line.size(), "%-40s %10" PRIu64 " %12" PRIu64 " %10.1f\n", name.c_str(),
                      count.records, count.bytes, rateOf(count));
        all += line.data();
    }
    return all;
}

std::vector<Json> Statistics::objects() const {
    std::vector<Json> all;
    for (const auto& [name, count] : rows()) {
        all.push_back({{"name", name}, {"records", count.records}, {"bytes", count.bytes}, {"rate", rateOf(count)}});
    }
    return all;
}

void Statistics::end() {
    if (!asJson) {
        std::fputs(text().c_str(), stdout);
        return;
    }
    for (const Json& object : objects()) {
        std::printf("%s\n", object.dump().c_str());
    }
}

}  // namespace dtvmon
