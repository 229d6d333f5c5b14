// The section queue between a client and a service of the host platform.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <string_view>
#include <thread>

#include "eventually.h"
#include "members.h"
#include "ovx/log.h"
#include "own_log.h"
#include "velmora/msgqueue/ipc_message_queue.h"

namespace {

using toy::Member;
using velmora::msgqueue::IPCMessage;
using velmora::msgqueue::IPCMessageQueue;
using velmora::msgqueue::SectionDataIPCMessage;

constexpr std::size_t kMessageSize = 4500;
constexpr std::size_t kMessages = 128;
const std::string kName = "SECTION-of-this-test";

bool sendSection(IPCMessageQueue& queue, const std::string& session, const std::vector<std::uint8_t>& section) {
    SectionDataIPCMessage message;
    message.sessionName = session;
    message.dataLength = static_cast<std::uint32_t>(section.size());
    message.data = const_cast<std::uint8_t*>(section.data());
    const bool sent = queue.TrySend(message);
    message.data = nullptr;
    return sent;
}

/// A message with its own buffer, as the reader has it.
struct Reader {
    Reader() { message.data = new std::uint8_t[SectionDataIPCMessage::kBufferSize]; }
    std::vector<std::uint8_t> section() const { return {message.data, message.data + message.dataLength}; }
    SectionDataIPCMessage message;
};

/// Bytes that are no section.
class Garbage : public IPCMessage {
public:
    std::size_t encode(std::uint8_t* bytes, std::size_t) const override {
        constexpr std::string_view kText = "garbage";
        std::copy(kText.begin(), kText.end(), bytes);
        return kText.size();
    }
    bool decode(const std::uint8_t*, std::size_t) override { return false; }
};

std::unique_ptr<IPCMessageQueue> create(const std::string& name = kName) {
    return std::unique_ptr<IPCMessageQueue>(IPCMessageQueue::create(name, kMessageSize, kMessages));
}

/// A client that creates the queue, and a service that gets it.
class ASectionQueue : public testing::Test {
protected:
    ASectionQueue() {
        EXPECT_EQ(service.start(), 0);
        EXPECT_EQ(client.start(), 0);
        EXPECT_TRUE(eventually([this] { return service.connected == 1; }));
    }
    /// The service's end.
    std::unique_ptr<IPCMessageQueue> opened(const std::string& name = kName) {
        std::unique_ptr<IPCMessageQueue> queue;
        EXPECT_TRUE(eventually([&] {
            queue.reset(IPCMessageQueue::open(service.lastPeer, name));
            return queue != nullptr;
        }));
        return queue;
    }

    Member service{frame::CouplingModeService};
    Member client{frame::CouplingModeClient};
};

}  // namespace

TEST_F(ASectionQueue, CarriesSectionsBitExactAndInOrder) {
    const std::unique_ptr<IPCMessageQueue> reader = create();
    const std::unique_ptr<IPCMessageQueue> writer = opened();
    Reader received;
    for (const std::size_t size : {0U, 3U, 188U, 1024U, 4093U, 4096U}) {
        std::vector<std::uint8_t> section(size);
        for (std::size_t at = 0; at < size; ++at) {
            section[at] = static_cast<std::uint8_t>(at * 7);
        }
        ASSERT_TRUE(sendSection(*writer, "session", section));
        reader->Receive(received.message);
        EXPECT_EQ(received.message.sessionName, "session");
        EXPECT_EQ(received.section(), section);
    }
}

TEST_F(ASectionQueue, IsFullAfterItsMessagesAndNeverWaits) {
    const std::unique_ptr<IPCMessageQueue> reader = create();
    const std::unique_ptr<IPCMessageQueue> writer = opened();
    for (std::size_t count = 0; count < kMessages; ++count) {
        ASSERT_TRUE(sendSection(*writer, "s", {1, 2, 3}));
    }
    EXPECT_FALSE(sendSection(*writer, "s", {1, 2, 3}));
    Reader received;
    reader->Receive(received.message);
    EXPECT_TRUE(sendSection(*writer, "s", {1, 2, 3}));
}

