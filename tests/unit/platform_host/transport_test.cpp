// The transport between processes: connecting, sending, losing the other side, stopping; and its run directory.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "eventually.h"
#include "members.h"
#include "own_log.h"
#include "raw_client.h"
#include "toy_process.h"
#include "without_threads.h"

namespace {

using toy::Member;
constexpr int kClient = frame::CouplingModeClient;
constexpr int kService = frame::CouplingModeService;

}  // namespace

TEST(TheTransport, CarriesAMessageEachWay) {
    Member service(kService);
    Member client(kClient);
    ASSERT_EQ(service.start(), 0);
    ASSERT_EQ(client.start(), 0);
    EXPECT_EQ(client.send(0x12345678, std::string("a\0b", 3)), 0);
    ASSERT_TRUE(eventually([&] { return service.received().size() == 1; }));
    EXPECT_EQ(service.received()[0].number, 0x12345678U);
    EXPECT_EQ(service.received()[0].text, std::string("a\0b", 3));
    EXPECT_EQ(service.received()[0].peer, service.lastPeer);
    EXPECT_EQ(service.send(9, "back"), 0);
    ASSERT_TRUE(eventually([&] { return client.received().size() == 1; }));
    EXPECT_EQ(client.received()[0].text, "back");
}

TEST(TheTransport, CarriesWhatIsSentRightAfterTheStart) {
    Member service(kService);
    ASSERT_EQ(service.start(), 0);
    Member client(kClient);
    ASSERT_EQ(client.start(), 0);
    EXPECT_EQ(client.send(1), 0);
    EXPECT_TRUE(eventually([&] { return service.received().size() == 1; }));
}

TEST(TheTransport, KeepsTheOrderOfTenThousandMessages) {
    Member service(kService);
    Member client(kClient);
    ASSERT_EQ(service.start(), 0);
    ASSERT_EQ(client.start(), 0);
    constexpr std::uint32_t kCount = 10000;
    for (std::uint32_t number = 0; number < kCount; ++number) {
        ASSERT_EQ(client.send(number, "some text that fills the socket"), 0);
    }
    ASSERT_TRUE(eventually([&] { return service.received().size() == kCount; }));
    const std::vector<toy::Message> received = service.received();
    for (std::uint32_t number = 0; number < kCount; ++number) {
        ASSERT_EQ(received[number].number, number);
    }
}

TEST(TheTransport, AnswersOneOfItsClientsOrTellsAll) {
    Member service(kService);
    ASSERT_EQ(service.start(), 0);
    Member first(kClient);
    ASSERT_EQ(first.start(), 0);
    ASSERT_TRUE(eventually([&] { return service.connected == 1; }));
    const std::uint32_t firstPeer = service.lastPeer;
    Member second(kClient);
    ASSERT_EQ(second.start(), 0);
    ASSERT_TRUE(eventually([&] { return service.connected == 2; }));
    EXPECT_EQ(service.send(1, "to one", firstPeer), 0);
    EXPECT_EQ(service.send(2, "to all"), 0);
    ASSERT_TRUE(eventually([&] { return first.received().size() == 2 && second.received().size() == 1; }));
    EXPECT_EQ(second.received()[0].number, 2U);
    EXPECT_LT(service.send(3, "to nobody", 4711), 0);
}

TEST(TheTransport, RefusesSendsAtOnceWhileTheServiceIsAway) {
    Member client(kClient);
    ASSERT_EQ(client.start(), 0);
    EXPECT_LT(client.send(1), 0);
    ASSERT_TRUE(eventually([&] { return client.failed == 1; }));
    EXPECT_EQ(client.connected, 0);
}

TEST(TheTransport, FindsAServiceThatComesLater) {
    Member client(kClient);
    ASSERT_EQ(client.start(), 0);
    ASSERT_TRUE(eventually([&] { return client.failed == 1; }));
    Member service(kService);
    ASSERT_EQ(service.start(), 0);
    ASSERT_TRUE(eventually([&] { return client.connected == 1; }));
    EXPECT_EQ(client.send(1), 0);
    EXPECT_TRUE(eventually([&] { return service.received().size() == 1; }));
    EXPECT_EQ(client.failed, 1);
}

TEST(TheTransport, ComesBackByItselfAfterItsServiceWasKilled) {
    Member client(kClient, "killed");
    pid_t process = startServiceProcess("killed");
    ASSERT_EQ(client.start(), 0);
    for (int round = 1; round <= 3; ++round) {
        ASSERT_TRUE(eventually([&] { return client.connected == round; }));
        EXPECT_EQ(client.send(1), 0);
        killAndReap(process);
        ASSERT_TRUE(eventually([&] { return client.disconnected == round; }));
        EXPECT_LT(client.send(2), 0);
        process = startServiceProcess("killed");
    }
    killAndReap(process);
}

TEST(TheTransport, TellsTheServiceOfAClientThatGoes) {
    Member service(kService);
    ASSERT_EQ(service.start(), 0);
    {
        Member client(kClient);
        ASSERT_EQ(client.start(), 0);
        ASSERT_TRUE(eventually([&] { return service.connected == 1; }));
    }
    EXPECT_TRUE(eventually([&] { return service.disconnected == 1; }));
    EXPECT_EQ(service.send(1), 0) << "telling nobody is no failure";
}

TEST(TheTransport, RefusesASecondServiceOfTheSameName) {
    Member service(kService);
    ASSERT_EQ(service.start(), 0);
    Member second(kService);
    EXPECT_LT(second.start(), 0);
    EXPECT_THAT(logText(), testing::HasSubstr("another service runs under this name"));
    Member client(kClient);
    ASSERT_EQ(client.start(), 0);
    EXPECT_EQ(client.send(1), 0);
}

