// Counts of records.
#include "statistics.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "some_seen.h"

namespace {

constexpr std::uint64_t kSecond = 1000000000;

}  // namespace

TEST(TheStatistics, CountRecordsAndBytesByNameAndTheirRate) {
    dtvmon::Statistics statistics(false);
    for (std::uint64_t second = 0; second < 5; ++second) {
        dtvmon::Seen seen = aMessage();
        seen.record.time += second * kSecond;
        statistics.add(seen);
    }
    statistics.add(dtvmon::see(aRecord(bus::Kind::refused, kPtsRequest)));
    bus::Record lost = aRecord(bus::Kind::lost);
    lost.count = 2;
    statistics.add(dtvmon::see(lost));
    EXPECT_EQ(statistics.text(),
              "name                                        records        bytes   a second\n"
              "cmdSendPtsRequest                                 5           20        1.3\n"
              "lost                                              2            0        0.5\n"
              "refused cmdSendPtsRequest                         1            0        0.3\n");
    EXPECT_EQ(statistics.objects()[0].dump(), R"({"name":"cmdSendPtsRequest","records":5,"bytes":20,"rate":1.3})");
}

TEST(TheStatistics, TakeASecondAtLeastForARate) {
    dtvmon::Statistics statistics(true);
    statistics.add(aMessage());
    statistics.add(aMessage());
    EXPECT_EQ(statistics.objects()[0]["rate"], 2.0);
}
