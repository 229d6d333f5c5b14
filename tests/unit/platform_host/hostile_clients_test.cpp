// Clients of the transport that send what is no message, too much, or nothing more.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>

#include "descriptors_of.h"
#include "eventually.h"
#include "members.h"
#include "ovx/log.h"
#include "own_log.h"
#include "platform/host/io_service.h"
#include "platform/host/reading_pace.h"
#include "platform/host/section_ring.h"
#include "raw_client.h"
#include "toy_process.h"
#include "without_threads.h"

namespace {

using toy::Member;
constexpr int kClient = frame::CouplingModeClient;
constexpr int kService = frame::CouplingModeService;

/// How often a process's threads have given the processor up by themselves.
long waitsOf(pid_t process) {
    constexpr const char* kName = "voluntary_ctxt_switches:";
    long waits = 0;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
        std::ifstream status(thread.path() / "status");
        for (std::string line; std::getline(status, line);) {
            waits += line.rfind(kName, 0) == 0 ? std::stol(line.substr(std::strlen(kName))) : 0;
        }
    }
    return waits;
}

}  // namespace

TEST(TheTransport, DropsWhatIsNoMessageAndGoesOn) {
    Member service(kService);
    ASSERT_EQ(service.start(), 0);
    RawClient raw("toy");
    ASSERT_TRUE(raw.good);
    const std::vector<std::uint8_t> good = goodPacket();
    raw.send({1});
    raw.send(std::vector<std::uint8_t>(200, 0xEE));
    for (std::size_t length = 1; length < good.size(); ++length) {
        raw.send({good.begin(), good.begin() + static_cast<std::ptrdiff_t>(length)});
    }
    for (std::size_t at = 0; at < good.size() - 2; ++at) {
        std::vector<std::uint8_t> changed = good;
        changed[at] ^= 0x80;
        raw.send(changed);
    }
    raw.send(good);
    ASSERT_TRUE(eventually([&] {
        const std::vector<toy::Message> received = service.received();
        return !received.empty() && received.back().text == "hi" && received.back().number == 300;
    }));
    EXPECT_EQ(service.disconnected, 0);
    EXPECT_THAT(logText(), testing::HasSubstr("shorter than an envelope; dropped"));
}

TEST(TheTransport, RefusesWhatIsNoSectionQueueWithTheReason) {
    Member service(kService);
    ASSERT_EQ(service.start(), 0);
    std::string error;
    const std::shared_ptr<host::SectionRing> ring = host::SectionRing::create(100, 8, error);
    const int file = open("/dev/null", O_RDWR | O_CLOEXEC);
    BLOG_WRITE(blog::kAlways, "%s", "opens the log");
    const std::size_t before = descriptorsOf(getpid());
    {
        // The first reason of each peer has a line.
        RawClient nothing("toy");
        nothing.giveQueue("without", {});
        RawClient other("toy");
        // The emulator keeps those that the receiver has no room for.
        const std::size_t several = std::vector<std::string> EMULATOR.empty() ? 3 : 1;
        other.giveQueue("file", std::vector<int>(several, file));
        RawClient longName("toy");
        longName.giveQueue(std::string(65, 'x'), {ring->descriptor()});
        RawClient noName("toy");
        noName.giveQueue("", {ring->descriptor()});
        RawClient many("toy");
        for (const char* name : {"a", "b", "c", "d", "a", "e"}) {
            many.giveQueue(name, {ring->descriptor()});
        }
        for (RawClient* each : {&nothing, &other, &longName, &noName, &many}) {
            each->send(goodPacket());
        }
        ASSERT_TRUE(eventually([&] { return service.received().size() == 5; }));
    }
    ASSERT_TRUE(eventually([&] { return service.disconnected == 5; }));
    EXPECT_TRUE(eventually([before] { return descriptorsOf(getpid()) == before; })) << descriptorsOf(getpid());
    close(file);
    const std::string log = logText();
    EXPECT_THAT(log, testing::HasSubstr("section queue without: its memory did not come with it; dropped"));
    EXPECT_THAT(log, testing::HasSubstr("section queue file: its memory may shrink; dropped"));
    EXPECT_THAT(log, testing::HasSubstr(": its name has 65 characters; dropped"));
    EXPECT_THAT(log, testing::HasSubstr("section queue : its name has 0 characters; dropped"));
    EXPECT_THAT(log, testing::HasSubstr("section queue e: the peer has 4 queues already; dropped"));
}

TEST(TheTransport, ClosesWhatIsAttachedToAnEmptyPacket) {
    Member service(kService);
    ASSERT_EQ(service.start(), 0);
    BLOG_WRITE(blog::kAlways, "%s", "opens the log");
    const std::size_t before = descriptorsOf(getpid());
    RawClient("toy").send("", {STDIN_FILENO});
    {
        RawClient announcing("toy");
        announcing.send("DTVA", {});
        announcing.send("", {STDIN_FILENO});
    }
    ASSERT_TRUE(eventually([&] { return service.disconnected == 2; })) << "an empty packet is taken for the end";
    EXPECT_TRUE(eventually([before] { return descriptorsOf(getpid()) == before; })) << descriptorsOf(getpid());
}

