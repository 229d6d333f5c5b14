// The filter table and the client registry: what their lock covers, their order, and which entries count as equal.
#include <thread>

#include "filter_fixture.h"
#include "waits_for_lock.h"

namespace {

class ARegistry : public AFilter {
protected:
    boost::shared_ptr<FilterParameter> record(const std::string& name, KeepingSectionClient& of) {
        return FilterParameter::create(&of, name, 1, match, bits, 3);
    }
    boost::shared_ptr<FilterParameter> saved(const std::string& name, KeepingSectionClient& of) {
        auto made = record(name, of);
        service->saveFilter(made);
        return made;
    }
    auto filters() { return BrowserDVBServiceTestAccess::filters(*service); }
    auto clients() { return BrowserDVBServiceTestAccess::clients(*service); }
    boost::mutex& lock() { return BrowserDVBServiceTestAccess::registryLock(*service); }

    KeepingSectionClient second;
    KeepingSectionClient third;
};

}  // namespace

TEST_F(ARegistry, TakesItsLockForEveryOperation) {
    auto made = record("a", client);
    EXPECT_TRUE(waitsForLock(lock(), [&] { service->saveFilter(made); }));
    EXPECT_TRUE(waitsForLock(lock(), [&] { service->findFilterParameterBySessionName("a"); }));
    EXPECT_TRUE(waitsForLock(lock(), [&] { BrowserDVBServiceTestAccess::deliver(*service, {}); }));
    EXPECT_TRUE(waitsForLock(lock(), [&] { service->removeFilter(made); }));
    EXPECT_TRUE(waitsForLock(lock(), [&] { service->registerClient(&client); }));
    EXPECT_TRUE(waitsForLock(lock(), [&] { service->isRegistered(&client); }));
    EXPECT_TRUE(waitsForLock(lock(), [&] { service->unRegisterClient(&client); }));
    EXPECT_TRUE(isFree(lock()));
}

TEST_F(ARegistry, HoldsItsLockOnlyDuringItsLine) {
    std::vector<bool> free;
    recording::setLogAction([&](const recording::LogLine&) { free.push_back(isFree(lock())); });
    service->removeFilter(record("a", client));
    EXPECT_THAT(free, testing::ElementsAre(false));
    free.clear();
    service->registerClient(&client);
    service->unRegisterClient(&client);
    service->unRegisterClient(&client);
    recording::setLogAction(nullptr);
    EXPECT_THAT(free, testing::ElementsAre(true, true, true, true, true, true));
}

