// SectionRing: a ring of messages in memory that two processes share. The process that creates it reads; the process
// that gets its descriptor writes. What the other process does to the memory cannot hurt: the memory cannot shrink,
// each side keeps its own place in the ring and checks the other's, and reads each byte of a message once.
// Threads: one reads; one at a time writes.
// Blocks:  next() until a message comes; nothing else.
// Locks:   none.
// Fails:   create() and open() with the reason.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

namespace host {

class SectionRing {
public:
    static constexpr std::size_t kLargestMessage = 1U << 14U;
    static constexpr std::size_t kMostMessages = 1U << 10U;
    static constexpr std::size_t kHeaderSize = 256;  // of the memory, before its messages

    /// Makes the memory, all of it at once, so that a machine without memory is noticed here and not at the first
    /// write. The number of messages is rounded up to a power of two. Null with the reason.
    static std::shared_ptr<SectionRing> create(std::size_t messageSize, std::size_t messages, std::string& error);
    /// Maps the memory that another process has created. The descriptor stays the caller's. Null with the reason.
    static std::shared_ptr<SectionRing> open(int descriptor, std::string& error);

    SectionRing(const SectionRing&) = delete;
    SectionRing& operator=(const SectionRing&) = delete;
    ~SectionRing();

    /// The descriptor of the memory, or -1 for a ring that was opened.
    int descriptor() const { return memory; }
    std::size_t messageSize() const { return slotSize; }

    /// Writer: where the next message goes, messageSize() bytes; null when the ring is full.
    std::uint8_t* nextSlot();
    /// Writer: hands the message in nextSlot() over and wakes the reader.
    void publish(std::size_t length);

    /// Reader: waits for a message. Its length is 0 if it is an impossible one. The writer can still change the bytes:
    /// read each of them once.
    const std::uint8_t* next(std::size_t& length);
    /// Reader: has read the message that next() returned.
    void release();

private:
    /// Begins the memory. The same bytes in processes of both widths. Writer and reader each have a cache line.
    struct Header {
        std::uint64_t mark;
        std::uint32_t slotSize;
        std::uint32_t slots;
        alignas(64) std::atomic<std::uint32_t> written;  // by the writer
        alignas(64) std::atomic<std::uint32_t> read;     // by the reader
        alignas(64) std::atomic<std::uint32_t> asleep;   // 1 while the reader waits; its futex
    };

    SectionRing(void* newMapping, std::size_t newMappedSize, int newMemory);
    std::uint8_t* slotAt(std::uint32_t index) const;
    bool hasMessage() const;
    void waitForMessage();
    void wakeReader();

    void* const mapping;
    const std::size_t mappedSize;
    const int memory;
    Header& header;
    const std::uint32_t slotSize;
    const std::uint32_t slots;
    const std::size_t stride;  // from one slot to the next
    std::uint32_t place;       // the reader's or the writer's own: messages read or written, modulo 2^32
};

// The steps of a message without a wait, here so that the queue has them without calls.

inline std::uint8_t* SectionRing::slotAt(std::uint32_t index) const {
    return static_cast<std::uint8_t*>(mapping) + kHeaderSize + stride * (index & (slots - 1));
}

inline std::uint8_t* SectionRing::nextSlot() {
    const std::uint32_t unread = place - header.read.load(std::memory_order_acquire);
    if (unread >= slots) {
        // Full, or one of the counts was overwritten: each side then puts its own right.
        header.written.store(place, std::memory_order_release);
        return nullptr;
    }
    return slotAt(place) + sizeof(std::uint32_t);
}

inline void SectionRing::publish(std::size_t length) {
    const auto stored = static_cast<std::uint32_t>(length);
    std::memcpy(slotAt(place), &stored, sizeof stored);
    ++place;
    // In one order with the reader's announcement that it sleeps: one of the two sees the other.
    header.written.store(place, std::memory_order_seq_cst);
    if (header.asleep.load(std::memory_order_seq_cst) != 0) {
        wakeReader();
    }
}

/// Whether a message waits. A count that no writer can reach means none.
inline bool SectionRing::hasMessage() const {
    const std::uint32_t waiting = header.written.load(std::memory_order_seq_cst) - place;
    return waiting != 0 && waiting <= slots;
}

inline const std::uint8_t* SectionRing::next(std::size_t& length) {
    if (!hasMessage()) {
        waitForMessage();
    }
    const std::uint8_t* const slot = slotAt(place);
    std::uint32_t stored = 0;
    std::memcpy(&stored, slot, sizeof stored);
    // Keeps the compiler from reading the length again after the check: the writer may change it.
    asm volatile("" : "+r"(stored));
    length = stored > slotSize ? 0 : stored;
    return slot + sizeof stored;
}

inline void SectionRing::release() {
    ++place;
    header.read.store(place, std::memory_order_release);
}

}  // namespace host
