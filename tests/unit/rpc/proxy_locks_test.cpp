// The component mutex: what happens under it, and what does not.
#include <atomic>
#include <thread>

#include "proxy_fixture.h"
#include "some_values.h"

using namespace lo::browserdvbservice;

TEST_F(AProxy, LocksOnceForEachClientAccess) {
    const boost::shared_ptr<RecordingClient> client(new RecordingClient);
    seams::watchMutex(proxy->componentMutex());
    proxy->addClient(client);
    EXPECT_EQ(seams::timesLocked(), 1U);
    proxy->addClient(client);
    EXPECT_EQ(seams::timesLocked(), 2U) << "a client that is refused";
    injectEvent<messages::OnAllTerminalStoped>();
    EXPECT_EQ(seams::timesLocked(), 3U) << "an event";
    proxy->removeClient(client);
    EXPECT_EQ(seams::timesLocked(), 4U);
    proxy->removeClient(client);
    EXPECT_EQ(seams::timesLocked(), 5U) << "a client that is not known";
    EXPECT_FALSE(proxy->isLocked());
}

TEST_F(AProxy, HoldsItsMutexUntilARegistryLineIsWritten) {
    const boost::shared_ptr<RecordingClient> client(new RecordingClient);
    std::vector<bool> locked;
    seams::setLineHook([&] { locked.push_back(proxy->isLocked()); });
    proxy->addClient(client);
    proxy->addClient(client);
    proxy->removeClient(client);
    proxy->removeClient(client);
    EXPECT_EQ(locked, std::vector<bool>({true, true, true, true}));
}

TEST_F(AProxy, CallsEachOfItsClientsWithoutItsMutex) {
    const boost::shared_ptr<RecordingClient> first = addedClient();
    const boost::shared_ptr<RecordingClient> second = addedClient();
    std::vector<bool> locked;
    first->reaction = [&] { locked.push_back(proxy->isLocked()); };
    second->reaction = first->reaction;
    injectEvent<messages::OnAllTerminalStoped>();
    EXPECT_EQ(locked, std::vector<bool>({false, false}));
}

TEST_F(AProxy, SendsWithoutItsMutex) {
    seams::watchMutex(proxy->componentMutex());
    ServiceInterface& service = *proxy;
#define EXPECTED_COMMAND(operation, Message, decimal, hexadecimal, bytes, layout) \
    callWithSomeValues(service, &ServiceInterface::operation);
#include "expected_messages.inc"
    EXPECT_EQ(seams::timesLocked(), 0U);
}

// The thread sanitizer reports an access without the mutex.
TEST_F(AProxy, TakesAndLosesClientsWhileEventsArrive) {
    constexpr int kRounds = 300;
    recording::setLogThreshold(0);
    const boost::shared_ptr<RecordingClient> staying = addedClient();
    const boost::shared_ptr<RecordingClient> visiting(new RecordingClient);
    std::atomic<int> ready{0};
    const auto meet = [&ready] {
        ++ready;
        while (ready < 2) {
            std::this_thread::yield();
        }
    };
    int refused = 0;
    std::thread registrar([&] {
        meet();
        for (int round = 0; round < kRounds; ++round) {
            refused += proxy->addClient(visiting) != 0 ? 1 : 0;
            refused += proxy->removeClient(visiting) != 0 ? 1 : 0;
        }
    });
    recording::onInjectionThread([&] {
        meet();
        for (int round = 0; round < kRounds; ++round) {
            injectEvent<messages::OnAllTerminalStoped>();
        }
    });
    registrar.join();
    EXPECT_EQ(refused, 0);
    EXPECT_EQ(staying->calls().size(), std::size_t{kRounds});
    EXPECT_EQ(proxy->removeClient(visiting), -2);
}