TEST_F(ASectionQueue, KeepsTheOrderOfAWriterThatIsFasterThanItsReader) {
    const std::unique_ptr<IPCMessageQueue> reader = create();
    const std::unique_ptr<IPCMessageQueue> writer = opened();
    constexpr std::uint32_t kCount = 20000;
    std::thread writing([&writer] {
        for (std::uint32_t number = 0; number < kCount; ++number) {
            const std::string session = std::to_string(number);
            while (!sendSection(*writer, session, std::vector<std::uint8_t>(number % 4097))) {
                std::this_thread::yield();
            }
        }
    });
    Reader received;
    for (std::uint32_t number = 0; number < kCount; ++number) {
        reader->Receive(received.message);
        ASSERT_EQ(received.message.sessionName, std::to_string(number));
        ASSERT_EQ(received.message.dataLength, number % 4097);
    }
    writing.join();
}

TEST_F(ASectionQueue, TakesSectionsOfSeveralThreads) {
    const std::unique_ptr<IPCMessageQueue> reader = create();
    const std::unique_ptr<IPCMessageQueue> writer = opened();
    std::vector<std::thread> threads;
    for (std::uint8_t thread = 0; thread < 4; ++thread) {
        threads.emplace_back([thread, &writer] {
            for (int count = 0; count < 500; ++count) {
                while (!sendSection(*writer, "s", std::vector<std::uint8_t>(1000, thread))) {
                    std::this_thread::yield();
                }
            }
        });
    }
    Reader received;
    for (int count = 0; count < 4 * 500; ++count) {
        reader->Receive(received.message);
        ASSERT_EQ(received.section(), std::vector<std::uint8_t>(1000, received.section().at(0)));
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST_F(ASectionQueue, RefusesASectionThatDoesNotFit) {
    const std::unique_ptr<IPCMessageQueue> reader = create();
    EXPECT_FALSE(sendSection(*opened(), "s", std::vector<std::uint8_t>(5000)));
    EXPECT_THAT(logText(), testing::HasSubstr("does not fit 4500 bytes; dropped"));
}

TEST_F(ASectionQueue, DropsBytesThatAreNoSectionWithFewLines) {
    const std::unique_ptr<IPCMessageQueue> reader = create();
    const std::unique_ptr<IPCMessageQueue> writer = opened();
    for (int count = 0; count < 100; ++count) {
        ASSERT_TRUE(writer->TrySend(Garbage()));
    }
    ASSERT_TRUE(sendSection(*writer, "good", {1}));
    Reader received;
    reader->Receive(received.message);
    EXPECT_EQ(received.message.sessionName, "good");
    std::vector<std::string> counts;
    std::istringstream lines(logText());
    for (std::string line; std::getline(lines, line);) {
        constexpr const char* kText = "7 bytes that are no message of its kind; dropped, ";
        const std::size_t at = line.find(kText);
        if (at != std::string::npos) {
            counts.push_back(line.substr(at + std::strlen(kText)));
        }
    }
    EXPECT_THAT(counts, testing::ElementsAre("1 so far", "2 so far", "4 so far", "8 so far", "16 so far", "32 so far",
                                             "64 so far"));
}

TEST_F(ASectionQueue, BelongsToItsPeerAlone) {
    const std::unique_ptr<IPCMessageQueue> queue = create();
    ASSERT_TRUE(opened());
    EXPECT_EQ(IPCMessageQueue::open(service.lastPeer, "SECTION-none"), nullptr);
    EXPECT_EQ(IPCMessageQueue::open(service.lastPeer + 1, kName), nullptr);
    EXPECT_EQ(IPCMessageQueue::open(service.lastPeer + 1, ""), nullptr);
}

TEST_F(ASectionQueue, IsTheLastOneIfNoNameIsGiven) {
    const std::unique_ptr<IPCMessageQueue> first = create();
    const std::unique_ptr<IPCMessageQueue> second = create("SECTION-second");
    ASSERT_TRUE(opened("SECTION-second"));
    ASSERT_TRUE(sendSection(*opened(""), "to the last", {}));
    Reader received;
    second->Receive(received.message);
    EXPECT_EQ(received.message.sessionName, "to the last");
}

TEST_F(ASectionQueue, IsForgottenWithItsPeer) {
    const std::unique_ptr<IPCMessageQueue> queue = create();
    ASSERT_TRUE(opened());
    auto other = std::make_unique<Member>(frame::CouplingModeClient);
    ASSERT_EQ(other->start(), 0);
    ASSERT_TRUE(eventually([this] { return service.connected == 2; }));
    const std::uint32_t peer = service.lastPeer;
    ASSERT_TRUE(opened()) << "each connection of the process gives it";
    other.reset();
    ASSERT_TRUE(eventually([this] { return service.disconnected == 1; }));
    EXPECT_EQ(IPCMessageQueue::open(peer, kName), nullptr);
}

TEST(ASectionQueueWithoutAService, IsGivenToTheOneThatStartsLater) {
    Member client(frame::CouplingModeClient);
    ASSERT_EQ(client.start(), 0);
    const std::unique_ptr<IPCMessageQueue> reader = create();
    Reader received;
    for (const char* session : {"the first service", "the second service"}) {
        Member service(frame::CouplingModeService);
        ASSERT_EQ(service.start(), 0);
        ASSERT_TRUE(eventually([&service] { return service.connected == 1; }));
        std::unique_ptr<IPCMessageQueue> writer;
        ASSERT_TRUE(eventually([&] {
            writer.reset(IPCMessageQueue::open(service.lastPeer, ""));
            return writer != nullptr;
        }));
        ASSERT_TRUE(sendSection(*writer, session, {1, 2, 3}));
        reader->Receive(received.message);
        EXPECT_EQ(received.message.sessionName, session);
    }
}

TEST(ASectionQueueWithoutAService, ComesBeforeTheFirstCommand) {
    Member service(frame::CouplingModeService);
    ASSERT_EQ(service.start(), 0);
    const std::unique_ptr<IPCMessageQueue> reader = create();
    Member client(frame::CouplingModeClient);
    ASSERT_EQ(client.start(), 0);
    ASSERT_EQ(client.send(1), 0);
    ASSERT_TRUE(eventually([&service] { return service.received().size() == 1; }));
    EXPECT_NE(std::unique_ptr<IPCMessageQueue>(IPCMessageQueue::open(service.received()[0].peer, kName)), nullptr);
}

TEST_F(ASectionQueue, GoesWithItsCreator) {
    create();
    Member later(frame::CouplingModeClient);
    ASSERT_EQ(later.start(), 0);
    ASSERT_EQ(later.send(1), 0);
    ASSERT_TRUE(eventually([this] { return service.received().size() == 1; }));
    EXPECT_EQ(IPCMessageQueue::open(service.received()[0].peer, kName), nullptr);
}

TEST_F(ASectionQueue, OutlivesAForkedChildThatExits) {
    const std::unique_ptr<IPCMessageQueue> reader = create();
    const pid_t child = fork();
    if (child == 0) {
        exit(0);
    }
    waitpid(child, nullptr, 0);
    ASSERT_TRUE(sendSection(*opened(), "still there", {}));
    Reader received;
    reader->Receive(received.message);
    EXPECT_EQ(received.message.sessionName, "still there");
}

TEST(ASectionQueueThatCannotBeMade, IsNullWithALine) {
    const pid_t child = fork();
    if (child == 0) {
        const rlimit none{0, 0};
        BLOG_WRITE(blog::kAlways, "%s", "opens the log");
        setrlimit(RLIMIT_NOFILE, &none);
        _exit(create() == nullptr ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_THAT(logText(),
                testing::HasSubstr("cannot create queue " + kName + ": no memory to share: Too many open files"));
    EXPECT_EQ(IPCMessageQueue::create(kName, 0, 1), nullptr);
    EXPECT_EQ(IPCMessageQueue::create(kName, 1, 0), nullptr);
    EXPECT_EQ(IPCMessageQueue::create(kName, 1, 5000), nullptr);
    EXPECT_THAT(logText(), testing::HasSubstr("5000 messages of 1 bytes are out of range"));
}
