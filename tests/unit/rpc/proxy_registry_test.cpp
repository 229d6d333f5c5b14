// The proxy's clients: which are registered, which are called, and how long they stay alive.
#include <boost/weak_ptr.hpp>

#include "proxy_fixture.h"

using lo::browserdvbservice::ClientInterface;
namespace messages = lo::browserdvbservice::messages;

TEST_F(AProxy, RefusesAClientThatIsRegisteredAlready) {
    const boost::shared_ptr<RecordingClient> client = addedClient();
    recording::reset();
    EXPECT_EQ(proxy->addClient(client), -17);
    EXPECT_THAT(recording::log(), testing::ElementsAre(logged::plain(0x5F03E8, kProxyFile, "addClient",
                                                                     "Client already exists, 1 total.\n")));
    injectEvent<messages::OnAllTerminalStoped>();
    EXPECT_EQ(client->calls().size(), 1U);
}

TEST_F(AProxy, CountsItsClientsAsTheyComeAndGo) {
    const boost::shared_ptr<RecordingClient> first(new RecordingClient);
    const boost::shared_ptr<RecordingClient> second(new RecordingClient);
    EXPECT_EQ(proxy->addClient(first), 0);
    EXPECT_EQ(proxy->addClient(second), 0);
    EXPECT_EQ(proxy->removeClient(first), 0);
    EXPECT_THAT(recording::log(),
                testing::ElementsAre(logged::plain(0x5F0FA0, kProxyFile, "addClient", "success, 1 total.\n"),
                                     logged::plain(0x5F0FA0, kProxyFile, "addClient", "success, 2 total.\n"),
                                     logged::plain(0x5F0FA0, kProxyFile, "removeClient", "success, 1 remaining.\n")));
    recording::reset();
    EXPECT_EQ(proxy->addClient(second), -17);
    EXPECT_EQ(proxy->removeClient(second), 0);
    EXPECT_EQ(proxy->removeClient(second), -2);
    EXPECT_THAT(recording::log(),
                testing::ElementsAre(
                    logged::plain(0x5F03E8, kProxyFile, "addClient", "Client already exists, 1 total.\n"),
                    logged::plain(0x5F0FA0, kProxyFile, "removeClient", "success, 0 remaining.\n"),
                    logged::plain(0x5F03E8, kProxyFile, "removeClient", "client not found (of 0 known ones)\n")));
}

TEST_F(AProxy, ComparesClientsByObject) {
    const boost::shared_ptr<RecordingClient> client = addedClient();
    const boost::shared_ptr<ClientInterface> sameObject(boost::shared_ptr<int>(new int), client.get());
    EXPECT_EQ(proxy->addClient(sameObject), -17);
    RecordingClient other;
    const boost::shared_ptr<ClientInterface> sameOwner(client, &other);
    EXPECT_EQ(proxy->removeClient(sameOwner), -2);
    EXPECT_EQ(proxy->addClient(sameOwner), 0);
    EXPECT_EQ(proxy->removeClient(sameObject), 0);
    injectEvent<messages::OnAllTerminalStoped>();
    EXPECT_TRUE(client->calls().empty());
    EXPECT_EQ(other.calls().size(), 1U);
    proxy->removeClient(sameOwner);
}

TEST_F(AProxy, KeepsRegisteredClientsAlive) {
    boost::shared_ptr<RecordingClient> client = addedClient();
    const boost::weak_ptr<RecordingClient> observed = client;
    client.reset();
    ASSERT_FALSE(observed.expired());
    proxy->removeClient(observed.lock());
    EXPECT_TRUE(observed.expired());
}

TEST_F(AProxy, KeepsTheOrderAfterARemoval) {
    std::vector<int> order;
    std::vector<boost::shared_ptr<RecordingClient>> clients;
    for (int number = 0; number < 5; ++number) {
        clients.push_back(addedClient());
        clients.back()->reaction = [&order, number] { order.push_back(number); };
    }
    proxy->removeClient(clients[1]);
    proxy->removeClient(clients[0]);
    injectEvent<messages::OnAllTerminalStoped>();
    EXPECT_THAT(order, testing::ElementsAre(2, 3, 4));
    order.clear();
    proxy->addClient(clients[0]);
    injectEvent<messages::OnAllTerminalStoped>();
    EXPECT_THAT(order, testing::ElementsAre(2, 3, 4, 0)) << "who comes back stands last";
}

