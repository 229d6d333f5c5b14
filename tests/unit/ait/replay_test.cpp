// Replays of the AIT catcher: what they deliver, and the worker thread.
#include <thread>

#include "catcher_fixture.h"

namespace {

using velmora::dvbservice::BrowserAITCatcher;
using velmora::dvbservice::BrowserAITCatcherTestAccess;

/// Runs the recorded workers one after the other, each on its own thread.
void runKeptWorkers() {
    for (const seams::Worker& worker : seams::keptWorkers()) {
        std::thread([&worker] { worker.run(); }).join();
    }
}

}  // namespace

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
    recording::reset();
    catcher.getAITDataAsyc("1:2:3");
    const std::vector<Delivery> deliveries = client.deliveries();
    ASSERT_EQ(deliveries.size(), 15U);
    const std::string overflow = "AIT section index over flow.\n";
    EXPECT_EQ(messagesOf("browser_AIT_storage.cpp"), std::vector<std::string>({overflow, overflow}));
    for (std::size_t index = 12; index < 15; ++index) {
        EXPECT_EQ(deliveries[index].section, aitBytes(1, 11, 13, 1));
    }
}

TEST_F(ACatcher, ReplaysNothingForVersionZeroOrAnUnknownChannel) {
    catcher.updateCurrentChannelInfo(0, 1, 2, 3);
    feed(aitBytes(0, 0, 2, 1));
    recording::reset();
    catcher.getAITDataAsyc("1:2:3");
    EXPECT_THAT(allMessages(), testing::ElementsAre("This channel has 0 sections.\n"));
    recording::reset();
    catcher.getAITDataAsyc("9:9:9");
    EXPECT_THAT(allMessages(), testing::ElementsAre("This Channel AIT is not stored.\n"));
    EXPECT_EQ(BrowserAITCatcherTestAccess::storages(catcher), 1U) << "asking stores nothing";
    EXPECT_EQ(client.deliveries().size(), 1U);
}

TEST_F(ACatcher, LogsTheSectionCountBeforeItsReplay) {
    catcher.updateCurrentChannelInfo(0, 1, 2, 3);
    feed(aitBytes(1, 0, 1, 1));
    recording::reset();
    catcher.getAITDataAsyc("1:2:3");
    const std::string sent = "ccId:1:2:3,onId:1,tsId:2,sId:3\n";
    EXPECT_THAT(allMessages(), testing::ElementsAre("This channel has 2 sections.\n", sent, sent));
    EXPECT_THAT(functionsOf(kFile), testing::ElementsAre("getAITDataAsyc", "sendAITData", "sendAITData"));
    EXPECT_EQ(recording::log().size(), 3U) << "and no trace";
}

TEST_F(ACatcher, ReplaysNoSectionAboveTheCountOfItsVersion) {
    catcher.updateCurrentChannelInfo(0, 1, 2, 3);
    feed(aitBytes(5, 5, 5, 1));
    feed(aitBytes(4, 0, 0, 2));
    const std::size_t before = client.deliveries().size();
    catcher.getAITDataAsyc("1:2:3");
    ASSERT_EQ(client.deliveries().size(), before + 1);
    EXPECT_EQ(client.deliveries().back(), (Delivery{1, 2, 3, aitBytes(4, 0, 0, 2)}));
}

TEST_F(ACatcher, HoldsItsMutexDuringAReplay) {
    catcher.updateCurrentChannelInfo(0, 1, 2, 3);
    feed(aitBytes(1, 0, 0, 1));
    std::vector<bool> locked;
    client.reaction = [&] { locked.push_back(isDelivering()); };
    catcher.getAITDataAsyc("1:2:3");
    EXPECT_EQ(locked, std::vector<bool>({true}));
}

TEST_F(ACatcher, MakesADetachedWorkerAndDestroysTheAttributes) {
    seams::keepWorkers();
    EXPECT_EQ(catcher.getCurrentChannelAIT(1, 2, 3), 1);
    EXPECT_THAT(seams::threadSteps(), testing::ElementsAre("init", "detach", "create", "destroy"));
    const std::vector<const pthread_attr_t*> attributes = seams::threadAttributes();
    ASSERT_NE(attributes[0], nullptr);
    EXPECT_THAT(attributes, testing::Each(attributes[0]));
    const std::vector<seams::Worker> workers = seams::keptWorkers();
    ASSERT_EQ(workers.size(), 1U);
    EXPECT_EQ(workers[0].entry, &BrowserAITCatcher::AITDataHandler);
    EXPECT_EQ(workers[0].argument, &catcher);
    EXPECT_TRUE(workers[0].isDetached);
    EXPECT_THAT(workers[0].file, testing::HasSubstr(kFile));
    EXPECT_GT(workers[0].line, 0);
    EXPECT_THAT(allMessages(), testing::ElementsAre("onId:1,tsId:2,sId:3\n"));
    EXPECT_THAT(functionsOf(kFile), testing::ElementsAre("getCurrentChannelAIT"));
    EXPECT_EQ(recording::log().size(), 1U) << "and no trace";
    runKeptWorkers();
}

