// Peers that read more slowly than the other side sends, or not at all.
#include "library_browser.h"
#include "message_transfer.h"

namespace {

using faults::linesOf;
using faults::timesIn;

/// For some megabytes through a sanitized or emulated service.
constexpr std::chrono::seconds kLong{100};

/// A service says one thing 50 times in ten seconds at most; slow ones take longer. Thousands of commands are sent.
constexpr std::size_t kMostLines = 150;

class ASlowPeer : public faults::ALibraryBrowser {
protected:
    ASlowPeer() { EXPECT_TRUE(connects()); }
    ServiceProcess service;
};

std::string packetOf(const frame::MsgMeta& header, const std::string& image) {
    return faults::packet("DTV1", header.interfaceId, header.messageId, header.direction, image);
}

}  // namespace

TEST_F(ASlowPeer, ThatReadsNoEventsIsCutOffAlone) {
    ASSERT_TRUE(tunesTo(28106));
    faults::RawBrowser peer;
    ASSERT_TRUE(peer.isConnected);
    const std::string request = packetOf(lo::browserdvbservice::messages::CmdSendPMTCache::header(), {'\0'});
    ASSERT_TRUE(eventually(
        [&] {
            constexpr int kBurst = 100;
            for (int count = 0; count < kBurst; ++count) {
                peer.send(request);
            }
            return peer.hasGone;
        },
        kLong));
    EXPECT_TRUE(eventually([this] { return service.log().find("browser 2 disconnected") != std::string::npos; }));
    EXPECT_EQ(timesIn(service.log(), "has stalled with "), 1U);
    EXPECT_LT(linesOf(service.log()), kMostLines) << service.log();
    EXPECT_TRUE(tunesTo(28107));
}

TEST_F(ASlowPeer, ThatIsAServiceIsCutOffAndFoundAgain) {
    ASSERT_TRUE(faults::stops(service.pid()));
    const std::string text(8192, 'x');
    int sent = 0;
    constexpr int kMore = 5000;  // than fit in the socket and the queue of the connection
    for (int count = 0; count < kMore && sent == 0; ++count) {
        sent = Api::getInstance()->sendDrmMessage(1, 2, 3, "", text);
    }
    EXPECT_LT(sent, 0);
    EXPECT_EQ(timesIn(faults::ownLog(), "has stalled with "), 1U);
    kill(service.pid(), SIGCONT);
    EXPECT_TRUE(connects());
    EXPECT_TRUE(tunesTo(28107));
    EXPECT_LT(linesOf(service.log()), kMostLines);
}

TEST_F(ASlowPeer, ThatReadsNoSectionsLosesThemAlone) {
    faults::CountingFilter& slow = newFilter();
    slow.holds = true;
    constexpr int kFilters = 60;
    for (int count = 0; count < kFilters; ++count) {
        ASSERT_TRUE(Filters::getInstance()->startSection(&slow, "slow " + std::to_string(count),
                                                         count % 2 == 0 ? 0 : 0x12, nullptr, nullptr, 0));
    }
    ASSERT_TRUE(
        eventually([this] { return service.log().find(" does not read its sections: ") != std::string::npos; }));
    ChildProcess other(DVBSHELL, {"sections", "0", "--count", "3"}, "other");
    EXPECT_EQ(other.wait(), 0) << other.output();
    EXPECT_TRUE(tunesTo(28107)) << "events are no sections";
    EXPECT_LE(timesIn(service.log(), " does not read its sections: "), 2U);
    slow.holds = false;
    EXPECT_TRUE(receives(slow));
}

TEST_F(ASlowPeer, ThatIsAnOperatorWithHalfARequestHoldsNobodyUp) {
    faults::RawOperator silent;
    faults::RawOperator half;
    faults::RawOperator halfMore;
    ASSERT_TRUE(silent.isConnected && half.isConnected && halfMore.isConnected);
    ASSERT_TRUE(half.send("{\"command\":\"sta"));
    ASSERT_TRUE(halfMore.send("{\"command\":\"status\"}\n{\"comm"));
    ASSERT_TRUE(eventually([&] { return !halfMore.received().empty(); })) << "the whole one is answered";
    for (int count = 0; count < 3; ++count) {
        ChildProcess console(DTVCTL, {"status"}, "dtvctl");
        EXPECT_EQ(console.wait(), 0) << console.output();
    }
    EXPECT_TRUE(tunesTo(28107));
    ASSERT_TRUE(half.send("tus\"}\n"));
    EXPECT_TRUE(eventually([&] { return !half.received().empty(); })) << "the rest comes later";
    EXPECT_TRUE(halfMore.send("and"));
    EXPECT_EQ(service.end(SIGTERM), 0);
}

TEST_F(ASlowPeer, ThatIsAnOperatorWhoReadsNoAnswersIsCutOff) {
    faults::RawOperator peer;
    ASSERT_TRUE(peer.isConnected);
    ASSERT_TRUE(eventually(
        [&] {
            constexpr int kBurst = 20;
            for (int count = 0; count < kBurst; ++count) {
                peer.send("{\"command\":\"channels\"}\n");
            }
            return peer.hasGone;
        },
        kLong));
    ChildProcess console(DTVCTL, {"status"}, "dtvctl");
    EXPECT_EQ(console.wait(), 0) << console.output();
    EXPECT_EQ(service.end(SIGTERM), 0);
}

TEST_F(ASlowPeer, ThatIsAnOperatorWithARequestWithoutEndIsCutOff) {
    faults::RawOperator peer;
    ASSERT_TRUE(peer.isConnected);
    const std::string part(8192, ' ');
    ASSERT_TRUE(eventually([&] {
        while (peer.send(part)) {
        }
        return peer.hasGone;
    }));
    ChildProcess console(DTVCTL, {"status"}, "dtvctl");
    EXPECT_EQ(console.wait(), 0) << console.output();
}