TEST_F(AProxy, DoesNotKnowAClientThatWasNeverAdded) {
    addedClient();
    recording::reset();
    EXPECT_EQ(proxy->removeClient(boost::shared_ptr<RecordingClient>(new RecordingClient)), -2);
    EXPECT_THAT(recording::log(), testing::ElementsAre(logged::plain(0x5F03E8, kProxyFile, "removeClient",
                                                                     "client not found (of 1 known ones)\n")));
}

TEST_F(AProxy, CallsItsClientsInOrderOfRegistration) {
    std::vector<int> order;
    const boost::shared_ptr<RecordingClient> first = addedClient();
    const boost::shared_ptr<RecordingClient> second = addedClient();
    first->reaction = [&order] { order.push_back(1); };
    second->reaction = [&order] { order.push_back(2); };
    injectEvent<messages::OnAllTerminalStoped>();
    EXPECT_THAT(order, testing::ElementsAre(1, 2));
}

TEST_F(AProxy, CallsTheOthersWhenAClientReturnsAFailure) {
    const boost::shared_ptr<RecordingClient> first = addedClient();
    const boost::shared_ptr<RecordingClient> second = addedClient();
    first->answer = -1;
    injectEvent<messages::OnAllTerminalStoped>();
    EXPECT_EQ(second->calls().size(), 1U);
}

TEST_F(AProxy, KeepsASelfRemovingClientDuringTheEvent) {
    boost::shared_ptr<RecordingClient> leaving(new RecordingClient);
    boost::weak_ptr<RecordingClient> observed = leaving;
    proxy->addClient(leaving);
    const boost::shared_ptr<RecordingClient> staying = addedClient();
    leaving->reaction = [this, &leaving] {
        EXPECT_EQ(proxy->removeClient(leaving), 0);
        leaving.reset();
    };
    bool aliveInNext = false;
    staying->reaction = [&] { aliveInNext = !observed.expired(); };

    injectEvent<messages::OnAllTerminalStoped>();
    EXPECT_TRUE(aliveInNext);
    EXPECT_TRUE(observed.expired());
    EXPECT_EQ(staying->calls().size(), 1U);

    injectEvent<messages::OnAllTerminalStoped>();
    EXPECT_EQ(staying->calls().size(), 2U);
}

TEST_F(AProxy, CallsAClientRemovedDuringTheEvent) {
    const boost::shared_ptr<RecordingClient> first = addedClient();
    const boost::shared_ptr<RecordingClient> second = addedClient();
    first->reaction = [&] { proxy->removeClient(second); };
    injectEvent<messages::OnAllTerminalStoped>();
    EXPECT_EQ(second->calls().size(), 1U);
    first->reaction = nullptr;
    injectEvent<messages::OnAllTerminalStoped>();
    EXPECT_EQ(second->calls().size(), 1U);
}

TEST_F(AProxy, CallsAnAddedClientFromTheNextEventOn) {
    const boost::shared_ptr<RecordingClient> first = addedClient();
    const boost::shared_ptr<RecordingClient> late(new RecordingClient);
    first->reaction = [&] { proxy->addClient(late); };
    injectEvent<messages::OnAllTerminalStoped>();
    EXPECT_TRUE(late->calls().empty());
}

TEST_F(AProxy, SendsCommandsFromInsideAnEvent) {
    const boost::shared_ptr<RecordingClient> client = addedClient();
    client->reaction = [this] {
        frame::MsgIds ids;
        EXPECT_EQ(proxy->cmdDtvInfoRequest(ids, {}), 0);
    };
    injectEvent<messages::OnAllTerminalStoped>();
    EXPECT_EQ(recording::sent().size(), 1U);
}
