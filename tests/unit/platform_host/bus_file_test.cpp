// The file of what a client says and hears.
#include "platform/host/bus_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cerrno>
#include <thread>

#include "bus/pcapng.h"
#include "eventually.h"
#include "in_a_child.h"
#include "members.h"
#include "own_log.h"
#include "platform_common/record_image.h"

namespace {

using bus::Direction;
using bus::Kind;
using toy::Member;
constexpr int kClient = frame::CouplingModeClient;
constexpr int kService = frame::CouplingModeService;

std::string ownPath() {
    return kOwnRunDirectory + "/bus." + std::to_string(getpid()) + ".pcapng";
}

/// Before the platform reads its settings.
void askForAFile() {
    setenv("DTV_BUS_FILE", (kOwnRunDirectory + "/bus.pcapng").c_str(), 1);
}

/// The complete records of a file.
std::vector<bus::Record> recordsIn(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    bus::PcapngReader reader;
    reader.add(std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()));
    std::vector<bus::Record> records;
    bus::Record record;
    for (std::string problem; reader.take(record, problem);) {
        EXPECT_EQ(problem, "");
        records.push_back(record);
    }
    return records;
}

std::vector<Kind> kindsOf(const std::vector<bus::Record>& records) {
    std::vector<Kind> kinds;
    for (const bus::Record& record : records) {
        kinds.push_back(record.kind);
    }
    return kinds;
}

std::string imageOf(std::uint32_t number, const std::string& text) {
    const toy::Record record{7, number, {static_cast<std::uint32_t>(text.size()), const_cast<char*>(text.c_str())}};
    const std::vector<std::uint8_t> image = platform_common::encodeRecord(toy::kTable, &record);
    return {image.begin(), image.end()};
}

}  // namespace

