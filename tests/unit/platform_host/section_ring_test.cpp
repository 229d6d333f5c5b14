// The ring in shared memory, and what a hostile process on the other side can do to it.
#include "platform/host/section_ring.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/futex.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

#include "eventually.h"
#include "velmora/msgqueue/ipc_message_queue.h"

namespace {

using host::SectionRing;

constexpr std::size_t kMessageSize = 100;
constexpr std::size_t kMessages = 8;
constexpr std::size_t kSlotsAt = 256;
constexpr std::size_t kStride = 128;  // a slot's length word and bytes, in whole cache lines
constexpr std::size_t kSize = kSlotsAt + kStride * kMessages;

/// Words of the memory by their place.
constexpr std::size_t kMark = 0;
constexpr std::size_t kSlotSize = 8;
constexpr std::size_t kSlots = 12;
constexpr std::size_t kWritten = 64;
constexpr std::size_t kRead = 128;
constexpr std::size_t kAsleep = 192;

/// The memory as the other process has it.
class Memory {
public:
    explicit Memory(int descriptor)
        : bytes(static_cast<std::uint8_t*>(mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0))) {}
    Memory(const Memory&) = delete;
    Memory& operator=(const Memory&) = delete;
    ~Memory() { munmap(bytes, kSize); }
    void set(std::size_t at, std::uint32_t value) {
        reinterpret_cast<std::atomic<std::uint32_t>*>(bytes + at)->store(value);
    }
    std::uint32_t get(std::size_t at) const {
        return reinterpret_cast<std::atomic<std::uint32_t>*>(bytes + at)->load();
    }
    void wakeReader() { syscall(SYS_futex, bytes + kAsleep, FUTEX_WAKE, 1, nullptr, nullptr, 0); }

    std::uint8_t* const bytes;
};

class ASharedRing : public testing::Test {
protected:
    bool write(const std::string& text) {
        std::uint8_t* const slot = writer->nextSlot();
        if (slot == nullptr) {
            return false;
        }
        std::copy(text.begin(), text.end(), slot);
        writer->publish(text.size());
        return true;
    }
    std::string read() {
        std::size_t length = 0;
        const std::uint8_t* const bytes = reader->next(length);
        std::string message(bytes, bytes + length);
        reader->release();
        return message;
    }

    std::string error;
    const std::shared_ptr<SectionRing> creator = SectionRing::create(kMessageSize, kMessages, error);
    std::shared_ptr<SectionRing> reader = creator;
    std::shared_ptr<SectionRing> writer = SectionRing::open(creator->descriptor(), error);
    Memory memory{creator->descriptor()};
};

/// The error of a ring in memory of that size, which begins with a good ring's bytes but for one word.
std::string refusalOf(std::size_t size, int seals, std::size_t at = kSize, std::uint32_t value = 0) {
    std::string error;
    const std::shared_ptr<SectionRing> good = SectionRing::create(kMessageSize, kMessages, error);
    std::vector<std::uint8_t> bytes(kSize + sizeof value);
    EXPECT_EQ(pread(good->descriptor(), bytes.data(), kSize, 0), static_cast<ssize_t>(kSize));
    std::memcpy(bytes.data() + at, &value, sizeof value);
    const int descriptor = memfd_create("hostile", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    EXPECT_EQ(pwrite(descriptor, bytes.data(), kSize, 0), static_cast<ssize_t>(kSize));
    EXPECT_EQ(ftruncate(descriptor, static_cast<off_t>(size)), 0);
    EXPECT_EQ(fcntl(descriptor, F_ADD_SEALS, seals), 0);
    const bool refused = SectionRing::open(descriptor, error) == nullptr;
    EXPECT_EQ(refused, !error.empty());
    close(descriptor);
    return error;
}

}  // namespace

TEST_F(ASharedRing, CarriesMessagesOfEachLength) {
    for (std::size_t length = 0; length <= kMessageSize; ++length) {
        const std::string text(length, static_cast<char>('a' + length % 26));
        ASSERT_TRUE(write(text));
        EXPECT_EQ(read(), text);
    }
}

TEST_F(ASharedRing, RoundsTheNumberOfMessagesUp) {
    const std::shared_ptr<SectionRing> ring = SectionRing::create(kMessageSize, 5, error);
    for (int count = 0; count < 8; ++count) {
        ASSERT_NE(ring->nextSlot(), nullptr);
        ring->publish(0);
    }
    EXPECT_EQ(ring->nextSlot(), nullptr);
}

TEST_F(ASharedRing, GoesOnWhenItsCountsOverflow) {
    memory.set(kWritten, 0xFFFFFFFC);
    memory.set(kRead, 0xFFFFFFFC);
    reader = SectionRing::open(creator->descriptor(), error);
    writer = SectionRing::open(creator->descriptor(), error);
    for (int count = 0; count < 20; ++count) {
        ASSERT_TRUE(write(std::to_string(count)));
        EXPECT_EQ(read(), std::to_string(count));
    }
}

TEST_F(ASharedRing, IsWrittenOnByTheNextWriter) {
    ASSERT_TRUE(write("of the first"));
    ASSERT_NE(writer->nextSlot(), nullptr);
    std::memcpy(writer->nextSlot(), "half written when it was killed", 31);
    writer = SectionRing::open(creator->descriptor(), error);
    ASSERT_TRUE(write("of the second"));
    EXPECT_EQ(read(), "of the first");
    EXPECT_EQ(read(), "of the second");
}

