// The host's log, settings and section queue.
#include "platform/host/queue_lock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>

#include <boost/interprocess/ipc/message_queue.hpp>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <thread>

#include "eventually.h"
#include "ovx/log.h"
#include "run_directory.h"
#include "velmora/msgqueue/ipc_message_queue.h"

namespace {

const std::string kDirectory = OwnRunDirectory::instance().path();

using velmora::msgqueue::IPCMessageQueue;
using velmora::msgqueue::SectionDataIPCMessage;

std::vector<std::string> logLines() {
    std::ifstream file(kDirectory + "/log");
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string queueName(const char* what) {
    char name[64];
    std::snprintf(name, sizeof name, "SECTION-%08X-%s", static_cast<unsigned int>(getpid()), what);
    return name;
}

constexpr int kWidth = sizeof(void*) * 8;

/// The shared-memory object of a queue for processes of this width.
std::string objectName(const std::string& queue, int width) {
    return queue + "." + std::to_string(width);
}

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

constexpr std::size_t kMessageSize = 4500;
constexpr std::size_t kMessages = 128;

/// A process that stops while it holds the queue's lock. It sends from unreadable memory: the fault handler stops the
/// process during the copy, and makes the memory readable when the process continues.
class StoppedInside {
public:
    explicit StoppedInside(const std::string& queue) : process(fork()) {
        if (process == 0) {
            page = mmap(nullptr, kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
            struct sigaction action {};
            action.sa_handler = [](int) {
                raise(SIGSTOP);
                mprotect(page, kPage, PROT_READ);
            };
            sigaction(SIGSEGV, &action, nullptr);
            boost::interprocess::message_queue raw(boost::interprocess::open_only, objectName(queue, kWidth).c_str());
            raw.send(page, 7, 0);
            _exit(0);
        }
        int status = 0;
        waitpid(process, &status, WUNTRACED);
        EXPECT_TRUE(WIFSTOPPED(status));
    }
    StoppedInside(const StoppedInside&) = delete;
    StoppedInside& operator=(const StoppedInside&) = delete;
    ~StoppedInside() {
        kill(process, SIGKILL);
        waitpid(process, nullptr, 0);
    }
    void goOn() const { kill(process, SIGCONT); }

private:
    static constexpr std::size_t kPage = 4096;
    static inline void* page = nullptr;
    pid_t process;
};

}  // namespace

TEST(TheHostsLog, WritesOneLinePerCall) {
    BLOG_WRITE(blog::kOrdinary, "%s", "two breaks at its end\n\n");
    BLOG_WRITE(blog::kOrdinary, "%s", "a break\nand a \x01 inside\n");
    BLOG_WRITE(blog::kOrdinary, "%s", std::string(5000, 'x').c_str());
    const std::vector<std::string> lines = logLines();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_THAT(lines[0], testing::EndsWith(" O two breaks at its end"));
    EXPECT_THAT(lines[1], testing::EndsWith(" O a break\\x0Aand a \\x01 inside"));
    EXPECT_THAT(lines[2], testing::EndsWith(std::string(5000, 'x')));
}

TEST(TheHostsLog, WritesNoLineAboveItsLevel) {
    BLOG_WRITE(blog::kTrace, "%s", "trace");
    BLOG_WRITE(blog::kAlways, "%s", "always");
    BLOG_WRITE(blog::kFailure, "%s", "failure");
    BLOG_WRITE(blog::kUnsupported, "%s", "unsupported");
    const std::vector<std::string> lines = logLines();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_THAT(lines[0], testing::EndsWith(" * always"));
    EXPECT_THAT(lines[1], testing::EndsWith(" F failure"));
    EXPECT_THAT(lines[2], testing::EndsWith(" W unsupported"));
}

TEST(TheHostsLog, KeepsLinesOfManyThreadsWhole) {
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([thread] {
            for (int count = 0; count < 200; ++count) {
                BLOG_WRITE(blog::kOrdinary, "<%s>", std::string(300, static_cast<char>('a' + thread)).c_str());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const std::vector<std::string> lines = logLines();
    ASSERT_EQ(lines.size(), 800U);
    for (const std::string& line : lines) {
        const std::size_t at = line.find('<');
        ASSERT_NE(at, std::string::npos);
        EXPECT_EQ(line.substr(at), "<" + std::string(300, line[at + 1]) + ">");
    }
}

TEST(TheHostsLog, DumpsBytesInRows) {
    const std::uint8_t bytes[] = {'A', 0x00, 0xFF, 'z', 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 'Q'};
    dump_memory("Title: ", bytes, sizeof bytes, 1);
    const std::vector<std::string> lines = logLines();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_THAT(lines[0], testing::HasSubstr("Title:  (1), 17 bytes"));
    EXPECT_THAT(lines[1], testing::HasSubstr("0000  41 00 FF 7A 01 02 03 04 05 06 07 08 09 0A 0B 0C  A..z"));
    EXPECT_THAT(lines[2], testing::HasSubstr("0010  51"));
}

TEST(TheHostsLog, NamesAPathsLastPart) {
    EXPECT_STREQ(blog_base_name("/a/b/c.cpp"), "c.cpp");
    EXPECT_STREQ(blog_base_name("c.cpp"), "c.cpp");
    EXPECT_STREQ(blog_base_name("a/"), "");
    EXPECT_STREQ(blog_base_name(nullptr), "");
}

TEST(ASectionQueue, CarriesSectionsBitExactAndInOrder) {
    const std::string name = queueName("exact");
    const std::unique_ptr<IPCMessageQueue> reader(IPCMessageQueue::create(name, kMessageSize, kMessages));
    ASSERT_TRUE(reader);
    const std::unique_ptr<IPCMessageQueue> writer(IPCMessageQueue::open(name));
    ASSERT_TRUE(writer);
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

TEST(ASectionQueue, IsFullAfterItsMessagesAndNeverWaits) {
    const std::string name = queueName("full");
    const std::unique_ptr<IPCMessageQueue> reader(IPCMessageQueue::create(name, kMessageSize, kMessages));
    const std::unique_ptr<IPCMessageQueue> writer(IPCMessageQueue::open(name));
    for (std::size_t count = 0; count < kMessages; ++count) {
        ASSERT_TRUE(sendSection(*writer, "s", {1, 2, 3}));
    }
    EXPECT_FALSE(sendSection(*writer, "s", {1, 2, 3}));
    Reader received;
    reader->Receive(received.message);
    EXPECT_TRUE(sendSection(*writer, "s", {1, 2, 3}));
}

TEST(ASectionQueue, DoesNotBlockWritersWhenItsReaderStops) {
    const std::string name = queueName("stopped");
    const std::unique_ptr<IPCMessageQueue> reader(IPCMessageQueue::create(name, kMessageSize, kMessages));
    const std::unique_ptr<IPCMessageQueue> writer(IPCMessageQueue::open(name));
    const StoppedInside stopped(name);
    // If each write waited, this would take more than half an hour and exceed the test's time limit.
    for (int count = 0; count < 10000; ++count) {
        ASSERT_FALSE(sendSection(*writer, "s", {1, 2, 3}));
    }
    stopped.goOn();
    EXPECT_TRUE(eventually([&] { return sendSection(*writer, "s", {1, 2, 3}); }));
}

TEST(ASectionQueue, RefusesASectionThatDoesNotFit) {
    const std::unique_ptr<IPCMessageQueue> queue(IPCMessageQueue::create(queueName("fit"), kMessageSize, kMessages));
    EXPECT_FALSE(sendSection(*queue, "s", std::vector<std::uint8_t>(5000)));
    EXPECT_THAT(logLines().back(), testing::HasSubstr("does not fit 4500 bytes; dropped"));
}

TEST(ASectionQueue, LogsBytesThatAreNoSection) {
    const std::string name = queueName("bytes");
    const std::unique_ptr<IPCMessageQueue> reader(IPCMessageQueue::create(name, kMessageSize, kMessages));
    const std::unique_ptr<IPCMessageQueue> writer(IPCMessageQueue::open(name));
    boost::interprocess::message_queue raw(boost::interprocess::open_only, objectName(name, kWidth).c_str());
    raw.send("garbage", 7, 0);
    ASSERT_TRUE(sendSection(*writer, "good", {1}));
    Reader received;
    reader->Receive(received.message);
    EXPECT_EQ(received.message.sessionName, "good");
    EXPECT_THAT(logLines().back(), testing::HasSubstr("no message of its kind; dropped"));
}

TEST(ASectionQueue, ThatNobodyMadeIsNotOpened) {
    EXPECT_EQ(IPCMessageQueue::open(queueName("none")), nullptr);
}

TEST(ASectionQueue, RefusesTheOtherWidth) {
    const std::string name = queueName("width");
    const int other = 96 - kWidth;
    const std::string path = "/dev/shm/" + objectName(name, other);
    std::ofstream(path) << "laid out for others";
    EXPECT_EQ(IPCMessageQueue::open(name), nullptr);
    std::filesystem::remove(path);
    EXPECT_THAT(logLines().back(), testing::HasSubstr("queue " + name + " belongs to a " + std::to_string(other) +
                                                      "-bit process: sections do not reach it from this one of " +
                                                      std::to_string(kWidth) + " bits"));
}

TEST(ASectionQueue, GoesWithItsCreator) {
    const std::string name = queueName("gone");
    delete IPCMessageQueue::create(name, kMessageSize, kMessages);
    EXPECT_EQ(IPCMessageQueue::open(name), nullptr);
}

TEST(ASectionQueue, IsRemovedAfterItsProcessWasKilled) {
    const pid_t child = fork();
    if (child == 0) {
        IPCMessageQueue::create(queueName("killed"), kMessageSize, kMessages);
        raise(SIGSTOP);
        pause();
    }
    waitpid(child, nullptr, WUNTRACED);
    char name[64];
    std::snprintf(name, sizeof name, "SECTION-%08X-killed", static_cast<unsigned int>(child));
    // Checked while the creator lives: after its end the next process that creates any queue removes this one.
    const std::unique_ptr<IPCMessageQueue> before(IPCMessageQueue::open(name));
    EXPECT_TRUE(before);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    const std::unique_ptr<IPCMessageQueue> next(IPCMessageQueue::create(queueName("next"), kMessageSize, kMessages));
    EXPECT_EQ(IPCMessageQueue::open(name), nullptr);
}
