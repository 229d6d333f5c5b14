// Keeps the records and their index in step.
#include "filter_table.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

namespace velmora::dvbservice {

std::size_t FilterTable::HashOfName::operator()(const std::string& name) const {
    constexpr std::uint64_t kOddFactor = 0x9E3779B97F4A7C15;
    std::uint64_t hash = name.size();
    const auto add = [&hash](const char* from, std::size_t length) {
        std::uint64_t word = 0;
        std::memcpy(&word, from, length);
        hash = (hash ^ word) * kOddFactor;
        hash ^= hash >> 32U;
    };
    std::size_t at = 0;
    for (; at + sizeof(std::uint64_t) <= name.size(); at += sizeof(std::uint64_t)) {
        add(name.data() + at, sizeof(std::uint64_t));
    }
    add(name.data() + at, name.size() - at);
    return static_cast<std::size_t>(hash);
}

void FilterTable::add(Record record) {
    if (isIn(record)) {
        return;
    }
    if (record) {
        byName[record->name()].push_back(record);
    } else {
        ++emptyRecords;
    }
    records.push_back(std::move(record));
}

bool FilterTable::remove(const Record& record) {
    const auto found = std::find(records.begin(), records.end(), record);
    if (found == records.end()) {
        return false;
    }
    if (record) {
        const auto named = byName.find(record->name());
        std::vector<Record>& same = named->second;
        same.erase(std::find(same.begin(), same.end(), record));
        if (same.empty()) {
            byName.erase(named);
        }
    } else {
        --emptyRecords;
    }
    records.erase(found);
    return true;
}

FilterTable::Record FilterTable::find(const std::string& sessionName) const {
    if (emptyRecords != 0) {
        const auto found = std::find_if(records.begin(), records.end(),
                                        [&sessionName](const Record& record) { return record->name() == sessionName; });
        return found == records.end() ? Record() : *found;
    }
    const auto named = byName.find(sessionName);
    return named == byName.end() ? Record() : named->second.front();
}

bool FilterTable::hasRecordOf(const dtv::SectionFilterClient* client) const {
    return std::any_of(records.begin(), records.end(),
                       [client](const Record& record) { return record->client() == client; });
}

bool FilterTable::isIn(const Record& record) const {
    if (!record) {
        return emptyRecords != 0;
    }
    const auto named = byName.find(record->name());
    return named != byName.end() &&
           std::find(named->second.begin(), named->second.end(), record) != named->second.end();
}

}  // namespace velmora::dvbservice
