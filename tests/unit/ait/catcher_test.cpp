// The AIT catcher and the AIT API before it.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <future>
#include <thread>

#include "ait_fixture.h"
#include "eventually.h"
#include "recording/recording_platform.h"

namespace velmora::dvbservice {

/// Looks at what the catcher keeps to itself.
struct BrowserAITCatcherTestAccess {
    static std::size_t storages(BrowserAITCatcher& catcher) { return catcher.aitStorages.size(); }
};

}  // namespace velmora::dvbservice

namespace {

using velmora::dvbservice::BrowserAITCatcher;
using velmora::dvbservice::BrowserAITCatcherTestAccess;
using velmora::dvbservice::DvbAITSectionAPI;

constexpr const char* kFile = "browser_AIT_catcher.cpp";

class ACatcher : public testing::Test {
protected:
    ACatcher() {
        api->registerClient(&client);
        recording::reset();
    }
    ~ACatcher() override { api->unRegisterClient(nullptr); }

    int feed(const Bytes& section) { return catcher.updateAIT(asText(section)); }
    /// Waits for a replay's worker to have come to its end, which its line count tells.
    bool deliveredEventually(std::size_t count) {
        return eventually([&] { return client.deliveries().size() == count; });
    }

    BrowserAITCatcher catcher;
    DvbAITSectionAPI* api = DvbAITSectionAPI::getInstance();
    KeepingAitClient client;
};

using Delivery = KeepingAitClient::Delivery;

}  // namespace

TEST_F(ACatcher, MakesItsKeyOfThreeUnsignedNumbers) {
    EXPECT_EQ(catcher.convertToCCId(1, 2, 3), "1:2:3");
    EXPECT_EQ(catcher.convertToCCId(0, 0, 0), "0:0:0");
    EXPECT_EQ(catcher.convertToCCId(65535, 65535, 65535), "65535:65535:65535");
}

TEST_F(ACatcher, TakesEveryReportOfAChannelForADifferentOne) {
    for (int count = 0; count < 2; ++count) {
        recording::reset();
        EXPECT_EQ(catcher.updateCurrentChannelInfo(9, 1, 2, 3), 0);
        EXPECT_THAT(messagesOf(kFile),
                    testing::ElementsAre("Broadcast Channel switch In.\n", "Change to Different Channel.\n"));
    }
}

TEST_F(ACatcher, RefusesASectionOfSevenBytesAndTakesOneOfEight) {
    catcher.updateCurrentChannelInfo(0, 1, 2, 3);
    recording::reset();
    EXPECT_EQ(feed(Bytes(7, 0)), -1);
    EXPECT_THAT(messagesOf(kFile), testing::ElementsAre("section length:7.\n\n", "Invalid AIT Section length 7\n"));
    EXPECT_EQ(feed(Bytes(8, 0)), 0);
    EXPECT_THAT(client.deliveries(), testing::ElementsAre(Delivery{1, 2, 3, Bytes(8, 0)}));
}

TEST_F(ACatcher, DeliversASectionOnce) {
    catcher.updateCurrentChannelInfo(0, 1, 2, 3);
    const Bytes section = aitBytes(1, 0, 0, 5);
    recording::reset();
    EXPECT_EQ(feed(section), 0);
    EXPECT_THAT(messagesOf(kFile), testing::ElementsAre("section length:16.\n\n", "ccId:1:2:3,onId:1,tsId:2,sId:3\n"));
    recording::reset();
    EXPECT_EQ(feed(section), 0);
    EXPECT_THAT(messagesOf(kFile), testing::ElementsAre("section length:16.\n\n", "The AIT for this channel exist.\n",
                                                        "No need to pass same AIT.\n"));
    EXPECT_THAT(functionsOf(kFile), testing::Each("updateAIT"));
    EXPECT_EQ(client.deliveries().size(), 1U);
    feed(aitBytes(1, 0, 0, 6));
    EXPECT_EQ(client.deliveries().size(), 2U);
}

TEST_F(ACatcher, AlwaysDeliversTheFirstSectionOfAChannel) {
    catcher.updateCurrentChannelInfo(0, 1, 2, 3);
    feed(aitBytes(1, 12, 20, 5));
    EXPECT_EQ(client.deliveries().size(), 1U);
    feed(aitBytes(1, 13, 20, 6));
    EXPECT_EQ(client.deliveries().size(), 1U) << "later ones the storage decides on";
    EXPECT_EQ(BrowserAITCatcherTestAccess::storages(catcher), 1U);
}

TEST_F(ACatcher, FilesASectionUnderTheChannelOfTheMoment) {
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
    catcher.sendAITData("4:5:6", section);
    EXPECT_EQ(client.deliveries().back(), (Delivery{4, 5, 6, section})) << "the lock was released";
}

