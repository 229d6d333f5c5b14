// FilterTable: the filter records in the order of their saving, and an index by session name beside them, so that the
// cost of a section does not grow with the number of filters.
// Threads: one at a time.
// Blocks:  never.
// Fails:   only for lack of memory.
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>
#include <unordered_map>
#include <vector>

#include "filter_parameter.h"

namespace velmora::dvbservice {

class FilterTable {
public:
    using Record = boost::shared_ptr<FilterParameter>;

    /// Appends the record unless it is in the table.
    void add(Record record);
    /// False if the record is not in the table.
    bool remove(const Record& record);
    /// The first saved record with that name, or an empty pointer.
    Record find(const std::string& sessionName) const;
    /// As find(), without the two atomic steps of a copy. The record exists until the next call of lend(), even if it
    /// is removed meanwhile. Null if there is none.
    FilterParameter* lend(const std::string& sessionName);
    bool hasRecordOf(const dtv::SectionFilterClient* client) const;
    const std::vector<Record>& all() const { return records; }

private:
    /// Eight characters a step: a section is looked up by a name of 45 characters.
    struct HashOfName {
        std::size_t operator()(const std::string& name) const;
    };

    bool isIn(const Record& record) const;
    const Record* first(const std::string& sessionName) const;
    const Record* firstOfAll(const std::string& sessionName) const;

    std::vector<Record> records;
    // Those of a name in the order of their saving.
    std::unordered_map<std::string, std::vector<Record>, HashOfName> byName;
    // An empty record is a programming error, which ends the process when a search meets it. While there is one, each
    // search is a walk.
    std::size_t emptyRecords = 0;
    // Sections of a filter mostly come in a row, so the next look is often for the same. A record that is lent and in
    // the table stays the first of its name, because others are appended.
    FilterParameter* lent = nullptr;
    Record removedWhileLent;
};

}  // namespace velmora::dvbservice
