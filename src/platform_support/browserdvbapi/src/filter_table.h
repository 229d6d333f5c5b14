// FilterTable: the filter records in the order of their saving, and an index by session name beside them, so that the
// cost of a section does not grow with the number of filters.
// Threads: one at a time.
// Blocks:  never.
// Fails:   only for lack of memory.
#pragma once

#include <boost/container/small_vector.hpp>
#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "filter_parameter.h"

namespace velmora::dvbservice {

class FilterTable {
public:
    using Record = boost::shared_ptr<FilterParameter>;

    /// A record's place in the index.
    struct Entry {
        std::string_view name;  ///< the record's
        Record record;
        /// The record's client, once the user of the table has found it registered. A client stays registered
        /// while a record of it is in the table.
        dtv::SectionFilterClient* registeredClient = nullptr;
    };

    /// Appends the record unless it is in the table.
    void add(Record record);
    /// False if the record is not in the table.
    bool remove(const Record& record);
    /// The first saved record with that name, or an empty pointer.
    Record find(const std::string& sessionName) const;
    /// As find(), without the two atomic steps of a copy: the entry stays until the table changes, and its record
    /// exists until the next call of lend(), even if it is removed meanwhile. Null if there is none.
    Entry* lend(const std::string& sessionName);
    bool hasRecordOf(const dtv::SectionFilterClient* client) const;
    const std::vector<Record>& all() const { return records; }

private:
    struct Same {
        std::size_t operator()(std::uint64_t hash) const { return static_cast<std::size_t>(hash); }
    };

    bool isIn(const Record& record) const;
    void walkPastEmptyRecords(const std::string& sessionName) const;
    const Entry* first(const std::string& sessionName) const;

    std::vector<Record> records;
    // By a name's hash, in the order of their saving. With a thousand filters, most of a look-up's time goes into
    // reading memory outside the nearest cache, so an entry repeats what a section needs of its record.
    std::unordered_map<std::uint64_t, boost::container::small_vector<Entry, 1>, Same> index;
    // An empty record is a programming error, which ends the process when a search meets it. While there is one, each
    // search is a walk.
    std::size_t emptyRecords = 0;
    const FilterParameter* lent = nullptr;
    Record removedWhileLent;
};

}  // namespace velmora::dvbservice