TEST_F(ACatcher, ReplaysAChannelOnAThreadOfItsOwn) {
    catcher.updateCurrentChannelInfo(0, 1, 2, 3);
    feed(aitBytes(1, 0, 2, 1));
    feed(aitBytes(1, 2, 2, 2));
    recording::reset();
    EXPECT_EQ(catcher.getCurrentChannelAIT(1, 2, 3), 1);
    ASSERT_TRUE(deliveredEventually(5));
    EXPECT_EQ(client.deliveries()[2], (Delivery{1, 2, 3, aitBytes(1, 0, 2, 1)}));
    EXPECT_EQ(client.deliveries()[3], (Delivery{1, 2, 3, {}})) << "an empty slot goes out as an empty vector";
    EXPECT_EQ(client.deliveries()[4], (Delivery{1, 2, 3, aitBytes(1, 2, 2, 2)}));
    EXPECT_THAT(messagesOf(kFile), testing::IsSupersetOf({"onId:1,tsId:2,sId:3\n", "This channel has 3 sections.\n"}));
    EXPECT_THAT(recording::threadsCreated(), testing::ElementsAre(recording::ThreadKind::detached));
}

TEST_F(ACatcher, RepeatsTheLastSlotForACountAboveTwelve) {
    catcher.updateCurrentChannelInfo(0, 1, 2, 3);
    feed(aitBytes(1, 11, 13, 1));
    catcher.getAITDataAsyc("1:2:3");
    const std::vector<Delivery> deliveries = client.deliveries();
    ASSERT_EQ(deliveries.size(), 15U);
    for (std::size_t index = 12; index < 15; ++index) {
        EXPECT_EQ(deliveries[index].section, aitBytes(1, 11, 13, 1));
    }
}

TEST_F(ACatcher, ReplaysNothingForVersionZeroOrAnUnknownChannel) {
    catcher.updateCurrentChannelInfo(0, 1, 2, 3);
    feed(aitBytes(0, 0, 2, 1));
    recording::reset();
    catcher.getAITDataAsyc("1:2:3");
    EXPECT_THAT(messagesOf(kFile), testing::ElementsAre("This channel has 0 sections.\n"));
    recording::reset();
    catcher.getAITDataAsyc("9:9:9");
    EXPECT_THAT(messagesOf(kFile), testing::ElementsAre("This Channel AIT is not stored.\n"));
    EXPECT_EQ(client.deliveries().size(), 1U);
}

TEST_F(ACatcher, LogsAWorkerThatCannotBeMadeAndLosesTheRequest) {
    recording::setThreadCreateResult(11);
    EXPECT_EQ(catcher.getCurrentChannelAIT(1, 2, 3), 1);
    EXPECT_THAT(recording::logOf("thread_proc_AITData"),
                testing::ElementsAre(
                    logged::tagged(kFailure, kTag, kFile, "thread_proc_AITData", "pthread_create() failed.\n\n")));
}

TEST_F(ACatcher, DropsSectionsWhileThereIsNoClient) {
    api->unRegisterClient(nullptr);
    catcher.updateCurrentChannelInfo(0, 1, 2, 3);
    EXPECT_EQ(feed(aitBytes(1, 0, 0, 1)), 0);
    EXPECT_TRUE(client.deliveries().empty());
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

/// Ends its process from inside of a delivery.
class EndingClient final : public velmora::dtv::AITSectionClient {
public:
    std::promise<void> mayEnd;
    void onCurrentChannelAIT(std::uint16_t, std::uint16_t, std::uint16_t, const Bytes&) override {
        mayEnd.get_future().wait();
        std::exit(3);
    }
};

TEST(TheProcess, EndsFromInsideADeliveryThoughReplaysWaitForIt) {
    // A process of its own, which forks before it has threads.
    const pid_t child = fork();
    if (child == 0) {
        static EndingClient client;
        BrowserAITCatcher* const catcher = BrowserAITCatcher::getInstance();
        catcher->updateCurrentChannelInfo(0, 7, 8, 9);
        catcher->updateAIT(asText(aitBytes(1, 0, 0, 1)));
        DvbAITSectionAPI::getInstance()->registerClient(&client);
        // Each has found its section before it waits for the delivery that goes on.
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

TEST(TheAitApi, HoldsOneClientWhoeverIsNamedWhenItGoes) {
    KeepingAitClient first;
    KeepingAitClient second;
    DvbAITSectionAPI* const api = DvbAITSectionAPI::getInstance();
    EXPECT_FALSE(api->isRegistered(&first));
    EXPECT_TRUE(api->registerClient(&first));
    EXPECT_TRUE(api->isRegistered(&second)) << "the argument is not compared";
    EXPECT_TRUE(api->registerClient(&second));
    api->notifyCurrentChannelAIT(1, 2, 3, {1});
    EXPECT_TRUE(first.deliveries().empty());
    EXPECT_EQ(second.deliveries().size(), 1U);
    EXPECT_TRUE(api->unRegisterClient(&first));
    EXPECT_FALSE(api->isRegistered(&second));
    api->notifyCurrentChannelAIT(1, 2, 3, {1});
    EXPECT_EQ(second.deliveries().size(), 1U);
}

TEST(TheAitApi, RegistersItsCallerAndReplaysTheProcesssCatcher) {
    BrowserAITCatcher* const catcher = BrowserAITCatcher::getInstance();
    catcher->updateCurrentChannelInfo(0, 7, 8, 9);
    catcher->updateAIT(asText(aitBytes(1, 0, 0, 1)));
    KeepingAitClient client;
    EXPECT_TRUE(DvbAITSectionAPI::getInstance()->getCurrentChannelAIT(&client, 7, 8, 9));
    EXPECT_TRUE(eventually([&] { return client.deliveries().size() == 1; }));
    DvbAITSectionAPI::getInstance()->unRegisterClient(&client);
}
