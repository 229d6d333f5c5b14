// Tests of the reference service's section filters.
#include "section_filters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "logged.h"
#include "packets.h"

namespace {

using dtvservice::passesFilter;
using velmora::msgqueue::IPCMessageQueue;
using velmora::msgqueue::SectionDataIPCMessage;

class SomeFilters : public testing::Test {
protected:
    SomeFilters() {
        recording::reset();
        filters.follow(demux);
        queue.reset(IPCMessageQueue::create("SECTION-test", 4500, 4));
        EXPECT_TRUE(filters.setQueue(1, "SECTION-test"));
    }
    void feed(std::uint16_t pid, const Bytes& section) {
        PacketMaker maker(pid);
        demux.discontinuity();
        for (const Packet& packet : maker.packets({section})) {
            demux.feed(broadcast::TsPacket{packet.data()});
        }
    }
    bool open(const std::string& session, unsigned int pid, const Bytes& match = {}, const Bytes& mask = {}) {
        return filters.open(1, session, pid, match, mask, error);
    }
    /// The session of the next section in the queue.
    std::string receive() {
        SectionDataIPCMessage message;
        message.data = new std::uint8_t[SectionDataIPCMessage::kBufferSize];
        queue->Receive(message);
        return message.sessionName;
    }

    broadcast::Demux demux;
    broadcast::Demux other;
    dtvservice::BusTap tap;
    dtvservice::SectionFilters filters{tap};
    std::unique_ptr<IPCMessageQueue> queue;
    std::string error;
};

}  // namespace

TEST(AFilterPattern, SkipsTheTwoBytesOfTheLength) {
    const Bytes section = {0x4E, 0xF0, 0x0F, 0x6D, 0xCA, 0xC1, 0x01};
    EXPECT_TRUE(passesFilter(section, {}, {}));
    EXPECT_TRUE(passesFilter(section, {0x4E}, {0xFF}));
    EXPECT_FALSE(passesFilter(section, {0x4F}, {0xFF}));
    EXPECT_TRUE(passesFilter(section, {0x4F}, {0xFE}));
    EXPECT_TRUE(passesFilter(section, {0x4E, 0x6D, 0xCA}, {0xFF, 0xFF, 0xFF}));
    EXPECT_FALSE(passesFilter(section, {0x4E, 0xF0}, {0xFF, 0xFF}));
    EXPECT_TRUE(passesFilter(section, {0x4E, 0x6D, 0xCA, 0xC1, 0x01}, Bytes(5, 0xFF)));
    EXPECT_FALSE(passesFilter(section, {0x4E, 0x6D, 0xCA, 0xC1, 0x01, 0x00}, Bytes(6, 0xFF))) << "it is shorter";
}

TEST_F(SomeFilters, OfOnePidEachGetTheirSections) {
    ASSERT_TRUE(open("all", 100));
    ASSERT_TRUE(open("one", 100, {0x80, 0x00, 0x07}, {0xFF, 0x00, 0xFF}));
    feed(100, sectionOf(60, 7));
    EXPECT_EQ(receive(), "all");
    EXPECT_EQ(receive(), "one");
    feed(100, sectionOf(60, 8));
    feed(100, sectionOf(60, 7));
    EXPECT_EQ(receive(), "all");
    EXPECT_EQ(receive(), "all");
    EXPECT_EQ(receive(), "one");
}

TEST_F(SomeFilters, GetNothingOnceTheyAreClosed) {
    ASSERT_TRUE(open("a", 100));
    ASSERT_TRUE(open("b", 100));
    EXPECT_TRUE(filters.close(1, "a"));
    EXPECT_FALSE(filters.close(1, "a"));
    EXPECT_FALSE(filters.close(2, "b")) << "another browser's";
    feed(100, sectionOf(60));
    EXPECT_EQ(receive(), "b");
}

TEST_F(SomeFilters, AreRefusedWithTheReason) {
    EXPECT_FALSE(open("a", 8192));
    EXPECT_EQ(error, "PID 8192 is above 8191");
    EXPECT_FALSE(open("a", 1, {1}, {}));
    EXPECT_EQ(error, "1 bytes to match, 0 of mask");
    ASSERT_TRUE(open("a", 1));
    EXPECT_FALSE(open("a", 1));
    EXPECT_EQ(error, "the session is open already");
    EXPECT_FALSE(filters.open(2, "a", 1, {}, {}, error));
    EXPECT_EQ(error, "the browser has no section queue");
    EXPECT_FALSE(filters.setQueue(2, "SECTION-nobody"));
}