TEST_F(ACatcher, CreatesAPlainWorkerWhenDetachingFails) {
    seams::failDetaching();
    seams::keepWorkers();
    EXPECT_EQ(catcher.getCurrentChannelAIT(1, 2, 3), 1);
    EXPECT_THAT(seams::threadSteps(), testing::ElementsAre("init", "detach", "create", "destroy"));
    const std::vector<const pthread_attr_t*> attributes = seams::threadAttributes();
    EXPECT_EQ(attributes[2], nullptr);
    EXPECT_EQ(attributes[3], attributes[0]);
    EXPECT_EQ(seams::keptWorkers().size(), 1U);
    EXPECT_THAT(allMessages(),
                testing::ElementsAre("onId:1,tsId:2,sId:3\n", "pthread_attr_setdetachstate() failed.\n\n"));
    EXPECT_THAT(functionsOf(kFile), testing::ElementsAre("getCurrentChannelAIT", "thread_proc_AITData"));
    runKeptWorkers();
}

TEST_F(ACatcher, LogsAFailedCreationOfAWorker) {
    recording::setThreadCreateResult(11);
    EXPECT_EQ(catcher.getCurrentChannelAIT(65535, 65534, 65533), 1);
    EXPECT_THAT(allMessages(),
                testing::ElementsAre("onId:65535,tsId:65534,sId:65533\n", "pthread_create() failed.\n\n"));
    EXPECT_THAT(functionsOf(kFile), testing::ElementsAre("getCurrentChannelAIT", "thread_proc_AITData"));
    EXPECT_THAT(seams::threadSteps(), testing::ElementsAre("init", "detach", "create", "destroy"));
    EXPECT_THAT(client.deliveries(), testing::IsEmpty());
}

TEST_F(ACatcher, LogsAFailedDetachAndAFailedCreation) {
    seams::failDetaching();
    recording::setThreadCreateResult(11);
    EXPECT_EQ(catcher.getCurrentChannelAIT(1, 2, 3), 1);
    EXPECT_THAT(allMessages(),
                testing::ElementsAre("onId:1,tsId:2,sId:3\n", "pthread_attr_setdetachstate() failed.\n\n",
                                     "pthread_create() failed.\n\n"));
    EXPECT_THAT(seams::threadSteps(), testing::ElementsAre("init", "detach", "create", "destroy"));
}

TEST_F(ACatcher, ReplaysTheChannelThatWasRequestedLast) {
    for (const std::uint16_t sid : {std::uint16_t{3}, std::uint16_t{4}}) {
        catcher.updateCurrentChannelInfo(0, 1, 2, sid);
        feed(aitBytes(1, 0, 0, sid));
    }
    catcher.updateCurrentChannelInfo(0, 9, 9, 9);
    seams::keepWorkers();
    catcher.getCurrentChannelAIT(1, 2, 3);
    catcher.getCurrentChannelAIT(1, 2, 4);
    ASSERT_EQ(client.deliveries().size(), 2U);
    runKeptWorkers();
    ASSERT_EQ(client.deliveries().size(), 4U);
    EXPECT_EQ(client.deliveries()[2], (Delivery{1, 2, 4, aitBytes(1, 0, 0, 4)}));
    EXPECT_EQ(client.deliveries()[3], client.deliveries()[2]);
}

TEST_F(ACatcher, KeepsTheRequestedChannelAndTheCurrentOneApart) {
    catcher.updateCurrentChannelInfo(0, 1, 2, 3);
    feed(aitBytes(1, 0, 0, 1));
    catcher.updateCurrentChannelInfo(0, 4, 5, 6);
    seams::keepWorkers();
    catcher.getCurrentChannelAIT(1, 2, 3);
    feed(aitBytes(1, 0, 0, 2));
    EXPECT_EQ(client.deliveries().back(), (Delivery{4, 5, 6, aitBytes(1, 0, 0, 2)}));
    catcher.updateCurrentChannelInfo(0, 7, 8, 9);
    runKeptWorkers();
    EXPECT_EQ(client.deliveries().size(), 3U);
    EXPECT_EQ(client.deliveries().back(), (Delivery{1, 2, 3, aitBytes(1, 0, 0, 1)}));
}
