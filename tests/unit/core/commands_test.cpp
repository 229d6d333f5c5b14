// Tests of posting commands to the loop.
#include "commands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "bus/pcapng.h"
#include "logged.h"

namespace {

using dtvservice::Browser;

class ACommand : public testing::Test {
protected:
    ACommand() { recording::reset(); }

    /// Runs all posted tasks.
    void runLoop() { loop.runUntil(dtvservice::EventLoop::Clock::now()); }
    static frame::MsgIds from(Browser browser) {
        frame::MsgIds ids;
        ids.peer = browser;
        return ids;
    }

    dtvservice::EventLoop loop;
    std::vector<std::string> heard;
    dtvservice::BusTap tap;
    dtvservice::Commands commands{loop, tap,
                                  [this](Browser browser) { heard.push_back(std::to_string(browser) + " came"); },
                                  [this](Browser browser) { heard.push_back(std::to_string(browser) + " went"); }};
};

}  // namespace

TEST_F(ACommand, IsHandledOnTheLoopWithItsAskerAndItsValues) {
    commands.on.cmdFilterClose = [this](Browser asker, const std::string& session) {
        heard.push_back(std::to_string(asker) + " closes " + session);
    };
    frame::MsgIds ids = from(3);
    EXPECT_EQ(commands.cmdFilterClose(ids, {}, "one"), 0);
    EXPECT_THAT(heard, testing::IsEmpty()) << "the transport thread does nothing but post";
    runLoop();
    EXPECT_THAT(heard, testing::ElementsAre("3 closes one"));
}

TEST_F(ACommand, IsRefusedByItsNameWhereNothingHandlesIt) {
    frame::MsgIds ids = from(3);
    commands.cmdSendPtsRequest(ids, {}, 7);
    runLoop();
    EXPECT_THAT(logged::withoutTraces(),
                testing::ElementsAre(logged::tagged(blog::kUnsupported, "DtvService", "commands.h", "cmdSendPtsRequest",
                                                    "refused: nothing here handles cmdSendPtsRequest\n")));
}

TEST_F(ACommand, IsRunInTurnWithThoseOfOtherBrowsers) {
    commands.on.cmdFilterClose = [this](Browser asker, const std::string& session) {
        heard.push_back(std::to_string(asker) + session);
    };
    for (const char* const session : {"a", "b", "c"}) {
        frame::MsgIds ids = from(1);
        commands.cmdFilterClose(ids, {}, session);
    }
    for (const char* const session : {"a", "b"}) {
        frame::MsgIds ids = from(2);
        commands.cmdFilterClose(ids, {}, session);
    }
    runLoop();
    EXPECT_THAT(heard, testing::ElementsAre("1a", "2a", "1b", "2b", "1c"));
}

TEST_F(ACommand, IsDroppedIfTooManyWait) {
    std::size_t handled = 0;
    commands.on.cmdFilterClose = [&handled](Browser, const std::string&) { ++handled; };
    frame::TransportInfo peer;
    peer.peer = 3;
    commands.browserConnected(peer);
    frame::MsgIds ids = from(3);
    constexpr std::size_t kSent = 100 * dtvservice::WaitingCommands::kMostCommands;
    for (std::size_t command = 0; command < kSent; ++command) {
        EXPECT_EQ(commands.cmdFilterClose(ids, {}, "one"), 0);
    }
    frame::MsgIds other = from(4);
    commands.cmdFilterClose(other, {}, "two");
    commands.browserDisconnected(peer);
    EXPECT_THAT(logged::messages(),
                testing::Contains("browser 3 sends commands faster than they are done: 1 dropped so far\n"));
    EXPECT_THAT(heard, testing::IsEmpty());
    runLoop();
    EXPECT_EQ(handled, dtvservice::WaitingCommands::kMostCommands)
        << "the other browser's, and all but one of the first, because its connection waits, too";
    EXPECT_THAT(heard, testing::ElementsAre("3 came", "3 went"));
}

TEST_F(ACommand, IsDroppedIfItsValuesAreTooLong) {
    std::vector<std::size_t> lengths;
    commands.on.cmdFilterClose = [&lengths](Browser, const std::string& session) { lengths.push_back(session.size()); };
    frame::MsgIds ids = from(3);
    constexpr std::size_t kThird = dtvservice::WaitingCommands::kMostBytes / 3;
    for (const std::size_t length : {kThird, kThird, kThird, std::size_t{5}}) {
        commands.cmdFilterClose(ids, {}, std::string(length, 's'));
    }
    runLoop();
    EXPECT_THAT(lengths, testing::ElementsAre(kThird, kThird, 5U)) << "with the overhead, three are too many";
    commands.cmdFilterClose(ids, {}, std::string(kThird, 's'));
    runLoop();
    EXPECT_THAT(lengths, testing::SizeIs(4));
}

TEST_F(ACommand, ArrivesWhileItsBrowserIsConnected) {
    commands.on.cmdSendPMTCache = [this](Browser asker) { heard.push_back(std::to_string(asker) + " asks"); };
    frame::TransportInfo peer;
    peer.peer = 4;
    frame::MsgIds ids = from(4);
    commands.browserConnected(peer);
    commands.cmdSendPMTCache(ids, peer);
    commands.browserDisconnected(peer);
    runLoop();
    EXPECT_THAT(heard, testing::ElementsAre("4 came", "4 asks", "4 went"));
}

TEST_F(ACommand, IsShownToMonitorsAsItComesAndAsItIsRefused) {
    const auto monitor = tap.join();
    frame::MsgIds ids = from(3);
    commands.cmdSendPtsRequest(ids, {}, 7);
    runLoop();
    bus::PcapngReader reader;
    reader.add(tap.take(*monitor));
    bus::Record record;
    std::string problem;
    ASSERT_TRUE(reader.take(record, problem));
    EXPECT_EQ(record.kind, bus::Kind::message);
    EXPECT_EQ(record.direction, bus::Direction::toService);
    EXPECT_EQ(record.browser, 3U);
    EXPECT_EQ(record.message, 0x28671249U);
    EXPECT_EQ(record.bytes, std::string("\0\0\0\x07", 4));
    ASSERT_TRUE(reader.take(record, problem));
    EXPECT_EQ(record.kind, bus::Kind::refused);
    EXPECT_EQ(record.message, 0x28671249U);
    EXPECT_EQ(record.text, "nothing here handles it");
    EXPECT_FALSE(reader.take(record, problem));
}