TEST(TheTransport, LetsClientsWaitWhileItHasNoDescriptors) {
    const pid_t child = startServiceProcess("scarce");
    const std::shared_ptr<void> ended(nullptr, [child](void*) { killAndReap(child); });
    ASSERT_TRUE(eventually([] { return RawClient("scarce").good; }));
    RawClient("scarce").send({1});
    ASSERT_TRUE(eventually([] { return timesLogged("packet of 1 bytes") == 1; })) << "the log is open";
    rlimit before{};
    ASSERT_EQ(prlimit(child, RLIMIT_NOFILE, nullptr, &before), 0);
    const rlimit few{20, before.rlim_max};
    ASSERT_EQ(prlimit(child, RLIMIT_NOFILE, &few, nullptr), 0);
    std::vector<std::unique_ptr<RawClient>> clients;
    for (int count = 0; count < 40; ++count) {
        clients.push_back(std::make_unique<RawClient>("scarce"));
    }
    ASSERT_TRUE(eventually([] { return timesLogged("clients must wait: Too many open files") >= 1; })) << logText();
    const long waits = waitsOf(child);
    EXPECT_TRUE(eventually([&] { return waitsOf(child) >= waits + 3; })) << "a thread that spins never waits";
    EXPECT_LE(timesLogged("clients must wait"), 3U) << "again only for what two earlier clients have given back";
    ASSERT_EQ(prlimit(child, RLIMIT_NOFILE, &before, nullptr), 0);
    for (const std::unique_ptr<RawClient>& client : clients) {
        client->send({1});
    }
    EXPECT_TRUE(eventually([] { return timesLogged("packet of 1 bytes") == 41; })) << timesLogged("packet of 1 bytes");
}

TEST(TheTransport, HandlesWhatAClientHasSentBeforeItGoes) {
    constexpr std::size_t kPackets = 20;
    Member service(kService);
    ASSERT_EQ(service.start(), 0);
    service.holdHandler = true;
    {
        RawClient client("toy");
        client.send(goodPacket());
        ASSERT_TRUE(eventually([&] { return service.received().size() == 1; })) << "the handler waits now";
        for (std::size_t packet = 1; packet < kPackets; ++packet) {
            client.send(goodPacket());
        }
        // The system tells of the end before the packets if the client has not read all of its own.
        EXPECT_EQ(service.send(1, "not read"), 0);
    }
    service.holdHandler = false;
    EXPECT_TRUE(eventually([&] { return service.disconnected == 1; }));
    EXPECT_EQ(service.received().size(), kPackets);
}

TEST(TheTransport, HandlesWhatAClientHasSentBeforeItGoesWhileMoreWaitsForIt) {
    constexpr std::size_t kPackets = 20;
    Member service(kService);
    ASSERT_EQ(service.start(), 0);
    service.holdHandler = true;
    {
        RawClient client("toy");
        client.send(goodPacket());
        ASSERT_TRUE(eventually([&] { return service.received().size() == 1; })) << "the handler waits now";
        for (std::size_t packet = 1; packet < kPackets; ++packet) {
            client.send(goodPacket());
        }
        const std::string text(100000, 'x');
        constexpr int kMoreThanTheSocketHolds = 20;
        for (int count = 0; count < kMoreThanTheSocketHolds; ++count) {
            EXPECT_EQ(service.send(1, text), 0);
        }
    }
    service.holdHandler = false;
    EXPECT_TRUE(eventually([&] { return service.disconnected == 1; }));
    EXPECT_EQ(service.received().size(), kPackets);
}

TEST(TheTransport, LogsTheFirstBadMessageOfAPeerAlone) {
    Member service(kService, "once");
    ASSERT_EQ(service.start(), 0);
    {
        RawClient raw("once");
        for (int count = 0; count < 50; ++count) {
            raw.send({9, 9, 9});
        }
    }
    ASSERT_TRUE(eventually([&] { return service.disconnected == 1; }));
    EXPECT_EQ(timesLogged("packet of 3 bytes"), 1U);
    EXPECT_THAT(logText(), testing::HasSubstr("50 messages were dropped in all"));
}

TEST(TheTransport, CutsAStalledClientOffAndServesTheOthers) {
    Member service(kService);
    ASSERT_EQ(service.start(), 0);
    const RawClient stalled("toy");
    Member client(kClient);
    ASSERT_EQ(client.start(), 0);
    ASSERT_TRUE(eventually([&] { return service.connected == 2; }));
    const std::string text(4096, 'x');
    std::uint32_t sent = 0;
    ASSERT_TRUE(eventually([&] {
        constexpr int kBurst = 64;
        for (int count = 0; count < kBurst; ++count) {
            EXPECT_EQ(service.send(sent++, text), 0);
        }
        return service.disconnected == 1;
    }));
    EXPECT_TRUE(eventually([&] { return client.received().size() == sent; }));
    EXPECT_THAT(logText(), testing::HasSubstr("has stalled"));
}

