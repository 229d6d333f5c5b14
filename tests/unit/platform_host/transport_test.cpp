// The transport between processes: connecting, sending, losing the other side, and invalid packets.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>

#include "become.h"
#include "descriptors_of.h"
#include "eventually.h"
#include "members.h"
#include "ovx/log.h"
#include "own_log.h"
#include "platform/host/reading_pace.h"
#include "platform/host/section_ring.h"
#include "without_threads.h"

namespace {

using toy::Member;
constexpr int kClient = frame::CouplingModeClient;
constexpr int kService = frame::CouplingModeService;

/// A client that sends raw bytes without an envelope.
class RawClient {
public:
    explicit RawClient(const std::string& name) : descriptor(socket(AF_UNIX, SOCK_SEQPACKET, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = kOwnRunDirectory + "/" + name + ".sock";
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        good = connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;
    ~RawClient() { close(descriptor); }
    void send(const std::vector<std::uint8_t>& bytes) {
        EXPECT_EQ(::send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
    }
    /// Gives a section queue with these descriptors attached.
    void giveQueue(const std::string& name, const std::vector<int>& attached) { send("DTVQ" + name, attached); }
    void send(const std::string& bytes, const std::vector<int>& attached) {
        std::string packet = bytes;
        iovec piece{packet.data(), packet.size()};
        std::vector<cmsghdr> control(CMSG_SPACE(attached.size() * sizeof(int)) / sizeof(cmsghdr) + 1);
        msghdr message{};
        message.msg_iov = &piece;
        message.msg_iovlen = 1;
        if (!attached.empty()) {
            message.msg_control = control.data();
            message.msg_controllen = CMSG_SPACE(attached.size() * sizeof(int));
            control[0].cmsg_level = SOL_SOCKET;
            control[0].cmsg_type = SCM_RIGHTS;
            control[0].cmsg_len = CMSG_LEN(attached.size() * sizeof(int));
            std::memcpy(CMSG_DATA(control.data()), attached.data(), attached.size() * sizeof(int));
        }
        EXPECT_EQ(sendmsg(descriptor, &message, MSG_NOSIGNAL), static_cast<ssize_t>(packet.size()));
    }
    bool good = false;

private:
    int descriptor;
};

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

std::size_t timesLogged(const std::string& text) {
    const std::string log = logText();
    std::size_t times = 0;
    for (std::size_t at = log.find(text); at != std::string::npos; at = log.find(text, at + 1)) {
        ++times;
    }
    return times;
}

/// A complete packet of the test command.
std::vector<std::uint8_t> goodPacket() {
    return {'D',  'T',  'V', '1', 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0,    100, 0, 0, 0, 1, 0, 0, 0, 0,   0xFF, 0xFF,
            0xFF, 0xFF, 0,   0,   0,    15,   7,    0,    0, 1, 0x2C, 0,   0, 0, 2, 0, 0, 0, 0, 'h', 'i'};
}

pid_t startServiceProcess(const std::string& name) {
    const pid_t child = fork();
    if (child == 0) {
        become(TOY_SERVICE, {name});
    }
    return child;
}

void killAndReap(pid_t child) {
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

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
    ASSERT_TRUE(eventually([&] { return service.disconnected == 1; })) << "an empty packet is taken for the end";
    EXPECT_TRUE(eventually([before] { return descriptorsOf(getpid()) == before; })) << descriptorsOf(getpid());
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
    ASSERT_TRUE(eventually([] { return timesLogged("clients must wait: Too many open files") == 1; }));
    const long waits = waitsOf(child);
    EXPECT_TRUE(eventually([&] { return waitsOf(child) >= waits + 3; })) << "a thread that spins never waits";
    EXPECT_EQ(timesLogged("clients must wait"), 1U);
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

TEST(TheTransport, ServesClientsInTurn) {
    constexpr std::size_t kEach = 40;
    constexpr std::size_t kMostInTurn = 4;
    Member service(kService);
    ASSERT_EQ(service.start(), 0);
    service.holdHandler = true;
    RawClient first("toy");
    RawClient second("toy");
    RawClient third("toy");
    ASSERT_TRUE(eventually([&] { return service.connected == 3; }));
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
