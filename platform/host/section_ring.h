// SectionRing: a ring of messages in memory that two processes share. The process that creates it reads; the process
// that gets its descriptor writes. What the other process does to the memory cannot hurt: the memory cannot shrink,
// each side keeps its own place in the ring and checks the other's, and reads each byte of a message once.
// Threads: one reads; one at a time writes.
// Blocks:  next() until a message comes; nothing else.
// Locks:   none.
// Fails:   create() and open() with the reason.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace host {

class SectionRing {
public:
    static constexpr std::size_t kLargestMessage = 1U << 14U;
    static constexpr std::size_t kMostMessages = 1U << 10U;

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
    struct Header;

    SectionRing(void* newMapping, std::size_t newMappedSize, int newMemory);
    std::uint8_t* slotAt(std::uint32_t index) const;
    bool hasMessage() const;
    void waitForMessage();

    void* const mapping;
    const std::size_t mappedSize;
    const int memory;
    Header& header;
    const std::uint32_t slotSize;
    const std::uint32_t slots;
    std::uint32_t place;  // the reader's or the writer's own: messages read or written, modulo 2^32
};

}  // namespace host
