// Counts of records.
#include "statistics.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "some_seen.h"

namespace {

using Span = dtvmon::Statistics::Span;
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
    EXPECT_EQ(statistics.text(Span::all),
              "name                                        records        bytes   a second\n"
              "cmdSendPtsRequest                                 5           20        1.3\n"
              "lost                                              2            0        0.5\n"
              "refused cmdSendPtsRequest                         1            0        0.3\n");
    const nlohmann::ordered_json object = statistics.object(Span::all);
    EXPECT_EQ(object["statistics"][0].dump(), R"({"name":"cmdSendPtsRequest","records":5,"byte_count":20,"rate":1.3})");
    EXPECT_EQ(object["seconds"], 4.0);
    EXPECT_GT(object["time"], 1.6e9);
}

TEST(TheStatistics, TakeASecondAtLeastForARate) {
    dtvmon::Statistics statistics(true);
    statistics.add(aMessage());
    statistics.add(aMessage());
    EXPECT_EQ(statistics.object(Span::all)["statistics"][0]["rate"], 2.0);
}

TEST(TheStatistics, HaveTheRateOfTheLastSecondWhileTheyGoOn) {
    dtvmon::Statistics statistics(true);
    for (int count = 0; count < 7; ++count) {
        statistics.add(aMessage());
    }
    EXPECT_EQ(statistics.object(Span::lastSecond)["statistics"][0]["rate"], 7.0);
    EXPECT_EQ(statistics.object(Span::lastSecond)["seconds"], 1.0);
    testing::internal::CaptureStdout();
    statistics.second();
    const auto printed = nlohmann::json::parse(testing::internal::GetCapturedStdout());
    EXPECT_EQ(printed["statistics"][0]["rate"], 7.0);
    statistics.add(aMessage());
    const nlohmann::ordered_json later = statistics.object(Span::lastSecond);
    EXPECT_EQ(later["statistics"][0]["records"], 8);
    EXPECT_EQ(later["statistics"][0]["rate"], 1.0);
}
