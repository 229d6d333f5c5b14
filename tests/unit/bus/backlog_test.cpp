// What waits for a reader.
#include "bus/backlog.h"

#include <gtest/gtest.h>

#include "bus/origin.h"
#include "bus/pcapng.h"
#include "some_records.h"

namespace {

std::vector<bus::Record> recordsIn(const std::string& bytes) {
    bus::PcapngReader reader;
    reader.add(bytes);
    std::vector<bus::Record> records;
    bus::Record record;
    for (std::string problem; reader.take(record, problem);) {
        EXPECT_EQ(problem, "");
        records.push_back(record);
    }
    EXPECT_EQ(reader.problemAtEnd(), "");
    return records;
}

}  // namespace

TEST(ABacklog, BeginsLikeAFile) {
    bus::Backlog backlog;
    EXPECT_FALSE(backlog.isEmpty());
    EXPECT_EQ(backlog.take(), bus::pcapngStart());
    EXPECT_TRUE(backlog.isEmpty());
    EXPECT_EQ(backlog.take(), "");
    const std::string block = bus::pcapngBlock(someRecord());
    backlog.add(block);
    EXPECT_FALSE(backlog.isEmpty());
    EXPECT_EQ(backlog.take(), block);
}

TEST(ABacklog, LosesAllBehindTheFirstThatDoesNotFit) {
    bus::Backlog backlog(bus::Side::browser);
    bus::Record record = someRecord();
    const std::string small = bus::pcapngBlock(record);
    record.bytes.assign(bus::Backlog::kMost - 1000, 'x');
    const std::string large = bus::pcapngBlock(record);
    backlog.add(large);
    backlog.add(large);
    backlog.add(small);
    const std::uint64_t before = bus::timeNow();
    const std::vector<bus::Record> records = recordsIn(backlog.take());
    ASSERT_EQ(records.size(), 2U);
    expectSame(records[0], record);
    EXPECT_EQ(records[1].kind, bus::Kind::lost);
    EXPECT_EQ(records[1].side, bus::Side::browser);
    EXPECT_EQ(records[1].count, 2U);
    EXPECT_GE(records[1].time, before);
    backlog.add(small);
    EXPECT_EQ(backlog.take(), small) << "it goes on";
}
