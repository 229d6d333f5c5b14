// The AIT catcher: channels, storage and delivery.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <future>
#include <thread>

#include "catcher_fixture.h"
#include "eventually.h"

namespace {

using velmora::dvbservice::BrowserAITCatcher;
using velmora::dvbservice::BrowserAITCatcherTestAccess;
using velmora::dvbservice::DvbAITSectionAPI;

/// What parsing a key into numbers throws; empty when nothing is thrown.
std::string thrownBy(BrowserAITCatcher& catcher, const std::string& key) {
    try {
        catcher.sendAITData(key, Bytes(8, 1));
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return {};
}

}  // namespace

TEST_F(ACatcher, MakesItsKeyOfThreeUnsignedNumbers) {
    EXPECT_EQ(catcher.convertToCCId(1, 2, 3), "1:2:3");
    EXPECT_EQ(catcher.convertToCCId(0, 0, 0), "0:0:0");
    EXPECT_EQ(catcher.convertToCCId(65535, 65535, 65535), "65535:65535:65535");
}

TEST_F(ACatcher, TreatsEachReportAsAnotherChannel) {
    for (int count = 0; count < 2; ++count) {
        recording::reset();
        EXPECT_EQ(catcher.updateCurrentChannelInfo(9, 1, 2, 3), 0);
        EXPECT_THAT(allMessages(),
                    testing::ElementsAre("Broadcast Channel switch In.\n", "Change to Different Channel.\n"));
        EXPECT_THAT(functionsOf(kFile), testing::Each("updateCurrentChannelInfo"));
        EXPECT_EQ(recording::log().size(), 2U) << "and no trace";
    }
}

TEST_F(ACatcher, IsAnotherThanThatOfTheProcess) {
    BrowserAITCatcher& ofTheProcess = *BrowserAITCatcher::getInstance();
    EXPECT_EQ(ofTheProcess.updateCurrentChannelInfo(9, 4, 5, 6), 0);
    EXPECT_EQ(catcher.updateCurrentChannelInfo(9, 1, 2, 3), 0);
    EXPECT_EQ(BrowserAITCatcherTestAccess::currentChannel(catcher).sId, 3);
    EXPECT_EQ(BrowserAITCatcherTestAccess::currentChannel(ofTheProcess).sId, 6);
}

TEST_F(ACatcher, KeepsTheReportedTripletInOrder) {
    for (const std::uint16_t first : {std::uint16_t{9}, std::uint16_t{65535}}) {
        catcher.updateCurrentChannelInfo(first, 1, 2, 3);
        const velmora::dvbservice::ChannelInfo channel = BrowserAITCatcherTestAccess::currentChannel(catcher);
        EXPECT_EQ(channel.first, first);
        EXPECT_EQ(channel.onId, 1);
        EXPECT_EQ(channel.tsId, 2);
        EXPECT_EQ(channel.sId, 3);
    }
}

TEST_F(ACatcher, NeedsEightBytesOfASection) {
    catcher.updateCurrentChannelInfo(0, 1, 2, 3);
    recording::reset();
    EXPECT_EQ(feed(Bytes(7, 0)), -1);
    EXPECT_THAT(allMessages(), testing::ElementsAre("section length:7.\n\n", "Invalid AIT Section length 7\n"));
    EXPECT_THAT(functionsOf(kFile), testing::Each("updateAIT"));
    EXPECT_EQ(BrowserAITCatcherTestAccess::storages(catcher), 0U);
    EXPECT_THAT(client.deliveries(), testing::IsEmpty());
    EXPECT_EQ(feed(Bytes(8, 0)), 0);
    EXPECT_THAT(client.deliveries(), testing::ElementsAre(Delivery{1, 2, 3, Bytes(8, 0)}));
}

TEST_F(ACatcher, DeliversASectionOnce) {
    catcher.updateCurrentChannelInfo(0, 1, 2, 3);
    const Bytes section = aitBytes(1, 0, 0, 5);
    recording::reset();
    EXPECT_EQ(feed(section), 0);
    EXPECT_THAT(allMessages(),
                testing::ElementsAre("section length:16.\n\n", "DumpAITSection: ver:1,sn:0/0,crc:00000005(valid:0)\n",
                                     "AIT version changed: 0 -> 1\n", "Add AIT Section: 0/0, ver: 1,crc:00000005\n",
                                     "ccId:1:2:3,onId:1,tsId:2,sId:3\n"));
    EXPECT_THAT(functionsOf(kFile), testing::ElementsAre("updateAIT", "sendAITData"));
    recording::reset();
    EXPECT_EQ(feed(section), 0);
    EXPECT_THAT(allMessages(), testing::ElementsAre("section length:16.\n\n", "The AIT for this channel exist.\n",
                                                    "DumpAITSection: ver:1,sn:0/0,crc:00000005(valid:0)\n",
                                                    "No Need to update Section: 0/0, ver: 1,crc:00000005\n",
                                                    "No need to pass same AIT.\n"));
    EXPECT_THAT(functionsOf(kFile), testing::Each("updateAIT"));
    EXPECT_EQ(client.deliveries().size(), 1U);
    recording::reset();
    EXPECT_EQ(feed(aitBytes(1, 0, 0, 6)), 0);
    EXPECT_THAT(allMessages(), testing::ElementsAre("section length:16.\n\n", "The AIT for this channel exist.\n",
                                                    "DumpAITSection: ver:1,sn:0/0,crc:00000006(valid:0)\n",
                                                    "Add AIT Section: 0/0, ver: 1,crc:00000006\n",
                                                    "ccId:1:2:3,onId:1,tsId:2,sId:3\n"));
    EXPECT_EQ(client.deliveries().size(), 2U);
}

TEST_F(ACatcher, KeepsSectionsOfOtherChannels) {
    const Bytes section = aitBytes(1, 0, 0, 5);
    catcher.updateCurrentChannelInfo(0, 1, 2, 3);
    feed(section);
    catcher.updateCurrentChannelInfo(0, 4, 5, 6);
    catcher.updateCurrentChannelInfo(0, 1, 2, 3);
    EXPECT_EQ(feed(section), 0);
    EXPECT_EQ(client.deliveries().size(), 1U);
}

TEST_F(ACatcher, DeliversTheBytesAsTheyCame) {
    catcher.updateCurrentChannelInfo(0, 1, 2, 3);
    Bytes section = aitBytes(1, 0, 0, 5, 300);
    section[8] = 0;
    section[9] = 0xFF;
    feed(section);
    EXPECT_THAT(client.deliveries(), testing::ElementsAre(Delivery{1, 2, 3, section}));
}

TEST_F(ACatcher, WritesTheKeyBeforeTheClientIsCalled) {
    std::vector<std::string> linesAtCall;
    client.reaction = [&linesAtCall] { linesAtCall = allMessages(); };
    catcher.sendAITData("1:2:3", Bytes(8, 1));
    EXPECT_THAT(linesAtCall, testing::ElementsAre("ccId:1:2:3,onId:1,tsId:2,sId:3\n"));
    EXPECT_EQ(recording::log().size(), 1U) << "and no line after it";
}

TEST_F(ACatcher, HoldsItsMutexWhileTheClientIsCalled) {
    bool locked = false;
    client.reaction = [&] { locked = isDelivering(); };
    catcher.sendAITData("1:2:3", Bytes(8, 1));
    EXPECT_TRUE(locked);
    EXPECT_FALSE(isDelivering());
    locked = false;
    catcher.updateCurrentChannelInfo(0, 1, 2, 3);
    feed(aitBytes(1, 0, 0, 5));
    EXPECT_TRUE(locked) << "for a section that is fed";
}

TEST_F(ACatcher, LetsItsMutexGoWhenNothingIsDelivered) {
    catcher.sendAITData("1:2", Bytes(8, 1));
    EXPECT_FALSE(isDelivering());
    EXPECT_EQ(thrownBy(catcher, "a:2:3"), "stoi");
    EXPECT_FALSE(isDelivering());
}

TEST_F(ACatcher, ReadsTheLeadingDecimalDigitsOfAKey) {
    catcher.sendAITData("010:0x2:3x", Bytes(8, 1));
    EXPECT_THAT(allMessages(), testing::ElementsAre("ccId:010:0x2:3x,onId:10,tsId:0,sId:3\n"));
    EXPECT_THAT(client.deliveries(), testing::ElementsAre(Delivery{10, 0, 3, Bytes(8, 1)}));
}

TEST_F(ACatcher, ThrowsSilentlyForAKeyWithoutNumbers) {
    for (const char* const key : {"a:2:3", "1:b:3", "1:2:c", ":2:3", "1::3", "1:2::"}) {
        EXPECT_EQ(thrownBy(catcher, key), "stoi") << key;
    }
    EXPECT_THAT(recording::log(), testing::IsEmpty());
    EXPECT_THAT(client.deliveries(), testing::IsEmpty());
}

TEST_F(ACatcher, LogsADeliveryWithoutAnApi) {
    seams::hideApi();
    catcher.sendAITData("1:2:3", Bytes(8, 1));
    catcher.sendAITData("no key", Bytes(8, 1));
    EXPECT_THAT(allMessages(), testing::ElementsAre("sendAITData aitAPI is NULL \n", "sendAITData aitAPI is NULL \n"));
    EXPECT_THAT(functionsOf(kFile), testing::Each("sendAITData"));
    EXPECT_THAT(client.deliveries(), testing::IsEmpty());
    EXPECT_FALSE(isDelivering());
}

TEST_F(ACatcher, FormatsNoLineWhoseLevelIsOff) {
    recording::setLogThreshold(0);
    catcher.updateCurrentChannelInfo(0, 1, 2, 3);
    EXPECT_EQ(recording::levelChecks(), 2U);
    feed(aitBytes(1, 0, 0, 5));
    feed(aitBytes(1, 0, 0, 5));
    feed(Bytes(7, 0));
    catcher.sendAITData("1", Bytes());
    EXPECT_GT(recording::levelChecks(), 10U);
    EXPECT_EQ(recording::formattedLines(), 0U);
}

TEST_F(ACatcher, AlwaysDeliversTheFirstSectionOfAChannel) {
    catcher.updateCurrentChannelInfo(0, 1, 2, 3);
    feed(aitBytes(1, 12, 20, 5));
    EXPECT_EQ(client.deliveries().size(), 1U);
    feed(aitBytes(1, 13, 20, 6));
    EXPECT_EQ(client.deliveries().size(), 1U) << "later ones the storage decides on";
    EXPECT_EQ(BrowserAITCatcherTestAccess::storages(catcher), 1U);
}

TEST_F(ACatcher, StoresSectionsUnderTheCurrentChannel) {
    feed(aitBytes(1, 0, 0, 1));
    EXPECT_TRUE(client.deliveries().empty()) << "before the first channel there is no key to deliver under";
    EXPECT_THAT(messagesOf(kFile), testing::Contains("channelInfo.size() =0  error!!!\n"));
    catcher.updateCurrentChannelInfo(0, 1, 2, 3);
    feed(aitBytes(1, 0, 0, 1));
    catcher.updateCurrentChannelInfo(0, 1, 2, 4);
    feed(aitBytes(1, 0, 0, 1));
    EXPECT_THAT(client.deliveries(),
                testing::ElementsAre(Delivery{1, 2, 3, aitBytes(1, 0, 0, 1)}, Delivery{1, 2, 4, aitBytes(1, 0, 0, 1)}));
    EXPECT_EQ(BrowserAITCatcherTestAccess::storages(catcher), 3U);
}

TEST_F(ACatcher, SplitsAKeyAtItsColons) {
    const Bytes section(8, 1);
    catcher.sendAITData("1:2:3", section);
    catcher.sendAITData("1:2:3:4", section);
    catcher.sendAITData("70000:2:3:", section);
    EXPECT_THAT(client.deliveries(), testing::ElementsAre(Delivery{1, 2, 3, section}, Delivery{1, 2, 3, section},
                                                          Delivery{70000 - 65536, 2, 3, section}));
    EXPECT_EQ(messagesOf(kFile).back(), "ccId:70000:2:3:,onId:70000,tsId:2,sId:3\n") << "narrowed for the client only";
    for (const auto& [key, pieces] :
         std::vector<std::pair<std::string, int>>{{"", 0}, {"1", 1}, {"1:2", 2}, {"1:2:", 2}}) {
        recording::reset();
        catcher.sendAITData(key, section);
        EXPECT_THAT(messagesOf(kFile),
                    testing::ElementsAre("channelInfo.size() =" + std::to_string(pieces) + "  error!!!\n"));
    }
    EXPECT_THROW(catcher.sendAITData("1::3", section), std::invalid_argument);
    EXPECT_THROW(catcher.sendAITData("a:2:3", section), std::invalid_argument);
    EXPECT_THROW(catcher.sendAITData("1:2:99999999999", section), std::out_of_range);
    catcher.sendAITData("4:5:6", section);
    EXPECT_EQ(client.deliveries().back(), (Delivery{4, 5, 6, section})) << "the lock was released";
}

TEST_F(ACatcher, DropsSectionsWhileThereIsNoClient) {
    api->unRegisterClient(nullptr);
    catcher.updateCurrentChannelInfo(0, 1, 2, 3);
    recording::reset();
    EXPECT_EQ(feed(aitBytes(1, 0, 0, 1)), 0);
    EXPECT_TRUE(client.deliveries().empty());
    EXPECT_EQ(allMessages().back(), "ccId:1:2:3,onId:1,tsId:2,sId:3\n") << "it is silent about it";
    EXPECT_EQ(BrowserAITCatcherTestAccess::storages(catcher), 1U) << "it is stored all the same";
}

TEST_F(ACatcher, NeverOverlapsDeliveriesWhileEverythingHappensAtOnce) {
    class WatchingClient final : public velmora::dtv::AITSectionClient {
    public:
        std::atomic<int> inside{0};
        std::atomic<int> calls{0};
        std::atomic<bool> overlapped{false};
        void onCurrentChannelAIT(std::uint16_t, std::uint16_t, std::uint16_t, const Bytes&) override {
            overlapped = overlapped || ++inside != 1;
            ++calls;
            --inside;
        }
    };
    recording::setLogThreshold(0);
    WatchingClient watching;
    api->registerClient(&watching);
    constexpr int kRounds = 200;
    std::thread feeder([this] {
        for (int round = 0; round < kRounds; ++round) {
            catcher.updateCurrentChannelInfo(0, 1, 2, static_cast<std::uint16_t>(round % 4));
            feed(aitBytes(1U + static_cast<unsigned int>(round) % 30U, 0, 1, static_cast<std::uint32_t>(round)));
        }
    });
    std::thread replayer([this] {
        for (int round = 0; round < kRounds; ++round) {
            catcher.getAITDataAsyc("1:2:" + std::to_string(round % 4));
        }
    });
    std::thread registrar([this, &watching] {
        for (int round = 0; round < kRounds; ++round) {
            api->unRegisterClient(&watching);
            api->registerClient(&watching);
        }
    });
    feeder.join();
    replayer.join();
    registrar.join();
    EXPECT_FALSE(watching.overlapped);
    EXPECT_GT(watching.calls, 0);
    api->unRegisterClient(nullptr);
}

/// Exits its process from inside a delivery.
class EndingClient final : public velmora::dtv::AITSectionClient {
public:
    std::promise<void> mayEnd;
    void onCurrentChannelAIT(std::uint16_t, std::uint16_t, std::uint16_t, const Bytes&) override {
        mayEnd.get_future().wait();
        std::exit(3);
    }
};

TEST(TheProcess, ExitsFromADeliveryWhileReplaysWait) {
    // A separate process, forked before any thread exists.
    const pid_t child = fork();
    if (child == 0) {
        static EndingClient client;
        BrowserAITCatcher* const catcher = BrowserAITCatcher::getInstance();
        catcher->updateCurrentChannelInfo(0, 7, 8, 9);
        catcher->updateAIT(asText(aitBytes(1, 0, 0, 1)));
        DvbAITSectionAPI::getInstance()->registerClient(&client);
        // Both replays find their section, then wait for the delivery in progress.
        catcher->getCurrentChannelAIT(7, 8, 9);
        catcher->getCurrentChannelAIT(7, 8, 9);
        eventually([] {
            const std::vector<recording::LogLine> replays = recording::logOf("getAITDataAsyc");
            return replays.size() == 2;
        });
        client.mayEnd.set_value();
        while (true) {
            pause();
        }
    }
    int status = 0;
    const bool ended = eventually([&] { return waitpid(child, &status, WNOHANG) == child; });
    if (!ended) {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
    ASSERT_TRUE(ended) << "it waits for ever";
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 3);
}
