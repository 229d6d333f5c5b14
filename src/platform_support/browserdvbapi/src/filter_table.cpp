// Keeps the records and their index in step.
#include "filter_table.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

namespace velmora::dvbservice {

namespace {

/// Eight characters a step: a section is looked up by a name of 45 characters.
std::uint64_t hashOf(const std::string& name) {
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
        return hash >> kHalf;
    }
    const std::size_t last = name.size() - kWord;
    for (std::size_t at = 0; at < last; at += kWord) {
        std::memcpy(&word, from + at, kWord);
        add();
    }
    // The last eight, of which some come a second time: that takes less than a shorter step.
    std::memcpy(&word, from + last, kWord);
    add();
    return hash >> kHalf;
}

}  // namespace

void FilterTable::add(Record record) {
    if (isIn(record)) {
        return;
    }
    if (record) {
        index[hashOf(record->name())].push_back({record->name(), record});
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
        const auto hashed = index.find(hashOf(record->name()));
        auto& same = hashed->second;
        same.erase(
            std::find_if(same.begin(), same.end(), [&record](const Entry& entry) { return entry.record == record; }));
        if (same.empty()) {
            index.erase(hashed);
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

void FilterTable::walkPastEmptyRecords(const std::string& sessionName) const {
    [[maybe_unused]] const auto found = std::find_if(
        records.begin(), records.end(), [&](const Record& record) { return record->name() == sessionName; });
}

const FilterTable::Entry* FilterTable::first(const std::string& sessionName) const {
    if (emptyRecords != 0) {
        walkPastEmptyRecords(sessionName);
    }
    const auto hashed = index.find(hashOf(sessionName));
    if (hashed == index.end()) {
        return nullptr;
    }
    const auto& same = hashed->second;
    const auto named =
        std::find_if(same.begin(), same.end(), [&](const Entry& entry) { return entry.name == sessionName; });
    return named == same.end() ? nullptr : &*named;
}

FilterTable::Record FilterTable::find(const std::string& sessionName) const {
    const Entry* const found = first(sessionName);
    return found == nullptr ? Record() : found->record;
}

FilterTable::Entry* FilterTable::lend(const std::string& sessionName) {
    if (removedWhileLent) {
        removedWhileLent.reset();
    }
    auto* const found = const_cast<Entry*>(first(sessionName));
    lent = found == nullptr ? nullptr : found->record.get();
    return found;
}

bool FilterTable::hasRecordOf(const dtv::SectionFilterClient* client) const {
    return std::any_of(records.begin(), records.end(),
                       [client](const Record& record) { return record->client() == client; });
}

bool FilterTable::isIn(const Record& record) const {
    if (!record) {
        return emptyRecords != 0;
    }
    const auto hashed = index.find(hashOf(record->name()));
    return hashed != index.end() && std::any_of(hashed->second.begin(), hashed->second.end(),
                                                [&record](const Entry& entry) { return entry.record == record; });
}

}  // namespace velmora::dvbservice
