// Keeps the records and their index in step.
#include "filter_table.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

namespace velmora::dvbservice {

std::size_t FilterTable::HashOfName::operator()(const std::string& name) const {
    constexpr std::uint64_t kOddFactor = 0x9E3779B97F4A7C15;
    constexpr unsigned int kHalf = 32;
    constexpr std::size_t kWord = sizeof(std::uint64_t);
    const char* const from = name.data();
    std::uint64_t hash = name.size();
    std::uint64_t word = 0;
    const auto add = [&] { hash = ((hash << kHalf | hash >> kHalf) ^ word) * kOddFactor; };
    if (name.size() < kWord) {
        std::memcpy(&word, from, name.size());
        add();
        return static_cast<std::size_t>(hash >> kHalf);
    }
    const std::size_t last = name.size() - kWord;
    for (std::size_t at = 0; at < last; at += kWord) {
        std::memcpy(&word, from + at, kWord);
        add();
    }
    // The last eight, of which some come a second time: that takes less than a shorter step.
    std::memcpy(&word, from + last, kWord);
    add();
    return static_cast<std::size_t>(hash >> kHalf);
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
    if (record && record.get() == lent) {
        removedWhileLent = record;
        lent = nullptr;
    }
    records.erase(found);
    return true;
}

const FilterTable::Record* FilterTable::firstOfAll(const std::string& sessionName) const {
    const auto found = std::find_if(records.begin(), records.end(),
                                    [&sessionName](const Record& record) { return record->name() == sessionName; });
    return found == records.end() ? nullptr : &*found;
}

const FilterTable::Record* FilterTable::first(const std::string& sessionName) const {
    if (emptyRecords != 0) {
        return firstOfAll(sessionName);
    }
    const auto named = byName.find(sessionName);
    return named == byName.end() ? nullptr : &named->second.front();
}

FilterTable::Record FilterTable::find(const std::string& sessionName) const {
    const Record* const found = first(sessionName);
    return found == nullptr ? Record() : *found;
}

FilterParameter* FilterTable::lend(const std::string& sessionName) {
    if (removedWhileLent) {
        removedWhileLent.reset();
    }
    if (lent == nullptr || lent->name() != sessionName) {
        const Record* const found = first(sessionName);
        lent = found == nullptr ? nullptr : found->get();
    }
    return lent;
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