TEST(TheTransport, TakesOverWhatAKilledServiceLeft) {
    const pid_t process = startServiceProcess("left");
    ASSERT_TRUE(eventually([] { return RawClient("left").good; }));
    killAndReap(process);
    Member service(kService, "left");
    EXPECT_EQ(service.start(), 0);
    EXPECT_TRUE(RawClient("left").good);
}

TEST(TheTransport, DoesNotStartWithoutAThread) {
    for (const int mode : {kService, kClient}) {
        Member member(mode);
        {
            const WithoutThreads none;
            EXPECT_EQ(member.start(), -EAGAIN);
        }
        EXPECT_EQ(member.start(), 0);
    }
    EXPECT_EQ(timesLogged("cannot start the transport thread: "), 2U);
}

TEST(TheTransport, RefusesAMessageThatFitsNoPacket) {
    Member service(kService);
    Member client(kClient);
    ASSERT_EQ(service.start(), 0);
    ASSERT_EQ(client.start(), 0);
    EXPECT_EQ(client.send(1, std::string(std::size_t{8} << 20U, 'x')), -EMSGSIZE);
    EXPECT_EQ(client.send(1, std::string(std::size_t{1} << 20U, 'x')), -EMSGSIZE) << "its receiver takes none so long";
    EXPECT_EQ(client.send(2), 0);
    EXPECT_TRUE(eventually([&] { return service.received().size() == 1; }));
}

TEST(TheTransport, RefusesAMessageThatFitsNoPacketWhileOthersWait) {
    Member service(kService);
    Member client(kClient);
    ASSERT_EQ(service.start(), 0);
    ASSERT_EQ(client.start(), 0);
    service.holdHandler = true;
    constexpr std::uint32_t kMoreThanTheSocketHolds = 30;
    for (std::uint32_t number = 0; number < kMoreThanTheSocketHolds; ++number) {
        ASSERT_EQ(client.send(number, std::string(100000, 'x')), 0);
    }
    EXPECT_EQ(client.send(kMoreThanTheSocketHolds, std::string(std::size_t{1} << 20U, 'x')), -EMSGSIZE);
    service.holdHandler = false;
    EXPECT_EQ(client.send(kMoreThanTheSocketHolds), 0);
    EXPECT_TRUE(eventually([&] { return service.received().size() == kMoreThanTheSocketHolds + 1; }));
    EXPECT_EQ(service.disconnected, 0);
}

TEST(TheTransport, ConnectsAgainWhereNoThreadCanSendWhatWaits) {
    Member service(kService);
    Member client(kClient);
    ASSERT_EQ(service.start(), 0);
    ASSERT_EQ(client.start(), 0);
    service.holdHandler = true;
    {
        const WithoutThreads none;
        constexpr int kMoreThanTheSocketHolds = 30;
        int sent = 0;
        while (sent < kMoreThanTheSocketHolds && client.send(7, std::string(100000, 'x')) == 0) {
            ++sent;
        }
        EXPECT_LT(sent, kMoreThanTheSocketHolds);
    }
    service.holdHandler = false;
    EXPECT_TRUE(eventually([&] { return client.connected == 2; }));
    EXPECT_EQ(timesLogged("no thread for packets that wait: "), 1U);
    EXPECT_EQ(client.send(8, "after it"), 0);
    EXPECT_TRUE(eventually([&] { return service.received().back().text == "after it"; }));
}

TEST(TheTransport, MayBeStoppedFromInsideAHandler) {
    Member service(kService);
    Member client(kClient);
    ASSERT_EQ(service.start(), 0);
    ASSERT_EQ(client.start(), 0);
    client.stopFromHandler = true;
    ASSERT_TRUE(eventually([&] { return service.connected == 1; }));
    EXPECT_EQ(service.send(1), 0);
    ASSERT_TRUE(eventually([&] { return client.disconnected == 1; }));
    EXPECT_LT(client.send(1), 0);
}

TEST(TheTransport, RunsNoHandlerOnceItIsStopped) {
    Member service(kService);
    Member client(kClient);
    ASSERT_EQ(service.start(), 0);
    ASSERT_EQ(client.start(), 0);
    ASSERT_TRUE(eventually([&] { return service.connected == 1; }));
    service.send(1);
    EXPECT_EQ(client.stop(), 0);
    const std::size_t received = client.received().size();
    service.send(2);
    EXPECT_EQ(client.received().size(), received);
    EXPECT_LT(client.send(1), 0);
    EXPECT_EQ(client.start(), 0);
    EXPECT_TRUE(eventually([&] { return client.connected == 2; }));
}

TEST(TheRunDirectory, AdmitsItsOwnerAlone) {
    Member service(kService);
    ASSERT_EQ(service.start(), 0);
    struct stat found {};
    ASSERT_EQ(stat((kOwnRunDirectory + "/toy.sock").c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & 0777U, 0600U);
    ASSERT_EQ(stat(kOwnRunDirectory.c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & 0777U, 0700U);
}

TEST(TheRunDirectory, IsRefusedWhenItIsOpenToOthers) {
    ASSERT_EQ(chmod(kOwnRunDirectory.c_str(), 0755), 0);
    Member service(kService);
    EXPECT_LT(service.start(), 0);
    ASSERT_EQ(chmod(kOwnRunDirectory.c_str(), 0700), 0);
    EXPECT_THAT(logText(), testing::HasSubstr("is open to others (mode 755, 700 needed)"));
}
