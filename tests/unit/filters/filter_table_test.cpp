// The table's records by name, and the one that it lends for a section.
#include "filter_table.h"

#include <gtest/gtest.h>

#include <boost/weak_ptr.hpp>

namespace {

using velmora::dvbservice::FilterParameter;
using velmora::dvbservice::FilterTable;

class AFilterTable : public testing::Test {
protected:
    FilterTable::Record added(const std::string& name) {
        FilterTable::Record record = FilterParameter::create(nullptr, name, 1, nullptr, nullptr, 0);
        table.add(record);
        return record;
    }
    FilterTable::Record lent(const std::string& name) {
        const FilterTable::Entry* const entry = table.lend(name);
        return entry == nullptr ? FilterTable::Record() : entry->record;
    }

    FilterTable table;
};

}  // namespace

TEST_F(AFilterTable, FindsARecordByANameOfAnyLength) {
    std::vector<FilterTable::Record> records;
    for (std::size_t length = 0; length < 50; ++length) {
        records.push_back(added(std::string(length, 'n')));
    }
    for (std::size_t length = 0; length < 50; ++length) {
        EXPECT_EQ(table.find(std::string(length, 'n')), records[length]);
        EXPECT_EQ(lent(std::string(length, 'n')), records[length]);
    }
    EXPECT_EQ(table.lend(std::string(50, 'n')), nullptr);
}

TEST_F(AFilterTable, LendsTheFirstOfAName) {
    const auto first = added("same");
    EXPECT_EQ(lent("same"), first);
    const auto second = added("same");
    EXPECT_EQ(lent("same"), first);
    table.remove(first);
    EXPECT_EQ(lent("same"), second);
    table.add(first);
    EXPECT_EQ(lent("same"), second);
    table.remove(second);
    table.remove(first);
    EXPECT_EQ(table.lend("same"), nullptr);
}

TEST_F(AFilterTable, KeepsALentRecordUntilItLendsAgain) {
    boost::weak_ptr<FilterParameter> record = added("a");
    added("b");
    ASSERT_NE(table.lend("a"), nullptr);
    table.remove(record.lock());
    EXPECT_FALSE(record.expired());
    EXPECT_FALSE(table.find("a"));
    table.find("b");
    table.remove(table.find("b"));
    EXPECT_FALSE(record.expired()) << "only the next lending ends it";
    EXPECT_EQ(table.lend("a"), nullptr);
    EXPECT_TRUE(record.expired());
}

TEST_F(AFilterTable, KeepsNoRecordThatIsNotLent) {
    boost::weak_ptr<FilterParameter> before = added("a");
    boost::weak_ptr<FilterParameter> never = added("b");
    added("c");
    table.lend("a");
    table.lend("c");
    table.remove(before.lock());
    table.remove(never.lock());
    EXPECT_TRUE(before.expired());
    EXPECT_TRUE(never.expired());
}
