// The memory of a section queue as a hostile peer leaves it: of the reader, which has made it, and of the writer, which
// maps it. Each step overwrites bytes of the memory, then one side works.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>

#include "oracles.h"
#include "queue_exchange.h"
#include "section_ring.h"
#include "velmora/msgqueue/ipc_message_queue.h"

namespace {

using host::SectionRing;
using velmora::msgqueue::SectionDataIPCMessage;

constexpr std::size_t kMessageSize = 96;
constexpr std::size_t kMessages = 4;
/// Where the memory has the writer's count.
constexpr std::size_t kWrittenAt = 64;

/// The memory as the peer sees it.
class Memory {
public:
    explicit Memory(int descriptor)
        : size_(static_cast<std::size_t>(lseek(descriptor, 0, SEEK_END))),
          bytes(static_cast<std::uint8_t*>(mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0))) {
        fuzz::expect(bytes != MAP_FAILED, "the memory cannot be mapped");
    }
    Memory(const Memory&) = delete;
    Memory& operator=(const Memory&) = delete;
    ~Memory() { munmap(bytes, size_); }

    void write(std::size_t at, const std::vector<std::uint8_t>& news) {
        at %= size_;
        const std::size_t count = std::min(news.size(), size_ - at);
        if (count != 0) {
            std::memcpy(bytes + at, news.data(), count);
        }
    }
    void setWritten(std::uint32_t count) { std::memcpy(bytes + kWrittenAt, &count, sizeof count); }

private:
    const std::size_t size_;
    std::uint8_t* const bytes;
};

/// The reader waits for a message, so there has to be one: more are written than it has read, but not more than fit.
void read(SectionRing& ring, Memory& memory, std::uint32_t& messagesRead, unsigned int waiting) {
    memory.setWritten(messagesRead + 1 + waiting % kMessages);
    ++messagesRead;
    std::size_t length = 0;
    const std::uint8_t* const bytes = ring.next(length);
    fuzz::expect(length <= kMessageSize, "a message is longer than its place");
    SectionDataIPCMessage message;
    message.data = new std::uint8_t[SectionDataIPCMessage::kBufferSize];
    if (message.decode(bytes, length)) {
        fuzz::expect(message.dataLength + message.sessionName.size() <= length, "more in a message than its bytes");
    }
    ring.release();
}

void write(SectionRing& ring, const std::vector<std::uint8_t>& section) {
    std::vector<std::uint8_t> bytes = section;
    SectionDataIPCMessage message;
    message.sessionName = "session";
    message.data = bytes.data();
    message.dataLength = static_cast<std::uint32_t>(bytes.size());
    if (std::uint8_t* const slot = ring.nextSlot()) {
        if (const std::size_t length = message.encode(slot, ring.messageSize())) {
            ring.publish(length);
        }
    }
    message.data = nullptr;
}

void useBothEnds(fuzz::Input& input) {
    enum Step : unsigned int { kOverwrite, kRead, kWrite, kReopen, kSteps };
    std::string error;
    const std::shared_ptr<SectionRing> reader = SectionRing::create(kMessageSize, kMessages, error);
    Memory memory(reader->descriptor());
    std::shared_ptr<SectionRing> writer = SectionRing::open(reader->descriptor(), error);
    std::uint32_t messagesRead = 0;
    while (!input.isEmpty()) {
        const unsigned int step = input.u8();
        if (step % kSteps == kOverwrite) {
            const std::size_t at = input.u16();
            memory.write(at, input.chunk());
        } else if (step % kSteps == kRead) {
            read(*reader, memory, messagesRead, step / kSteps);
        } else if (step % kSteps == kWrite && writer) {
            write(*writer, input.chunk());
        } else {
            writer = SectionRing::open(reader->descriptor(), error);
        }
    }
}

/// Memory that no ring has made, as a client may give it.
void openForeign(fuzz::Input& input) {
    const unsigned int seals = input.u8();
    const std::uint32_t size = input.u16() * std::uint32_t{16};
    const std::vector<std::uint8_t> bytes = input.rest();
    const int memory = memfd_create("foreign", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    fuzz::expect(ftruncate(memory, static_cast<off_t>(size)) == 0, "no memory");
    if (size != 0) {
        Memory(memory).write(0, bytes);
    }
    fcntl(memory, F_ADD_SEALS, seals % 2 == 0 ? F_SEAL_SHRINK : F_SEAL_GROW);
    std::string error;
    const bool isGiven = host::GivenQueues::instance().give(1, "queue", memory, error);
    fuzz::expect(isGiven == error.empty(), "neither a queue nor an error, or both: " + error);
    if (const std::shared_ptr<SectionRing> ring = host::GivenQueues::instance().find(1, "queue")) {
        for (unsigned int count = 0; count < kMessages; ++count) {
            write(*ring, {1, 2, 3});
        }
    }
    host::GivenQueues::instance().forget(1);
    close(memory);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::run(data, size, {128U << 10U, 12000}, [](fuzz::Input input) {
        if (input.u8() % 2 == 0) {
            useBothEnds(input);
        } else {
            openForeign(input);
        }
    });
}