TEST_F(SomeFilters, AreLimitedForEachBrowser) {
    const std::unique_ptr<IPCMessageQueue> queueOfOther(IPCMessageQueue::create("SECTION-other", 4500, 4));
    ASSERT_TRUE(filters.setQueue(2, "SECTION-other"));
    for (std::size_t number = 0; number < dtvservice::SectionFilters::kMostFilters; ++number) {
        const std::string session = std::to_string(number);
        ASSERT_TRUE(number % 2 == 0 ? open(session, 100) : filters.openPmt(1, session, 28106, error)) << error;
    }
    EXPECT_FALSE(open("more", 100));
    EXPECT_EQ(error, "the browser has 256 filters and PMT requests, the most possible");
    EXPECT_FALSE(filters.openPmt(1, "more", 28106, error));
    EXPECT_EQ(error, "the browser has 256 filters and PMT requests, the most possible");
    EXPECT_TRUE(filters.openPmt(1, "1", 28107, error)) << "the same request for another service";
    EXPECT_TRUE(filters.open(2, "more", 100, {}, {}, error)) << "another browser's";
    EXPECT_TRUE(filters.close(1, "0"));
    EXPECT_TRUE(open("more", 100));
}

TEST_F(SomeFilters, HaveSessionNamesOfLimitedLength) {
    EXPECT_TRUE(open(std::string(255, 's'), 100));
    EXPECT_FALSE(open(std::string(256, 's'), 100));
    EXPECT_EQ(error, "the session's name has 256 bytes, more than 255");
    EXPECT_FALSE(filters.openPmt(1, std::string(256, 's'), 28106, error));
}

TEST_F(SomeFilters, MayBeManyAndClosedInAnyOrder) {
    constexpr int kRounds = 200;
    for (int round = 0; round < kRounds; ++round) {
        for (std::size_t number = 0; number < dtvservice::SectionFilters::kMostFilters; ++number) {
            ASSERT_TRUE(open(std::to_string(number), 100)) << error;
        }
        for (std::size_t number = 0; number < dtvservice::SectionFilters::kMostFilters; ++number) {
            const std::size_t odd = number * 97 % dtvservice::SectionFilters::kMostFilters;
            ASSERT_TRUE(filters.close(1, std::to_string(odd)));
        }
    }
    ASSERT_TRUE(open("last", 100));
    feed(100, sectionOf(60));
    EXPECT_EQ(receive(), "last");
}

TEST_F(SomeFilters, DropUnreadSectionsAndSayItOnce) {
    ASSERT_TRUE(open("a", 100));
    for (std::uint8_t seed = 1; seed < 50; ++seed) {
        feed(100, sectionOf(60, seed));
    }
    EXPECT_THAT(logged::messages(), testing::ElementsAre("browser 1 does not read its sections: 1 dropped so far\n"));
    EXPECT_GT(filters.totals().dropped, 1U);
    EXPECT_EQ(receive(), "a");
}

TEST_F(SomeFilters, GoWithTheirBrowser) {
    ASSERT_TRUE(open("a", 100));
    filters.forget(1);
    feed(100, sectionOf(60));
    EXPECT_FALSE(filters.close(1, "a"));
    EXPECT_EQ(demux.countsOf(100).sections, 0U) << "nobody follows the PID";
}

TEST_F(SomeFilters, SendAServicesPmtToItsRequester) {
    ASSERT_TRUE(filters.openPmt(1, "pmt", 28106, error));
    const Bytes section = sectionOf(60, 1, 0x02);
    filters.pmtChanged(28107, section);
    filters.pmtChanged(28106, section);
    EXPECT_EQ(receive(), "pmt");
}

TEST_F(SomeFilters, EndWhenAnotherMultiplexIsFollowed) {
    ASSERT_TRUE(open("a", 100));
    ASSERT_TRUE(filters.openPmt(1, "pmt", 28106, error));
    EXPECT_TRUE(filters.follow(demux).empty()) << "the same one";
    EXPECT_THAT(filters.follow(other), testing::UnorderedElementsAre(testing::Pair(1U, "a"), testing::Pair(1U, "pmt")));
    feed(100, sectionOf(60));
    EXPECT_EQ(demux.countsOf(100).sections, 0U) << "nobody follows the PID";
    EXPECT_FALSE(filters.close(1, "a"));
    EXPECT_TRUE(open("a", 100)) << "on the other one";
}