TEST(ABusFile, HasWhatAClientSaysAndHears) {
    askForAFile();
    Member service(kService);
    Member client(kClient);
    ASSERT_EQ(service.start(), 0);
    ASSERT_EQ(client.start(), 0);
    ASSERT_EQ(client.send(5, "to the service"), 0);
    ASSERT_TRUE(eventually([&] { return service.received().size() == 1; }));
    ASSERT_EQ(service.send(6, "to the browser"), 0);
    ASSERT_TRUE(eventually([&] { return client.received().size() == 1; }));
    client.stop();
    const std::vector<bus::Record> records = recordsIn(ownPath());
    ASSERT_EQ(kindsOf(records), (std::vector<Kind>{Kind::connected, Kind::message, Kind::message, Kind::disconnected}));
    EXPECT_EQ(records[1].direction, Direction::toService);
    EXPECT_EQ(records[1].message, toy::command().messageId);
    EXPECT_EQ(records[1].bytes, imageOf(5, "to the service"));
    EXPECT_EQ(records[2].direction, Direction::toBrowser);
    EXPECT_EQ(records[2].message, toy::event().messageId);
    EXPECT_EQ(records[2].bytes, imageOf(6, "to the browser"));
    std::uint64_t before = 0;
    for (const bus::Record& record : records) {
        EXPECT_EQ(record.side, bus::Side::browser);
        EXPECT_EQ(record.process, static_cast<std::uint32_t>(getpid()));
        EXPECT_NE(record.program, "");
        EXPECT_GE(record.time, before);
        before = record.time;
    }
    struct stat found {};
    ASSERT_EQ(stat(ownPath().c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & 0777U, 0600U);
}

TEST(ABusFile, HasCommandsThatNeverLeft) {
    askForAFile();
    Member client(kClient);
    ASSERT_EQ(client.start(), 0);
    EXPECT_EQ(client.send(5), -ENOTCONN);
    Member service(kService);
    ASSERT_EQ(service.start(), 0);
    ASSERT_TRUE(eventually([&] { return client.connected == 1; }));
    EXPECT_EQ(client.send(6, std::string(std::size_t{2} << 20U, 'x')), -EMSGSIZE);
    client.stop();
    const std::vector<bus::Record> records = recordsIn(ownPath());
    ASSERT_EQ(kindsOf(records), (std::vector<Kind>{Kind::refused, Kind::message, Kind::refused, Kind::connected,
                                                   Kind::message, Kind::refused, Kind::disconnected}));
    EXPECT_EQ(records[0].text, "no service is in " + kOwnRunDirectory);
    EXPECT_EQ(records[0].message, 0U);
    EXPECT_EQ(records[1].bytes, imageOf(5, ""));
    EXPECT_EQ(records[2].message, toy::command().messageId);
    EXPECT_EQ(records[2].text, "not sent");
    EXPECT_EQ(records[2].result, -ENOTCONN);
    EXPECT_EQ(records[5].result, -EMSGSIZE);
}

TEST(ABusFile, HasTheSectionsThatCameOutOfAQueue) {
    askForAFile();
    using velmora::msgqueue::IPCMessageQueue;
    using velmora::msgqueue::SectionDataIPCMessage;
    Member service(kService);
    Member client(kClient);
    ASSERT_EQ(service.start(), 0);
    const std::unique_ptr<IPCMessageQueue> read(IPCMessageQueue::create("queue", 100, 8));
    ASSERT_EQ(client.start(), 0);
    ASSERT_EQ(client.send(1), 0);
    ASSERT_TRUE(eventually([&] { return service.received().size() == 1; }));
    const std::unique_ptr<IPCMessageQueue> written(IPCMessageQueue::open(service.lastPeer, "queue"));
    ASSERT_NE(written, nullptr);
    std::uint8_t bytes[] = {2, 0, 1, 9};
    SectionDataIPCMessage sent;
    sent.sessionName = "filter";
    sent.data = bytes;
    sent.dataLength = sizeof bytes;
    EXPECT_TRUE(written->TrySend(sent));
    sent.data = nullptr;
    SectionDataIPCMessage taken;
    taken.data = new std::uint8_t[SectionDataIPCMessage::kBufferSize];
    read->Receive(taken);
    client.stop();
    const std::vector<bus::Record> records = recordsIn(ownPath());
    ASSERT_EQ(kindsOf(records),
              (std::vector<Kind>{Kind::connected, Kind::message, Kind::sectionQueued, Kind::disconnected}));
    EXPECT_EQ(records[2].text, "filter");
    EXPECT_EQ(records[2].bytes, std::string("\2\0\1\11", 4));
}

TEST(ABusFile, IsNotMadeForAServiceOrWithoutTheSetting) {
    EXPECT_EQ(host::BusFile::ofProcess(), nullptr);
    EXPECT_EQ(inAChild([] {
                  Member service(kService);
                  return service.start();
              }),
              0);
    EXPECT_NE(access(ownPath().c_str(), F_OK), 0);
}

TEST(ABusFile, HasTheProcessInItsName) {
    using host::BusFile;
    EXPECT_EQ(BusFile::pathFor("/tmp/bus.pcapng", 4711), "/tmp/bus.4711.pcapng");
    EXPECT_EQ(BusFile::pathFor("/tmp/bus", 4711), "/tmp/bus.4711");
    EXPECT_EQ(BusFile::pathFor("/tmp/a.b/bus", 4711), "/tmp/a.b/bus.4711");
    EXPECT_EQ(BusFile::pathFor("/tmp/.bus", 4711), "/tmp/.bus.4711");
    EXPECT_EQ(BusFile::pathFor("bus.pcapng", 4711), "bus.4711.pcapng");
}

TEST(ABusFile, IsToldOnceIfItCannotBeOpened) {
    setenv("DTV_BUS_FILE", "/nonexistent/bus.pcapng", 1);
    Member service(kService);
    Member first(kClient);
    Member client(kClient);
    ASSERT_EQ(service.start(), 0);
    ASSERT_EQ(client.start(), 0);
    EXPECT_EQ(client.send(5), 0);
    EXPECT_TRUE(eventually([&] { return service.received().size() == 1; }));
    EXPECT_EQ(timesLogged("DTV_BUS_FILE: cannot open /nonexistent/bus." + std::to_string(getpid()) +
                          ".pcapng: No such file or directory\n"),
              1U);
}

TEST(ABusFile, BelongsToOneWriter) {
    const std::string path = kOwnRunDirectory + "/one";
    ASSERT_NE(host::BusFile::open(path).release(), nullptr) << "its thread works to the end of the process";
    EXPECT_EQ(host::BusFile::open(path), nullptr);
    EXPECT_EQ(timesLogged("cannot open " + path + ": another process writes it"), 1U);
    EXPECT_EQ(host::BusFile::open("/dev/null"), nullptr);
    EXPECT_EQ(timesLogged("cannot open /dev/null: it is no regular file"), 1U);
    ASSERT_EQ(mkfifo((kOwnRunDirectory + "/fifo").c_str(), 0600), 0);
    EXPECT_EQ(host::BusFile::open(kOwnRunDirectory + "/fifo"), nullptr) << "and it waits for no reader";
}

TEST(ABusFile, EndsBehindACompleteRecordWhenItCannotGrow) {
    enum Finding { allRight, notOpened, notComplete };
    EXPECT_EQ(inAChild([] {
                  const std::string path = kOwnRunDirectory + "/limited";
                  host::BusFile* const file = host::BusFile::open(path).release();
                  if (file == nullptr) {
                      return notOpened;
                  }
                  file->connected();
                  file->flush();
                  const rlimit limit{2000, 2000};
                  setrlimit(RLIMIT_FSIZE, &limit);
                  file->message(Direction::toService, 1, std::string(4000, 'x'));
                  file->flush();
                  file->disconnected();
                  file->flush();
                  const std::vector<bus::Record> records = recordsIn(path);
                  return kindsOf(records) == std::vector<Kind>{Kind::connected} ? allRight : notComplete;
              }),
              allRight);
    EXPECT_EQ(timesLogged("DTV_BUS_FILE: nothing more is written: File too large"), 1U);
}

TEST(ABusFile, HasOrCountsAllThatManyThreadsSay) {
    const std::string path = kOwnRunDirectory + "/many";
    host::BusFile* const file = host::BusFile::open(path).release();
    ASSERT_NE(file, nullptr);
    constexpr unsigned int kThreads = 4;
    constexpr unsigned int kMessages = 1000;
    std::vector<std::thread> threads;
    for (unsigned int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([file] {
            for (unsigned int count = 0; count < kMessages; ++count) {
                file->message(Direction::toBrowser, count, std::string(4000, 'x'));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    file->flush();
    std::size_t seen = 0;
    for (const bus::Record& record : recordsIn(path)) {
        seen += record.kind == Kind::lost ? record.count : 1;
    }
    EXPECT_EQ(seen, kThreads * kMessages);
}

TEST(ABusFile, HasNothingOfAForkedChild) {
    askForAFile();
    Member service(kService);
    Member client(kClient);
    ASSERT_EQ(service.start(), 0);
    ASSERT_EQ(client.start(), 0);
    ASSERT_EQ(client.send(5), 0);
    EXPECT_EQ(inAChild([&client] {
                  client.send(6);
                  client.stop();
                  return 0;
              }),
              0);
    ASSERT_TRUE(eventually([&] { return service.received().size() == 2; }));
    client.stop();
    const std::vector<bus::Record> records = recordsIn(ownPath());
    ASSERT_EQ(kindsOf(records), (std::vector<Kind>{Kind::connected, Kind::message, Kind::disconnected}));
    EXPECT_EQ(records[1].bytes, imageOf(5, ""));
}
