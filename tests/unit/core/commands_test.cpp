// Tests of posting commands to the loop.
#include "commands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
    dtvservice::Commands commands{loop, [this](Browser browser) { heard.push_back(std::to_string(browser) + " came"); },
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