TEST_F(ARegistry, StaysWholeWhileThreadsMeetInIt) {
    constexpr int kRounds = 200;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 3; ++thread) {
        threads.emplace_back([this, thread] {
            KeepingSectionClient own;
            const std::string name = "thread " + std::to_string(thread);
            for (int round = 0; round < kRounds; ++round) {
                service->registerClient(&own);
                const auto made = saved(name, own);
                EXPECT_EQ(service->findFilterParameterBySessionName(name), made);
                EXPECT_TRUE(service->isRegistered(&own));
                service->removeFilter(made);
                EXPECT_TRUE(service->unRegisterClient(&own));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_TRUE(filters().empty());
    EXPECT_TRUE(clients().empty());
}

TEST_F(ARegistry, KeepsTheOrderOfTheOthersAfterARemoval) {
    for (KeepingSectionClient* const each : {&client, &second, &third}) {
        EXPECT_TRUE(service->registerClient(each));
    }
    EXPECT_TRUE(service->unRegisterClient(&client));
    EXPECT_THAT(clients(), testing::ElementsAre(&second, &third));
    EXPECT_TRUE(service->registerClient(&client));
    EXPECT_TRUE(service->registerClient(&second));
    EXPECT_THAT(clients(), testing::ElementsAre(&second, &third, &client));

    const auto a = saved("a", client);
    const auto b = saved("b", client);
    const auto c = saved("c", client);
    service->removeFilter(a);
    EXPECT_THAT(filters(), testing::ElementsAre(b, c));
    service->saveFilter(a);
    service->saveFilter(b);
    EXPECT_THAT(filters(), testing::ElementsAre(b, c, a));
}

TEST_F(ARegistry, TellsRecordsApartByTheObject) {
    const auto first = saved("same", client);
    const auto twin = saved("same", client);
    EXPECT_THAT(filters(), testing::ElementsAre(first, twin));
    service->removeFilter(record("same", client));
    EXPECT_THAT(filters(), testing::ElementsAre(first, twin)) << "a third of the same values is not there";
    service->removeFilter(twin);
    EXPECT_THAT(filters(), testing::ElementsAre(first));
    EXPECT_EQ(recordOf("same"), first);
}

TEST_F(ARegistry, KeepsAnEmptyRecordOnceUntilItIsRemoved) {
    const auto before = saved("a", client);
    service->saveFilter({});
    service->saveFilter({});
    EXPECT_EQ(filters().size(), 2U);
    EXPECT_EQ(recordOf("a"), before) << "a search ends before it";
    service->removeFilter({});
    EXPECT_THAT(filters(), testing::ElementsAre(before));
    EXPECT_FALSE(recordOf("b"));
}

TEST_F(ARegistry, KeepsAClientWhileItOwnsAFilter) {
    service->registerClient(&client);
    service->registerClient(&second);
    const auto before = saved("0", third);
    const auto first = saved("1", client);
    const auto last = saved("2", client);
    EXPECT_TRUE(service->unRegisterClient(&second)) << "it owns none";
    service->removeFilter(first);
    EXPECT_FALSE(service->unRegisterClient(&client)) << "it owns another";
    EXPECT_THAT(clients(), testing::ElementsAre(&client));
    service->removeFilter(last);
    EXPECT_TRUE(service->unRegisterClient(&client));
    EXPECT_TRUE(clients().empty());
    EXPECT_THAT(filters(), testing::ElementsAre(before));
}

TEST_F(ARegistry, RefusesToUnregisterAStrangerThatOwnsAFilter) {
    const auto made = saved("a", client);
    EXPECT_FALSE(service->unRegisterClient(&client));
    EXPECT_TRUE(clients().empty());
}

TEST_F(ARegistry, TakesANullClientAsAnyOther) {
    EXPECT_FALSE(service->isRegistered(nullptr));
    EXPECT_TRUE(service->registerClient(nullptr));
    EXPECT_TRUE(service->isRegistered(nullptr));
    EXPECT_TRUE(service->unRegisterClient(nullptr));
    EXPECT_FALSE(service->isRegistered(nullptr));
}

TEST_F(ARegistry, WritesNothingButTheTracesOfItsClients) {
    auto made = record("a", client);
    service->saveFilter(made);
    service->saveFilter(made);
    service->findFilterParameterBySessionName("a");
    service->findFilterParameterBySessionName("b");
    service->isRegistered(&client);
    service->removeFilter(made);
    EXPECT_TRUE(logged::story().empty());
    service->registerClient(&client);
    service->unRegisterClient(&client);
    service->unRegisterClient(&client);
    EXPECT_THAT(logged::story(),
                testing::ElementsAre("-> registerClient", "<- registerClient", "-> unRegisterClient",
                                     "<- unRegisterClient", "-> unRegisterClient", "<- unRegisterClient"));
}

TEST_F(ARegistry, CopiesTheLengthOfThePatterns) {
    unsigned char pattern[] = {1, 2, 3, 4};
    unsigned char patternBits[] = {5, 6, 7, 8};
    const auto one = FilterParameter::create(&client, "a", 1, pattern, patternBits, 1);
    const auto four = FilterParameter::create(&client, "a", 0xFFFFFFFF, pattern, patternBits, 4);
    std::fill(std::begin(pattern), std::end(pattern), static_cast<unsigned char>(9));
    std::fill(std::begin(patternBits), std::end(patternBits), static_cast<unsigned char>(9));
    EXPECT_THAT(one->mask(), testing::ElementsAre(1));
    EXPECT_THAT(one->mask_bits(), testing::ElementsAre(5));
    EXPECT_THAT(four->mask(), testing::ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(four->mask_bits(), testing::ElementsAre(5, 6, 7, 8));
    EXPECT_EQ(four->pid(), 0xFFFFFFFFU);
}

TEST_F(ARegistry, KeepsARecordsReportsApart) {
    auto made = record("a", client);
    made->setDataSlot("one");
    made->setDataSlot("two");
    EXPECT_EQ(FilterParameterTestAccess::dataSlot(*made), "two");
    made->setFailed();
    made->closed();
    EXPECT_EQ(FilterParameterTestAccess::dataSlot(*made), "two");
    made->setDataSlot("");
    EXPECT_EQ(FilterParameterTestAccess::dataSlot(*made), "");
    EXPECT_EQ(FilterParameterTestAccess::state(*made), 0x20U);
}
