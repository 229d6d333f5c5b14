// What monitors of the bus get.
#include "bus_tap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "bus/pcapng.h"
#include "distinct_values.h"
#include "message_transfer.h"
#include "platform_common/record_image.h"

using dtvservice::BusTap;
using lo::browserdvbservice::ClientInterface;
using lo::browserdvbservice::ServiceInterface;

namespace {

template <typename Message, typename Operation>
void expectTheImageOfThePlatform(Operation operation) {
    DistinctValues distinct;
    const auto values = distinct.valuesFor(operation);
    std::apply(
        [](const auto&... each) {
            const lo::browserdvbservice::OutgoingRecord<Message> record(each...);
            const auto bytes = platform_common::encodeRecord(*Message::table(), record.bytes());
            EXPECT_EQ(dtvservice::MessageImage::of(each...), std::string(bytes.begin(), bytes.end())) << Message::kName;
        },
        values);
}

std::vector<bus::Record> recordsOf(const std::string& bytes) {
    bus::PcapngReader reader;
    reader.add(bytes);
    std::vector<bus::Record> records;
    bus::Record record;
    std::string problem;
    while (reader.take(record, problem)) {
        EXPECT_EQ(problem, "");
        records.push_back(record);
    }
    return records;
}

/// What the monitor has not read yet; only its first bytes begin a file.
std::vector<bus::Record> laterRecordsOf(BusTap& tap, BusTap::Monitor monitor) {
    return recordsOf(bus::pcapngStart() + tap.take(monitor));
}

}  // namespace

TEST(TheTapOfTheBus, MakesTheImageThatThePlatformSends) {
#define COMMAND(identifier, operation, Message, fields) \
    expectTheImageOfThePlatform<lo::browserdvbservice::messages::Message>(&ServiceInterface::operation);
#define EVENT(identifier, operation, Message, decoder, fields) \
    expectTheImageOfThePlatform<lo::browserdvbservice::messages::Message>(&ClientInterface::operation);
#include "browserdvbservice_messages.inc"
}

TEST(TheTapOfTheBus, IsWatchedWhileAMonitorIsThere) {
    BusTap tap;
    EXPECT_FALSE(tap.isWatched());
    const auto one = tap.join();
    const auto two = tap.join();
    ASSERT_TRUE(one && two);
    EXPECT_TRUE(tap.isWatched());
    tap.leave(*one);
    EXPECT_TRUE(tap.isWatched());
    tap.leave(*two);
    EXPECT_FALSE(tap.isWatched());
    EXPECT_EQ(tap.take(*two), "");
}

TEST(TheTapOfTheBus, TellsANewMonitorOfTheBrowsersThatAreThere) {
    BusTap tap;
    tap.connected(1);
    tap.connected(2);
    tap.disconnected(1);
    const auto monitor = tap.join();
    tap.connected(3);
    tap.disconnected(2);
    const std::vector<bus::Record> records = recordsOf(tap.take(*monitor));
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(records[0].kind, bus::Kind::connected);
    EXPECT_EQ(records[0].browser, 2U);
    EXPECT_EQ(records[0].text, "before");
    EXPECT_EQ(records[1].browser, 3U);
    EXPECT_EQ(records[1].text, "");
    EXPECT_EQ(records[2].kind, bus::Kind::disconnected);
    EXPECT_EQ(records[2].browser, 2U);
}

TEST(TheTapOfTheBus, GivesEachMonitorItsOwnCopy) {
    BusTap tap;
    const auto one = tap.join();
    const auto two = tap.join();
    tap.take(*one);
    tap.section(4, "filter", "bytes", true);
    EXPECT_EQ(laterRecordsOf(tap, *one).size(), 1U);
    EXPECT_EQ(laterRecordsOf(tap, *one).size(), 0U);
    const std::vector<bus::Record> records = recordsOf(tap.take(*two));
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].kind, bus::Kind::sectionQueued);
    EXPECT_EQ(records[0].text, "filter");
    EXPECT_EQ(records[0].bytes, "bytes");
    EXPECT_EQ(records[0].browser, 4U);
}

TEST(TheTapOfTheBus, CountsWhatAMonitorDoesNotReadInTime) {
    BusTap tap;
    const auto slow = tap.join();
    const std::string section(4096, 'x');
    constexpr std::size_t kSent = 3000;
    for (std::size_t count = 0; count < kSent; ++count) {
        tap.section(1, "filter", section, true);
    }
    tap.section(1, "filter", "small", true);
    const std::vector<bus::Record> records = recordsOf(tap.take(*slow));
    ASSERT_GT(records.size(), 900U) << "four megabytes wait for it";
    EXPECT_EQ(records.back().kind, bus::Kind::lost);
    EXPECT_EQ(records.size() - 1 + records.back().count, kSent + 1) << "a small one does not overtake";
    tap.section(1, "filter", "after", true);
    const std::vector<bus::Record> later = laterRecordsOf(tap, *slow);
    ASSERT_EQ(later.size(), 1U);
    EXPECT_EQ(later[0].bytes, "after");
}

TEST(TheTapOfTheBus, RefusesTooManyMonitors) {
    BusTap tap;
    for (std::size_t count = 0; count < BusTap::kMostMonitors; ++count) {
        EXPECT_TRUE(tap.join());
    }
    EXPECT_FALSE(tap.join());
    tap.leave(1);
    EXPECT_TRUE(tap.join());
}