TEST_F(ASharedRing, WakesItsReaderAlthoughAWriterWasKilledBeforeIt) {
    std::string came;
    std::thread waiting([&] { came = read(); });
    ASSERT_TRUE(eventually([this] { return memory.get(kAsleep) == 1; }));
    memory.set(kAsleep, 0);
    std::memcpy(memory.bytes + kSlotsAt, "\x02\0\0\0hi", 6);
    memory.set(kWritten, 1);
    waiting.join();
    EXPECT_EQ(came, "hi");
}

TEST_F(ASharedRing, SkipsAMessageOfAnImpossibleLength) {
    ASSERT_TRUE(write("bad"));
    ASSERT_TRUE(write("good"));
    const std::uint32_t length = kMessageSize + 1;
    std::memcpy(memory.bytes + kSlotsAt, &length, sizeof length);
    EXPECT_EQ(read(), "");
    EXPECT_EQ(read(), "good");
}

TEST_F(ASharedRing, LosesNothingByAnImpossibleCount) {
    ASSERT_TRUE(write("first"));
    memory.set(kWritten, 1000000);
    ASSERT_TRUE(write("second"));
    EXPECT_EQ(read(), "first");
    EXPECT_EQ(read(), "second");
    memory.set(kRead, 1000000);
    std::string came;
    std::thread waiting([&] { came = read(); });
    EXPECT_TRUE(eventually([this] { return write("third"); })) << "the reader puts its count right";
    waiting.join();
    EXPECT_EQ(came, "third");
}

TEST_F(ASharedRing, IsFullForAReaderWithAnImpossibleCount) {
    memory.set(kRead, 5);
    EXPECT_FALSE(write("no room"));
    memory.set(kRead, 0);
    ASSERT_TRUE(write("room again"));
    EXPECT_EQ(read(), "room again");
}

TEST_F(ASharedRing, IsUsableAfterAWriterThatLeftAnImpossibleCount) {
    memory.set(kWritten, 77);
    writer = SectionRing::open(creator->descriptor(), error);
    ASSERT_TRUE(writer);
    for (std::size_t count = 0; count < kMessages; ++count) {
        EXPECT_TRUE(write("x"));
    }
    EXPECT_FALSE(write("x"));
}

TEST_F(ASharedRing, SurvivesRandomWordsInItsMemory) {
    constexpr std::uint32_t kCount = 20000;
    std::atomic<std::uint32_t> received{0};
    std::thread hostile([&] {
        std::mt19937 random(1);
        const auto number = [&random](std::uint32_t below) { return static_cast<std::uint32_t>(random() % below); };
        while (received < kCount) {
            write("a message");
            memory.set(number(kSize / sizeof(std::uint32_t)) * sizeof(std::uint32_t), number(0xFFFFFFFF));
            memory.set(kWritten, received + number(20) - 5);
            memory.set(kRead, received + number(20) - 15);
            memory.wakeReader();
        }
    });
    velmora::msgqueue::SectionDataIPCMessage message;
    message.data = new std::uint8_t[velmora::msgqueue::SectionDataIPCMessage::kBufferSize];
    while (received < kCount) {
        std::size_t length = 0;
        const std::uint8_t* const bytes = reader->next(length);
        EXPECT_LE(length, kMessageSize);
        if (message.decode(bytes, length)) {
            EXPECT_LE(message.sessionName.size() + message.dataLength, kMessageSize);
        }
        reader->release();
        ++received;
    }
    hostile.join();
}

TEST_F(ASharedRing, CannotBeMadeSmaller) {
    EXPECT_NE(ftruncate(creator->descriptor(), 100), 0);
    EXPECT_EQ(errno, EPERM);
    EXPECT_NE(ftruncate(creator->descriptor(), 2 * kSize), 0);
}

TEST(AForeignRing, IsRefusedUnlessItsMemoryIsSafeAndItsLayoutRight) {
    EXPECT_EQ(refusalOf(kSize, F_SEAL_SHRINK), "");
    EXPECT_EQ(refusalOf(kSize, 0), "its memory may shrink");
    EXPECT_EQ(refusalOf(0, F_SEAL_SHRINK), "its memory has 0 bytes");
    EXPECT_EQ(refusalOf(kSlotsAt - 1, F_SEAL_SHRINK), "its memory has 255 bytes");
    EXPECT_EQ(refusalOf(std::size_t{1} << 30U, F_SEAL_SHRINK), "its memory has 1073741824 bytes");
    EXPECT_EQ(refusalOf(kSize - 1, F_SEAL_SHRINK), "its memory has another layout");
    EXPECT_EQ(refusalOf(kSize, F_SEAL_SHRINK, kMark, 1), "its memory has another layout");
    EXPECT_EQ(refusalOf(kSize, F_SEAL_SHRINK, kSlotSize, 0), "its memory has another layout");
    EXPECT_EQ(refusalOf(kSize, F_SEAL_SHRINK, kSlotSize, 0xFFFFFFFF), "its memory has another layout");
    EXPECT_EQ(refusalOf(kSize, F_SEAL_SHRINK, kSlots, 0), "its memory has another layout");
    EXPECT_EQ(refusalOf(kSize, F_SEAL_SHRINK, kSlots, 7), "its memory has another layout");
    EXPECT_EQ(refusalOf(kSize, F_SEAL_SHRINK, kSlots, 0x80000000), "its memory has another layout");
    EXPECT_EQ(refusalOf(kSize, F_SEAL_SHRINK | F_SEAL_WRITE), "its memory cannot be mapped: Operation not permitted");
}

TEST(AForeignRing, IsRefusedIfItIsNoSharedMemory) {
    std::string error;
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    EXPECT_EQ(SectionRing::open(ends[0], error), nullptr);
    EXPECT_EQ(error, "its memory may shrink");
    close(ends[0]);
    close(ends[1]);
}
