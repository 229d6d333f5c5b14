// Layout of the shared memory, and the two sides' steps. A futex in the memory wakes the reader.
#include "section_ring.h"

#include <fcntl.h>
#include <linux/futex.h>
#include <linux/magic.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <new>

#include "descriptors.h"

namespace host {

namespace {

using Word = std::atomic<std::uint32_t>;
static_assert(Word::is_always_lock_free && sizeof(Word) == sizeof(std::uint32_t));

constexpr std::uint64_t kMark = 0x44545652494E4731;  // "DTVRING1"
constexpr std::size_t kCacheLine = 64;
constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL;

std::size_t strideOf(std::size_t slotSize) {
    return (sizeof(std::uint32_t) + slotSize + kCacheLine - 1) / kCacheLine * kCacheLine;
}

std::size_t sizeOf(std::size_t slotSize, std::size_t slots) {
    return SectionRing::kHeaderSize + strideOf(slotSize) * slots;
}

std::string because(const char* what) {
    return std::string(what) + ": " + std::strerror(errno);
}

/// The kernel's time for this call, whatever the C library's time_t is.
struct KernelTime {
    long seconds;
    long nanoseconds;
};

/// Sleeps while the word is 1. A writer that is killed before its wake-up costs no more than the time limit.
void sleepOn(Word& word) {
    const KernelTime limit{1, 0};
    syscall(SYS_futex, &word, FUTEX_WAIT, 1, &limit, nullptr, 0);
}

void wake(Word& word) {
    syscall(SYS_futex, &word, FUTEX_WAKE, 1, nullptr, nullptr, 0);
}

/// The shared memory cannot shrink under its users and is ordinary memory: an access to it never fails.
bool isSafe(int descriptor, std::string& error) {
    const int seals = fcntl(descriptor, F_GET_SEALS);
    struct statfs system {};
    if (seals < 0 || (seals & F_SEAL_SHRINK) == 0) {
        error = "its memory may shrink";
    } else if (fstatfs(descriptor, &system) != 0 || static_cast<unsigned long>(system.f_type) != TMPFS_MAGIC) {
        error = "its memory is of another kind";
    }
    return error.empty();
}

/// Growing a file above this limit would end the process by a signal.
bool mayHaveFilesOf(std::size_t size) {
    rlimit limit{};
    return getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur >= size;
}

void* map(int descriptor, std::size_t size) {
    void* const mapping = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    return mapping == MAP_FAILED ? nullptr : mapping;
}

}  // namespace

std::shared_ptr<SectionRing> SectionRing::create(std::size_t messageSize, std::size_t messages, std::string& error) {
    static_assert(sizeof(Header) <= kHeaderSize);
    std::size_t slots = 1;
    while (slots < messages && slots < kMostMessages) {
        slots *= 2;
    }
    if (messageSize == 0 || messageSize > kLargestMessage || messages == 0 || messages > slots) {
        error = std::to_string(messages) + " messages of " + std::to_string(messageSize) + " bytes are out of range";
        return nullptr;
    }
    const std::size_t size = sizeOf(messageSize, slots);
    if (!mayHaveFilesOf(size)) {
        errno = EFBIG;
        error = because("no memory to share");
        return nullptr;
    }
    const int memory = aboveStandard(memfd_create("section queue", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (memory < 0) {
        error = because("no memory to share");
        return nullptr;
    }
    void* mapping = nullptr;
    if (ftruncate(memory, static_cast<off_t>(size)) != 0 || fallocate(memory, 0, 0, static_cast<off_t>(size)) != 0 ||
        fcntl(memory, F_ADD_SEALS, kSeals) != 0 || (mapping = map(memory, size)) == nullptr) {
        error = because("no memory to share");
        close(memory);
        return nullptr;
    }
    new (mapping) Header{kMark, static_cast<std::uint32_t>(messageSize), static_cast<std::uint32_t>(slots), {}, {}, {}};
    return std::shared_ptr<SectionRing>(new SectionRing(mapping, size, memory));
}

std::shared_ptr<SectionRing> SectionRing::open(int descriptor, std::string& error) {
    struct stat found {};
    if (!isSafe(descriptor, error)) {
        return nullptr;
    }
    if (fstat(descriptor, &found) != 0 || found.st_size < static_cast<off_t>(kHeaderSize) ||
        found.st_size > static_cast<off_t>(sizeOf(kLargestMessage, kMostMessages))) {
        error = "its memory has " + std::to_string(found.st_size) + " bytes";
        return nullptr;
    }
    const auto size = static_cast<std::size_t>(found.st_size);
    void* const mapping = map(descriptor, size);
    if (mapping == nullptr) {
        error = because("its memory cannot be mapped");
        return nullptr;
    }
    std::shared_ptr<SectionRing> ring(new SectionRing(mapping, size, -1));
    // The ring's own copies are checked: the creator may write to the memory at any time.
    if (ring->header.mark != kMark || ring->slotSize == 0 || ring->slotSize > kLargestMessage || ring->slots == 0 ||
        ring->slots > kMostMessages || (ring->slots & (ring->slots - 1)) != 0 ||
        sizeOf(ring->slotSize, ring->slots) != size) {
        error = "its memory has another layout";
        return nullptr;
    }
    // An earlier writer may have left a place that no reader can follow.
    const std::uint32_t read = ring->header.read;
    if (ring->place - read > ring->slots) {
        ring->place = read;
    }
    return ring;
}

SectionRing::SectionRing(void* newMapping, std::size_t newMappedSize, int newMemory)
    : mapping(newMapping),
      mappedSize(newMappedSize),
      memory(newMemory),
      header(*static_cast<Header*>(newMapping)),
      slotSize(*const_cast<volatile std::uint32_t*>(&header.slotSize)),
      slots(*const_cast<volatile std::uint32_t*>(&header.slots)),
      stride(strideOf(slotSize)),
      place(header.written) {}

SectionRing::~SectionRing() {
    munmap(mapping, mappedSize);
    if (memory >= 0) {
        close(memory);
    }
}

void SectionRing::wakeReader() {
    if (header.asleep.exchange(0) != 0) {
        wake(header.asleep);
    }
}

void SectionRing::waitForMessage() {
    // Lets a writer on the same processor go on first: it then fills the ring without waking anybody.
    sched_yield();
    while (!hasMessage()) {
        header.read.store(place, std::memory_order_release);
        header.asleep.store(1, std::memory_order_seq_cst);
        if (!hasMessage()) {
            sleepOn(header.asleep);
        }
        header.asleep.store(0, std::memory_order_relaxed);
    }
}

}  // namespace host