TEST(TheTransport, ServesClientsThatShareAThreadInTurn) {
    constexpr std::size_t kEach = 40;
    constexpr std::size_t kMostInTurn = 4;
    constexpr int kFollowed = host::IOService::kMostFollowers;
    Member service(kService);
    ASSERT_EQ(service.start(), 0);
    service.holdHandler = true;
    std::vector<std::unique_ptr<RawClient>> followed;
    for (int count = 0; count < kFollowed; ++count) {
        followed.push_back(std::make_unique<RawClient>("toy"));
    }
    RawClient first("toy");
    RawClient second("toy");
    RawClient third("toy");
    ASSERT_TRUE(eventually([&] { return service.connected == kFollowed + 3; }));
    first.send(goodPacket());
    ASSERT_TRUE(eventually([&] { return service.received().size() == 1; })) << "the handler waits now";
    for (std::size_t packet = 0; packet < kEach; ++packet) {
        second.send(goodPacket());
        third.send(goodPacket());
    }
    service.holdHandler = false;
    ASSERT_TRUE(eventually([&] { return service.received().size() == 2 * kEach + 1; }));
    const std::vector<toy::Message> received = service.received();
    for (std::size_t turn = 1; turn < received.size(); turn += 2 * kMostInTurn) {
        for (std::size_t packet = 0; packet < kMostInTurn; ++packet) {
            EXPECT_EQ(received[turn + packet].peer, received[1].peer) << turn + packet;
            EXPECT_NE(received[turn + kMostInTurn + packet].peer, received[1].peer) << turn + kMostInTurn + packet;
        }
    }
}

TEST(TheTransport, HandlesOneMessageAtATimeOfClientsWithThreadsOfTheirOwn) {
    Member service(kService);
    ASSERT_EQ(service.start(), 0);
    service.holdHandler = true;
    RawClient first("toy");
    RawClient second("toy");
    ASSERT_TRUE(eventually([&] { return service.connected == 2; }));
    first.send(goodPacket());
    ASSERT_TRUE(eventually([&] { return service.received().size() == 1; })) << "the handler waits now";
    second.send(goodPacket());
    EXPECT_TRUE(eventually([&] { return second.unread() == 0; })) << "the second one's thread has received it";
    EXPECT_EQ(service.received().size(), 1U);
    service.holdHandler = false;
    EXPECT_TRUE(eventually([&] { return service.received().size() == 2; }));
}

TEST(TheTransport, ReadsAFloodOnAndOnAndServesTheOthersMeanwhile) {
    constexpr std::size_t kFlood = std::size_t{3} * host::ReadingPace::kBurst;
    setenv("DTV_CLIENT_RATE", "5000", 1);
    Member service(kService);
    ASSERT_EQ(service.start(), 0);
    RawClient flooding("toy");
    ASSERT_TRUE(eventually([&] { return service.connected == 1; }));
    const std::uint32_t floodingPeer = service.lastPeer;
    RawClient other("toy");
    std::atomic<bool> enough{false};
    std::thread flood([&] {
        while (!enough) {
            flooding.send(goodPacket());
        }
    });
    const auto hasReceived = [&](bool ofFlood, std::size_t count) {
        const std::vector<toy::Message> received = service.received();
        const auto ofPeer = std::count_if(received.begin(), received.end(), [&](const toy::Message& each) {
            return (each.peer == floodingPeer) == ofFlood;
        });
        return static_cast<std::size_t>(ofPeer) >= count;
    };
    EXPECT_TRUE(eventually([&] { return hasReceived(true, host::ReadingPace::kBurst); }));
    other.send(goodPacket());
    EXPECT_TRUE(eventually([&] { return hasReceived(false, 1); }));
    EXPECT_TRUE(eventually([&] { return hasReceived(true, kFlood); }));
    enough = true;
    flood.join();
}

TEST(TheTransport, ReadsWhatAFloodLeftBehindWhenItsClientHasGone) {
    constexpr std::size_t kFlood = std::size_t{3} * host::ReadingPace::kBurst / 2;
    setenv("DTV_CLIENT_RATE", "2000", 1);
    Member service(kService);
    ASSERT_EQ(service.start(), 0);
    {
        RawClient flooding("toy");
        for (std::size_t packet = 0; packet < kFlood; ++packet) {
            flooding.send(goodPacket());
        }
    }
    EXPECT_TRUE(eventually([&] { return service.disconnected == 1; }));
    EXPECT_THAT(service.received(), testing::SizeIs(kFlood));
}
